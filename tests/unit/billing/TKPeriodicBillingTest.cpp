// SPDX-License-Identifier: MIT
#include "billing/TKPeriodicBilling.hpp"

#include "billing/RoundingExtensions.hpp"
#include "platform/system/HostOperations.hpp"
#include "platform/text/StringsTable.hpp"
#include "platform/values/Exception.hpp"
#include "support/Dates.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>
#include <vector>

namespace estatebook {
namespace {

using platform::Calendar;
using platform::CalendarUnit;
using platform::Date;
using platform::DateComponents;
using platform::Decimal;
using platform::DivideByZeroException;
using platform::OverflowException;
using platform::Ref;
using platform::StringsTable;
using platform::TimeZone;
using testkit::shown;
using testkit::wallDate;

constexpr std::uint64_t UnknownCycle = 2;
constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

class TKPeriodicBillingTest : public ::testing::Test {
protected:
    void SetUp() override { TimeZone::setDefaultTimeZone(TimeZone::named("Europe/Berlin")); }
    void TearDown() override { TimeZone::setDefaultTimeZone(nullptr); }

    static Ref<TKPeriodicBilling> every(std::uint64_t period, std::uint64_t cycle) {
        return TKPeriodicBilling::periodicBillingForCycleWithPeriod(cycle, period);
    }
    static Ref<TKPeriodicBilling> monthly() { return every(1, TKBillingCycleMonth); }
    static Date at(int year, int month, int day, int hour = 0, int minute = 0) {
        return wallDate(Calendar::current(), year, month, day, hour, minute);
    }
    static std::string text(std::optional<Date> date) {
        return shown(Calendar::current(), date).substr(0, 16);
    }
    /// "start | end | billing" of each period.
    static std::vector<std::string> texts(const Ref<TKPeriodRow>& row) {
        std::vector<std::string> all;
        for (const TKPeriod& each : *row)
            all.push_back(text(each.startDate()) + " | " + text(each.endDate()) + " | " +
                          text(each.billingDate()));
        return all;
    }
    static std::vector<std::string> ends(const Ref<TKPeriodRow>& row) {
        std::vector<std::string> all;
        for (const TKPeriod& each : *row) all.push_back(text(each.endDate()));
        return all;
    }
    using Texts = std::vector<std::string>;
};

// The rhythm itself

TEST_F(TKPeriodicBillingTest, ANewRhythmIsInTheCurrentCalendarAndBilledAtTheStart) {
    const auto billing = TKPeriodicBilling::initWithCycleWithPeriod(TKBillingCycleWeek, 2);
    EXPECT_EQ(billing->cycle(), 7u);
    EXPECT_EQ(billing->period(), 2u);
    EXPECT_EQ(billing->periodBillingMode(), TKPeriodBillingModeStart);
    EXPECT_EQ(billing->calendar(), Calendar::current());
    TimeZone::setDefaultTimeZone(TimeZone::named("Asia/Tokyo"));
    EXPECT_EQ(billing->calendar().timeZone()->name(), "Europe/Berlin") << "a snapshot";
}

TEST_F(TKPeriodicBillingTest, CyclesAreStoredAsTheirNominalDays) {
    EXPECT_EQ(TKBillingCycleDay, 1u);
    EXPECT_EQ(TKBillingCycleWeek, 7u);
    EXPECT_EQ(TKBillingCycleMonth, 30u);
    EXPECT_EQ(TKBillingCycleYear, 365u);
    EXPECT_EQ(TKPeriodBillingModeStart, 0u);
    EXPECT_EQ(TKPeriodBillingModeEnd, 1u);
}

TEST_F(TKPeriodicBillingTest, EachCycleHasItsCalendarUnit) {
    EXPECT_EQ(every(1, TKBillingCycleDay)->periodicCalendarUnits(), 16u);
    EXPECT_EQ(every(1, TKBillingCycleWeek)->periodicCalendarUnits(), 8192u);
    EXPECT_EQ(every(1, TKBillingCycleMonth)->periodicCalendarUnits(), 8u);
    EXPECT_EQ(every(1, TKBillingCycleYear)->periodicCalendarUnits(), 4u);
    for (const std::uint64_t cycle : {std::uint64_t{0}, UnknownCycle, std::uint64_t{31}, ~std::uint64_t{0}})
        EXPECT_EQ(every(1, cycle)->periodicCalendarUnits(), 0u) << cycle;
}

TEST_F(TKPeriodicBillingTest, AnOffsetSetsOnlyThePartOfTheCycle) {
    EXPECT_EQ(every(9, TKBillingCycleDay)->dateComponentsWithOffset(3), (DateComponents{.day = 3}));
    EXPECT_EQ(every(9, TKBillingCycleWeek)->dateComponentsWithOffset(3), (DateComponents{.weekOfYear = 3}));
    EXPECT_EQ(every(9, TKBillingCycleMonth)->dateComponentsWithOffset(3), (DateComponents{.month = 3}));
    EXPECT_EQ(every(9, TKBillingCycleYear)->dateComponentsWithOffset(0), (DateComponents{.year = 0}));
    EXPECT_EQ(every(9, UnknownCycle)->dateComponentsWithOffset(3), DateComponents{});
}

TEST_F(TKPeriodicBillingTest, TheNameOfACycleIsItsWordWhenTheProgramHasNone) {
    EXPECT_EQ(TKPeriodicBilling::periodicNameForBillingCycle(TKBillingCycleDay)->view(), "days");
    EXPECT_EQ(TKPeriodicBilling::periodicNameForBillingCycle(TKBillingCycleWeek)->view(), "weeks");
    EXPECT_EQ(TKPeriodicBilling::periodicNameForBillingCycle(TKBillingCycleMonth)->view(), "months");
    EXPECT_EQ(TKPeriodicBilling::periodicNameForBillingCycle(TKBillingCycleYear)->view(), "years");
}

TEST_F(TKPeriodicBillingTest, TheNameOfACycleIsTheProgramsTextWhenItHasOne) {
    StringsTable::install(StringsTable::fromTexts({{"weeks", "Wochen"}}));
    EXPECT_EQ(TKPeriodicBilling::periodicNameForBillingCycle(TKBillingCycleWeek)->view(), "Wochen");
    EXPECT_EQ(TKPeriodicBilling::periodicNameForBillingCycle(TKBillingCycleDay)->view(), "days");
    StringsTable::install({});
}

TEST_F(TKPeriodicBillingTest, AnUnknownCycleHasNoName) {
    EXPECT_FALSE(TKPeriodicBilling::periodicNameForBillingCycle(2));
    EXPECT_FALSE(TKPeriodicBilling::periodicNameForBillingCycle(0));
}

// Dates

TEST_F(TKPeriodicBillingTest, ZeroOffsetIsMidnightAndStaysThere) {
    const auto midnight = monthly()->dateWithZeroOffset(at(2025, 1, 15, 10, 30));
    EXPECT_EQ(text(midnight), "2025-01-15 00:00");
    EXPECT_EQ(monthly()->dateWithZeroOffset(midnight), midnight);
    EXPECT_FALSE(monthly()->dateWithZeroOffset(std::nullopt));
}

TEST_F(TKPeriodicBillingTest, ZeroOffsetOfADayWithoutMidnightIsItsFirstInstant) {
    TimeZone::setDefaultTimeZone(TimeZone::named("America/Sao_Paulo"));
    const auto first = monthly()->dateWithZeroOffset(at(2017, 10, 15, 12));
    EXPECT_EQ(text(first), "2017-10-15 01:00");
    EXPECT_EQ(monthly()->dateWithZeroOffset(first), first);
}

TEST_F(TKPeriodicBillingTest, ZeroOffsetIsReckonedInTheRhythmsOwnCalendar) {
    const auto billing = monthly();
    billing->setCalendar(testkit::calendarOf("Asia/Tokyo"));
    EXPECT_EQ(billing->dateWithZeroOffset(testkit::utcDate(2025, 1, 1, 20)),
              testkit::utcDate(2025, 1, 1, 15));
}

TEST_F(TKPeriodicBillingTest, APeriodOffsetKeepsTheHourOfTheStartDate) {
    EXPECT_EQ(
        text(every(3, TKBillingCycleMonth)->dateWithPeriodOffsetFromStartDate(2, at(2025, 1, 31, 10, 30))),
        "2025-07-31 10:30");
    EXPECT_EQ(text(every(2, TKBillingCycleWeek)->dateWithPeriodOffsetFromStartDate(1, at(2025, 3, 20, 10))),
              "2025-04-03 10:00");
    EXPECT_EQ(text(every(1, TKBillingCycleYear)->dateWithPeriodOffsetFromStartDate(1, at(2024, 2, 29))),
              "2025-02-28 00:00");
    EXPECT_FALSE(monthly()->dateWithPeriodOffsetFromStartDate(1, std::nullopt));
}

TEST_F(TKPeriodicBillingTest, AnOffsetOfNothingIsTheSameInstant) {
    const Date later = testkit::utcDate(2025, 10, 26, 1, 30); // the second 02:30 of that night
    EXPECT_EQ(monthly()->dateWithPeriodOffsetFromStartDate(0, later), later);
    EXPECT_EQ(every(0, TKBillingCycleMonth)->dateWithPeriodOffsetFromStartDate(5, later), later);
    EXPECT_EQ(every(1, UnknownCycle)->dateWithPeriodOffsetFromStartDate(5, later), later);
}

TEST_F(TKPeriodicBillingTest, AnOffsetPastTheYear9999Overflows) {
    const auto billing = monthly();
    EXPECT_THROW((void)billing->dateWithPeriodOffsetFromStartDate(100'000, at(2025, 1, 1)),
                 OverflowException);
    EXPECT_THROW((void)billing->dateWithPeriodOffsetFromStartDate(std::uint64_t{1} << 40, at(2025, 1, 1)),
                 OverflowException);
    EXPECT_EQ(text(billing->dateWithPeriodOffsetFromStartDate(7975 * 12 - 1, at(2025, 1, 1))),
              "9999-12-01 00:00");
}

TEST_F(TKPeriodicBillingTest, AProductOfCountAndPeriodWrapsAndIsReadAsSigned) {
    EXPECT_EQ(text(monthly()->dateWithPeriodOffsetFromStartDate(~std::uint64_t{0}, at(2025, 3, 31))),
              "2025-02-28 00:00");
    EXPECT_EQ(text(every(std::uint64_t{1} << 63, TKBillingCycleMonth)
                       ->dateWithPeriodOffsetFromStartDate(2, at(2025, 3, 31))),
              "2025-03-31 00:00");
    EXPECT_THROW((void)every(1, TKBillingCycleYear)
                     ->dateWithPeriodOffsetFromStartDate(std::uint64_t{0} - 500, at(2025, 1, 1)),
                 OverflowException);
}

// Days and periods

TEST_F(TKPeriodicBillingTest, NumberOfDaysGoesFromTheFirstStartToTheLastEnd) {
    const auto row = monthly()->periodsFromCount(at(2025, 1, 31), 3);
    EXPECT_EQ(TKPeriodicBilling::numberOfDays(row), 89u);
    row->back().setEndDate(at(2025, 2, 1));
    EXPECT_EQ(TKPeriodicBilling::numberOfDays(row), 1u);
    row->back().setEndDate(std::nullopt);
    EXPECT_EQ(TKPeriodicBilling::numberOfDays(row), 0u);
}

TEST_F(TKPeriodicBillingTest, NumberOfDaysOfAnEmptyRowIsZero) {
    EXPECT_EQ(TKPeriodicBilling::numberOfDays(monthly()->periodsFromCount(at(2025, 1, 1), 0)), 0u);
    EXPECT_EQ(TKPeriodicBilling::numberOfDays(nullptr), 0u);
}

TEST_F(TKPeriodicBillingTest, FortyFiveDaysFromNewYearAreOneMonthAndHalfOfFebruary) {
    EXPECT_EQ(monthly()->periodsFromDateForDays(at(2025, 1, 1), 45), Decimal::parse("1.5"));
    EXPECT_EQ(monthly()->periodsFromDateForDays(at(2025, 1, 1, 18), 45), Decimal::parse("1.5"));
    EXPECT_EQ(monthly()->periodsFromDateForDays(at(2024, 1, 1), 45),
              Decimal(1) + decimalNumberWithNumeratorDenominator(14, 29));
}

TEST_F(TKPeriodicBillingTest, TenDaysOfSevenAreAPlainQuotient) {
    EXPECT_EQ(every(7, TKBillingCycleDay)->periodsFromDateForDays(at(2025, 1, 1), 10),
              decimalNumberWithNumeratorDenominator(10, 7));
    EXPECT_EQ(every(7, TKBillingCycleDay)->periodsFromDateForDays(at(2025, 1, 1), 10).toString(),
              "1.4285714285714285714285714285714285714");
    EXPECT_EQ(every(7, TKBillingCycleDay)->periodsFromDateForDays(at(2025, 1, 1), 0), Decimal::zero());
}

TEST_F(TKPeriodicBillingTest, WholePeriodsOfSeveralCyclesAndTheShareOfTheNext) {
    EXPECT_EQ(every(2, TKBillingCycleWeek)->periodsFromDateForDays(at(2025, 1, 1), 21),
              Decimal::parse("1.5"));
    EXPECT_EQ(every(2, TKBillingCycleWeek)->periodsFromDateForDays(at(2025, 1, 1), 28), Decimal(2));
    // Two whole months are not a quarter: 59 of 90 days.
    EXPECT_EQ(every(3, TKBillingCycleMonth)->periodsFromDateForDays(at(2025, 1, 1), 59),
              decimalNumberWithNumeratorDenominator(59, 90));
    EXPECT_EQ(every(1, TKBillingCycleYear)->periodsFromDateForDays(at(2024, 1, 1), 366 + 73),
              Decimal::parse("1.2"));
}

TEST_F(TKPeriodicBillingTest, AMonthFromAMonthsEndIsWholeWhenTheShorterMonthEnds) {
    EXPECT_EQ(monthly()->periodsFromDateForDays(at(2025, 1, 31), 28), Decimal(1));
    EXPECT_EQ(monthly()->periodsFromDateForDays(at(2025, 1, 31), 27),
              decimalNumberWithNumeratorDenominator(27, 28));
    EXPECT_EQ(every(1, TKBillingCycleYear)->periodsFromDateForDays(at(2024, 2, 29), 365), Decimal(1));
}

TEST_F(TKPeriodicBillingTest, PeriodsOfAnUnknownCycleDivideByZero) {
    EXPECT_THROW((void)every(1, UnknownCycle)->periodsFromDateForDays(at(2025, 1, 1), 45),
                 DivideByZeroException);
    EXPECT_THROW((void)every(1, UnknownCycle)->periodsFromDateForDays(at(2025, 1, 1), 0),
                 DivideByZeroException);
}

TEST_F(TKPeriodicBillingTest, PeriodsOfNoCyclesDivideByZero) {
    for (const std::uint64_t cycle :
         {TKBillingCycleDay, TKBillingCycleWeek, TKBillingCycleMonth, TKBillingCycleYear})
        EXPECT_THROW((void)every(0, cycle)->periodsFromDateForDays(at(2025, 1, 1), 45),
                     DivideByZeroException);
}

TEST_F(TKPeriodicBillingTest, OneAndAHalfMonthsFromNewYearAreFortyFiveDays) {
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2025, 1, 1), Decimal::parse("1.5")), 45u);
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2025, 1, 1, 13), Decimal::parse("1.5")), 45u);
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2024, 1, 1), Decimal::parse("1.5")), 46u)
        << "14.5 days are 15";
}

