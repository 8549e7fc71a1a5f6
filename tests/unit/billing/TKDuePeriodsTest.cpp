// SPDX-License-Identifier: MIT
#include "billing/TKDuePeriods.hpp"

#include "platform/values/Exception.hpp"
#include "support/Book.hpp"

#include <gtest/gtest.h>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::DefaultZone;
using bookkit::onDay;

Decimal decimal(std::string_view digits) {
    return Decimal::parse(digits);
}

constexpr std::uint64_t NotFound = 9223372036854775807u;

/// Monthly rent of 100 from 1 January 2025, in arrears.
class TKDuePeriodsTest : public testing::Test {
protected:
    /// Charged to that day, with a schedule to match.
    void chargeTo(Date today) const {
        tenure->setCurrentDate(today);
        tenure->updatePeriods();
    }
    static void expectPeriod(const Ref<TKPeriod>& period, Date start, Date end, Date billing) {
        ASSERT_TRUE(period);
        EXPECT_EQ(period->startDate(), start);
        EXPECT_EQ(period->endDate(), end);
        EXPECT_EQ(period->billingDate(), billing);
    }

    const DefaultZone zone{"Europe/Berlin"};
    const Book book;
    const Ref<TKTenure> tenure = book.tenure(onDay(2025, 1, 1), 30, 1, 100);
};

TEST_F(TKDuePeriodsTest, OnePeriodIsOutstandingWhenTwoOfThreeArePaid) {
    chargeTo(onDay(2025, 4, 1));
    book.record(*tenure, 200);
    const auto due = tenure->duePeriods();
    EXPECT_EQ(due->balance(), Decimal(100));
    EXPECT_TRUE(due->hasOutstandingBalance());
    EXPECT_EQ(due->outstanding(), (Range{2, 1}));
    expectPeriod(due->next(), onDay(2025, 4, 1), onDay(2025, 5, 1), onDay(2025, 5, 1));
    EXPECT_EQ(due->periods(), tenure->periods());
    EXPECT_EQ(due->periods()->count(), 3u) << "the row that was made for next is not kept";
}

TEST_F(TKDuePeriodsTest, AHalfChargedThirdPeriodIsOutstandingEvenWhenNothingIsOwed) {
    tenure->setChargeBehaviour(Number(1));
    chargeTo(onDay(2025, 3, 1));
    tenure->setCurrentDate(onDay(2025, 3, 1));
    // Two and a half periods: 15 of the 30 days of a third one that ends on 31 March.
    tenure->setRentalBillingCycle(Number(1u));
    tenure->setRentalPeriod(Number(30u));
    chargeTo(onDay(2025, 3, 17));
    ASSERT_EQ(tenure->totalCost(), Decimal(-250));
    book.record(*tenure, 250);
    const auto due = tenure->duePeriods();
    EXPECT_EQ(due->balance(), Decimal::zero());
    EXPECT_FALSE(due->hasOutstandingBalance());
    EXPECT_EQ(due->outstanding(), (Range{2, 1}));
    expectPeriod(due->next(), onDay(2025, 4, 1), onDay(2025, 5, 1), onDay(2025, 5, 1));
}

TEST_F(TKDuePeriodsTest, PaymentsAheadPushTheNextPeriodForward) {
    chargeTo(onDay(2025, 3, 1));
    book.record(*tenure, 400);
    const auto due = tenure->duePeriods();
    EXPECT_EQ(due->balance(), Decimal(-200));
    EXPECT_FALSE(due->hasOutstandingBalance());
    EXPECT_EQ(due->outstanding(), (Range{4, 0}));
    expectPeriod(due->next(), onDay(2025, 5, 1), onDay(2025, 6, 1), onDay(2025, 6, 1));
    EXPECT_EQ(due->periods()->count(), 2u);
}

TEST_F(TKDuePeriodsTest, ATenureThatHoldsThePeriodAlreadyGivesItsOwn) {
    tenure->setCurrentDate(onDay(2025, 9, 1));
    const auto rows = tenure->updatePeriods();
    tenure->setCurrentDate(onDay(2025, 3, 1));
    tenure->setPeriods(rows);
    const auto due = tenure->duePeriods();
    EXPECT_EQ(due->outstanding(), (Range{0, 2}));
    EXPECT_EQ(due->next().get(), &(*rows)[2]);
}

