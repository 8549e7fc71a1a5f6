// SPDX-License-Identifier: MIT
#include "estatebook/document/DateText.hpp"

#include "platform/calendar/CivilDay.hpp"
#include "platform/calendar/TimeZone.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace estatebook::document {

namespace {

using platform::Calendar;
using platform::CivilDay;
using platform::Date;
using platform::TimeZone;
using platform::WallTime;

constexpr std::int64_t SecondsPerDay = 86400;

constexpr bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

/// Reads a text from left to right; a step that does not fit leaves it where it is.
class Scanner {
public:
    explicit Scanner(std::string_view text) noexcept : rest_(text) {}

    [[nodiscard]] bool atEnd() const noexcept { return rest_.empty(); }

    bool take(char expected) noexcept {
        if (rest_.empty() || rest_.front() != expected) return false;
        rest_.remove_prefix(1);
        return true;
    }

    /// All digits that follow, perhaps none.
    std::string_view digits() noexcept {
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), isDigit);
        const std::string_view found = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
        rest_.remove_prefix(found.size());
        return found;
    }

    /// A number of just two digits.
    std::optional<int> twoDigits() noexcept {
        const std::string_view found = digits();
        if (found.size() != 2) return {};
        return (found[0] - '0') * 10 + (found[1] - '0');
    }

private:
    std::string_view rest_;
};

struct Clock {
    int hour = 0;
    int minute = 0;
    int second = 0;
    /// Digits behind the point of the second.
    std::string_view fraction;

    [[nodiscard]] bool exists() const noexcept { return hour < 24 && minute < 60 && second < 60; }
    [[nodiscard]] std::int64_t secondOfDay() const noexcept { return (hour * 60 + minute) * 60 + second; }
};

/// A text taken apart, before it is asked whether there is such a date.
struct Parts {
    std::string_view year;
    int month = 0;
    int day = 0;
    std::optional<Clock> clock;
    /// Minutes east of UTC.
    std::optional<int> offset;
};

std::optional<Clock> scanClock(Scanner& scanner) noexcept {
    const auto hour = scanner.twoDigits();
    if (!hour || !scanner.take(':')) return {};
    const auto minute = scanner.twoDigits();
    if (!minute) return {};
    Clock clock{*hour, *minute, 0, {}};
    if (!scanner.take(':')) return clock;
    const auto second = scanner.twoDigits();
    if (!second) return {};
    clock.second = *second;
    if (!scanner.take('.')) return clock;
    clock.fraction = scanner.digits();
    if (clock.fraction.empty()) return {};
    return clock;
}

std::optional<int> scanOffset(Scanner& scanner) noexcept {
    if (scanner.take('Z')) return 0;
    const bool west = scanner.take('-');
    if (!west && !scanner.take('+')) return {};
    const auto hours = scanner.twoDigits();
    if (!hours || *hours > 23 || !scanner.take(':')) return {};
    const auto minutes = scanner.twoDigits();
    if (!minutes || *minutes > 59) return {};
    const int offset = *hours * 60 + *minutes;
    return west ? -offset : offset;
}

std::optional<Parts> scanDate(std::string_view text) noexcept {
    Scanner scanner(text);
    Parts parts;
    parts.year = scanner.digits();
    if (parts.year.size() < 4 || !scanner.take('-')) return {};
    const auto month = scanner.twoDigits();
    if (!month || !scanner.take('-')) return {};
    const auto day = scanner.twoDigits();
    if (!day) return {};
    parts.month = *month;
    parts.day = *day;
    if (scanner.atEnd()) return parts;

    if (!scanner.take('T')) return {};
    parts.clock = scanClock(scanner);
    if (!parts.clock) return {};
    if (scanner.atEnd()) return parts;

    parts.offset = scanOffset(scanner);
    if (!parts.offset || !scanner.atEnd()) return {};
    return parts;
}

/// 1 minus a fraction, both by their digits: "25" gives "75". REQUIRES: a digit other than 0.
std::string complementOf(std::string_view fraction) {
    fraction = fraction.substr(0, fraction.find_last_not_of('0') + 1);
    std::string result(fraction);
    for (char& digit : result) digit = static_cast<char>('0' + ('9' - digit));
    ++result.back();
    return result;
}

bool isZero(std::string_view fraction) noexcept {
    return fraction.find_first_not_of('0') == std::string_view::npos;
}

/// The date nearest to a whole second and a fraction. The two are joined as digits, since a sum of binary
/// numbers would be rounded twice.
Date nearestDate(std::int64_t unixSecond, std::string_view fraction) {
    const std::int64_t second = unixSecond - TimeZone::ReferenceSecond;
    if (isZero(fraction)) return Date{static_cast<double>(second)};
    const bool before = second < 0;
    std::string digits = std::to_string(before ? -second - 1 : second);
    digits += '.';
    digits += before ? complementOf(fraction) : std::string(fraction);
    double seconds = 0; // what is too small to be told from 0 stays 0
    std::from_chars(digits.data(), digits.data() + digits.size(), seconds, std::chars_format::fixed);
    return Date{before && seconds > 0 ? -seconds : seconds};
}