TEST_F(TKPeriodicBillingTest, PartsOfADayCountAsADayAndAreTakenLiterally) {
    const Decimal twoThirds = decimalNumberWithNumeratorDenominator(2, 3);
    const Decimal third = decimalNumberWithNumeratorDenominator(1, 3);
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2025, 4, 1), third), 10u);
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2025, 4, 1), twoThirds), 20u);
    // 5/3 keeps 37 fraction digits, and 0.66…67 of 30 days is then above 20 in the 38th.
    const Decimal fiveThirds = decimalNumberWithNumeratorDenominator(5, 3);
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2025, 3, 1), fiveThirds), 31u + 21u);
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2025, 4, 1), Decimal::parse("0.0000001")), 1u);
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2025, 4, 1), Decimal(2)), 61u);
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2025, 4, 1), Decimal::zero()), 0u);
}

TEST_F(TKPeriodicBillingTest, ANumberOfPeriodsBelowZeroTakesNoDaysBack) {
    // Minus one month from 1 January runs back to 1 December: 0 days. The half month of -0.5 is the share of
    // the period from there, 31 days long.
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2025, 1, 1), Decimal(-1)), 0u);
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2025, 1, 1), Decimal::parse("-0.5")), 16u);
}

TEST_F(TKPeriodicBillingTest, ADateAfterPeriodsLiesThoseDaysOn) {
    EXPECT_EQ(text(monthly()->dateFromDateAfterPeriods(at(2025, 1, 1, 10), Decimal::parse("1.5"))),
              "2025-02-15 00:00");
    EXPECT_EQ(text(monthly()->dateFromDateAfterPeriods(at(2025, 1, 31), Decimal(1))), "2025-02-28 00:00");
    EXPECT_EQ(text(monthly()->dateFromDateAfterPeriods(at(2025, 3, 15), Decimal(1))), "2025-04-15 00:00");
    EXPECT_EQ(text(every(0, TKBillingCycleMonth)->dateFromDateAfterPeriods(at(2025, 1, 31), Decimal(9))),
              "2025-01-31 00:00");
}