TEST_F(TKDuePeriodsTest, WithoutRentNothingIsDue) {
    chargeTo(onDay(2025, 3, 1));
    for (const Decimal& rent : {Decimal(0), Decimal(-5)}) {
        tenure->setRentalAmount(rent);
        const auto due = tenure->duePeriods();
        EXPECT_EQ(due->outstanding().location, NotFound);
        EXPECT_EQ(due->outstanding().length, 0u);
        EXPECT_FALSE(due->next());
        EXPECT_FALSE(due->balance());
        EXPECT_FALSE(due->hasOutstandingBalance());
        EXPECT_EQ(due->periods(), tenure->periods());
    }
}

TEST_F(TKDuePeriodsTest, AnAbsentRentRaisesInTheDivision) {
    tenure->setRentalAmount({});
    EXPECT_THROW((void)tenure->duePeriods(), DivideByZeroException);
}

TEST_F(TKDuePeriodsTest, ThereIsNoNextPeriodWhenTheTenureEndsOnOrBeforeItsStart) {
    chargeTo(onDay(2025, 3, 1));
    book.record(*tenure, 200);
    for (const Date end : {onDay(2025, 3, 1), onDay(2025, 2, 10)}) {
        tenure->setEndDate(end);
        EXPECT_FALSE(tenure->duePeriods()->next());
    }
    tenure->setEndDate(onDay(2025, 3, 1, 0, 0, 1));
    expectPeriod(tenure->duePeriods()->next(), onDay(2025, 3, 1), onDay(2025, 4, 1), onDay(2025, 4, 1));
}

TEST_F(TKDuePeriodsTest, APartPaymentNeverCountsAsAPaidPeriod) {
    chargeTo(onDay(2025, 4, 1));
    book.record(*tenure, decimal("199.99"));
    EXPECT_EQ(tenure->duePeriods()->outstanding(), (Range{1, 2}));
    book.record(*tenure, decimal("0.01"));
    EXPECT_EQ(tenure->duePeriods()->outstanding(), (Range{2, 1}));
}

TEST_F(TKDuePeriodsTest, AdjustmentsCountAmongThePayments) {
    chargeTo(onDay(2025, 4, 1));
    tenure->setBondAmount(Decimal(100));
    book.record(*tenure, 300);
    EXPECT_EQ(tenure->duePeriods()->outstanding(), (Range{2, 1}));
    book.record(*tenure, 100, {}, true);
    EXPECT_EQ(tenure->duePeriods()->outstanding(), (Range{3, 0}));
}

TEST_F(TKDuePeriodsTest, ANegativeIncomeCountsAsNoPaidPeriod) {
    chargeTo(onDay(2025, 3, 1));
    tenure->setBondAmount(Decimal(150));
    const auto due = tenure->duePeriods();
    EXPECT_EQ(due->outstanding(), (Range{0, 2}));
    EXPECT_EQ(due->balance(), Decimal(350));
    expectPeriod(due->next(), onDay(2025, 3, 1), onDay(2025, 4, 1), onDay(2025, 4, 1));
}

TEST_F(TKDuePeriodsTest, RentInAdvanceBillsTheNextPeriodAtItsStart) {
    tenure->setAdvancePeriod(Number(1u));
    tenure->setAdvanceBillingCycle(Number(1u));
    chargeTo(onDay(2025, 2, 28));
    expectPeriod(tenure->duePeriods()->next(), onDay(2025, 3, 1), onDay(2025, 4, 1), onDay(2025, 3, 1));
}

TEST_F(TKDuePeriodsTest, TheNextPeriodIsCountedFromTheStartOfTheLetting) {
    tenure->setStartDate(onDay(2025, 1, 31, 10));
    chargeTo(onDay(2025, 3, 1)); // one month, to 28 February
    expectPeriod(tenure->duePeriods()->next(), onDay(2025, 2, 28), onDay(2025, 3, 31), onDay(2025, 3, 31));
}

TEST_F(TKDuePeriodsTest, WithoutAStartDateThereIsNoNextPeriod) {
    tenure->setStartDate({});
    const auto due = tenure->duePeriods();
    EXPECT_EQ(due->outstanding(), (Range{0, 0}));
    EXPECT_FALSE(due->next());
    EXPECT_EQ(due->balance(), Decimal::zero());
}

