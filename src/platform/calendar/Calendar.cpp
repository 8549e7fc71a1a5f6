// SPDX-License-Identifier: MIT
#include "platform/calendar/Calendar.hpp"

#include "platform/calendar/CalendarSteps.hpp"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace estatebook::platform {

namespace {

constexpr std::int64_t LargestAmount = std::int64_t{1} << 31;
constexpr std::int64_t LargestElapsed = std::int64_t{1} << 51;

enum class Reckoning : std::uint8_t { Months, Days, Elapsed };

/// A unit that can be added and counted, largest first.
struct UnitRow {
    CalendarUnit unit;
    Reckoning reckoning;
    /// In months, days or seconds.
    std::int64_t length;
    std::optional<std::int64_t> DateComponents::*part;
};

constexpr UnitRow Units[] = {
    {CalendarUnit::Year, Reckoning::Months, 12, &DateComponents::year},
    {CalendarUnit::Month, Reckoning::Months, 1, &DateComponents::month},
    {CalendarUnit::WeekOfYear, Reckoning::Days, 7, &DateComponents::weekOfYear},
    {CalendarUnit::Day, Reckoning::Days, 1, &DateComponents::day},
    {CalendarUnit::Weekday, Reckoning::Days, 1, &DateComponents::weekday},
    {CalendarUnit::Hour, Reckoning::Elapsed, 3600, &DateComponents::hour},
    {CalendarUnit::Minute, Reckoning::Elapsed, 60, &DateComponents::minute},
    {CalendarUnit::Second, Reckoning::Elapsed, 1, &DateComponents::second},
};

const UnitRow* rowOf(CalendarUnit unit) {
    const auto* const row = std::ranges::find(Units, unit, &UnitRow::unit);
    return row == std::end(Units) ? nullptr : row;
}

/// The part, absent also when it holds the number that stands for absence.
std::optional<std::int64_t> valueOf(const std::optional<std::int64_t>& part) {
    return part == DateComponents::Undefined ? std::nullopt : part;
}

bool isWithin(std::int64_t amount, std::int64_t limit) {
    return amount >= -limit && amount <= limit;
}

std::int64_t monthNumberOf(const YearMonthDay& name) {
    return name.year * 12 + name.month - 1;
}

/// A date taken apart so that its whole seconds can be reckoned with exactly.
struct Moment {
    std::int64_t second;
    double fraction;

    explicit Moment(Date date)
        : second(TimeZone::wholeUnixSeconds(date)),
          fraction(date.secondsSinceReferenceDate - static_cast<double>(second - TimeZone::ReferenceSecond)) {
    }

    [[nodiscard]] Date date() const {
        return Date{static_cast<double>(second - TimeZone::ReferenceSecond) + fraction};
    }
};

/// The instant of a wall time that a step back has led to. Where it exists twice, months lead to the later
/// one, and days to the one that 24 hours for each day lead to from the offset of the start.
std::int64_t instantOfStepBack(const TimeZone& zone, std::int64_t wall, Reckoning reckoning,
                               int offsetOfStart) {
    const WallTime found = zone.wallSecond(wall);
    if (found.kind != WallTime::Kind::Twice) return found.first;
    if (reckoning == Reckoning::Months) return found.second;
    return zone.offsetAtUnixSecond(wall - offsetOfStart) == wall - found.first ? found.first : found.second;
}

/// Week 1 holds 1 January; weeks begin on Sunday.
std::int64_t weekOfYear(CivilDay day, std::int64_t year) {
    const CivilDay newYear = CivilDay::fromYearMonthDay(year, 1, 1);
    const CivilDay nextNewYear = CivilDay::fromYearMonthDay(year + 1, 1, 1);
    if (day >= nextNewYear - (nextNewYear.weekday() - 1)) return 1;
    return (day - newYear + newYear.weekday() - 1) / 7 + 1;
}

} // namespace

Calendar::Calendar(const Ref<TimeZone>& zone)
    : zone_(zone ? zone.get() : TimeZone::defaultTimeZone().get()) {}

Calendar Calendar::current() {
    return Calendar(TimeZone::defaultTimeZone());
}

