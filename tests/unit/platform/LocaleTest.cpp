// SPDX-License-Identifier: MIT
#include "platform/text/Locale.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>

namespace estatebook::platform {
namespace {

/// Sets the three variables for one test and puts everything back.
class LocaleTest : public testing::Test {
protected:
    LocaleTest() {
        for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) {
            const char* value = std::getenv(name);
            kept_[name] = value ? std::optional<std::string>(value) : std::nullopt;
            unsetenv(name);
        }
    }
    ~LocaleTest() override {
        for (const auto& [name, value] : kept_)
            if (value)
                setenv(name.c_str(), value->c_str(), 1);
            else
                unsetenv(name.c_str());
        Locale::setCurrent(before_);
    }

    static std::string_view ofEnvironment(const char* variable, const char* value) {
        setenv(variable, value, 1);
        return Locale::fromEnvironment().identifier();
    }

private:
    std::map<std::string, std::optional<std::string>> kept_;
    Locale before_ = Locale::current();
};

TEST_F(LocaleTest, AnEmptyEnvironmentIsThePosixLocale) {
    EXPECT_EQ(Locale::fromEnvironment().identifier(), "en_US_POSIX");
}

TEST_F(LocaleTest, CAndPosixAreThePosixLocale) {
    for (const char* name : {"C", "POSIX", "C.UTF-8", "C.utf8"})
        EXPECT_EQ(ofEnvironment("LANG", name), "en_US_POSIX") << name;
}

TEST_F(LocaleTest, LcAllGoesBeforeLcTimeAndLcTimeBeforeLang) {
    EXPECT_EQ(ofEnvironment("LANG", "de_DE.UTF-8"), "de_DE");
    EXPECT_EQ(ofEnvironment("LC_TIME", "fr_FR.UTF-8"), "fr_FR");
    EXPECT_EQ(ofEnvironment("LC_ALL", "ja_JP.UTF-8"), "ja_JP");
}

TEST_F(LocaleTest, AnEmptyVariableCountsAsAbsent) {
    setenv("LC_ALL", "", 1);
    setenv("LC_TIME", "", 1);
    EXPECT_EQ(ofEnvironment("LANG", "it_IT"), "it_IT");
}

TEST_F(LocaleTest, ACharacterSetIsOfNoAccount) {
    EXPECT_EQ(ofEnvironment("LANG", "en_AU.ISO-8859-1"), "en_AU");
    EXPECT_EQ(ofEnvironment("LANG", "de_DE.UTF-8@euro"), "de_DE");
    EXPECT_EQ(ofEnvironment("LANG", "de_DE@euro"), "de_DE");
}

TEST_F(LocaleTest, AModifierChoosesTheScript) {
    EXPECT_EQ(ofEnvironment("LANG", "sr_RS.UTF-8@latin"), "sr_Latn_RS");
    EXPECT_EQ(ofEnvironment("LANG", "uz_UZ@cyrillic"), "uz_Cyrl_UZ");
    EXPECT_EQ(ofEnvironment("LANG", "sr@latin"), "sr_Latn");
}

TEST_F(LocaleTest, TheCurrentLocaleIsTheOneThatWasSet) {
    Locale::setCurrent(Locale::named("nb_NO"));
    EXPECT_EQ(Locale::current(), Locale::named("nb_NO"));
    EXPECT_EQ(Locale::current().identifier(), "nb_NO");
}

TEST_F(LocaleTest, SpellingsOfOneNameAreOneLocale) {
    EXPECT_EQ(Locale::named("de-DE"), Locale::named("de_DE"));
    EXPECT_EQ(Locale::named("DE_de"), Locale::named("de_DE"));
    EXPECT_EQ(Locale::named("th-TH-u-nu-thai"), Locale::named("th_TH@numbers=thai"));
    EXPECT_FALSE(Locale::named("de_DE") == Locale::named("de_AT"));
}

TEST_F(LocaleTest, TheEmptyNameIsTheRootLocale) {
    EXPECT_EQ(Locale::named("").identifier(), "");
    EXPECT_EQ(Locale::named("root"), Locale::named(""));
}

TEST_F(LocaleTest, AvailableIdentifiersAreCanonical) {
    const auto identifiers = Locale::availableIdentifiers();
    EXPECT_GT(identifiers.size(), 500u);
    EXPECT_NE(std::ranges::find(identifiers, "en_GB"), identifiers.end());
    for (const auto identifier : identifiers) EXPECT_EQ(Locale::named(identifier).identifier(), identifier);
}

} // namespace
} // namespace estatebook::platform
