// SPDX-License-Identifier: MIT
#include "tenure/TKTenure.hpp"

#include "model/Keys.hpp"
#include "platform/values/Exception.hpp"
#include "support/Book.hpp"

#include <gtest/gtest.h>

#include <limits>

#include <string>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::DefaultZone;
using bookkit::HostOperationsGuard;
using bookkit::onDay;
using bookkit::text;

Decimal decimal(std::string_view digits) {
    return Decimal::parse(digits);
}

/// Monthly rent of 1000 from 1 January 2025, in arrears, on 16 February 2025.
class TKTenureTotalsTest : public testing::Test {
protected:
    TKTenureTotalsTest() { tenure->setCurrentDate(onDay(2025, 2, 16)); }

    std::uint64_t days() const { return tenure->chargableDays().unsignedIntegerValue(); }

    const DefaultZone zone{"Europe/Berlin"};
    const Book book;
    const Ref<TKTenure> tenure = book.tenure(onDay(2025, 1, 1), 30, 1, 1000);
};

// Chargeable days

TEST_F(TKTenureTotalsTest, AnOpenLettingIsChargedToToday) {
    EXPECT_EQ(days(), 46u);
    EXPECT_EQ(tenure->chargableDays().kind(), Number::Kind::Unsigned);
    EXPECT_FALSE(tenure->maximumChargableDays());
}

TEST_F(TKTenureTotalsTest, AnAdvanceAddsTheDaysOfOneAdvancePeriodFromToday) {
    tenure->setAdvancePeriod(Number(1u));
    tenure->setAdvanceBillingCycle(Number(30u));
    EXPECT_EQ(days(), 74u);
    tenure->setChargeBehaviour(Number(1));
    EXPECT_EQ(tenure->chargablePeriods(), Decimal(2) + Decimal(15) / 31);
}

TEST_F(TKTenureTotalsTest, AnAdvanceOfZeroAddsNothing) {
    tenure->setAdvancePeriod(Number(0u));
    tenure->setAdvanceBillingCycle(Number(30u));
    EXPECT_EQ(days(), 46u);
}

TEST_F(TKTenureTotalsTest, AnAdvanceOfAnUnknownCycleAddsNothing) {
    tenure->setAdvancePeriod(Number(1u));
    EXPECT_EQ(days(), 46u);
}

TEST_F(TKTenureTotalsTest, AFixedEndWithoutFullDurationIsChargedToTodayAndCapped) {
    tenure->setEndDate(onDay(2025, 1, 31));
    tenure->setChargeFullDuration(Number(false));
    EXPECT_EQ(days(), 30u);
    EXPECT_EQ(tenure->maximumChargableDays()->unsignedIntegerValue(), 30u);
    tenure->setEndDate(onDay(2025, 6, 30));
    EXPECT_EQ(days(), 46u);
}

TEST_F(TKTenureTotalsTest, TheCapHoldsForTheAdvanceToo) {
    tenure->setAdvancePeriod(Number(6u));
    tenure->setAdvanceBillingCycle(Number(30u));
    tenure->setEndDate(onDay(2025, 3, 1));
    EXPECT_EQ(days(), 59u);
}

TEST_F(TKTenureTotalsTest, WithFullDurationTheWholeLettingIsChargedWhateverTodayIs) {
    tenure->setEndDate(onDay(2025, 6, 30));
    tenure->setChargeFullDuration(Number(true));
    tenure->setAdvancePeriod(Number(1u));
    tenure->setAdvanceBillingCycle(Number(30u));
    for (const Date today : {onDay(2024, 1, 1), onDay(2025, 2, 16), onDay(2031, 1, 1)}) {
        tenure->setCurrentDate(today);
        EXPECT_EQ(days(), 180u);
    }
    tenure->setCurrentDate({});
    EXPECT_EQ(days(), 180u);
}

TEST_F(TKTenureTotalsTest, WithFullDurationAndNoEndChargingRunsToTodayWithoutTheAdvance) {
    tenure->setChargeFullDuration(Number(true));
    tenure->setAdvancePeriod(Number(1u));
    tenure->setAdvanceBillingCycle(Number(30u));
    EXPECT_EQ(days(), 46u);
}

TEST_F(TKTenureTotalsTest, AStartLaterThanTodayHasNoChargeableDays) {
    tenure->setStartDate(onDay(2025, 3, 1));
    EXPECT_EQ(days(), 0u);
}

