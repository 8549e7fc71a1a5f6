// SPDX-License-Identifier: MIT
#pragma once

/// DateText: how documents and the command line write a date.
///
/// A plain day, "2025-02-16", is the first instant of that day in a zone. With a clock, "2025-02-16T10:30" or
/// "…T10:30:00.25", it is wall time in the zone; with "Z" or an offset, "…T10:30:00+02:00", it is that
/// instant whatever the zone. Writing takes the shortest of these that reads back as the same instant, bit
/// for bit.
///
///     const Calendar london(TimeZone::named("Europe/London"));
///     readDate("2025-06-01", london).date;                   // 31 May, 23:00 UTC
///     dateText(date, london);                                // "2025-06-01"
///     readDate("2025-02-29", london).fault;                  // DateFault::NoSuchDay
///
/// The trap: of a wall time that the clocks show twice the earlier instant is read; one that they leave out
/// is no date at all. Writing never gives a bare wall time, so what it writes is never in doubt.

#include "platform/calendar/Calendar.hpp"
#include "platform/values/Date.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace estatebook::document {

/// Why a text is no date.
enum class DateFault : std::uint8_t {
    None,
    NotADate,     ///< not of one of the forms
    NoSuchDay,    ///< 30 February, or a day that the zone left out
    NoSuchTime,   ///< 24:00, 23:59:60, or a wall time that the zone left out
    OutsideYears, ///< on no day of the years 1583 to 9999 in the zone
};

/// Either a date or a fault.
struct DateReading {
    std::optional<platform::Date> date;
    DateFault fault = DateFault::None;
};

/// Reads a whole text. The fraction of a second may have any number of digits; the date nearest to it is
/// taken. Takes time linear in the text.
[[nodiscard]] DateReading readDate(std::string_view text, const platform::Calendar& calendar);

/// What is wrong, as the end of a sentence about the text: "is a day that does not exist".
[[nodiscard]] std::string_view describe(DateFault fault) noexcept;

/// The date in canonical form: the plain day where it is the first instant of its day in the zone, else wall
/// time with the offset and as many digits of the second as are needed. Where the zone's offset is not one of
/// whole minutes (local mean time), the next one towards UTC is written. Absent for what is outside the years
/// 1583 to 9999 in the zone, or no number.
[[nodiscard]] std::optional<std::string> dateText(platform::Date date, const platform::Calendar& calendar);

} // namespace estatebook::document