TEST_F(TKPeriodicBillingTest, WithoutAStartDateThereIsNothing) {
    const auto billing = monthly();
    EXPECT_EQ(billing->daysFromDateForPeriods(std::nullopt, Decimal(1)), 0u);
    EXPECT_FALSE(billing->dateFromDateAfterPeriods(std::nullopt, Decimal(1)));
    EXPECT_EQ(billing->periodsFromDateForDays(std::nullopt, 45), Decimal::zero());
    EXPECT_TRUE(billing->periodsFromCount(std::nullopt, 3)->empty());
    EXPECT_TRUE(billing->periodsFromTo(std::nullopt, at(2025, 1, 1))->empty());
    EXPECT_TRUE(billing->periodsFromTo(at(2025, 1, 1), std::nullopt)->empty());
    EXPECT_TRUE(billing->periodsFromUntil(std::nullopt, [](Date) { return false; })->empty());
    EXPECT_EQ(billing->daysFromDateForPeriods(at(2025, 1, 1), std::nullopt), 0u);
}

TEST_F(TKPeriodicBillingTest, TheHostCountsTheDays) {
    auto& host = platform::hostOperations().daysUntil;
    const auto saved = host;
    host = [](Date, Date) { return std::uint64_t{10}; };
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2025, 1, 1), Decimal::parse("1.5")), 15u);
    EXPECT_EQ(monthly()->periodsFromDateForDays(at(2025, 1, 1), 45), Decimal(2));
    EXPECT_EQ(TKPeriodicBilling::numberOfDays(monthly()->periodsFromCount(at(2025, 1, 1), 3)), 10u);
    host = saved;
}

