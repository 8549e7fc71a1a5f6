// SPDX-License-Identifier: MIT
#include "desktop/program/DesktopTestCase.hpp"

#include "estatebook-desktop/window/Figures.hpp"

#include <optional>
#include <string>

namespace estatebook::desktop::test {

namespace {

using platform::Decimal;

class FiguresTest : public DesktopTestCase {
protected:
    FiguresTest() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom)); }
    ~FiguresTest() override { QLocale::setDefault(QLocale::system()); }

    [[nodiscard]] std::string shown(const char* amount) const {
        return figures().amount(Decimal::parse(amount)).toStdString();
    }
    /// "none" for what is no amount.
    [[nodiscard]] std::string read(const char* text) const {
        const auto amount = figures().amountOf(QString::fromUtf8(text));
        return amount ? amount->toString() : "none";
    }
    [[nodiscard]] Figures figures() const { return Figures::of(*session_); }

    platform::RunLoop loop_;
    std::unique_ptr<BookSession> session_ = BookSession::open(makeExample(), loop_);
};

TEST_F(FiguresTest, AmountsHaveTheDigitsOfTheCurrencyAndMarksBetweenThousands) {
    EXPECT_EQ(shown("0"), "0.00");
    EXPECT_EQ(shown("5.5"), "5.50");
    EXPECT_EQ(shown("999.99"), "999.99");
    EXPECT_EQ(shown("1000"), "1,000.00");
    EXPECT_EQ(shown("-1234567.8"), "\u22121,234,567.80");
    EXPECT_EQ(shown("12345678901234567890.125"), "12,345,678,901,234,567,890.125");
}

TEST_F(FiguresTest, WhatIsTypedIsReadOrRefusedAsAWhole) {
    EXPECT_EQ(read("1050"), "1050");
    EXPECT_EQ(read(" 1,050.50 "), "1050.5");
    EXPECT_EQ(read("\u2212"
                   "25"),
              "-25");
    EXPECT_EQ(read("-.5"), "-0.5");
    EXPECT_EQ(read("007"), "7");
    EXPECT_EQ(read("0"), "0");
    EXPECT_EQ(read("5."), "5");
    EXPECT_EQ(read("12 000"), "12000");
    for (const char* no :
         {"", "-", ".", "1,05", "1,0500", ",100", "1.2.3", "12a", "1e3", "--1", "1-", "£5", "NaN"})
        EXPECT_EQ(read(no), "none") << no;
}

TEST_F(FiguresTest, WhatIsShownToBeEditedReadsBack) {
    for (const char* text : {"0", "-0.5", "1050", "123456.789", "-98765432109876543210.12"}) {
        const Decimal amount = Decimal::parse(text);
        EXPECT_EQ(figures().amountOf(figures().plain(amount)), amount) << text;
        EXPECT_EQ(figures().amountOf(figures().amount(amount)), amount) << text;
    }
}

TEST_F(FiguresTest, AnotherLocaleHasAnotherPoint) {
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(shown("-1234.5"), "\u22121.234,50");
    EXPECT_EQ(read("1.234,5"), "1234.5");
    EXPECT_EQ(read("1.5"), "none") << "a mark between thousands is none between tens";
}

TEST_F(FiguresTest, DaysAreThoseOfTheBooksZone) {
    const auto summer = day(2026, 6, 30);
    EXPECT_EQ(figures().dateOf(summer), QDate(2026, 6, 30));
    EXPECT_EQ(figures().dateOf(platform::Date{summer.secondsSinceReferenceDate - 1}), QDate(2026, 6, 29));
    EXPECT_EQ(figures().instantOf(QDate(2026, 6, 30)), summer);
    EXPECT_EQ(figures().day(std::nullopt), QString());
}

} // namespace

} // namespace estatebook::desktop::test
