// SPDX-License-Identifier: MIT
// The calendar against two peers doing the same work in the same run: an ICU calendar that is made once and
// reused, and the zone library's own civil arithmetic. Zone: Europe/Berlin.

#include "platform/calendar/Calendar.hpp"
#include "platform/calendar/CalendarSteps.hpp"

#include <benchmark/benchmark.h>
#include <cctz/civil_time.h>
#include <cctz/time_zone.h>
#include <unicode/calendar.h>
#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <array>
#include <chrono>
#include <memory>
#include <random>

namespace {

using namespace estatebook::platform;

constexpr const char* Zone = "Europe/Berlin";
constexpr int Periods = 1200;
/// 31 January 2025, 00:00 in Berlin.
constexpr double AnchorUnixSecond = 1738278000;

Calendar berlin() {
    return Calendar(TimeZone::named(Zone));
}

std::unique_ptr<icu::Calendar> icuBerlin() {
    UErrorCode status = U_ZERO_ERROR;
    return std::make_unique<icu::GregorianCalendar>(icu::TimeZone::createTimeZone(Zone), status);
}

cctz::time_zone cctzBerlin() {
    cctz::time_zone zone;
    cctz::load_time_zone(Zone, &zone);
    return zone;
}

/// Instants of the years 2000 to 2040, in no order.
const std::array<double, 1024>& instants() {
    static const auto all = [] {
        std::array<double, 1024> result;
        std::mt19937_64 random(7);
        std::uniform_int_distribution<std::int64_t> second(946684800, 2208988800);
        for (double& each : result) each = static_cast<double>(second(random));
        return result;
    }();
    return all;
}

void monthlySteps_ours(benchmark::State& state) {
    const Calendar calendar = berlin();
    for (auto _ : state) {
        CalendarSteps steps(calendar, CalendarUnit::Month, 1, Date::fromUnixSeconds(AnchorUnixSecond));
        Date date;
        for (int i = 0; i < Periods && steps.next(date); ++i) benchmark::DoNotOptimize(date);
    }
}

void monthlySteps_icu(benchmark::State& state) {
    const auto calendar = icuBerlin();
    for (auto _ : state) {
        for (int i = 1; i <= Periods; ++i) {
            UErrorCode status = U_ZERO_ERROR;
            calendar->setTime(AnchorUnixSecond * 1000, status);
            calendar->add(UCAL_MONTH, i, status);
            benchmark::DoNotOptimize(calendar->getTime(status));
        }
    }
}

void monthlySteps_cctz(benchmark::State& state) {
    const cctz::time_zone zone = cctzBerlin();
    const auto anchor = std::chrono::system_clock::from_time_t(static_cast<std::time_t>(AnchorUnixSecond));
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

void daysBetween_ours(benchmark::State& state) {
    const Calendar calendar = berlin();
    std::size_t i = 0;
    for (auto _ : state) {
        const Date a = Date::fromUnixSeconds(instants()[i & 1023]);
        const Date b = Date::fromUnixSeconds(instants()[(i + 1) & 1023]);
        benchmark::DoNotOptimize(calendar.daysFromTo(a, b));
        ++i;
    }
}

void daysBetween_icu(benchmark::State& state) {
    const auto calendar = icuBerlin();
    std::size_t i = 0;
    for (auto _ : state) {
        UErrorCode status = U_ZERO_ERROR;
        calendar->setTime(instants()[i & 1023] * 1000, status);
        benchmark::DoNotOptimize(
            calendar->fieldDifference(instants()[(i + 1) & 1023] * 1000, UCAL_DATE, status));
        ++i;
    }
}

void daysBetween_cctz(benchmark::State& state) {
    const cctz::time_zone zone = cctzBerlin();
    std::size_t i = 0;
    const auto day = [&](double second) {
        return cctz::civil_day(cctz::convert(
            cctz::time_point<cctz::seconds>(cctz::seconds(static_cast<std::int64_t>(second))), zone));
    };
    for (auto _ : state) {
        benchmark::DoNotOptimize(day(instants()[(i + 1) & 1023]) - day(instants()[i & 1023]));
        ++i;
    }
}

void midnight_ours(benchmark::State& state) {
    const Calendar calendar = berlin();
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(calendar.startOfDay(Date::fromUnixSeconds(instants()[i++ & 1023])));
}

void midnight_icu(benchmark::State& state) {
    const auto calendar = icuBerlin();
    std::size_t i = 0;
    for (auto _ : state) {
        UErrorCode status = U_ZERO_ERROR;
        calendar->setTime(instants()[i++ & 1023] * 1000, status);
        for (const auto field : {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND})
            calendar->set(field, 0);
        benchmark::DoNotOptimize(calendar->getTime(status));
    }
}

void midnight_cctz(benchmark::State& state) {
    const cctz::time_zone zone = cctzBerlin();
    std::size_t i = 0;
    for (auto _ : state) {
        const cctz::time_point<cctz::seconds> at(
            cctz::seconds(static_cast<std::int64_t>(instants()[i++ & 1023])));
        benchmark::DoNotOptimize(
            cctz::convert(cctz::civil_second(cctz::civil_day(cctz::convert(at, zone))), zone));
    }
}

BENCHMARK(monthlySteps_ours)->Name("MonthlySteps1200/ours");
BENCHMARK(monthlySteps_icu)->Name("MonthlySteps1200/peer_icu");
BENCHMARK(monthlySteps_cctz)->Name("MonthlySteps1200/peer_cctz");
BENCHMARK(daysBetween_ours)->Name("DaysBetween/ours");
BENCHMARK(daysBetween_icu)->Name("DaysBetween/peer_icu");
BENCHMARK(daysBetween_cctz)->Name("DaysBetween/peer_cctz");
BENCHMARK(midnight_ours)->Name("Midnight/ours");
BENCHMARK(midnight_icu)->Name("Midnight/peer_icu");
BENCHMARK(midnight_cctz)->Name("Midnight/peer_cctz");

} // namespace