TEST_F(TKPeriodicBillingTest, CountsThatLeaveTheYearsOverflow) {
    const auto billing = monthly();
    EXPECT_THROW((void)billing->daysFromDateForPeriods(at(2025, 1, 1), Decimal(1'000'000)),
                 OverflowException);
    EXPECT_THROW((void)billing->dateFromDateAfterPeriods(at(2025, 1, 1), Decimal(1'000'000)),
                 OverflowException);
    EXPECT_THROW((void)billing->periodsFromDateForDays(at(2025, 1, 1), 3'000'000), OverflowException);
    EXPECT_THROW((void)billing->periodsFromDateForDays(at(2025, 1, 1), std::uint64_t{1} << 60),
                 OverflowException);
    EXPECT_THROW((void)billing->daysFromDateForPeriods(at(2025, 1, 1), Decimal::notANumber()),
                 OverflowException);
}

// Rows

TEST_F(TKPeriodicBillingTest, ThreeMonthsFromTheMiddleOfJanuary) {
    const auto billing = monthly();
    EXPECT_EQ(texts(billing->periodsFromCount(at(2025, 1, 15, 10, 30), 3)),
              (Texts{"2025-01-15 00:00 | 2025-02-15 00:00 | 2025-01-15 00:00",
                     "2025-02-15 00:00 | 2025-03-15 00:00 | 2025-02-15 00:00",
                     "2025-03-15 00:00 | 2025-04-15 00:00 | 2025-03-15 00:00"}));
    billing->setPeriodBillingMode(TKPeriodBillingModeEnd);
    EXPECT_EQ(texts(billing->periodsFromCount(at(2025, 1, 15, 10, 30), 3)),
              (Texts{"2025-01-15 00:00 | 2025-02-15 00:00 | 2025-02-15 00:00",
                     "2025-02-15 00:00 | 2025-03-15 00:00 | 2025-03-15 00:00",
                     "2025-03-15 00:00 | 2025-04-15 00:00 | 2025-04-15 00:00"}));
}

