// SPDX-License-Identifier: MIT
#include "reports/MonthlyIncome.hpp"

#include "support/HarbourStreet.hpp"

#include <gtest/gtest.h>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::onDay;

Decimal decimal(std::string_view digits) {
    return Decimal::parse(digits);
}

class MonthlyIncomeTest : public testing::Test {
protected:
    [[nodiscard]] std::vector<MonthlyIncome> months() const {
        return MonthlyIncome::ofLedgers(std::span(&property, 1), std::span(&tenure, 1), day);
    }

    const bookkit::DefaultZone zone{"Europe/London"};
    const bookkit::Book book;
    const Date day = onDay(2026, 6, 30);
    const Ref<TKTenure> tenure = bookkit::jonesOfHarbourStreet(book);
    const Ref<TKProperty> property{tenure->property()};
};

TEST_F(MonthlyIncomeTest, HarbourStreetMonthByMonth) {
    bookkit::recordTagged(book, *property, "-92", onDay(2025, 1, 10), "Safety");
    bookkit::recordTagged(book, *property, "-351", onDay(2025, 2, 3), "Insurance");
    bookkit::recordTagged(book, *property, "-420", onDay(2025, 2, 6), "Repairs");
    bookkit::recordTagged(book, *property, "-47.31", onDay(2025, 2, 14), "Repairs");
    const auto rows = months();
    ASSERT_EQ(rows.size(), 18u) << "January 2025 to June 2026";
    EXPECT_EQ(rows[0].month, onDay(2025, 1, 1));
    EXPECT_EQ(rows[0].net(), Decimal(-92));
    EXPECT_EQ(rows[1].ownCosts, decimal("-818.31"));
    EXPECT_EQ(rows[1].adjustments, Decimal(1150)) << "the bond is no income";
    EXPECT_EQ(rows[1].net(), decimal("-818.31"));
    EXPECT_EQ(rows[2].received, Decimal(1050));
    EXPECT_EQ(rows[10].month, onDay(2025, 11, 1));
    EXPECT_EQ(rows[10].received, Decimal(600));
    EXPECT_EQ(rows[10].adjustments, decimal("75.5"));
    EXPECT_EQ(rows[12].adjustments, Decimal(-25)) << "January 2026";
    EXPECT_EQ(rows[15].month, onDay(2026, 4, 1));
    EXPECT_EQ(rows[15].net(), Decimal(0)) << "a month without a transaction has a row";
    EXPECT_EQ(rows[17].month, onDay(2026, 6, 1));
}

TEST_F(MonthlyIncomeTest, TheMonthsAddUpToTheBalanceOfTheProperty) {
    bookkit::recordTagged(book, *property, "12.5", onDay(2025, 2, 9), "Insurance", true);
    bookkit::recordTagged(book, *property, "-351", onDay(2025, 2, 3), "Insurance");
    book.record(*property, Decimal(7));
    Decimal sum;
    for (const MonthlyIncome& month : months()) sum += month.net();
    EXPECT_EQ(sum, property->balance());
}

TEST_F(MonthlyIncomeTest, APropertysOwnAdjustmentsCorrectItsCosts) {
    bookkit::recordTagged(book, *property, "12.5", onDay(2025, 2, 9), "Insurance", true);
    EXPECT_EQ(months()[0].ownIncome, decimal("12.5"));
}

TEST_F(MonthlyIncomeTest, WhatHasNoDateOfBooksStandsFirst) {
    book.record(*tenure, Decimal(5));
    book.record(*tenure, Decimal(7), Date{-1e15});
    const auto rows = months();
    EXPECT_EQ(rows[0].month, std::nullopt);
    EXPECT_EQ(rows[0].received, Decimal(12));
    EXPECT_EQ(rows[1].month, onDay(2025, 2, 1));
}

TEST_F(MonthlyIncomeTest, WhatIsDatedLaterIsLeftOut) {
    book.record(*tenure, Decimal(5), onDay(2026, 6, 30, 0, 0, 1));
    book.record(*tenure, Decimal(7), onDay(2026, 8, 1));
    EXPECT_EQ(months().back().month, onDay(2026, 6, 1));
    EXPECT_EQ(months().back().received, Decimal(0));
}

TEST_F(MonthlyIncomeTest, ALineWithoutAnAmountMakesNoMonth) {
    book.record(*tenure, std::nullopt, onDay(2020, 1, 1));
    EXPECT_EQ(months()[0].month, onDay(2025, 2, 1));
}

TEST_F(MonthlyIncomeTest, NoTransactionsAreNoMonths) {
    EXPECT_TRUE(MonthlyIncome::ofLedgers({}, {}, day).empty());
}

TEST_F(MonthlyIncomeTest, AMonthIsOneOfTheCurrentCalendar) {
    // 23:30 in London on 31 May is June in Berlin.
    const auto instant = onDay(2025, 5, 31, 23, 30);
    book.record(*tenure, Decimal(5), instant);
    EXPECT_EQ(months()[3].received, Decimal(1055)) << "May in London";
    const bookkit::DefaultZone berlin("Europe/Berlin");
    EXPECT_EQ(months()[4].received, Decimal(1055)) << "June in Berlin";
    EXPECT_EQ(months()[4].month, onDay(2025, 6, 1));
}

} // namespace
} // namespace estatebook