DateReading inBookYears(Date date, const Calendar& calendar) {
    if (!calendar.isInBookYears(date)) return {{}, DateFault::OutsideYears};
    return {date, DateFault::None};
}

DateReading readDay(CivilDay day, const Calendar& calendar) {
    const Date start = calendar.startOfCivilDay(day);
    if (calendar.civilDay(start) != day) return {{}, DateFault::NoSuchDay};
    return {start, DateFault::None};
}

DateReading readWallTime(CivilDay day, const Clock& clock, const Calendar& calendar) {
    const WallTime wall = calendar.timeZone()->wallSecond(day.number * SecondsPerDay + clock.secondOfDay());
    if (wall.kind == WallTime::Kind::Missing) return {{}, DateFault::NoSuchTime};
    return inBookYears(nearestDate(wall.first, clock.fraction), calendar);
}

/// A date taken apart again, whole seconds and digits behind the point, so that `nearestDate` gives it back.
struct SplitDate {
    std::int64_t unixSecond = 0;
    std::string fraction;
};

SplitDate split(Date date) {
    const double seconds = date.secondsSinceReferenceDate;
    // The shortest digits that read back as this number; a tiny one has a thousand of them.
    std::array<char, 1200> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::fabs(seconds),
                                            std::chars_format::fixed);
    const std::string_view digits(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
    const std::size_t point = std::min(digits.find('.'), digits.size());
    std::int64_t whole = 0;
    std::from_chars(digits.data(), digits.data() + point, whole);
    std::string fraction(digits.substr(std::min(point + 1, digits.size())));
    if (seconds < 0) {
        whole = -whole;
        if (!isZero(fraction)) {
            --whole;
            fraction = complementOf(fraction);
        }
    }
    return {whole + TimeZone::ReferenceSecond, fraction};
}

std::string dayText(CivilDay day) {
    const platform::YearMonthDay name = day.yearMonthDay();
    std::array<char, 40> text{};
    const int length = std::snprintf(text.data(), text.size(), "%04lld-%02d-%02d",
                                     static_cast<long long>(name.year), name.month, name.day);
    return {text.data(), static_cast<std::size_t>(length)};
}

std::string clockText(std::int64_t secondOfDay, std::string_view fraction, int offsetMinutes) {
    const int second = static_cast<int>(secondOfDay);
    std::array<char, 40> text{};
    int length = std::snprintf(text.data(), text.size(), "T%02d:%02d:%02d", second / 3600, second / 60 % 60,
                               second % 60);
    std::string result(text.data(), static_cast<std::size_t>(length));
    if (!fraction.empty()) (result += '.') += fraction;
    const int minutes = std::abs(offsetMinutes);
    length = std::snprintf(text.data(), text.size(), "%c%02d:%02d", offsetMinutes < 0 ? '-' : '+',
                           minutes / 60, minutes % 60);
    return result.append(text.data(), static_cast<std::size_t>(length));
}

} // namespace

DateReading readDate(std::string_view text, const Calendar& calendar) {
    const std::optional<Parts> parts = scanDate(text);
    if (!parts) return {{}, DateFault::NotADate};
    if (parts->year.size() > 4) return {{}, DateFault::OutsideYears};
    int year = 0;
    std::from_chars(parts->year.data(), parts->year.data() + parts->year.size(), year);
    if (!parts->offset && (year < CivilDay::FirstYear)) return {{}, DateFault::OutsideYears};
    const auto day = CivilDay::ifExists(year, parts->month, parts->day);
    if (!day) return {{}, DateFault::NoSuchDay};
    if (!parts->clock) return readDay(*day, calendar);
    const Clock& clock = *parts->clock;
    if (!clock.exists()) return {{}, DateFault::NoSuchTime};
    if (!parts->offset) return readWallTime(*day, clock, calendar);
    const std::int64_t wall = day->number * SecondsPerDay + clock.secondOfDay();
    return inBookYears(nearestDate(wall - *parts->offset * 60, clock.fraction), calendar);
}

std::string_view describe(DateFault fault) noexcept {
    switch (fault) {
    case DateFault::None:
        return "is a date";
    case DateFault::NotADate:
        return "is not a date";
    case DateFault::NoSuchDay:
        return "is a day that does not exist";
    case DateFault::NoSuchTime:
        return "is a time that does not exist";
    case DateFault::OutsideYears:
        return "lies outside the years 1583 to 9999";
    }
    return {};
}

std::optional<std::string> dateText(Date date, const Calendar& calendar) {
    if (!calendar.isInBookYears(date)) return {};
    const CivilDay day = calendar.civilDay(date);
    if (calendar.startOfCivilDay(day) == date) return dayText(day);

    const SplitDate parts = split(date);
    const int offsetMinutes = calendar.timeZone()->offsetAt(date) / 60;
    const std::int64_t wall = parts.unixSecond + offsetMinutes * 60;
    const std::int64_t secondOfDay = ((wall % SecondsPerDay) + SecondsPerDay) % SecondsPerDay;
    const CivilDay wallDay{(wall - secondOfDay) / SecondsPerDay};
    return dayText(wallDay) + clockText(secondOfDay, parts.fraction, offsetMinutes);
}

} // namespace estatebook::document
