// SPDX-License-Identifier: MIT
#include "platform/text/StringsTable.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

namespace estatebook::platform {
namespace {

class StringsTableTest : public testing::Test {
protected:
    ~StringsTableTest() override {
        StringsTable::install({});
        StringsTable::install({}, "Cycles");
    }

    static std::string problemOf(std::string_view text) {
        std::string error;
        EXPECT_FALSE(StringsTable::parse(text, &error).has_value());
        return error;
    }

    Ref<String> weeks_ = String::make("weeks");
};

TEST_F(StringsTableTest, WithoutATableAKeyIsItsOwnText) {
    EXPECT_EQ(localizedStringForKeyValueTable(weeks_), weeks_);
}

TEST_F(StringsTableTest, WithoutAnEntryTheValueIsTheText) {
    const Ref<String> value = String::make("Wochen");
    EXPECT_EQ(localizedStringForKeyValueTable(weeks_, value), value);
}

TEST_F(StringsTableTest, AnEmptyValueIsNoValue) {
    EXPECT_EQ(localizedStringForKeyValueTable(weeks_, String::make("")), weeks_);
}

TEST_F(StringsTableTest, AnEntryOfTheDefaultTableWins) {
    StringsTable::install(StringsTable::fromTexts({{"weeks", "semaines"}}));
    EXPECT_EQ(localizedStringForKeyValueTable(weeks_, String::make("Wochen"))->view(), "semaines");
    EXPECT_EQ(localizedStringForKeyValueTable(weeks_, nullptr, "Localizable")->view(), "semaines");
}

TEST_F(StringsTableTest, AnEmptyEntryIsAText) {
    StringsTable::install(StringsTable::fromTexts({{"weeks", ""}}));
    EXPECT_EQ(localizedStringForKeyValueTable(weeks_)->view(), "");
}

TEST_F(StringsTableTest, ANamedTableIsLookedUpByItsName) {
    StringsTable::install(StringsTable::fromTexts({{"weeks", "settimane"}}), "Cycles");
    EXPECT_EQ(localizedStringForKeyValueTable(weeks_, nullptr, "Cycles")->view(), "settimane");
    EXPECT_EQ(localizedStringForKeyValueTable(weeks_, nullptr, "Other"), weeks_);
    EXPECT_EQ(localizedStringForKeyValueTable(weeks_), weeks_);
}

TEST_F(StringsTableTest, ATextThatWasHandedOutOutlivesItsTable) {
    StringsTable::install(StringsTable::fromTexts({{"weeks", "semanas"}}));
    const Ref<String> text = localizedStringForKeyValueTable(weeks_);
    StringsTable::install({});
    EXPECT_EQ(text->view(), "semanas");
}

TEST_F(StringsTableTest, AFileFormHasRemarksAndEscapes) {
    const auto table =
        StringsTable::parse("\ufeff/* cycles */\n\"days\" = \"Tage\";\n"
                            "// \"no\" = \"entry\";\n\"a\\\"b\"=\"\\\\ \\n \\t \\u20AC \\u00e9 \\u0041\" ;"
                            "\"days\" = \"D\u00edas\";");
    ASSERT_TRUE(table);
    EXPECT_EQ(table->find("days")->view(), "D\u00edas");
    EXPECT_EQ(table->find("a\"b")->view(), "\\ \n \t \u20ac \u00e9 A");
    EXPECT_FALSE(table->find("no"));
    EXPECT_TRUE(StringsTable::parse(""));
}

TEST_F(StringsTableTest, WhatIsNotOfTheFormIsRefusedWithItsLine) {
    EXPECT_EQ(problemOf("\n\ndays = \"Tage\";"), "line 3: expected a text in quotes");
    EXPECT_EQ(problemOf("\"days\" \"Tage\";"), "line 1: expected =");
    EXPECT_EQ(problemOf("\"days\" = \"Tage\""), "line 1: expected ;");
    EXPECT_EQ(problemOf("\"days\" = \"Tage"), "line 1: a text has no end");
    EXPECT_EQ(problemOf("\"days\" = \"\\"), "line 1: a text has no end");
    EXPECT_EQ(problemOf("/* Tage"), "line 1: a remark has no end");
    EXPECT_EQ(problemOf("\"d\\x\" = \"\";"), "line 1: an unknown character follows a backslash");
    EXPECT_EQ(problemOf("\"\\u12\" = \"\";"), "line 1: expected four hexadecimal digits");
    EXPECT_EQ(problemOf("\"\\ud83d\" = \"\";"), "line 1: half of a pair is no character");
    EXPECT_EQ(problemOf("\"\xff\" = \"\";"), "the text is not UTF-8");
}

TEST_F(StringsTableTest, AFileIsReadOrItsTroubleTold) {
    const std::string path = testing::TempDir() + "StringsTableTest.strings";
    std::ofstream(path) << "\"months\" = \"Monate\";\n";
    EXPECT_EQ(StringsTable::read(path)->find("months")->view(), "Monate");
    std::ofstream(path) << "nonsense";
    std::string error;
    EXPECT_FALSE(StringsTable::read(path, &error));
    EXPECT_EQ(error, path + ": line 1: expected a text in quotes");
    std::remove(path.c_str());
    EXPECT_FALSE(StringsTable::read(path, &error));
    EXPECT_EQ(error, path + ": No such file or directory");
    EXPECT_FALSE(StringsTable::read(testing::TempDir(), &error));
}

} // namespace
} // namespace estatebook::platform
