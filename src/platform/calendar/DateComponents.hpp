// SPDX-License-Identifier: MIT
#pragma once

/// DateComponents: the parts of a date, or an amount of calendar time. Which of the two is decided by the
/// operation of `Calendar` that it is given to; a part that is absent takes no part.
///
///     DateComponents quarter{.month = 3};
///     calendar.dateByAddingComponentsToDate(quarter, date);
///     DateComponents split = calendar.componentsFromDate(CalendarUnit::Year | CalendarUnit::Month, date);
///     *split.year; *split.month;                      // split.day is absent
///
/// The trap: `Undefined` (2^63 - 1) stands for "absent" where a plain number is wanted; such a part counts as
/// absent.

#include "platform/calendar/TimeZone.hpp"
#include "platform/values/Ref.hpp"

#include <cstdint>
#include <limits>
#include <optional>

namespace estatebook::platform {

/// Units of the calendar, as a mask.
enum class CalendarUnit : std::uint64_t {
    None = 0,
    Era = 2,
    Year = 4,
    Month = 8,
    Day = 16,
    Hour = 32,
    Minute = 64,
    Second = 128,
    Weekday = 512,
    WeekOfYear = 8192,
    TimeZone = 2097152,
};

[[nodiscard]] constexpr CalendarUnit operator|(CalendarUnit a, CalendarUnit b) noexcept {
    return static_cast<CalendarUnit>(static_cast<std::uint64_t>(a) | static_cast<std::uint64_t>(b));
}

/// Whether the mask holds the unit.
[[nodiscard]] constexpr bool contains(CalendarUnit mask, CalendarUnit unit) noexcept {
    return (static_cast<std::uint64_t>(mask) & static_cast<std::uint64_t>(unit)) != 0;
}

struct DateComponents {
    static constexpr std::int64_t Undefined = std::numeric_limits<std::int64_t>::max();

    /// 1 for AD, 0 for BC.
    std::optional<std::int64_t> era{};
    std::optional<std::int64_t> year{};
    std::optional<std::int64_t> month{};
    std::optional<std::int64_t> weekOfYear{};
    std::optional<std::int64_t> day{};
    /// 1 for Sunday to 7 for Saturday.
    std::optional<std::int64_t> weekday{};
    std::optional<std::int64_t> hour{};
    std::optional<std::int64_t> minute{};
    std::optional<std::int64_t> second{};
    /// Overrides the calendar's zone when a date is built from these parts.
    Ref<TimeZone> timeZone{};

    friend bool operator==(const DateComponents&, const DateComponents&) noexcept = default;
};

} // namespace estatebook::platform
