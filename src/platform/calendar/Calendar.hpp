// SPDX-License-Identifier: MIT
#pragma once

/// Calendar: the Gregorian calendar on the walls of one time zone. It tells on what day an instant falls,
/// when a day begins, what "a month later" is, and how many whole months lie between two instants.
///
/// A calendar is a small value (it points to its zone, which lives for ever): copy it, and use it from any
/// thread. `current()` is a snapshot; it keeps its zone when the default zone is changed later.
///
///     Calendar calendar = Calendar::current();
///     Date start = calendar.startOfDay(now);
///     calendar.dateByAddingComponentsToDate({.month = 1}, start);     // 31 January: 28 or 29 February
///     calendar.daysFromTo(start, end);                                // days by date, not by 24 hours
///
/// The traps: a day need not begin at 00:00 nor last 24 hours. Days are counted by their dates
/// (`daysFromTo`); a difference in the unit day (`componentsFromDateToDate`) compares clocks as well, and
/// finds 0 days between a day that begins at 01:00 and the next one. And months do not add up: 31 January + 1
/// + 1 months is 28 March, + 2 months is 31 March. Count from one anchor (`CalendarSteps`).
///
/// Dates that are not numbers, infinite, or more than 2^50 seconds (35 million years) away have no calendar
/// day: splitting one gives no parts, adding to one gives it back, and counting takes it for the nearest date
/// that has a day (not a number: the earliest). Nothing here raises.

#include "EstateBook_ModelExport.hpp"

#include "platform/calendar/CivilDay.hpp"
#include "platform/calendar/DateComponents.hpp"
#include "platform/calendar/TimeZone.hpp"
#include "platform/values/Date.hpp"
#include "platform/values/Ref.hpp"

#include <cstdint>
#include <optional>

namespace estatebook::platform {

class ESTATEBOOK_API Calendar {
public:
    static constexpr std::int64_t SecondsPerDay = 86400;

    /// The calendar of the default zone (TimeZone::defaultTimeZone) at this moment.
    [[nodiscard]] static Calendar current();

    /// The calendar of a zone; null stands for the default zone.
    explicit Calendar(const Ref<TimeZone>& zone);

    [[nodiscard]] Ref<TimeZone> timeZone() const noexcept { return Ref<TimeZone>(zone_); }

    /// components:fromDate:
    /// Splits the date into the units of the mask; other parts stay absent. Fractions of a second are
    /// dropped towards the past. Weeks begin on Sunday and week 1 holds 1 January.
    [[nodiscard]] DateComponents componentsFromDate(CalendarUnit units, Date date) const;

    /// dateFromComponents:
    /// The instant of era, year, month, day, hour, minute and second, on the walls of the components' own
    /// zone if they have one. Absent parts: AD, year 1, January, 1, 0:00:00; week and weekday are not
    /// looked at. Parts past their range run on (month 13 is January of the next year). Without hour, minute
    /// and second the result is the first instant of the day; a wall time that does not exist is moved
    /// forward by the length of the gap; of two instants the earlier is taken. Absent when a part is beyond
    /// 2^31 either way.
    [[nodiscard]] std::optional<Date> dateFromComponents(const DateComponents& components) const;

    /// dateByAddingComponents:toDate:options:
    /// Adds the parts, largest unit first. Months and years keep the wall clock and the day of the month,
    /// clamped to the month's last; weeks and days keep the wall clock; hours, minutes and seconds are
    /// elapsed time; a weekday counts as a day; the era is not looked at. A day that a place left out (30
    /// December 2011 in Pacific/Apia) counts like any other, so that weekdays stay in step. A missing wall
    /// time is moved forward by the length of the gap; of two instants the earlier is taken (going back in
    /// time, possibly the later). The fraction of the second stays. No parts, or amounts of 0: the very same
    /// instant. Absent when an amount is beyond 2^31 either way or the result has no calendar day; the result
    /// may lie outside the years of books (`isInBookYears`). An absent date gives an absent date.
    [[nodiscard]] std::optional<Date> dateByAddingComponentsToDate(const DateComponents& components,
                                                                   std::optional<Date> date) const;