TEST_F(TKPeriodicBillingTest, AnyOtherBillingModeBillsAtTheStart) {
    const auto billing = monthly();
    billing->setPeriodBillingMode(2);
    const auto row = billing->periodsFromCount(at(2025, 1, 1), 1);
    EXPECT_EQ((*row)[0].billingDate(), (*row)[0].startDate());
}

TEST_F(TKPeriodicBillingTest, EveryPeriodOfTwoWeeksHasFourteenDays) {
    const auto row = every(2, TKBillingCycleWeek)->periodsFromCount(at(2025, 1, 1), 60);
    ASSERT_EQ(row->count(), 60u);
    for (const TKPeriod& each : *row) EXPECT_EQ(each.days(), 14u);
}

TEST_F(TKPeriodicBillingTest, MonthEndsSpringBackBecauseEachBoundaryIsCountedFromTheAnchor) {
    EXPECT_EQ(ends(monthly()->periodsFromCount(at(2025, 1, 31), 5)),
              (Texts{"2025-02-28 00:00", "2025-03-31 00:00", "2025-04-30 00:00", "2025-05-31 00:00",
                     "2025-06-30 00:00"}));
    EXPECT_EQ(ends(every(1, TKBillingCycleYear)->periodsFromCount(at(2024, 2, 29), 4)),
              (Texts{"2025-02-28 00:00", "2026-02-28 00:00", "2027-02-28 00:00", "2028-02-29 00:00"}));
}