TEST_F(TKTenureTotalsTest, AnAdvanceReachesALettingThatIsAboutToBegin) {
    tenure->setStartDate(onDay(2025, 3, 1));
    tenure->setAdvancePeriod(Number(1u));
    tenure->setAdvanceBillingCycle(Number(30u));
    // Of the 28 days to 16 March, the 15 from the start on.
    EXPECT_EQ(days(), 15u);
    tenure->setStartDate(onDay(2025, 4, 1));
    EXPECT_EQ(days(), 0u);
}

TEST_F(TKTenureTotalsTest, TimesOfDayDoNotCountInDays) {
    tenure->setStartDate(onDay(2025, 1, 1, 23, 59, 59));
    tenure->setCurrentDate(onDay(2025, 2, 16, 0, 0, 1));
    EXPECT_EQ(days(), 46u);
}

TEST_F(TKTenureTotalsTest, OnTheFirstDayNothingIsCharged) {
    tenure->setCurrentDate(onDay(2025, 1, 1, 18));
    EXPECT_EQ(days(), 0u);
    EXPECT_EQ(tenure->totalCost(), Decimal::zero());
}

TEST_F(TKTenureTotalsTest, WithoutAStartNothingIsCharged) {
    tenure->setStartDate({});
    tenure->setEndDate(onDay(2025, 6, 30));
    tenure->setAdvancePeriod(Number(1u));
    tenure->setAdvanceBillingCycle(Number(30u));
    EXPECT_EQ(days(), 0u);
    EXPECT_EQ(tenure->chargablePeriods(), Decimal::zero());
    EXPECT_EQ(tenure->totalCost(), Decimal::zero());
    EXPECT_EQ(tenure->maximumChargableDays()->integerValue(), 0);
}

TEST_F(TKTenureTotalsTest, WithoutACurrentDateAnOpenLettingIsNotCharged) {
    tenure->setCurrentDate({});
    EXPECT_EQ(days(), 0u);
    tenure->setAdvancePeriod(Number(1u));
    tenure->setAdvanceBillingCycle(Number(30u));
    EXPECT_EQ(days(), 0u);
}

TEST_F(TKTenureTotalsTest, AnEndBeforeTheStartIsChargedNothing) {
    tenure->setEndDate(onDay(2024, 12, 1));
    tenure->setChargeFullDuration(Number(true));
    EXPECT_EQ(days(), 0u);
    EXPECT_EQ(tenure->maximumChargableDays()->integerValue(), 0);
}

TEST_F(TKTenureTotalsTest, TheDayTheEndFallsOnIsNeverCharged) {
    tenure->setStartDate(onDay(2024, 3, 1));
    tenure->setEndDate(onDay(2024, 8, 31));
    EXPECT_EQ(tenure->maximumChargableDays()->integerValue(), 183);
    EXPECT_EQ(tenure->maximumChargableDays()->kind(), Number::Kind::Signed);
}

TEST_F(TKTenureTotalsTest, DaysAreCountedByTheHost) {
    const HostOperationsGuard guard;
    hostOperations().daysUntil = [](Date, Date) { return std::uint64_t{7}; };
    EXPECT_EQ(days(), 7u);
    EXPECT_EQ(tenure->numberOfDays()->unsignedIntegerValue(), 7u);
}

TEST_F(TKTenureTotalsTest, AHostsNegativeCountsCountAsVeryLargeSoThatTheOthersWin) {
    const HostOperationsGuard guard;
    hostOperations().daysUntil = [](Date from, Date to) {
        return static_cast<std::uint64_t>(Calendar::current().civilDay(to) -
                                          Calendar::current().civilDay(from));
    };
    tenure->setStartDate(onDay(2025, 4, 1));
    tenure->setAdvancePeriod(Number(1u));
    tenure->setAdvanceBillingCycle(Number(30u));
    tenure->setEndDate(onDay(2025, 4, 11));
    // The start lies behind 16 March, so the count from it wraps and the 28 days from today win; the cap is 10.
    EXPECT_EQ(days(), 10u);
}

// Chargeable periods

TEST_F(TKTenureTotalsTest, PeriodsAreRoundedByTheChargeBehaviour) {
    const Decimal unrounded = Decimal(1) + Decimal(15) / 28;
    EXPECT_EQ(tenure->chargablePeriods(), Decimal(1)) << "absent reads as start";
    tenure->setChargeBehaviour(Number(0));
    EXPECT_EQ(tenure->chargablePeriods(), Decimal(1));
    tenure->setChargeBehaviour(Number(1));
    EXPECT_EQ(tenure->chargablePeriods(), unrounded);
    tenure->setChargeBehaviour(Number(2));
    EXPECT_EQ(tenure->chargablePeriods(), Decimal(2));
    tenure->setChargeBehaviour(Number(3));
    EXPECT_EQ(tenure->chargablePeriods(), unrounded);
}

