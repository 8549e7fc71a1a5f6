// SPDX-License-Identifier: MIT
#pragma once

/// CivilDay: a day on the wall calendar, with no clock and no time zone. It is counted in days, so the days
/// between two of them are a subtraction, and it is named by a year, a month and a day of the month.
///
/// The calendar is Gregorian from 15 October 1582 on and Julian before: the day
/// before 15 October 1582 is 4 October 1582. The days between, which never were, are read as Julian
/// days, so that 10 October 1582 is the day also called 20 October. Year 0 is 1 BC. Books hold the years
/// 1583 to 9999 (`FirstYear`, `LastYear`); the arithmetic itself is exact for some hundred million years
/// either way.
///
///     CivilDay day = CivilDay::fromYearMonthDay(2024, 2, 29);
///     day + 1;                                         // 1 March 2024
///     (day + 366).yearMonthDay();                      // {2025, 3, 1}
///     CivilDay::ifExists(2025, 2, 29);                 // absent
///
/// The trap: adding a month is not a matter of days. `byAddingMonths` keeps the day of the month and clamps
/// it to the month's last day; two additions of one month are not one addition of two.

#include <compare>
#include <cstdint>
#include <optional>

namespace estatebook::platform {

namespace detail {
/// Division that rounds towards the past, for numbers down to -2^55. Unsigned division by a constant is
/// the cheapest there is, and months are stepped through by the thousand.
template <std::int64_t Divisor>
[[nodiscard]] constexpr std::int64_t floorOf(std::int64_t value) noexcept {
    constexpr std::int64_t Ahead = (std::int64_t{1} << 55) / Divisor;
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(value + Ahead * Divisor) / Divisor) - Ahead;
}
} // namespace detail

/// The name of a day: 29 February 2024 is {2024, 2, 29}. Year 0 is 1 BC, year -1 is 2 BC.
struct YearMonthDay {
    std::int64_t year = 1970;
    int month = 1;
    int day = 1;

    friend constexpr bool operator==(const YearMonthDay&, const YearMonthDay&) noexcept = default;
    friend constexpr auto operator<=>(const YearMonthDay&, const YearMonthDay&) noexcept = default;
};

struct CivilDay {
    /// Days since 1 January 1970.
    std::int64_t number = 0;

    /// The years that documents and programs accept.
    static constexpr std::int64_t FirstYear = 1583;
    static constexpr std::int64_t LastYear = 9999;
    /// 15 October 1582, the first Gregorian day.
    static constexpr std::int64_t GregorianStart = -141427;

    /// The day of that name. A day past the month's end runs on into the next months (30 February 2025 is
    /// 2 March). REQUIRES: a month of 1 to 12.
    [[nodiscard]] static constexpr CivilDay fromYearMonthDay(std::int64_t year, int month,
                                                             std::int64_t day) noexcept {
        // Both calendars count years from March, so that the leap day is the last of its year.
        const std::int64_t y = year - (month <= 2 ? 1 : 0);
        const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
        const std::int64_t quarters = detail::floorOf<4>(y);
        const std::int64_t centuries = detail::floorOf<100>(y);
        const std::int64_t gregorian =
            365 * y + quarters - centuries + detail::floorOf<4>(centuries) + dayOfYear - 719468;
        if (gregorian >= GregorianStart) [[likely]]
            return {gregorian};
        return {365 * y + quarters + dayOfYear - 719470};
    }

    /// The day of that name, or absent when no calendar leaf bears it (29 February 2025, month 13, and 5 to
    /// 14 October 1582).
    [[nodiscard]] static constexpr std::optional<CivilDay> ifExists(std::int64_t year, int month,
                                                                    int day) noexcept {
        if (year < -100'000'000 || year > 100'000'000 || month < 1 || month > 12) return {};
        if (day < 1 || day > lengthOfMonth(year, month)) return {};
        const CivilDay found = fromYearMonthDay(year, month, day);
        if (found.yearMonthDay() != YearMonthDay{year, month, day}) return {};
        return found;
    }

    /// Year, month and day of the month.
    [[nodiscard]] constexpr YearMonthDay yearMonthDay() const noexcept {
        if (static_cast<std::uint64_t>(number - GregorianStart) < NearDays) [[likely]]
            return nearYearMonthDay(static_cast<std::uint32_t>(number + 719468));
        return farYearMonthDay();
    }

    /// 1 for Sunday to 7 for Saturday.
    [[nodiscard]] constexpr int weekday() const noexcept {
        return static_cast<int>(number + 4 - 7 * detail::floorOf<7>(number + 4)) + 1;
    }

