// SPDX-License-Identifier: MIT
#pragma once

/// A time as it stands on the wall, for the tests of what shows dates.

#include "platform/calendar/Calendar.hpp"
#include "platform/values/Date.hpp"

#include <cstdint>

namespace estatebook::test {

/// That time in the default zone.
inline platform::Date at(std::int64_t year, std::int64_t month, std::int64_t day, std::int64_t hour = 0,
                         std::int64_t minute = 0) {
    return *platform::Calendar::current().dateFromComponents(
        {.year = year, .month = month, .day = day, .hour = hour, .minute = minute});
}

} // namespace estatebook::test