TEST_F(TKTenureTotalsTest, WholePeriodsAreTheSameUnderEveryBehaviour) {
    tenure->setCurrentDate(onDay(2025, 3, 1));
    for (int behaviour = 0; behaviour < 4; ++behaviour) {
        tenure->setChargeBehaviour(Number(behaviour));
        EXPECT_EQ(tenure->chargablePeriods(), Decimal(2)) << behaviour;
    }
}

TEST_F(TKTenureTotalsTest, WithoutAPeriodOrAnAmountThereAreNoPeriodsAndNoCost) {
    tenure->setRentalPeriod({});
    EXPECT_EQ(tenure->chargablePeriods(), Decimal::zero());
    EXPECT_EQ(tenure->totalCost(), Decimal::zero());
    tenure->setRentalPeriod(Number(1u));
    tenure->setRentalAmount({});
    EXPECT_EQ(tenure->chargablePeriods(), Decimal::zero());
    EXPECT_EQ(tenure->totalCost(), Decimal::zero());
    EXPECT_EQ(tenure->balance(), Decimal::zero());
}

TEST_F(TKTenureTotalsTest, APeriodOfZeroRaises) {
    EXPECT_THROW(tenure->setRentalPeriod(Number(0u)), DivideByZeroException);
    EXPECT_THROW((void)tenure->chargablePeriods(), DivideByZeroException);
    EXPECT_THROW((void)tenure->totalCost(), DivideByZeroException);
    EXPECT_THROW((void)tenure->balance(), DivideByZeroException);
    EXPECT_THROW((void)tenure->isBalanced(), DivideByZeroException);
    EXPECT_THROW((void)tenure->numberOfPeriods(), DivideByZeroException);
    EXPECT_EQ(days(), 46u) << "days need no period";
}

TEST_F(TKTenureTotalsTest, AnUnknownCycleRaises) {
    for (const std::optional<Number>& cycle : {std::optional<Number>(Number(2u)), std::optional<Number>()}) {
        EXPECT_THROW(tenure->setRentalBillingCycle(cycle), DivideByZeroException);
        EXPECT_THROW((void)tenure->chargablePeriods(), DivideByZeroException);
        EXPECT_THROW((void)tenure->numberOfPeriods(), DivideByZeroException);
        EXPECT_EQ(tenure->numberOfDays()->unsignedIntegerValue(), 46u);
    }
}

// The length of the letting

TEST_F(TKTenureTotalsTest, TheNumberOfDaysRunsToTheEndOrToToday) {
    EXPECT_EQ(tenure->numberOfDays()->unsignedIntegerValue(), 46u);
    EXPECT_EQ(tenure->numberOfDays()->kind(), Number::Kind::Unsigned);
    tenure->setEndDate(onDay(2025, 12, 31));
    EXPECT_EQ(tenure->numberOfDays()->unsignedIntegerValue(), 364u);
    tenure->setEndDate(onDay(2024, 12, 31));
    EXPECT_EQ(tenure->numberOfDays()->unsignedIntegerValue(), 0u);
    tenure->setStartDate({});
    EXPECT_FALSE(tenure->numberOfDays());
    EXPECT_FALSE(tenure->numberOfPeriods());
    EXPECT_TRUE(tenure->valueForKey("numberOfDays").isAbsent());
    EXPECT_TRUE(tenure->valueForKey("numberOfPeriods").isAbsent());
}

TEST_F(TKTenureTotalsTest, SettingTheDaysMovesTheEndAndKeepsTheStartsTimeOfDay) {
    tenure->setStartDate(onDay(2025, 3, 29, 10, 30));
    tenure->setNumberOfDays(Number(2u)); // past the night of 30 March that has an hour less
    EXPECT_EQ(tenure->endDate(), onDay(2025, 3, 31, 10, 30));
    EXPECT_EQ(tenure->numberOfDays()->unsignedIntegerValue(), 2u);
}

TEST_F(TKTenureTotalsTest, NegativeAndAbsentDaysAreSetAsTheyStand) {
    tenure->setNumberOfDays(Number(-1));
    EXPECT_EQ(tenure->endDate(), onDay(2024, 12, 31));
    tenure->setNumberOfDays({});
    EXPECT_EQ(tenure->endDate(), onDay(2025, 1, 1));
    tenure->setStartDate({});
    tenure->setNumberOfDays(Number(5));
    EXPECT_FALSE(tenure->endDate());
}