TEST_F(TKPeriodicBillingTest, EachPeriodStartsWhereTheOneBeforeEnds) {
    const auto row = monthly()->periodsFromCount(at(2025, 1, 31), 48);
    for (std::size_t i = 1; i < row->count(); ++i) EXPECT_EQ((*row)[i].startDate(), (*row)[i - 1].endDate());
}

TEST_F(TKPeriodicBillingTest, ARowOfNoPeriodsIsEmpty) {
    const auto row = monthly()->periodsFromCount(at(2025, 1, 1), 0);
    ASSERT_TRUE(row);
    EXPECT_TRUE(row->empty());
}

TEST_F(TKPeriodicBillingTest, FromADayToTheSameDayThereIsNoPeriod) {
    EXPECT_TRUE(monthly()->periodsFromTo(at(2025, 1, 15, 8), at(2025, 1, 15, 20))->empty());
    EXPECT_TRUE(monthly()->periodsFromTo(at(2025, 1, 15, 20), at(2025, 1, 15, 8))->empty());
    EXPECT_TRUE(monthly()->periodsFromTo(at(2025, 1, 15), at(2024, 1, 15))->empty());
}

TEST_F(TKPeriodicBillingTest, FromADayToTheNextThereIsOneWholePeriodThatPassesTheEnd) {
    EXPECT_EQ(texts(monthly()->periodsFromTo(at(2025, 1, 15), at(2025, 1, 16))),
              (Texts{"2025-01-15 00:00 | 2025-02-15 00:00 | 2025-01-15 00:00"}));
}

TEST_F(TKPeriodicBillingTest, ABoundaryOnTheDayOfTheEndIsTheLast) {
    EXPECT_EQ(monthly()->periodsFromTo(at(2025, 1, 15), at(2025, 4, 15, 23))->count(), 3u);
    EXPECT_EQ(monthly()->periodsFromTo(at(2025, 1, 15), at(2025, 4, 16))->count(), 4u);
    EXPECT_EQ(every(1, TKBillingCycleDay)->periodsFromTo(at(2025, 3, 1), at(2025, 4, 1))->count(), 31u);
    EXPECT_EQ(every(1, TKBillingCycleYear)->periodsFromTo(at(2025, 3, 1), at(2035, 3, 1))->count(), 10u);
    EXPECT_EQ(every(1, TKBillingCycleMonth)->periodsFromTo(at(2025, 1, 31), at(2025, 2, 28))->count(), 1u);
}