    /// One unit of the above: adds an amount of years, months, weeks, days, hours, minutes or seconds.
    [[nodiscard]] std::optional<Date> dateByAdding(CalendarUnit unit, std::int64_t amount, Date date) const;

    /// components:fromDate:toDate:options:
    /// The whole units from start to end: the largest n with start + n units not after end, the addition
    /// being the one above (31 January to 28 February is one month). For an end before the start: the n of
    /// largest magnitude, 0 or below, with start + n units not before end. Of several units in the mask
    /// each takes what the larger ones left. Units other than year, month, week, day, hour, minute and
    /// second stay absent.
    [[nodiscard]] DateComponents componentsFromDateToDate(CalendarUnit units, Date start, Date end) const;

    /// The first instant of the day on which the date falls: 00:00, the earlier 00:00 where there are two,
    /// and the first instant after the gap where midnight is missing. A date without a calendar day is given
    /// back.
    [[nodiscard]] Date startOfDay(Date date) const noexcept {
        if (!TimeZone::isCalendarDate(date)) [[unlikely]]
            return date;
        return startOfCivilDay(civilDay(date));
    }

    /// The first instant of the day. A day that a place left out altogether begins when the next one does.
    [[nodiscard]] Date startOfCivilDay(CivilDay day) const noexcept {
        return dateOfUnixSecond(zone_->firstInstantFromWallSecond(day.number * SecondsPerDay));
    }

    /// The day on which the date falls.
    [[nodiscard]] CivilDay civilDay(Date date) const noexcept { return {dayOfWallSecond(wallSecond(date))}; }

    /// daysUntil:
    /// The days from the day of a to the day of b; 0 when b lies on an earlier day. Hours do not count: from
    /// 23:00 to 01:00 is one day.
    [[nodiscard]] std::uint64_t daysFromTo(Date a, Date b) const noexcept {
        const std::int64_t days = civilDay(b) - civilDay(a);
        return days > 0 ? static_cast<std::uint64_t>(days) : 0;
    }

    /// The instant at which the wall shows that day and second of the day (0 to 86399); of two the earlier;
    /// absent when it is never shown.
    [[nodiscard]] std::optional<Date> instantOfWallTime(CivilDay day,
                                                        std::int64_t secondOfDay) const noexcept;

    /// Whether the date falls into the years 1583 to 9999, the years of books.
    [[nodiscard]] bool isInBookYears(Date date) const noexcept {
        return TimeZone::isCalendarDate(date) && isBookDay(civilDay(date));
    }
    [[nodiscard]] static constexpr bool isBookDay(CivilDay day) noexcept {
        return day >= FirstBookDay && day <= LastBookDay;
    }
    static constexpr CivilDay FirstBookDay = CivilDay::fromYearMonthDay(CivilDay::FirstYear, 1, 1);
    static constexpr CivilDay LastBookDay = CivilDay::fromYearMonthDay(CivilDay::LastYear, 12, 31);

    /// Whether both are of the same zone.
    friend bool operator==(const Calendar& a, const Calendar& b) noexcept { return a.zone_ == b.zone_; }

private:
    friend class CalendarSteps;

    /// Seconds since 1970-01-01 00:00 on the wall.
    [[nodiscard]] std::int64_t wallSecond(Date date) const noexcept {
        const std::int64_t second = TimeZone::wholeUnixSeconds(date);
        return second + zone_->offsetAtUnixSecond(second);
    }
    [[nodiscard]] static constexpr std::int64_t dayOfWallSecond(std::int64_t wall) noexcept {
        constexpr std::int64_t Ahead = std::int64_t{1} << 40; // days, so that no wall second is below zero
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(wall + Ahead * SecondsPerDay) /
                                         SecondsPerDay) -
               Ahead;
    }
    [[nodiscard]] static constexpr Date dateOfUnixSecond(std::int64_t second) noexcept {
        return Date{static_cast<double>(second - TimeZone::ReferenceSecond)};
    }

    TimeZone* zone_;
};

} // namespace estatebook::platform
