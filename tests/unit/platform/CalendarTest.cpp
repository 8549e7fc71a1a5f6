// SPDX-License-Identifier: MIT
#include "platform/calendar/Calendar.hpp"

#include "platform/calendar/CalendarSteps.hpp"
#include "support/Dates.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>

namespace estatebook::platform {
namespace {

using testkit::calendarOf;
using testkit::shown;
using testkit::utcDate;
using testkit::wallDate;

static_assert(std::is_trivially_copyable_v<Calendar> && sizeof(Calendar) == sizeof(void*));

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t TwoTo31 = std::int64_t{1} << 31;

const Calendar& utc() {
    static const Calendar calendar(TimeZone::utc());
    return calendar;
}

std::string added(const Calendar& calendar, const DateComponents& amount, Date date) {
    return shown(calendar, calendar.dateByAddingComponentsToDate(amount, date));
}

// Adding

TEST(CalendarAdditionTest, MonthsAndYearsKeepTheDayAndClampItToTheMonthsLast) {
    struct Row {
        Date from;
        DateComponents amount;
        const char* to;
    };
    const Row rows[] = {
        {utcDate(2025, 1, 31), {.month = 1}, "2025-02-28 00:00:00"},
        {utcDate(2024, 1, 31), {.month = 1}, "2024-02-29 00:00:00"},
        {utcDate(2025, 1, 31), {.month = 2}, "2025-03-31 00:00:00"},
        {utcDate(2025, 1, 31), {.month = 3}, "2025-04-30 00:00:00"},
        {utcDate(2024, 2, 29), {.year = 1}, "2025-02-28 00:00:00"},
        {utcDate(2024, 2, 29), {.year = 4}, "2028-02-29 00:00:00"},
        {utcDate(2025, 3, 31), {.month = -1}, "2025-02-28 00:00:00"},
        {utcDate(2024, 3, 31), {.month = -1}, "2024-02-29 00:00:00"},
        {utcDate(2024, 2, 29, 10, 30), {.year = -1}, "2023-02-28 10:30:00"},
        {utcDate(2025, 12, 31, 23, 59, 59), {.month = 2}, "2026-02-28 23:59:59"},
    };
    for (const Row& row : rows) EXPECT_EQ(added(utc(), row.amount, row.from), row.to);
}

TEST(CalendarAdditionTest, UnitsAreAppliedLargestFirst) {
    EXPECT_EQ(added(utc(), {.month = 1, .day = 1}, utcDate(2025, 1, 31)), "2025-03-01 00:00:00");
    EXPECT_EQ(added(utc(), {.year = 1, .month = 1}, utcDate(2024, 2, 29)), "2025-03-28 00:00:00");
    EXPECT_EQ(
        added(utc(), {.weekOfYear = 1, .day = -7, .hour = 1, .minute = 1, .second = 1}, utcDate(2025, 1, 1)),
        "2025-01-01 01:01:01");
}

TEST(CalendarAdditionTest, DaysAndWeeksKeepTheWallClockOverAChangeOfOffset) {
    const Calendar berlin = calendarOf("Europe/Berlin");
    const Date beforeSpring = wallDate(berlin, 2025, 3, 29, 10);
    const Date beforeAutumn = wallDate(berlin, 2025, 10, 25, 10);
    EXPECT_EQ(added(berlin, {.day = 1}, beforeSpring), "2025-03-30 10:00:00");
    EXPECT_EQ(berlin.dateByAdding(CalendarUnit::Day, 1, beforeSpring)->secondsSinceReferenceDate,
              beforeSpring.secondsSinceReferenceDate + 23 * 3600);
    EXPECT_EQ(berlin.dateByAdding(CalendarUnit::Day, 1, beforeAutumn)->secondsSinceReferenceDate,
              beforeAutumn.secondsSinceReferenceDate + 25 * 3600);
    EXPECT_EQ(added(berlin, {.weekOfYear = 1}, beforeSpring), "2025-04-05 10:00:00");
    EXPECT_EQ(added(berlin, {.day = 7}, beforeSpring), "2025-04-05 10:00:00");
    EXPECT_EQ(added(berlin, {.day = -1}, wallDate(berlin, 2025, 3, 31, 10)), "2025-03-30 10:00:00");
}

TEST(CalendarAdditionTest, HoursAreElapsedTime) {
    const Calendar berlin = calendarOf("Europe/Berlin");
    EXPECT_EQ(added(berlin, {.hour = 24}, wallDate(berlin, 2025, 3, 29, 10)), "2025-03-30 11:00:00");
}

TEST(CalendarAdditionTest, AMissingWallTimeIsMovedForwardByTheLengthOfTheGap) {
    const Calendar berlin = calendarOf("Europe/Berlin");
    EXPECT_EQ(added(berlin, {.day = 1}, wallDate(berlin, 2025, 3, 29, 2, 30)), "2025-03-30 03:30:00");
    EXPECT_EQ(added(berlin, {.month = 1}, wallDate(berlin, 2025, 2, 28, 2, 30)), "2025-03-28 02:30:00");
    EXPECT_EQ(added(berlin, {.month = 1}, wallDate(berlin, 2024, 2, 29, 2, 30)), "2024-03-29 02:30:00");
    EXPECT_EQ(added(berlin, {.year = 1}, wallDate(berlin, 2024, 3, 30, 2, 30)), "2025-03-30 03:30:00");
    EXPECT_EQ(added(berlin, {.day = -1}, wallDate(berlin, 2025, 3, 31, 2, 30)), "2025-03-30 03:30:00");
    const Calendar saoPaulo = calendarOf("America/Sao_Paulo");
    EXPECT_EQ(added(saoPaulo, {.day = 1}, wallDate(saoPaulo, 2017, 10, 14)), "2017-10-15 01:00:00");
    EXPECT_EQ(added(saoPaulo, {.month = 1}, wallDate(saoPaulo, 2018, 10, 4)), "2018-11-04 01:00:00");
}

TEST(CalendarAdditionTest, OfTwoInstantsAStepForwardTakesTheFirst) {
    const Calendar berlin = calendarOf("Europe/Berlin");
    const Date first = utcDate(2025, 10, 26, 0, 30);
    EXPECT_EQ(berlin.dateByAdding(CalendarUnit::Day, 1, wallDate(berlin, 2025, 10, 25, 2, 30)), first);
    EXPECT_EQ(berlin.dateByAdding(CalendarUnit::WeekOfYear, 1, wallDate(berlin, 2025, 10, 19, 2, 30)), first);
    EXPECT_EQ(berlin.dateByAdding(CalendarUnit::Month, 1, wallDate(berlin, 2025, 9, 26, 2, 30)), first);
    EXPECT_EQ(berlin.dateByAdding(CalendarUnit::Year, 1, wallDate(berlin, 2024, 10, 26, 2, 30)), first);
}

TEST(CalendarAdditionTest, OfTwoInstantsAStepBackMayTakeTheSecond) {
    const Calendar berlin = calendarOf("Europe/Berlin");
    const Date second = utcDate(2025, 10, 26, 1, 30);
    EXPECT_EQ(berlin.dateByAdding(CalendarUnit::Day, -1, wallDate(berlin, 2025, 10, 27, 2, 30)), second);
    EXPECT_EQ(berlin.dateByAdding(CalendarUnit::Month, -1, wallDate(berlin, 2025, 11, 26, 2, 30)), second);
}

TEST(CalendarAdditionTest, ADayThatWasLeftOutIsSteppedOver) {
    const Calendar apia = calendarOf("Pacific/Apia");
    EXPECT_EQ(added(apia, {.day = 1}, wallDate(apia, 2011, 12, 29)), "2011-12-31 00:00:00");
    EXPECT_EQ(added(apia, {.day = 1}, wallDate(apia, 2011, 12, 29, 10)), "2011-12-31 10:00:00");
    EXPECT_EQ(added(apia, {.day = 2}, wallDate(apia, 2011, 12, 29)), "2011-12-31 00:00:00");
    EXPECT_EQ(added(apia, {.month = 1}, wallDate(apia, 2011, 11, 30)), "2011-12-31 00:00:00");
}

TEST(CalendarAdditionTest, ADayThatWasLeftOutCountsSoThatWeekdaysStayInStep) {
    const Calendar apia = calendarOf("Pacific/Apia");
    EXPECT_EQ(added(apia, {.weekOfYear = 1}, wallDate(apia, 2011, 12, 25)), "2012-01-01 00:00:00");
    EXPECT_EQ(added(apia, {.weekOfYear = -1}, wallDate(apia, 2012, 1, 1)), "2011-12-25 00:00:00");
    EXPECT_EQ(apia.daysFromTo(wallDate(apia, 2011, 12, 25), wallDate(apia, 2012, 1, 1)), 7u);
}

TEST(CalendarAdditionTest, TheFractionOfTheSecondStays) {
    const Date date{100.75};
    EXPECT_EQ(utc().dateByAdding(CalendarUnit::Day, 1, date)->secondsSinceReferenceDate, 86500.75);
    EXPECT_EQ(utc().dateByAdding(CalendarUnit::Month, 1, date)->secondsSinceReferenceDate,
              31 * 86400 + 100.75);
    EXPECT_EQ(utc().dateByAdding(CalendarUnit::Day, 1, Date{-0.25})->secondsSinceReferenceDate, 86399.75);
    const double tiny = -0x1p-1000; // too small to survive a shift of epoch
    EXPECT_EQ(shown(utc(), Date{tiny}), "2000-12-31 23:59:59");
    EXPECT_EQ(utc().dateByAdding(CalendarUnit::Day, 1, Date{tiny})->secondsSinceReferenceDate, 86400.0);
}

TEST(CalendarAdditionTest, NothingToAddGivesTheSameInstant) {
    const Calendar berlin = calendarOf("Europe/Berlin");
    const Date second = utcDate(2025, 10, 26, 1, 30); // the later 02:30
    EXPECT_EQ(berlin.dateByAddingComponentsToDate({}, second), second);
    EXPECT_EQ(berlin.dateByAddingComponentsToDate({.month = 0}, second), second);
    EXPECT_EQ(berlin.dateByAddingComponentsToDate({.day = 0}, second), second);
    EXPECT_EQ(berlin.dateByAddingComponentsToDate({.day = DateComponents::Undefined}, second), second);
    EXPECT_EQ(berlin.dateByAdding(CalendarUnit::None, 5, second), second);
    EXPECT_EQ(berlin.dateByAdding(CalendarUnit::Era, 5, second), second);
}

TEST(CalendarAdditionTest, AnAbsentDateGivesAnAbsentDate) {
    EXPECT_FALSE(utc().dateByAddingComponentsToDate({.month = 1}, std::nullopt));
    EXPECT_FALSE(utc().dateByAddingComponentsToDate({}, std::nullopt));
}

TEST(CalendarAdditionTest, AmountsBeyondAllMeasureGiveNoDate) {
    const Date date = utcDate(2025, 1, 1);
    for (const std::int64_t amount :
         {TwoTo31 + 1, -TwoTo31 - 1, std::int64_t{1} << 62, std::numeric_limits<std::int64_t>::min(),
          DateComponents::Undefined - 1}) {
        for (const CalendarUnit unit :
             {CalendarUnit::Year, CalendarUnit::Month, CalendarUnit::WeekOfYear, CalendarUnit::Day})
            EXPECT_FALSE(utc().dateByAdding(unit, amount, date)) << amount;
    }
    EXPECT_FALSE(utc().dateByAdding(CalendarUnit::Second, std::numeric_limits<std::int64_t>::min(), date));
    EXPECT_FALSE(utc().dateByAdding(CalendarUnit::Hour, std::int64_t{1} << 60, date));
    EXPECT_FALSE(utc().dateByAdding(CalendarUnit::Year, TwoTo31, date)) << "farther than dates reach";
    EXPECT_TRUE(utc().dateByAdding(CalendarUnit::Day, TwoTo31, date));
    EXPECT_TRUE(utc().dateByAdding(CalendarUnit::Day, -TwoTo31, date));
}

TEST(CalendarAdditionTest, AResultOutsideTheYearsOfBooksCanBeTold) {
    EXPECT_TRUE(utc().isInBookYears(utcDate(1583, 1, 1)));
    EXPECT_TRUE(utc().isInBookYears(utcDate(9999, 12, 31, 23, 59, 59)));
    EXPECT_FALSE(utc().isInBookYears(utcDate(10000, 1, 1)));
    EXPECT_FALSE(utc().isInBookYears(utcDate(1582, 12, 31, 23, 59, 59)));
    EXPECT_FALSE(utc().isInBookYears(Date{Infinity}));
    EXPECT_FALSE(utc().isInBookYears(Date{NotANumber}));
    EXPECT_FALSE(utc().isInBookYears(*utc().dateByAdding(CalendarUnit::Year, 8000, utcDate(2025, 1, 1))));
}

TEST(CalendarAdditionTest, ADateWithoutADayIsGivenBack) {
    for (const double seconds : {Infinity, -Infinity, 1e300, -1e16}) {
        EXPECT_EQ(utc().dateByAdding(CalendarUnit::Month, 1, Date{seconds}), Date{seconds});
        EXPECT_EQ(utc().startOfDay(Date{seconds}), Date{seconds});
    }
    const auto result = utc().dateByAdding(CalendarUnit::Month, 1, Date{NotANumber});
    EXPECT_NE(result->secondsSinceReferenceDate, result->secondsSinceReferenceDate);
}

// Differences

TEST(CalendarDifferenceTest, ADifferenceIsTheLargestNumberOfUnitsThatFits) {
    struct Row {
        Date from, to;
        CalendarUnit unit;
        int count;
    };
    const Date jan31 = utcDate(2025, 1, 31), leapJan31 = utcDate(2024, 1, 31), leapDay = utcDate(2024, 2, 29);
    const auto month = CalendarUnit::Month, year = CalendarUnit::Year, week = CalendarUnit::WeekOfYear;
    const Row rows[] = {
        {jan31, utcDate(2025, 2, 27), month, 0},
        {jan31, utcDate(2025, 2, 28), month, 1},
        {jan31, utcDate(2025, 3, 1), month, 1},
        {jan31, utcDate(2025, 3, 30), month, 1},
        {jan31, utcDate(2025, 3, 31), month, 2},
        {leapJan31, utcDate(2024, 2, 28), month, 0},
        {leapJan31, utcDate(2024, 2, 29), month, 1},
        {utcDate(1996, 1, 30), utcDate(1996, 2, 29), month, 1},
        {utcDate(1996, 1, 31), utcDate(1996, 3, 1), month, 1},
        {utcDate(1996, 2, 29), utcDate(1996, 1, 31), month, 0},
        {leapDay, utcDate(2025, 2, 27), year, 0},
        {leapDay, utcDate(2025, 2, 28), year, 1},
        {leapDay, utcDate(2028, 2, 28), year, 3},
        {leapDay, utcDate(2028, 2, 29), year, 4},
        {utcDate(2025, 1, 1), utcDate(2025, 1, 7), week, 0},
        {utcDate(2025, 1, 1), utcDate(2025, 1, 8), week, 1},
        {utcDate(2025, 1, 1), utcDate(2025, 1, 8, 23), CalendarUnit::Day, 7},
        {utcDate(2025, 1, 1, 10), utcDate(2025, 1, 2, 9), CalendarUnit::Day, 0},
        {utcDate(2025, 3, 31), utcDate(2025, 2, 28), month, -1},
        {utcDate(2025, 3, 31), utcDate(2025, 3, 1), month, 0},
        {utcDate(2025, 1, 8), utcDate(2025, 1, 1), week, -1},
        {utcDate(2025, 1, 8), utcDate(2025, 1, 2), week, 0},
        {utcDate(2025, 1, 1), utcDate(2025, 1, 1), month, 0},
        {utcDate(2025, 1, 1), utcDate(2025, 1, 1, 1, 59, 59), CalendarUnit::Hour, 1},
        {utcDate(2025, 1, 1, 1, 59), utcDate(2025, 1, 1), CalendarUnit::Minute, -119},
    };
    for (const Row& row : rows) {
        const DateComponents count = utc().componentsFromDateToDate(row.unit, row.from, row.to);
        const auto found = row.unit == month                ? count.month
                           : row.unit == year               ? count.year
                           : row.unit == week               ? count.weekOfYear
                           : row.unit == CalendarUnit::Day  ? count.day
                           : row.unit == CalendarUnit::Hour ? count.hour
                                                            : count.minute;
        EXPECT_EQ(found, row.count) << shown(utc(), row.from) << " to " << shown(utc(), row.to);
    }
}

TEST(CalendarDifferenceTest, SeveralUnitsShareTheDifference) {
    const DateComponents parts = utc().componentsFromDateToDate(
        CalendarUnit::Year | CalendarUnit::Month | CalendarUnit::Day | CalendarUnit::Hour,
        utcDate(2023, 12, 30), utcDate(2025, 3, 2, 5));
    EXPECT_EQ(parts, (DateComponents{.year = 1, .month = 2, .day = 2, .hour = 5}));
}

TEST(CalendarDifferenceTest, NoUnitsGiveNoParts) {
    EXPECT_EQ(utc().componentsFromDateToDate(CalendarUnit::None, utcDate(2025, 1, 1), utcDate(2026, 1, 1)),
              DateComponents{});
    EXPECT_EQ(utc().componentsFromDateToDate(CalendarUnit::Day, Date{NotANumber}, utcDate(2026, 1, 1)),
              DateComponents{});
    EXPECT_EQ(utc().componentsFromDateToDate(CalendarUnit::Day, utcDate(2026, 1, 1), Date{Infinity}),
              DateComponents{});
}

TEST(CalendarDifferenceTest, FractionsOfASecondTakePart) {
    EXPECT_EQ(utc().componentsFromDateToDate(CalendarUnit::Second, Date{0.5}, Date{1.25}).second, 0);
    EXPECT_EQ(utc().componentsFromDateToDate(CalendarUnit::Second, Date{0.5}, Date{1.5}).second, 1);
    EXPECT_EQ(utc().componentsFromDateToDate(CalendarUnit::Second, Date{1.25}, Date{0.5}).second, 0);
    EXPECT_EQ(utc().componentsFromDateToDate(CalendarUnit::Day, Date{0.5}, Date{86400.25}).day, 0);
}

TEST(CalendarDifferenceTest, TheFarthestDatesHaveADifference) {
    const Date first{-TimeZone::FarthestSecond}, last{TimeZone::FarthestSecond};
    const auto years = utc().componentsFromDateToDate(CalendarUnit::Year, first, last).year;
    EXPECT_GT(years, 71'000'000);
    EXPECT_EQ(utc().componentsFromDateToDate(CalendarUnit::Day, first, last).day, TwoTo31);
    EXPECT_EQ(utc().componentsFromDateToDate(CalendarUnit::Day, last, first).day, -TwoTo31);
    EXPECT_EQ(utc().componentsFromDateToDate(CalendarUnit::Second, first, last).second,
              std::int64_t{1} << 51);
}

TEST(CalendarDifferenceTest, ADayWithoutMidnightIsZeroDaysBeforeTheNextByClockAndOneByDate) {
    const Calendar saoPaulo = calendarOf("America/Sao_Paulo");
    const Date start = saoPaulo.startOfDay(wallDate(saoPaulo, 2017, 10, 15, 12));
    const Date next = saoPaulo.startOfDay(wallDate(saoPaulo, 2017, 10, 16, 12));
    const Date nextMonth = saoPaulo.startOfDay(wallDate(saoPaulo, 2017, 11, 15, 12));
    EXPECT_EQ(saoPaulo.componentsFromDateToDate(CalendarUnit::Day, start, next).day, 0);
    EXPECT_EQ(saoPaulo.componentsFromDateToDate(CalendarUnit::Month, start, nextMonth).month, 0);
    EXPECT_EQ(saoPaulo.daysFromTo(start, next), 1u);
    EXPECT_EQ(saoPaulo.daysFromTo(start, nextMonth), 31u);
}

TEST(CalendarDifferenceTest, DaysAreCountedByDateAndNeverBelowZero) {
    const Calendar berlin = calendarOf("Europe/Berlin");
    EXPECT_EQ(berlin.daysFromTo(wallDate(berlin, 2025, 3, 29, 23), wallDate(berlin, 2025, 3, 30, 1)), 1u);
    EXPECT_EQ(berlin.daysFromTo(wallDate(berlin, 2025, 3, 1), wallDate(berlin, 2025, 4, 1)), 31u);
    EXPECT_EQ(berlin.daysFromTo(wallDate(berlin, 2025, 10, 1), wallDate(berlin, 2025, 11, 1)), 31u);
    EXPECT_EQ(berlin.daysFromTo(wallDate(berlin, 2025, 3, 1), wallDate(berlin, 2025, 3, 1, 23)), 0u);
    EXPECT_EQ(berlin.daysFromTo(wallDate(berlin, 2025, 3, 2), wallDate(berlin, 2025, 3, 1)), 0u);
    EXPECT_EQ(berlin.daysFromTo(wallDate(berlin, 1583, 1, 1), wallDate(berlin, 9999, 12, 31)), 3074245u);
    EXPECT_EQ(berlin.daysFromTo(Date{Infinity}, Date{-Infinity}), 0u);
    EXPECT_GT(berlin.daysFromTo(Date{-Infinity}, Date{Infinity}), 0u);
    EXPECT_EQ(berlin.daysFromTo(Date{0}, Date{NotANumber}), 0u);
}

// Splitting and building

TEST(CalendarPartsTest, EachUnitHasItsBit) {
    EXPECT_EQ(static_cast<std::uint64_t>(CalendarUnit::Era), 2u);
    EXPECT_EQ(static_cast<std::uint64_t>(CalendarUnit::Year), 4u);
    EXPECT_EQ(static_cast<std::uint64_t>(CalendarUnit::Month), 8u);
    EXPECT_EQ(static_cast<std::uint64_t>(CalendarUnit::Day), 16u);
    EXPECT_EQ(static_cast<std::uint64_t>(CalendarUnit::Hour), 32u);
    EXPECT_EQ(static_cast<std::uint64_t>(CalendarUnit::Minute), 64u);
    EXPECT_EQ(static_cast<std::uint64_t>(CalendarUnit::Second), 128u);
    EXPECT_EQ(static_cast<std::uint64_t>(CalendarUnit::Weekday), 512u);
    EXPECT_EQ(static_cast<std::uint64_t>(CalendarUnit::WeekOfYear), 8192u);
    EXPECT_EQ(static_cast<std::uint64_t>(CalendarUnit::TimeZone), 2097152u);
}

TEST(CalendarPartsTest, OnlyTheUnitsAskedForAreSplitOff) {
    const Calendar berlin = calendarOf("Europe/Berlin");
    const Date date = wallDate(berlin, 2025, 2, 28, 13, 14, 15);
    EXPECT_EQ(berlin.componentsFromDate(CalendarUnit::Year | CalendarUnit::Day, date),
              (DateComponents{.year = 2025, .day = 28}));
    EXPECT_EQ(berlin.componentsFromDate(static_cast<CalendarUnit>(~std::uint64_t{0}), date),
              (DateComponents{.era = 1,
                              .year = 2025,
                              .month = 2,
                              .weekOfYear = 9,
                              .day = 28,
                              .weekday = 6,
                              .hour = 13,
                              .minute = 14,
                              .second = 15,
                              .timeZone = berlin.timeZone()}));
    EXPECT_EQ(berlin.componentsFromDate(CalendarUnit::None, date), DateComponents{});
}

TEST(CalendarPartsTest, WeekOneHoldsTheFirstOfJanuary) {
    const auto week = [](Date date) {
        return utc().componentsFromDate(CalendarUnit::WeekOfYear, date).weekOfYear;
    };
    EXPECT_EQ(week(utcDate(2025, 1, 1)), 1);
    EXPECT_EQ(week(utcDate(2025, 1, 4)), 1);
    EXPECT_EQ(week(utcDate(2025, 1, 5)), 2);
    EXPECT_EQ(week(utcDate(2025, 12, 27)), 52);
    EXPECT_EQ(week(utcDate(2025, 12, 28)), 1);
    EXPECT_EQ(week(utcDate(2022, 12, 31)), 53);
}

TEST(CalendarPartsTest, WithoutTimePartsTheFirstInstantOfTheDayIsBuilt) {
    const Calendar berlin = calendarOf("Europe/Berlin");
    EXPECT_EQ(berlin.dateFromComponents({.era = 1, .year = 2025, .month = 1, .day = 31}),
              utcDate(2025, 1, 30, 23));
    EXPECT_EQ(shown(berlin, berlin.dateFromComponents({.year = 2025, .month = 1, .day = 31, .hour = 10})),
              "2025-01-31 10:00:00");
    EXPECT_EQ(shown(berlin, berlin.dateFromComponents({})), "0001-01-01 00:00:00");
}

TEST(CalendarPartsTest, PartsPastTheirRangeRunOn) {
    EXPECT_EQ(utc().dateFromComponents({.year = 2025, .month = 13, .day = 1}), utcDate(2026, 1, 1));
    EXPECT_EQ(utc().dateFromComponents({.year = 2025, .month = 0, .day = 1}), utcDate(2024, 12, 1));
    EXPECT_EQ(utc().dateFromComponents({.year = 2025, .month = 2, .day = 30}), utcDate(2025, 3, 2));
    EXPECT_EQ(utc().dateFromComponents({.year = 2025, .month = 1, .day = 1, .hour = 25, .minute = -1}),
              utcDate(2025, 1, 2, 0, 59));
}

TEST(CalendarPartsTest, PartsBeyondAllMeasureBuildNothing) {
    EXPECT_FALSE(utc().dateFromComponents({.year = TwoTo31 + 1}));
    EXPECT_FALSE(utc().dateFromComponents({.year = TwoTo31}));
    EXPECT_FALSE(utc().dateFromComponents({.month = std::numeric_limits<std::int64_t>::min()}));
    EXPECT_FALSE(utc().dateFromComponents({.day = -TwoTo31 - 1}));
    EXPECT_EQ(utc().dateFromComponents({.year = 2025, .month = DateComponents::Undefined}),
              utcDate(2025, 1, 1));
}

TEST(CalendarPartsTest, AZoneInsideThePartsOverridesTheCalendars) {
    const Calendar berlin = calendarOf("Europe/Berlin");
    DateComponents parts{.year = 2025, .month = 1, .day = 31};
    parts.timeZone = berlin.timeZone();
    EXPECT_EQ(berlin.dateFromComponents(parts), utcDate(2025, 1, 30, 23));
    parts.timeZone = TimeZone::named("Asia/Tokyo");
    EXPECT_EQ(berlin.dateFromComponents(parts), utcDate(2025, 1, 30, 15));
}

TEST(CalendarPartsTest, TheEraKeepsYearsBeforeChristRight) {
    const Date date = *utc().dateFromComponents({.era = 0, .year = 44, .month = 3, .day = 15});
    EXPECT_EQ(shown(utc(), date), "BC 0044-03-15 00:00:00");
    EXPECT_EQ(utc().startOfDay(Date{date.secondsSinceReferenceDate + 5000}), date);
    EXPECT_EQ(shown(utc(), utc().dateByAdding(CalendarUnit::Year, 44, date)), "0001-03-15 00:00:00");
    EXPECT_EQ(utc().componentsFromDate(CalendarUnit::Era, utcDate(2025, 1, 1)).era, 1);
}

TEST(CalendarPartsTest, TheJulianCalendarIsKeptBeforeTheFifteenthOfOctober1582) {
    const Date first = utcDate(1582, 10, 15);
    EXPECT_EQ(shown(utc(), Date{first.secondsSinceReferenceDate - 1}), "1582-10-04 23:59:59");
    EXPECT_EQ(added(utc(), {.day = -1}, first), "1582-10-04 00:00:00");
    EXPECT_EQ(added(utc(), {.year = -82, .month = -7, .day = -15}, utcDate(1582, 10, 15)),
              "1500-02-29 00:00:00");
}

TEST(CalendarPartsTest, SplittingDropsFractionsTowardsThePast) {
    EXPECT_EQ(shown(utc(), Date{0.999}), "2001-01-01 00:00:00");
    EXPECT_EQ(shown(utc(), Date{-0.001}), "2000-12-31 23:59:59");
}

TEST(CalendarPartsTest, ADateWithoutADayHasNoParts) {
    for (const double seconds : {Infinity, -Infinity, NotANumber, 1e300})
        EXPECT_EQ(shown(utc(), Date{seconds}), "no day");
}

// The start of a day

TEST(StartOfDayTest, AMissingMidnightIsOneOClock) {
    struct Row {
        const char* zone;
        int year, month, day;
    };
    for (const Row& row : {Row{"America/Sao_Paulo", 2017, 10, 15},
                           {"America/Sao_Paulo", 2018, 11, 4},
                           {"Asia/Beirut", 2024, 3, 31},
                           {"Africa/Cairo", 2010, 4, 30},
                           {"Africa/Cairo", 2023, 4, 28},
                           {"Africa/Cairo", 2024, 4, 26},
                           {"Asia/Amman", 2014, 3, 28},
                           {"America/Havana", 2018, 3, 11},
                           {"America/Havana", 2024, 3, 10}}) {
        const Calendar calendar = calendarOf(row.zone);
        const Date start = calendar.startOfDay(wallDate(calendar, row.year, row.month, row.day, 12));
        EXPECT_TRUE(shown(calendar, start).ends_with("01:00:00"))
            << row.zone << ' ' << shown(calendar, start);
        EXPECT_EQ(calendar.startOfDay(start), start) << row.zone;
        EXPECT_EQ(calendar.dateFromComponents({.year = row.year, .month = row.month, .day = row.day}), start);
        EXPECT_FALSE(calendar.instantOfWallTime(calendar.civilDay(start), 0));
    }
}

TEST(StartOfDayTest, OfTwoMidnightsTheEarlierIsTaken) {
    const Calendar havana = calendarOf("America/Havana");
    const Calendar azores = calendarOf("Atlantic/Azores");
    EXPECT_EQ(havana.startOfDay(wallDate(havana, 2018, 11, 4, 12)), utcDate(2018, 11, 4, 4));
    EXPECT_EQ(azores.startOfDay(wallDate(azores, 2018, 10, 28, 12)), utcDate(2018, 10, 28));
    EXPECT_EQ(havana.startOfDay(utcDate(2018, 11, 4, 5)), utcDate(2018, 11, 4, 4)) << "the later midnight";
    EXPECT_EQ(havana.instantOfWallTime(CivilDay::fromYearMonthDay(2018, 11, 4), 0), utcDate(2018, 11, 4, 4));
}

TEST(StartOfDayTest, AGapAroundMidnightEndsInTheDaysFirstInstant) {
    // On 30 March 1919 the clocks of Toronto went from 23:30 to 00:30 of the 31st.
    const Calendar toronto = calendarOf("America/Toronto");
    const Date start = toronto.startOfDay(wallDate(toronto, 1919, 3, 31, 12));
    EXPECT_EQ(shown(toronto, start), "1919-03-31 00:30:00");
    EXPECT_EQ(shown(toronto, Date{start.secondsSinceReferenceDate - 1}), "1919-03-30 23:29:59");
    EXPECT_EQ(toronto.startOfDay(start), start);
}

TEST(StartOfDayTest, ADayThatWasLeftOutBeginsWithTheNext) {
    const Calendar apia = calendarOf("Pacific/Apia");
    const CivilDay missing = CivilDay::fromYearMonthDay(2011, 12, 30);
    EXPECT_EQ(shown(apia, apia.startOfCivilDay(missing)), "2011-12-31 00:00:00");
    EXPECT_EQ(apia.startOfCivilDay(missing), apia.startOfCivilDay(missing + 1));
    EXPECT_FALSE(apia.instantOfWallTime(missing, 12 * 3600));
}

TEST(StartOfDayTest, AWallTimeThatDoesNotExistHasNoInstant) {
    const Calendar berlin = calendarOf("Europe/Berlin");
    const CivilDay spring = CivilDay::fromYearMonthDay(2025, 3, 30),
                   autumn = CivilDay::fromYearMonthDay(2025, 10, 26);
    EXPECT_FALSE(berlin.instantOfWallTime(spring, 2 * 3600));
    EXPECT_FALSE(berlin.instantOfWallTime(spring, 3 * 3600 - 1));
    EXPECT_EQ(berlin.instantOfWallTime(spring, 3 * 3600), utcDate(2025, 3, 30, 1));
    EXPECT_EQ(berlin.instantOfWallTime(autumn, 2 * 3600), utcDate(2025, 10, 26));
    EXPECT_EQ(berlin.instantOfWallTime(autumn, 3 * 3600), utcDate(2025, 10, 26, 2));
}

TEST(CalendarTest, TheCurrentCalendarIsASnapshot) {
    TimeZone::setDefaultTimeZone(TimeZone::named("Asia/Tokyo"));
    const Calendar calendar = Calendar::current();
    TimeZone::setDefaultTimeZone(TimeZone::named("Europe/Berlin"));
    EXPECT_EQ(calendar.timeZone()->name(), "Asia/Tokyo");
    EXPECT_EQ(Calendar::current().timeZone()->name(), "Europe/Berlin");
    EXPECT_EQ(Calendar(nullptr), Calendar::current());
    EXPECT_NE(calendar, Calendar::current());
    TimeZone::setDefaultTimeZone(nullptr);
}

// Steps

TEST(CalendarStepsTest, MonthEndsSpringBackAfterAShortMonth) {
    const Calendar berlin = calendarOf("Europe/Berlin");
    CalendarSteps steps(berlin, CalendarUnit::Month, 1, wallDate(berlin, 2025, 1, 31));
    Date date;
    for (const char* expected : {"2025-02-28 00:00:00", "2025-03-31 00:00:00", "2025-04-30 00:00:00",
                                 "2025-05-31 00:00:00", "2025-06-30 00:00:00", "2025-07-31 00:00:00"}) {
        ASSERT_TRUE(steps.next(date));
        EXPECT_EQ(shown(berlin, date), expected);
    }
}

TEST(CalendarStepsTest, StepsCountedInNoUnitOrInNoneOfThemStandStill) {
    const Date anchor{1000.5};
    for (CalendarSteps steps : {CalendarSteps(utc(), CalendarUnit::None, 1, anchor),
                                CalendarSteps(utc(), CalendarUnit::Month, 0, anchor),
                                CalendarSteps(utc(), CalendarUnit::Hour, 1, anchor)}) {
        Date date;
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(steps.next(date));
            EXPECT_EQ(date, anchor);
        }
    }
    CalendarSteps nowhere(utc(), CalendarUnit::Day, 1, Date{Infinity});
    Date date;
    ASSERT_TRUE(nowhere.next(date));
    EXPECT_EQ(date, Date{Infinity});
}

TEST(CalendarStepsTest, TheLastStepIsInTheYear9999) {
    CalendarSteps steps(utc(), CalendarUnit::Year, 1000, utcDate(2999, 12, 31));
    Date date;
    for (int year = 3999; year <= 9999; year += 1000) {
        ASSERT_TRUE(steps.next(date));
        EXPECT_EQ(date, utcDate(year, 12, 31));
    }
    EXPECT_FALSE(steps.next(date));
    EXPECT_EQ(date, utcDate(9999, 12, 31));
    CalendarSteps day(utc(), CalendarUnit::Day, 1, utcDate(9999, 12, 31));
    EXPECT_FALSE(day.next(date));
}

TEST(CalendarStepsTest, AHugeCountStepsBackAndEndsIn1583) {
    CalendarSteps steps(utc(), CalendarUnit::Year, std::uint64_t{0} - 100, utcDate(1800, 1, 1));
    Date date;
    ASSERT_TRUE(steps.next(date));
    EXPECT_EQ(date, utcDate(1700, 1, 1));
    ASSERT_TRUE(steps.next(date));
    EXPECT_EQ(date, utcDate(1600, 1, 1));
    EXPECT_FALSE(steps.next(date));
    CalendarSteps far(utc(), CalendarUnit::Day, std::uint64_t{1} << 40, utcDate(1800, 1, 1));
    EXPECT_FALSE(far.next(date));
}

} // namespace
} // namespace estatebook::platform