TEST_F(TKPeriodicBillingTest, ThePredicateIsAskedWithTheAnchorFirstAndWithEachEndAfterwards) {
    std::vector<std::string> asked;
    const auto row = monthly()->periodsFromUntil(at(2025, 1, 31, 9), [&](Date date) {
        asked.push_back(text(date));
        return asked.size() == 4;
    });
    EXPECT_EQ(asked, (Texts{"2025-01-31 00:00", "2025-02-28 00:00", "2025-03-31 00:00", "2025-04-30 00:00"}));
    EXPECT_EQ(row->count(), 3u);
    EXPECT_TRUE(monthly()->periodsFromUntil(at(2025, 1, 31), [](Date) { return true; })->empty());
}

TEST_F(TKPeriodicBillingTest, WhatThePredicateThrowsIsHandedOn) {
    EXPECT_THROW((void)monthly()->periodsFromUntil(at(2025, 1, 31), [](Date) -> bool { throw 1; }), int);
}

TEST_F(TKPeriodicBillingTest, APeriodOfNothingGivesEmptyPeriods) {
    EXPECT_EQ(texts(every(0, TKBillingCycleMonth)->periodsFromCount(at(2025, 1, 31), 2)),
              (Texts{"2025-01-31 00:00 | 2025-01-31 00:00 | 2025-01-31 00:00",
                     "2025-01-31 00:00 | 2025-01-31 00:00 | 2025-01-31 00:00"}));
    EXPECT_EQ(every(1, UnknownCycle)->periodsFromCount(at(2025, 1, 31), 3)->count(), 3u);
    EXPECT_TRUE(every(0, TKBillingCycleMonth)->periodsFromTo(at(2025, 1, 31), at(2025, 1, 31))->empty());
}

TEST_F(TKPeriodicBillingTest, ARowThatWouldNeverEndOverflows) {
    EXPECT_THROW((void)every(0, TKBillingCycleMonth)->periodsFromTo(at(2025, 1, 1), at(2025, 2, 1)),
                 OverflowException);
    EXPECT_THROW((void)every(1, UnknownCycle)->periodsFromTo(at(2025, 1, 1), at(2025, 2, 1)),
                 OverflowException);
    EXPECT_THROW(
        (void)every(~std::uint64_t{0}, TKBillingCycleMonth)->periodsFromTo(at(2025, 1, 1), at(2025, 2, 1)),
        OverflowException);
    EXPECT_THROW((void)monthly()->periodsFromUntil(at(2025, 1, 1), [](Date) { return false; }),
                 OverflowException);
    EXPECT_THROW((void)monthly()->periodsFromTo(at(2025, 1, 1), Date{Infinity}), OverflowException);
    EXPECT_THROW((void)monthly()->periodsFromTo(at(2025, 1, 1), Date{NotANumber}), OverflowException);
    EXPECT_THROW((void)monthly()->periodsFromTo(Date{NotANumber}, at(2025, 1, 1)), OverflowException);
    EXPECT_THROW((void)monthly()->periodsFromTo(Date{-Infinity}, at(2025, 1, 1)), OverflowException);
    EXPECT_THROW((void)monthly()->periodsFromUntil(Date{NotANumber}, [](Date) { return false; }),
                 OverflowException);
}