TEST_F(TKDuePeriodsTest, WithoutAScheduleTheNextPeriodIsMade) {
    tenure->setCurrentDate(onDay(2025, 3, 1));
    tenure->setPeriods(nullptr);
    const auto due = tenure->duePeriods();
    EXPECT_FALSE(due->periods());
    expectPeriod(due->next(), onDay(2025, 3, 1), onDay(2025, 4, 1), onDay(2025, 4, 1));
}

TEST_F(TKDuePeriodsTest, AManyYearsRentPaidAheadNeedsNoRowOfThatLength) {
    tenure->setRentalBillingCycle(Number(1u));
    tenure->setCurrentDate(onDay(2025, 1, 1));
    book.record(*tenure, 200000000); // two million days
    const auto due = tenure->duePeriods();
    EXPECT_EQ(due->outstanding(), (Range{2000000, 0}));
    ASSERT_TRUE(due->next());
    EXPECT_EQ(Calendar::current().daysFromTo(onDay(2025, 1, 1), *due->next()->startDate()), 2000000u);
}

TEST_F(TKDuePeriodsTest, APaymentBeyondTheYearsOfBooksRaises) {
    tenure->setCurrentDate(onDay(2025, 1, 1));
    for (const char* amount : {"10000000", "1000000000000", "922337203685477580700", "922337203685477580800",
                               "1844674407370955161500"}) {
        auto* payment = book.record(*tenure, decimal(amount));
        EXPECT_THROW((void)tenure->duePeriods(), OverflowException) << amount;
        payment->setAmount({});
    }
}

TEST_F(TKDuePeriodsTest, ACountThatWrapsAroundIsNotTakenForTheFirstPeriods) {
    // 2^63 periods of two months are 2^64 months, which a 64-bit product takes for none.
    tenure->setRentalPeriod(Number(2u));
    tenure->setRentalAmount(Decimal(1));
    tenure->setCurrentDate(onDay(2025, 1, 1));
    book.record(*tenure, decimal("9223372036854775808"));
    EXPECT_THROW((void)tenure->duePeriods(), OverflowException);
}

TEST_F(TKDuePeriodsTest, ASnapshotDoesNotFollowTheTenure) {
    chargeTo(onDay(2025, 4, 1));
    const auto due = tenure->duePeriods();
    book.record(*tenure, 300);
    EXPECT_EQ(due->outstanding(), (Range{0, 3}));
    EXPECT_EQ(due->balance(), Decimal(300));
    EXPECT_EQ(tenure->duePeriods()->outstanding(), (Range{3, 0}));
}

TEST_F(TKDuePeriodsTest, EveryFieldCanBeSet) {
    const auto due = makeRef<TKDuePeriods>();
    EXPECT_EQ(due->outstanding(), (Range{NotFound, 0}));
    EXPECT_FALSE(due->hasOutstandingBalance()) << "an absent balance is nothing owed";
    const auto rows = Array::make({});
    const auto period = TKPeriod::periodWithStartDateEndDate(onDay(2025, 1, 1), onDay(2025, 2, 1));
    due->setPeriods(rows);
    due->setNext(period);
    due->setOutstanding({3, 4});
    due->setBalance(decimal("0.01"));
    EXPECT_EQ(due->periods(), rows);
    EXPECT_EQ(due->next(), period);
    EXPECT_EQ(due->outstanding(), (Range{3, 4}));
    EXPECT_TRUE(due->hasOutstandingBalance());
    due->setBalance(Decimal(0));
    EXPECT_FALSE(due->hasOutstandingBalance());
    due->setBalance(decimal("-0.01"));
    EXPECT_FALSE(due->hasOutstandingBalance());
}

TEST_F(TKDuePeriodsTest, ASubclassGetsItsOwnKind) {
    class Reminder final : public TKDuePeriods {};
    chargeTo(onDay(2025, 4, 1));
    const Ref<Reminder> reminder = Reminder::duePeriodsForTenure<Reminder>(*tenure);
    EXPECT_EQ(reminder->outstanding(), (Range{0, 3}));
}

} // namespace
} // namespace estatebook
