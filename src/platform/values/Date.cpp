// SPDX-License-Identifier: MIT
#include "platform/values/Date.hpp"

#include <chrono>
#include <cmath>
#include <cstdio>

namespace estatebook::platform {

std::string Date::description() const {
    // Beyond this magnitude the civil year no longer fits, and no book has such an instant.
    constexpr double Bound = 8.0e11;
    if (!(std::abs(secondsSinceReferenceDate) < Bound)) return std::to_string(secondsSinceReferenceDate);
    const std::chrono::sys_seconds instant{
        std::chrono::seconds(static_cast<std::int64_t>(std::floor(unixSeconds())))};
    const auto day = std::chrono::floor<std::chrono::days>(instant);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(instant - day);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d +0000", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text;
}

} // namespace estatebook::platform