DateComponents Calendar::componentsFromDate(CalendarUnit units, Date date) const {
    DateComponents parts;
    if (contains(units, CalendarUnit::TimeZone)) parts.timeZone = timeZone();
    if (!TimeZone::isCalendarDate(date)) return parts;
    const std::int64_t wall = wallSecond(date);
    const CivilDay day{dayOfWallSecond(wall)};
    const std::int64_t secondOfDay = wall - day.number * SecondsPerDay;
    const YearMonthDay name = day.yearMonthDay();
    const bool beforeChrist = name.year <= 0;
    const auto set = [&](CalendarUnit unit, std::optional<std::int64_t> DateComponents::*part,
                         std::int64_t value) {
        if (contains(units, unit)) parts.*part = value;
    };
    set(CalendarUnit::Era, &DateComponents::era, beforeChrist ? 0 : 1);
    set(CalendarUnit::Year, &DateComponents::year, beforeChrist ? 1 - name.year : name.year);
    set(CalendarUnit::Month, &DateComponents::month, name.month);
    set(CalendarUnit::Day, &DateComponents::day, name.day);
    set(CalendarUnit::WeekOfYear, &DateComponents::weekOfYear, weekOfYear(day, name.year));
    set(CalendarUnit::Weekday, &DateComponents::weekday, day.weekday());
    set(CalendarUnit::Hour, &DateComponents::hour, secondOfDay / 3600);
    set(CalendarUnit::Minute, &DateComponents::minute, secondOfDay / 60 % 60);
    set(CalendarUnit::Second, &DateComponents::second, secondOfDay % 60);
    return parts;
}

std::optional<Date> Calendar::dateFromComponents(const DateComponents& components) const {
    const auto era = valueOf(components.era);
    const auto year = valueOf(components.year).value_or(1);
    const auto month = valueOf(components.month).value_or(1);
    const auto day = valueOf(components.day).value_or(1);
    const auto hour = valueOf(components.hour);
    const auto minute = valueOf(components.minute);
    const auto second = valueOf(components.second);
    const std::int64_t time[] = {hour.value_or(0), minute.value_or(0), second.value_or(0)};
    for (const std::int64_t part : {year, month, day, time[0], time[1], time[2]}) {
        if (!isWithin(part, LargestAmount)) return {};
    }
    const std::int64_t monthNumber = (era == 0 ? 1 - year : year) * 12 + month - 1;
    const CivilDay first = CivilDay::clamped(monthNumber, 1);
    const YearMonthDay name = first.yearMonthDay();
    const CivilDay built = CivilDay::fromYearMonthDay(name.year, name.month, day);
    const std::int64_t wall = built.number * SecondsPerDay + time[0] * 3600 + time[1] * 60 + time[2];
    if (!isWithin(wall, LargestElapsed)) return {};
    const TimeZone& zone = components.timeZone ? *components.timeZone : *zone_;
    const bool hasTime = hour || minute || second;
    const Date date =
        dateOfUnixSecond(hasTime ? zone.instantOfWallSecond(wall) : zone.firstInstantFromWallSecond(wall));
    return TimeZone::isCalendarDate(date) ? std::optional(date) : std::nullopt;
}

std::optional<Date> Calendar::dateByAdding(CalendarUnit unit, std::int64_t amount, Date date) const {
    const UnitRow* const row = rowOf(unit);
    if (!row || amount == 0 || amount == DateComponents::Undefined || !TimeZone::isCalendarDate(date))
        return date;
    const bool elapsed = row->reckoning == Reckoning::Elapsed;
    if (!isWithin(amount, elapsed ? LargestElapsed / row->length : LargestAmount)) return {};
    const std::int64_t units = amount * row->length;
    Moment moment(date);
    if (elapsed) {
        moment.second += units;
    } else {
        const int offset = zone_->offsetAtUnixSecond(moment.second);
        const CivilDay from{dayOfWallSecond(moment.second + offset)};
        const CivilDay to = row->reckoning == Reckoning::Days ? from + units : from.byAddingMonths(units);
        const std::int64_t wall = moment.second + offset + (to - from) * SecondsPerDay;
        moment.second = amount > 0 ? zone_->instantOfWallSecond(wall)
                                   : instantOfStepBack(*zone_, wall, row->reckoning, offset);
    }
    const Date result = moment.date();
    return TimeZone::isCalendarDate(result) ? std::optional(result) : std::nullopt;
}

