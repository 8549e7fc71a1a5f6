// SPDX-License-Identifier: MIT
#pragma once

/// Dates as tests write and read them.

#include "platform/calendar/Calendar.hpp"
#include "platform/values/Date.hpp"

#include <chrono>
#include <cstdio>
#include <optional>
#include <string>

namespace estatebook::testkit {

/// The instant of that time in UTC, reckoned by the standard library.
inline platform::Date utcDate(int year, unsigned month, unsigned day, int hour = 0, int minute = 0,
                              int second = 0) {
    using namespace std::chrono;
    const auto days = sys_days(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day));
    return platform::Date::fromUnixSeconds(static_cast<double>(days.time_since_epoch().count()) * 86400 +
                                           hour * 3600 + minute * 60 + second);
}

/// "2025-02-28 00:00:00" on the calendar's wall; "none" for an absent date.
inline std::string shown(const platform::Calendar& calendar, std::optional<platform::Date> date) {
    using platform::CalendarUnit;
    if (!date) return "none";
    const auto parts = calendar.componentsFromDate(static_cast<CalendarUnit>(~std::uint64_t{0}), *date);
    if (!parts.year) return "no day";
    char text[80];
    std::snprintf(text, sizeof text, "%s%04lld-%02lld-%02lld %02lld:%02lld:%02lld",
                  *parts.era == 0 ? "BC " : "", static_cast<long long>(*parts.year),
                  static_cast<long long>(*parts.month), static_cast<long long>(*parts.day),
                  static_cast<long long>(*parts.hour), static_cast<long long>(*parts.minute),
                  static_cast<long long>(*parts.second));
    return text;
}

/// The calendar of the named zone.
inline platform::Calendar calendarOf(const char* zone) {
    return platform::Calendar(platform::TimeZone::named(zone));
}

/// The date of that wall time; the earlier of two.
inline platform::Date wallDate(const platform::Calendar& calendar, int year, int month, int day, int hour = 0,
                               int minute = 0, int second = 0) {
    return calendar
        .instantOfWallTime(platform::CivilDay::fromYearMonthDay(year, month, day),
                           hour * 3600 + minute * 60 + second)
        .value();
}

} // namespace estatebook::testkit
