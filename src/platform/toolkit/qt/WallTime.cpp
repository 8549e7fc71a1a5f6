// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/WallTime.hpp"

#include "platform/calendar/Calendar.hpp"

#include <cmath>

namespace estatebook::platform {

QDateTime wallTimeOf(Date date) {
    const auto parts = Calendar::current().componentsFromDate(CalendarUnit::Year | CalendarUnit::Month |
                                                                  CalendarUnit::Day | CalendarUnit::Hour |
                                                                  CalendarUnit::Minute | CalendarUnit::Second,
                                                              date);
    const auto number = [](const std::optional<std::int64_t>& part) {
        return static_cast<int>(part.value_or(0));
    };
    const double second = date.secondsSinceReferenceDate;
    const int millisecond = std::min(999, static_cast<int>((second - std::floor(second)) * 1000));
    return QDateTime(QDate(number(parts.year), number(parts.month), number(parts.day)),
                     QTime(number(parts.hour), number(parts.minute), number(parts.second), millisecond),
                     Qt::UTC);
}

std::optional<Date> dateOfWallTime(const QDateTime& wall) {
    const QDate day = wall.date();
    const QTime time = wall.time();
    auto date = Calendar::current().dateFromComponents({.year = day.year(),
                                                        .month = day.month(),
                                                        .day = day.day(),
                                                        .hour = time.hour(),
                                                        .minute = time.minute(),
                                                        .second = time.second()});
    if (date) date->secondsSinceReferenceDate += time.msec() / 1000.0;
    return date;
}

QDateTime firstWallTime() {
    return QDateTime(QDate(CivilDay::FirstYear, 1, 1), QTime(0, 0), Qt::UTC);
}

QDateTime lastWallTime() {
    return QDateTime(QDate(CivilDay::LastYear, 12, 31), QTime(23, 59, 59, 999), Qt::UTC);
}

} // namespace estatebook::platform
