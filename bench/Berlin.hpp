// SPDX-License-Identifier: MIT
#pragma once

/// The peers of the calendar's benchmarks: steps of a month from 31 January 2025, 00:00 in Europe/Berlin.

#include <benchmark/benchmark.h>
#include <cctz/civil_time.h>
#include <cctz/time_zone.h>
#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <memory>

namespace berlin {

inline constexpr const char* Zone = "Europe/Berlin";
inline constexpr int Periods = 1200;
/// 31 January 2025, 00:00.
inline constexpr std::time_t Anchor = 1738278000;

/// Made once and reused, as by somebody who cares.
inline std::unique_ptr<icu::Calendar> icuCalendar() {
    UErrorCode status = U_ZERO_ERROR;
    return std::make_unique<icu::GregorianCalendar>(icu::TimeZone::createTimeZone(Zone), status);
}

inline cctz::time_zone cctzZone() {
    cctz::time_zone zone;
    cctz::load_time_zone(Zone, &zone);
    return zone;
}

inline void monthsWithIcu(benchmark::State& state) {
    const auto calendar = icuCalendar();
    for (auto _ : state) {
        for (int i = 1; i <= Periods; ++i) {
            UErrorCode status = U_ZERO_ERROR;
            calendar->setTime(static_cast<double>(Anchor) * 1000, status);
            calendar->add(UCAL_MONTH, i, status);
            benchmark::DoNotOptimize(calendar->getTime(status));
        }
    }
}

inline void monthsWithCctz(benchmark::State& state) {
    const cctz::time_zone zone = cctzZone();
    const auto anchor = std::chrono::system_clock::from_time_t(Anchor);
    for (auto _ : state) {
        const cctz::civil_day day(cctz::convert(anchor, zone));
        for (int i = 1; i <= Periods; ++i) {
            const cctz::civil_month month = cctz::civil_month(day) + i;
            const cctz::civil_day last = cctz::civil_day(month + 1) - 1;
            const cctz::civil_day wanted(month.year(), month.month(), std::min(day.day(), last.day()));
            benchmark::DoNotOptimize(cctz::convert(cctz::civil_second(wanted), zone));
        }
    }
}

} // namespace berlin
