// SPDX-License-Identifier: MIT
#include "reports/RentRoll.hpp"

#include "platform/values/Exception.hpp"
#include "support/HarbourStreet.hpp"

#include <gtest/gtest.h>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::onDay;
using bookkit::shownText;

class RentRollTest : public testing::Test {
protected:
    const bookkit::DefaultZone zone{"Europe/London"};
    const bookkit::Book book;
};

TEST_F(RentRollTest, HarbourStreetIsPaidToTheMiddleOfJanuary) {
    const auto entry = RentRollEntry::ofTenure(bookkit::jonesOfHarbourStreet(book));
    EXPECT_EQ(shownText(entry.property), "12 Harbour Street");
    EXPECT_EQ(shownText(entry.tenant), "M. Jones");
    EXPECT_EQ(entry.start, onDay(2025, 2, 15));
    EXPECT_EQ(entry.end, std::nullopt);
    EXPECT_EQ(entry.rent, Decimal(1050));
    // 11650 of rent and 50.50 of adjustments pay 11 months of 1050.
    EXPECT_EQ(entry.paidTo, onDay(2026, 1, 15));
    EXPECT_EQ(entry.nextDue, onDay(2026, 7, 15)) << "the month that has begun is billed at its end";
    EXPECT_EQ(entry.balance, Decimal::parse("-5624.5"));
}

/// 100 a month from 1 January 2025, billed in advance.
class RentRollAdvanceTest : public RentRollTest {
protected:
    RentRollAdvanceTest() {
        tenure->setAdvanceBillingCycle(Number(30u));
        tenure->setAdvancePeriod(Number(1u));
        tenure->setCurrentDate(onDay(2025, 3, 1));
    }
    [[nodiscard]] RentRollEntry entry() const { return RentRollEntry::ofTenure(tenure); }

    const Ref<TKTenure> tenure = book.tenure(onDay(2025, 1, 1), 30, 1, 100);
};

TEST_F(RentRollAdvanceTest, WhatFallsDueOnTheDayItselfIsNotNext) {
    EXPECT_EQ(entry().nextDue, onDay(2025, 4, 1));
    tenure->setCurrentDate(onDay(2025, 2, 28));
    EXPECT_EQ(entry().nextDue, onDay(2025, 3, 1));
}

TEST_F(RentRollAdvanceTest, ATenureThatHasNotBegunIsDueOnItsFirstDay) {
    tenure->setCurrentDate(onDay(2024, 12, 24));
    EXPECT_EQ(entry().nextDue, onDay(2025, 1, 1));
    EXPECT_EQ(entry().paidTo, std::nullopt);
}

TEST_F(RentRollAdvanceTest, PaymentsAheadMoveTheNextDay) {
    book.record(*tenure, Decimal(620), onDay(2025, 2, 1));
    EXPECT_EQ(entry().paidTo, onDay(2025, 7, 1)) << "a fifth of a month pays nothing";
    EXPECT_EQ(entry().nextDue, onDay(2025, 7, 1));
}

TEST_F(RentRollAdvanceTest, ATenureEndsBeforeAnotherPeriodBegins) {
    tenure->setEndDate(onDay(2025, 4, 1));
    EXPECT_EQ(entry().nextDue, std::nullopt);
    book.record(*tenure, Decimal(900), onDay(2025, 2, 1));
    EXPECT_EQ(entry().paidTo, onDay(2025, 4, 1)) << "nobody pays beyond the end";
}

TEST_F(RentRollAdvanceTest, ABondThatIsOwedMakesRentLookUnpaid) {
    book.record(*tenure, Decimal(300), onDay(2025, 2, 1));
    EXPECT_EQ(entry().paidTo, onDay(2025, 4, 1));
    tenure->setBondAmount(Decimal(150));
    EXPECT_EQ(entry().paidTo, onDay(2025, 2, 1));
}

TEST_F(RentRollTest, WithoutRentNothingIsPaidNorDue) {
    const auto tenure = book.tenure(onDay(2025, 1, 1), 30, 1, 0);
    tenure->setCurrentDate(onDay(2025, 3, 1));
    const auto entry = RentRollEntry::ofTenure(tenure);
    EXPECT_EQ(entry.paidTo, std::nullopt);
    EXPECT_EQ(entry.nextDue, std::nullopt);
    EXPECT_FALSE(entry.property);
    EXPECT_FALSE(entry.tenant);
    tenure->setRentalAmount(std::nullopt);
    EXPECT_EQ(RentRollEntry::ofTenure(tenure).paidTo, std::nullopt);
}

TEST_F(RentRollTest, AnAbsentStartHasNoDays) {
    const auto tenure = book.tenure();
    tenure->setRentalBillingCycle(Number(30u));
    tenure->setRentalPeriod(Number(1u));
    tenure->setRentalAmount(Decimal(100));
    tenure->setCurrentDate(onDay(2025, 3, 1));
    book.record(*tenure, Decimal(200));
    const auto entry = RentRollEntry::ofTenure(tenure);
    EXPECT_EQ(entry.paidTo, std::nullopt);
    EXPECT_EQ(entry.nextDue, std::nullopt);
    EXPECT_EQ(entry.balance, Decimal(200));
}

TEST_F(RentRollTest, TermsWithoutARhythmRaise) {
    const auto tenure = book.tenure(onDay(2025, 1, 1), 30, 1, 100);
    tenure->setCurrentDate(onDay(2025, 3, 1));
    EXPECT_THROW(tenure->setRentalPeriod(Number(0u)), DivideByZeroException) << "set, but without a schedule";
    EXPECT_THROW((void)RentRollEntry::ofTenure(tenure), DivideByZeroException);
    EXPECT_EQ(RentRollEntry::ofTerms(tenure).rent, Decimal(100)) << "and still tell their rent";
}

TEST_F(RentRollTest, ARollHoldsTheTenuresOfTheDayInTheirOrder) {
    const auto jones = bookkit::jonesOfHarbourStreet(book);
    const auto smith = bookkit::smithOfHarbourStreet(book);
    smith->setCurrentDate(onDay(2026, 6, 30));
    const auto later = book.tenure(onDay(2026, 6, 30), 30, 1, 100);
    later->setCurrentDate(onDay(2026, 6, 30));
    const auto roll = rentRoll(std::vector{later, smith, jones});
    ASSERT_EQ(roll.size(), 2u);
    EXPECT_EQ(roll[0].tenure, later);
    EXPECT_EQ(roll[1].tenure, jones);
}

} // namespace
} // namespace estatebook
