// SPDX-License-Identifier: MIT
// The calendar against two peers doing the same work in the same run: an ICU calendar that is made once and
// reused, and the zone library's own civil arithmetic. Zone: Europe/Berlin.

#include "Berlin.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/calendar/CalendarSteps.hpp"

#include <array>
#include <chrono>
#include <memory>
#include <random>

namespace {

using namespace estatebook::platform;

using berlin::Periods;
constexpr double AnchorUnixSecond = berlin::Anchor;

Calendar berlinCalendar() {
    return Calendar(TimeZone::named(berlin::Zone));
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
    const Calendar calendar = berlinCalendar();
    for (auto _ : state) {
        CalendarSteps steps(calendar, CalendarUnit::Month, 1, Date::fromUnixSeconds(AnchorUnixSecond));
        Date date;
        for (int i = 0; i < Periods && steps.next(date); ++i) benchmark::DoNotOptimize(date);
    }
}

void monthlySteps_icu(benchmark::State& state) {
    berlin::monthsWithIcu(state);
}

void monthlySteps_cctz(benchmark::State& state) {
    berlin::monthsWithCctz(state);
}

void daysBetween_ours(benchmark::State& state) {
    const Calendar calendar = berlinCalendar();
    std::size_t i = 0;
    for (auto _ : state) {
        const Date a = Date::fromUnixSeconds(instants()[i & 1023]);
        const Date b = Date::fromUnixSeconds(instants()[(i + 1) & 1023]);
        benchmark::DoNotOptimize(calendar.daysFromTo(a, b));
        ++i;
    }
}

void daysBetween_icu(benchmark::State& state) {
    const auto calendar = berlin::icuCalendar();
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
    const cctz::time_zone zone = berlin::cctzZone();
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
    const Calendar calendar = berlinCalendar();
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(calendar.startOfDay(Date::fromUnixSeconds(instants()[i++ & 1023])));
}

void midnight_icu(benchmark::State& state) {
    const auto calendar = berlin::icuCalendar();
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
    const cctz::time_zone zone = berlin::cctzZone();
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