TEST_F(TKPeriodicBillingTest, ACountThatLeavesTheYearsOverflowsBeforeRoomIsMade) {
    for (const std::uint64_t count : {std::uint64_t{100'000}, std::uint64_t{1} << 29, ~std::uint64_t{0}})
        EXPECT_THROW((void)monthly()->periodsFromCount(at(2025, 1, 1), count), OverflowException) << count;
    EXPECT_THROW((void)every(std::uint64_t{1} << 62, TKBillingCycleDay)->periodsFromCount(at(2025, 1, 1), 2),
                 OverflowException);
    EXPECT_THROW((void)every(std::uint64_t{0} - 500, TKBillingCycleYear)->periodsFromCount(at(2025, 1, 1), 1),
                 OverflowException);
    EXPECT_THROW((void)monthly()->periodsFromCount(Date{Infinity}, 1), OverflowException);
}

TEST_F(TKPeriodicBillingTest, ARowMayReachTheLastDayOf9999AndNoFurther) {
    EXPECT_EQ(ends(monthly()->periodsFromTo(at(9999, 9, 30), at(9999, 11, 30))),
              (Texts{"9999-10-30 00:00", "9999-11-30 00:00"}));
    EXPECT_EQ(monthly()->periodsFromCount(at(9999, 11, 30), 1)->count(), 1u);
    EXPECT_THROW((void)monthly()->periodsFromCount(at(9999, 12, 1), 1), OverflowException);
    EXPECT_THROW((void)monthly()->periodsFromTo(at(9999, 11, 15), at(9999, 12, 31)), OverflowException);
    EXPECT_THROW((void)monthly()->periodsFromUntil(at(9999, 12, 1), [](Date) { return false; }),
                 OverflowException);
}

TEST_F(TKPeriodicBillingTest, ARowMayStartBeforeTheYearsOfBooks) {
    // Nobody lets a flat in the year 25, but a date typed with two digits must not stop the program.
    const auto row = every(1, TKBillingCycleDay)->periodsFromTo(at(1582, 10, 1), at(1583, 1, 1));
    EXPECT_EQ(row->count(), 82u) << "October had 21 days";
    EXPECT_EQ(monthly()->periodsFromTo(at(1582, 10, 1), at(1583, 1, 1))->count(), 3u);
    EXPECT_EQ(monthly()->periodsFromTo(at(25, 1, 1), at(2025, 1, 1))->count(), 24'000u);
}

TEST_F(TKPeriodicBillingTest, AHugePeriodThatWrapsStepsBack) {
    EXPECT_EQ(ends(every(~std::uint64_t{0}, TKBillingCycleMonth)->periodsFromCount(at(2025, 3, 31), 2)),
              (Texts{"2025-02-28 00:00", "2025-01-31 00:00"}));
}

TEST_F(TKPeriodicBillingTest, ARowFromADayWithoutMidnightIsAnchoredAtItsFirstInstant) {
    TimeZone::setDefaultTimeZone(TimeZone::named("America/Sao_Paulo"));
    const auto row = monthly()->periodsFromTo(at(2017, 10, 15, 12), at(2017, 12, 15));
    EXPECT_EQ(ends(row), (Texts{"2017-11-15 01:00", "2017-12-15 01:00"}));
    EXPECT_EQ((*row)[0].days(), 31u);
    EXPECT_EQ(monthly()->daysFromDateForPeriods(at(2017, 10, 15, 12), Decimal::parse("0.5")), 16u);
    // And a boundary on such a day is moved to its first instant.
    EXPECT_EQ(ends(monthly()->periodsFromCount(at(2017, 9, 15), 2)),
              (Texts{"2017-10-15 01:00", "2017-11-15 00:00"}));
}

TEST_F(TKPeriodicBillingTest, PeriodsInAZoneThatLeftOutADay) {
    TimeZone::setDefaultTimeZone(TimeZone::named("Pacific/Apia"));
    EXPECT_EQ(ends(every(1, TKBillingCycleDay)->periodsFromCount(at(2011, 12, 28), 4)),
              (Texts{"2011-12-29 00:00", "2011-12-31 00:00", "2011-12-31 00:00", "2012-01-01 00:00"}));
    EXPECT_EQ(every(1, TKBillingCycleWeek)->periodsFromTo(at(2011, 12, 25), at(2012, 1, 1))->count(), 1u);
}

TEST_F(TKPeriodicBillingTest, ARowStandsInOneBlockAndItsPeriodsMayOutliveIt) {
    Ref<TKPeriod> last;
    {
        const auto row = monthly()->periodsFromCount(at(2025, 1, 1), 12);
        EXPECT_EQ(&(*row)[11] - &(*row)[0], 11);
        last = Ref<TKPeriod>(&row->back());
    }
    EXPECT_EQ(last->days(), 31u);
}

} // namespace
} // namespace estatebook
