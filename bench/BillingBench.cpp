// SPDX-License-Identifier: MIT
// The billing engine against two peers doing the same work in the same run: an ICU calendar that is made once
// and reused, and the zone library's own civil arithmetic. Zone: Europe/Berlin. The peers only find the dates;
// ours makes the periods as well.

#include "Berlin.hpp"

#include "billing/TKPeriodicBilling.hpp"

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

using berlin::Anchor;
using berlin::Periods;
using berlin::Zone;
/// 31 January 2125, 00:00 in Berlin.
constexpr std::time_t HundredYearsLater = 4893951600;

Date date(std::time_t second) {
    return Date::fromUnixSeconds(static_cast<double>(second));
}

platform::Ref<TKPeriodicBilling> monthly() {
    TimeZone::setDefaultTimeZone(TimeZone::named(Zone));
    return TKPeriodicBilling::periodicBillingForCycleWithPeriod(TKBillingCycleMonth, 1);
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
    berlin::monthsWithIcu(state);
}

void row_cctz(benchmark::State& state) {
    berlin::monthsWithCctz(state);
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
    const auto calendar = berlin::icuCalendar();
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
