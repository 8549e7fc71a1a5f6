// SPDX-License-Identifier: MIT
#include "platform/calendar/CivilDay.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <type_traits>

namespace estatebook::platform {
namespace {

static_assert(std::is_trivially_copyable_v<CivilDay>);
static_assert(CivilDay::fromYearMonthDay(1970, 1, 1).number == 0);
static_assert(CivilDay::fromYearMonthDay(1582, 10, 15).number == CivilDay::GregorianStart);

CivilDay day(std::int64_t year, int month, int day) {
    return CivilDay::fromYearMonthDay(year, month, day);
}

TEST(CivilDayTest, EveryDayOfTheGregorianYearsIsNamedAsTheStandardLibraryNamesIt) {
    const CivilDay last = day(10100, 12, 31);
    for (CivilDay each{CivilDay::GregorianStart}; each <= last; each = each + 1) {
        const std::chrono::year_month_day name{std::chrono::sys_days(std::chrono::days(each.number))};
        const YearMonthDay expected{static_cast<int>(name.year()), static_cast<int>(unsigned(name.month())),
                                    static_cast<int>(unsigned(name.day()))};
        ASSERT_EQ(each.yearMonthDay(), expected) << each.number;
        ASSERT_EQ(day(expected.year, expected.month, expected.day), each);
        ASSERT_EQ(each.weekday(),
                  static_cast<int>(std::chrono::weekday(std::chrono::sys_days(name)).c_encoding()) + 1);
    }
}

TEST(CivilDayTest, EveryDayOfTheJulianYearsFollowsTheOneBefore) {
    YearMonthDay name = day(-5000, 1, 1).yearMonthDay();
    EXPECT_EQ(name, (YearMonthDay{-5000, 1, 1}));
    for (CivilDay each = day(-5000, 1, 1); each.number < CivilDay::GregorianStart; each = each + 1) {
        ASSERT_EQ(each.yearMonthDay(), name) << each.number;
        ASSERT_EQ(day(name.year, name.month, name.day), each);
        if (++name.day > CivilDay::lengthOfMonth(name.year, name.month)) {
            name.day = 1;
            if (++name.month > 12) name = {name.year + 1, 1, 1};
        }
    }
    EXPECT_EQ(name, (YearMonthDay{1582, 10, 5}));
}

TEST(CivilDayTest, TheDayBeforeTheFifteenthOfOctober1582IsTheFourth) {
    EXPECT_EQ((day(1582, 10, 15) - 1).yearMonthDay(), (YearMonthDay{1582, 10, 4}));
    EXPECT_EQ(day(1582, 10, 15).weekday(), 6);
    EXPECT_EQ(day(1582, 10, 4).weekday(), 5);
}

TEST(CivilDayTest, ADayThatTheChangeOfCalendarLeftOutIsReadAsJulian) {
    EXPECT_EQ(day(1582, 10, 10), day(1582, 10, 20));
    EXPECT_FALSE(CivilDay::ifExists(1582, 10, 5));
    EXPECT_FALSE(CivilDay::ifExists(1582, 10, 14));
    EXPECT_TRUE(CivilDay::ifExists(1582, 10, 4));
    EXPECT_TRUE(CivilDay::ifExists(1582, 10, 15));
}

TEST(CivilDayTest, TheYear1500WasALeapYearAnd1900WasNot) {
    EXPECT_TRUE(CivilDay::ifExists(1500, 2, 29));
    EXPECT_FALSE(CivilDay::ifExists(1900, 2, 29));
    EXPECT_TRUE(CivilDay::ifExists(2000, 2, 29));
}

TEST(CivilDayTest, DaysThatNoLeafBearsDoNotExist) {
    for (const auto& [year, month, number] : {YearMonthDay{2025, 2, 29},
                                              {2025, 4, 31},
                                              {2025, 0, 1},
                                              {2025, 13, 1},
                                              {2025, 1, 0},
                                              {2025, 1, 32},
                                              {2025, -1, -1}}) {
        EXPECT_FALSE(CivilDay::ifExists(year, month, number)) << year << ' ' << month << ' ' << number;
    }
    EXPECT_FALSE(CivilDay::ifExists(std::int64_t{1} << 60, 1, 1));
    EXPECT_EQ(CivilDay::ifExists(9999, 12, 31)->number, 2932896);
}

TEST(CivilDayTest, ADayPastTheMonthsEndRunsOn) {
    EXPECT_EQ(day(2025, 2, 30), day(2025, 3, 2));
    EXPECT_EQ(day(2025, 1, 0), day(2024, 12, 31));
}

TEST(CivilDayTest, AddingMonthsKeepsTheDayAndClampsItToTheMonthsLast) {
    EXPECT_EQ(day(2025, 1, 31).byAddingMonths(1), day(2025, 2, 28));
    EXPECT_EQ(day(2024, 1, 31).byAddingMonths(1), day(2024, 2, 29));
    EXPECT_EQ(day(2025, 1, 31).byAddingMonths(2), day(2025, 3, 31));
    EXPECT_EQ(day(2025, 3, 31).byAddingMonths(-1), day(2025, 2, 28));
    EXPECT_EQ(day(2025, 3, 31).byAddingMonths(-4), day(2024, 11, 30));
    EXPECT_EQ(day(2024, 2, 29).byAddingMonths(12), day(2025, 2, 28));
    EXPECT_EQ(day(2024, 2, 29).byAddingMonths(48), day(2028, 2, 29));
    EXPECT_EQ(day(2025, 12, 15).byAddingMonths(1), day(2026, 1, 15));
    EXPECT_EQ(day(1, 1, 31).byAddingMonths(-1), day(0, 12, 31));
}

TEST(CivilDayTest, FarDaysKeepTheirNames) {
    for (const std::int64_t year : {-35'000'000, -1'000'000, -1, 0, 1, 20'000, 35'000'000}) {
        for (const int month : {1, 2, 3, 12}) {
            EXPECT_EQ(day(year, month, 28).yearMonthDay(), (YearMonthDay{year, month, 28}));
        }
    }
}

} // namespace
} // namespace estatebook::platform