    /// The same day of the month that many months on (or back, below zero), or that month's last day when it
    /// is shorter. Exact while the year stays within some hundred million.
    [[nodiscard]] constexpr CivilDay byAddingMonths(std::int64_t months) const noexcept {
        const YearMonthDay from = yearMonthDay();
        return clamped(from.year * 12 + from.month - 1 + months, from.day);
    }

    /// The day of the month `monthNumber` (months since January of year 0), or that month's last.
    [[nodiscard]] static constexpr CivilDay clamped(std::int64_t monthNumber, int day) noexcept {
        const std::int64_t year = detail::floorOf<12>(monthNumber);
        const int month = static_cast<int>(monthNumber - 12 * year) + 1;
        const int last = lengthOfMonth(year, month);
        return fromYearMonthDay(year, month, day < last ? day : last);
    }

    /// Whether February of that year has 29 days.
    [[nodiscard]] static constexpr bool isLeapYear(std::int64_t year) noexcept {
        if (year > 1582) [[likely]]
            return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
        return year % 4 == 0;
    }

    /// The number of the month's last day: 28 to 31. (31 for October 1582, which had 21 days.)
    /// REQUIRES: a month of 1 to 12.
    [[nodiscard]] static constexpr int lengthOfMonth(std::int64_t year, int month) noexcept {
        if (month == 2) return isLeapYear(year) ? 29 : 28;
        return 30 + ((month + (month >> 3)) & 1);
    }

    friend constexpr CivilDay operator+(CivilDay day, std::int64_t days) noexcept {
        return {day.number + days};
    }
    friend constexpr CivilDay operator-(CivilDay day, std::int64_t days) noexcept {
        return {day.number - days};
    }
    friend constexpr std::int64_t operator-(CivilDay a, CivilDay b) noexcept { return a.number - b.number; }
    friend constexpr bool operator==(CivilDay, CivilDay) noexcept = default;
    friend constexpr auto operator<=>(CivilDay, CivilDay) noexcept = default;

private:
    /// Days from the first Gregorian day on, some 2.9 million years of them, that are split with 32 bits.
    static constexpr std::uint64_t NearDays = (std::uint64_t{1} << 30) - 1000000;

    /// Splits days since 1 March of year 0 with multiplications in place of divisions (Neri and Schneider,
    /// "Euclidean affine functions and their application to calendar algorithms", 2022).
    [[nodiscard]] static constexpr YearMonthDay nearYearMonthDay(std::uint32_t days) noexcept {
        const std::uint32_t century = (4 * days + 3) / 146097;
        const std::uint32_t quarterDay = (4 * days + 3) % 146097 | 3;
        const std::uint64_t product = std::uint64_t{2939745} * quarterDay;
        const auto yearOfCentury = static_cast<std::uint32_t>(product >> 32);
        const std::uint32_t dayOfYear = static_cast<std::uint32_t>(product) / 2939745 / 4;
        const std::uint32_t monthAndDay = 2141 * dayOfYear + 197913;
        const std::uint32_t nextYear = dayOfYear >= 306 ? 1 : 0; // January and February
        return {100 * std::int64_t{century} + yearOfCentury + nextYear,
                static_cast<int>((monthAndDay >> 16) - 12 * nextYear),
                static_cast<int>((monthAndDay & 0xFFFF) / 2141 + 1)};
    }

    [[nodiscard]] constexpr YearMonthDay farYearMonthDay() const noexcept {
        std::int64_t y;
        std::int64_t dayOfYear;
        if (number >= GregorianStart) {
            const std::int64_t shifted = number + 719468;
            const std::int64_t cycle = detail::floorOf<146097>(shifted);
            const std::int64_t dayOfCycle = shifted - cycle * 146097;
            const std::int64_t yearOfCycle =
                (dayOfCycle - dayOfCycle / 1460 + dayOfCycle / 36524 - dayOfCycle / 146096) / 365;
            y = cycle * 400 + yearOfCycle;
            dayOfYear = dayOfCycle - (365 * yearOfCycle + yearOfCycle / 4 - yearOfCycle / 100);
        } else {
            const std::int64_t shifted = number + 719470;
            const std::int64_t cycle = detail::floorOf<1461>(shifted);
            const std::int64_t dayOfCycle = shifted - cycle * 1461;
            const std::int64_t yearOfCycle = (dayOfCycle - dayOfCycle / 1460) / 365;
            y = cycle * 4 + yearOfCycle;
            dayOfYear = dayOfCycle - 365 * yearOfCycle;
        }
        const int marchMonth = static_cast<int>((5 * dayOfYear + 2) / 153);
        const int day = static_cast<int>(dayOfYear) - (153 * marchMonth + 2) / 5 + 1;
        const int month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
        return {y + (month <= 2 ? 1 : 0), month, day};
    }
};

} // namespace estatebook::platform