std::optional<Date> Calendar::dateByAddingComponentsToDate(const DateComponents& components,
                                                           std::optional<Date> date) const {
    for (const UnitRow& row : Units) {
        if (!date) return {};
        if (const auto amount = valueOf(components.*row.part)) date = dateByAdding(row.unit, *amount, *date);
    }
    return date;
}

namespace {

/// An amount of the unit that is at most two off the one sought.
std::int64_t estimate(const UnitRow& row, CivilDay start, CivilDay end) {
    if (row.reckoning == Reckoning::Days) return (end - start) / row.length;
    return (monthNumberOf(end.yearMonthDay()) - monthNumberOf(start.yearMonthDay())) / row.length;
}

std::int64_t wholeElapsedUnits(const UnitRow& row, const Moment& start, const Moment& end) {
    std::int64_t seconds = end.second - start.second;
    if (seconds > 0 && end.fraction < start.fraction) --seconds;
    if (seconds < 0 && end.fraction > start.fraction) ++seconds;
    return seconds / row.length;
}

} // namespace

DateComponents Calendar::componentsFromDateToDate(CalendarUnit units, Date start, Date end) const {
    DateComponents parts;
    if (!TimeZone::isCalendarDate(start) || !TimeZone::isCalendarDate(end)) return parts;
    for (const UnitRow& row : Units) {
        if (!contains(units, row.unit) || row.unit == CalendarUnit::Weekday) continue;
        const std::int64_t direction = end < start ? -1 : 1;
        std::int64_t count;
        if (row.reckoning == Reckoning::Elapsed) {
            count = wholeElapsedUnits(row, Moment(start), Moment(end));
        } else {
            const auto reaches = [&](std::int64_t amount) { // start + amount is not past the end
                const auto date = dateByAdding(row.unit, amount, start);
                return date && (direction > 0 ? *date <= end : *date >= end);
            };
            count = std::clamp(estimate(row, civilDay(start), civilDay(end)), -LargestAmount, LargestAmount);
            while (count * direction > 0 && !reaches(count)) count -= direction;
            while (reaches(count + direction)) count += direction;
        }
        parts.*row.part = count;
        start = dateByAdding(row.unit, count, start).value_or(start);
    }
    return parts;
}

std::optional<Date> Calendar::instantOfWallTime(CivilDay day, std::int64_t secondOfDay) const noexcept {
    const WallTime found = zone_->wallSecond(day.number * SecondsPerDay + secondOfDay);
    if (found.kind == WallTime::Kind::Missing) return {};
    return dateOfUnixSecond(found.first);
}

CalendarSteps::CalendarSteps(const Calendar& calendar, CalendarUnit unit, std::uint64_t count,
                             Date anchor) noexcept
    : calendar_(calendar), unit_(unit), count_(count), anchor_(anchor) {
    const UnitRow* const row = rowOf(unit);
    if (!row || row->reckoning == Reckoning::Elapsed || !TimeZone::isCalendarDate(anchor)) {
        count_ = 0;
        return;
    }
    inMonths_ = row->reckoning == Reckoning::Months;
    unitLength_ = row->length;
    const Moment moment(anchor);
    const std::int64_t wall = moment.second + calendar_.zone_->offsetAtUnixSecond(moment.second);
    anchorDay_ = CivilDay{Calendar::dayOfWallSecond(wall)};
    const YearMonthDay name = anchorDay_.yearMonthDay();
    anchorMonth_ = monthNumberOf(name);
    anchorDayOfMonth_ = name.day;
    secondOfDay_ = wall - anchorDay_.number * Calendar::SecondsPerDay;
    fraction_ = moment.fraction;
}

bool CalendarSteps::nextSlowly(Date& date) const noexcept {
    const auto amount = static_cast<std::int64_t>(amount_);
    const auto result = calendar_.dateByAdding(unit_, amount, anchor_);
    if (!result) return false;
    if (amount < 0 && calendar_.civilDay(*result) < Calendar::FirstBookDay) return false;
    date = *result;
    return true;
}

} // namespace estatebook::platform
