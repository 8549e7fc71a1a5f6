// SPDX-License-Identifier: MIT
// The billing engine against two peers doing the same work in the same run: an ICU calendar that is made once
// and reused, and the zone library's own civil arithmetic. Zone: Europe/Berlin. The peers only find the dates;
// ours makes the periods as well.

#include "billing/TKPeriodicBilling.hpp"

#include <benchmark/benchmark.h>
#include <cctz/civil_time.h>
#include <cctz/time_zone.h>
#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <memory>
#include <random>

namespace {

using namespace estatebook;
using platform::Date;
using platform::Decimal;
using platform::TimeZone;

constexpr const char* Zone = "Europe/Berlin";
constexpr int Periods = 1200;
/// 31 January 2025, 00:00 in Berlin.
constexpr std::time_t Anchor = 1738278000;
/// 31 January 2125, 00:00 in Berlin.
constexpr std::time_t HundredYearsLater = 4893951600;

Date date(std::time_t second) {
    return Date::fromUnixSeconds(static_cast<double>(second));
}

platform::Ref<TKPeriodicBilling> monthly() {
    TimeZone::setDefaultTimeZone(TimeZone::named(Zone));
    return TKPeriodicBilling::periodicBillingForCycleWithPeriod(TKBillingCycleMonth, 1);
}

std::unique_ptr<icu::Calendar> icuBerlin() {
    UErrorCode status = U_ZERO_ERROR;
    return std::make_unique<icu::GregorianCalendar>(icu::TimeZone::createTimeZone(Zone), status);
}

void row_ours(benchmark::State& state) {
    const auto billing = monthly();
    for (auto _ : state) benchmark::DoNotOptimize(billing->periodsFromCount(date(Anchor), Periods));
}

void rowTo_ours(benchmark::State& state) {
    const auto billing = monthly();
    for (auto _ : state)
        benchmark::DoNotOptimize(billing->periodsFromTo(date(Anchor), date(HundredYearsLater)));
}

void row_icu(benchmark::State& state) {
    const auto calendar = icuBerlin();
    for (auto _ : state) {
        for (int i = 1; i <= Periods; ++i) {
            UErrorCode status = U_ZERO_ERROR;
            calendar->setTime(static_cast<double>(Anchor) * 1000, status);
            calendar->add(UCAL_MONTH, i, status);
            benchmark::DoNotOptimize(calendar->getTime(status));
        }
    }
}

void row_cctz(benchmark::State& state) {
    cctz::time_zone zone;
    cctz::load_time_zone(Zone, &zone);
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

void periodsForDays_ours(benchmark::State& state) {
    const auto billing = monthly();
    std::uint64_t days = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(billing->periodsFromDateForDays(date(Anchor), days));
        days = (days + 97) % 3650;
    }
}

/// The whole months and the day counts only; no division.
void periodsForDays_icu(benchmark::State& state) {
    const auto calendar = icuBerlin();
    int days = 0;
    for (auto _ : state) {
        UErrorCode status = U_ZERO_ERROR;
        const double start = static_cast<double>(Anchor) * 1000;
        calendar->setTime(start, status);
        calendar->add(UCAL_DATE, days, status);
        const double end = calendar->getTime(status);
        calendar->setTime(start, status);
        const int months = calendar->fieldDifference(end, UCAL_MONTH, status);
        benchmark::DoNotOptimize(calendar->fieldDifference(end, UCAL_DATE, status));
        calendar->setTime(start, status);
        calendar->add(UCAL_MONTH, months + 1, status);
        benchmark::DoNotOptimize(calendar->getTime(status));
        days = (days + 97) % 3650;
    }
}

BENCHMARK(row_ours)->Name("MonthlyRow1200/ours");
BENCHMARK(row_icu)->Name("MonthlyRow1200/peer_icu");
BENCHMARK(row_cctz)->Name("MonthlyRow1200/peer_cctz");
BENCHMARK(rowTo_ours)->Name("MonthlyRowTo1200/ours");
BENCHMARK(row_icu)->Name("MonthlyRowTo1200/peer_icu");
BENCHMARK(row_cctz)->Name("MonthlyRowTo1200/peer_cctz");
BENCHMARK(periodsForDays_ours)->Name("PeriodsForDays/ours");
BENCHMARK(periodsForDays_icu)->Name("PeriodsForDays/peer_icu");

} // namespace