TEST_F(TKTenureTotalsTest, DaysThatLeaveTheYearsOfBooksRaiseAndLeaveTheEndAsItIs) {
    const auto end = tenure->endDate();
    for (const std::int64_t days : {std::int64_t{100'000'000}, std::int64_t{10'000'000'000},
                                    std::numeric_limits<std::int64_t>::max() - 1, std::int64_t{-1'000'000}})
        EXPECT_THROW(tenure->setNumberOfDays(Number(days)), OverflowException) << days;
    EXPECT_EQ(tenure->endDate(), end);
}

TEST_F(TKTenureTotalsTest, SettingOneAndAHalfMonthsFromNewYearEndsOnTheFifteenthOfFebruary) {
    tenure->setStartDate(onDay(2025, 1, 1, 10));
    tenure->setNumberOfPeriods(Number(decimal("1.5")));
    EXPECT_EQ(tenure->endDate(), onDay(2025, 2, 15, 10));
    EXPECT_EQ(tenure->numberOfDays()->unsignedIntegerValue(), 45u);
    EXPECT_EQ(tenure->numberOfPeriods(), decimal("1.5"));
}

TEST_F(TKTenureTotalsTest, APartOfADayCountsAsAWholeDay) {
    tenure->setNumberOfPeriods(Number(decimal("0.01"))); // 0.31 days
    EXPECT_EQ(tenure->numberOfDays()->unsignedIntegerValue(), 1u);
}

TEST_F(TKTenureTotalsTest, SettingNoPeriodsEndsTheLettingAtItsStart) {
    tenure->setNumberOfPeriods({});
    EXPECT_EQ(tenure->endDate(), tenure->startDate());
}

TEST_F(TKTenureTotalsTest, TheNumberOfPeriodsIsNeverRounded) {
    tenure->setChargeBehaviour(Number(2));
    EXPECT_EQ(tenure->numberOfPeriods(), Decimal(1) + Decimal(15) / 28);
    tenure->setRentalPeriod({});
    EXPECT_FALSE(tenure->numberOfPeriods());
}

TEST_F(TKTenureTotalsTest, DaysAndPeriodsAreSetByKeyToo) {
    tenure->setValueForKey(Value(10), "numberOfDays");
    EXPECT_EQ(tenure->endDate(), onDay(2025, 1, 11));
    tenure->setValueForKey(Value(decimal("2")), "numberOfPeriods");
    EXPECT_EQ(tenure->endDate(), onDay(2025, 3, 1));
    tenure->setValueForKey(Value(), "numberOfPeriods");
    EXPECT_EQ(tenure->endDate(), onDay(2025, 1, 1));
}

// Totals

TEST_F(TKTenureTotalsTest, TheCostIsThePeriodsTimesTheRentNegatedAndUnrounded) {
    EXPECT_EQ(tenure->totalCost(), Decimal(-1000));
    tenure->setChargeBehaviour(Number(2));
    EXPECT_EQ(tenure->totalCost(), Decimal(-2000));
    tenure->setChargeBehaviour(Number(1));
    const Decimal cost = tenure->totalCost();
    EXPECT_EQ(cost, -(Decimal(1000) * (Decimal(1) + Decimal(15) / 28)));
    EXPECT_TRUE(cost.toString().starts_with("-1535.71428571428571428571428571428")) << cost;
}

TEST_F(TKTenureTotalsTest, OfAPartialChargeTheBalanceIsRoundedToTheCurrency) {
    tenure->setChargeBehaviour(Number(1));
    const auto balanceIn = [&](const char* code) {
        tenure->setCurrencyCode(code ? text(code) : nullptr);
        return tenure->balance();
    };
    EXPECT_EQ(balanceIn("USD"), decimal("-1535.71"));
    EXPECT_EQ(balanceIn("JPY"), Decimal(-1536));
    EXPECT_EQ(balanceIn("KWD"), decimal("-1535.714"));
    EXPECT_EQ(balanceIn("XQZ"), decimal("-1535.71")) << "an unknown code counts as one of two digits";
    EXPECT_EQ(balanceIn(nullptr), decimal("-1535.71")) << "and so does none";
}

TEST_F(TKTenureTotalsTest, HalvesAreRoundedAwayFromZero) {
    tenure->setChargeBehaviour(Number(1));
    tenure->setRentalAmount(decimal("0.01"));
    tenure->setCurrentDate(onDay(2025, 2, 15)); // 1.5 periods
    tenure->setCurrencyCode(text("EUR"));
    EXPECT_EQ(tenure->totalCost(), decimal("-0.015"));
    EXPECT_EQ(tenure->balance(), decimal("-0.02"));
}

TEST_F(TKTenureTotalsTest, OtherBehavioursDoNotRoundTheBalance) {
    book.record(*tenure, decimal("0.001"));
    for (const int behaviour : {0, 2, 3}) {
        tenure->setChargeBehaviour(Number(behaviour));
        EXPECT_EQ(tenure->balance(), tenure->totalCost() + decimal("0.001")) << behaviour;
    }
}

TEST_F(TKTenureTotalsTest, TheHostMayRoundCurrenciesItsOwnWay) {
    const HostOperationsGuard guard;
    hostOperations().currencyRoundingBehaviourForCurrencyCode = [](const Ref<String>& code) {
        EXPECT_EQ(bookkit::shownText(code), "EUR");
        return DecimalBehavior{.mode = RoundingMode::Up, .scale = -2};
    };
    tenure->setChargeBehaviour(Number(1));
    tenure->setCurrencyCode(text("EUR"));
    EXPECT_EQ(tenure->balance(), Decimal(-1500));
}

TEST_F(TKTenureTotalsTest, ABondAloneIsAnAdjustment) {
    tenure->setBondAmount(Decimal(500));
    EXPECT_EQ(tenure->totalAdjustment(), Decimal(-500));
    EXPECT_EQ(tenure->totalIncome(), Decimal::zero());
}

TEST_F(TKTenureTotalsTest, PaymentsAreIncomeAndFlaggedOnesAdjustBesideTheBond) {
    tenure->setBondAmount(Decimal(500));
    book.record(*tenure, 1000);
    book.record(*tenure, 500, {}, true);
    EXPECT_EQ(tenure->totalIncome(), Decimal(1000));
    EXPECT_EQ(tenure->totalAdjustment(), Decimal::zero());
    EXPECT_EQ(tenure->balance(), Decimal::zero());
}

TEST_F(TKTenureTotalsTest, TransactionsWithoutAnAmountCountNowhere) {
    book.record(*tenure, std::nullopt);
    book.record(*tenure, std::nullopt, {}, true);
    EXPECT_EQ(tenure->totalIncome(), Decimal::zero());
    EXPECT_EQ(tenure->totalAdjustment(), Decimal::zero());
}

TEST_F(TKTenureTotalsTest, ANegativeBondCountsInTheBalance) {
    tenure->setBondAmount(Decimal(-500));
    EXPECT_EQ(tenure->totalAdjustment(), Decimal(500));
    EXPECT_EQ(tenure->balance(), Decimal(-500));
}

TEST_F(TKTenureTotalsTest, ABalanceOfExactlyZeroIsBalanced) {
    EXPECT_FALSE(tenure->isBalanced());
    book.record(*tenure, decimal("999.99"));
    EXPECT_FALSE(tenure->isBalanced());
    book.record(*tenure, decimal("0.01"));
    EXPECT_EQ(tenure->balance(), Decimal::zero());
    EXPECT_TRUE(tenure->isBalanced());
    book.record(*tenure, 1);
    EXPECT_TRUE(tenure->isBalanced());
    EXPECT_TRUE(tenure->valueForKey("balanced").boolValue());
    EXPECT_TRUE(tenure->valueForKey("isBalanced").boolValue());
}

TEST_F(TKTenureTotalsTest, EveryDerivedValueIsReadByItsKey) {
    tenure->setEndDate(onDay(2025, 6, 30));
    EXPECT_EQ(tenure->valueForKey("maximumChargableDays").decimal(), Decimal(180));
    EXPECT_EQ(tenure->valueForKey("chargableDays").decimal(), Decimal(46));
    EXPECT_EQ(tenure->valueForKey("chargablePeriods").decimal(), Decimal(1));
    EXPECT_EQ(tenure->valueForKey("numberOfDays").decimal(), Decimal(180));
    EXPECT_TRUE(tenure->valueForKey("numberOfPeriods").decimal());
    EXPECT_EQ(tenure->valueForKey("totalCost").decimal(), Decimal(-1000));
    EXPECT_EQ(tenure->valueForKey("totalIncome").decimal(), Decimal(0));
    EXPECT_EQ(tenure->valueForKey("totalAdjustment").decimal(), Decimal(0));
    EXPECT_EQ(tenure->valueForKey("balance").decimal(), Decimal(-1000));
    EXPECT_FALSE(tenure->valueForKey("balanced").boolValue());
    EXPECT_THROW(tenure->setValueForKey(Value(1), "balance"), UndefinedKeyException);
}

} // namespace
} // namespace estatebook
