// SPDX-License-Identifier: MIT

// The text of a date: ours against a reused formatter of ICU, over the days of thirty years.

#include "platform/text/DateFormatter.hpp"

#include <benchmark/benchmark.h>
#include <unicode/datefmt.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using namespace estatebook::platform;

constexpr const char* zoneName = "Europe/Berlin";
constexpr const char* localeNames[] = {"en_US", "de_DE", "th_TH", "fa_IR"};

/// Noons in no order, as the lines of a statement with many tenures have them.
const std::vector<Date>& dates() {
    static const std::vector<Date> instance = [] {
        std::vector<Date> made;
        std::uint32_t random = 1;
        for (int count = 0; count < 4096; ++count) {
            random = random * 1664525u + 1013904223u;
            made.push_back(Date{(random >> 8) % 10957 * 86400.0 + 43200.0});
        }
        return made;
    }();
    return instance;
}

void ours(benchmark::State& state) {
    const auto formatter =
        DateFormatter::mediumFor(Locale::named(localeNames[state.range(0)]), TimeZone::named(zoneName));
    state.SetLabel(localeNames[state.range(0)]);
    char text[DateFormatter::RoomNeeded];
    std::size_t at = 0;
    for (auto _ : state) benchmark::DoNotOptimize(formatter->writeDate(text, dates()[at++ % 4096]));
}

void oursAsString(benchmark::State& state) {
    const auto formatter =
        DateFormatter::mediumFor(Locale::named(localeNames[state.range(0)]), TimeZone::named(zoneName));
    state.SetLabel(localeNames[state.range(0)]);
    std::size_t at = 0;
    for (auto _ : state) benchmark::DoNotOptimize(formatter->stringFromDate(dates()[at++ % 4096]));
}

void icuReused(benchmark::State& state) {
    const char* locale = localeNames[state.range(0)];
    const std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, icu::Locale(locale)));
    format->adoptTimeZone(icu::TimeZone::createTimeZone(zoneName));
    state.SetLabel(locale);
    std::size_t at = 0;
    for (auto _ : state) {
        icu::UnicodeString text;
        benchmark::DoNotOptimize(format->format(dates()[at++ % 4096].unixSeconds() * 1e3, text));
    }
}

/// A formatter made afresh for one date, as descriptions of periods do.
void oursMadeAfresh(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(DateFormatter::medium()->stringFromDate(Date{0}));
}

void icuMadeAfresh(benchmark::State& state) {
    for (auto _ : state) {
        const std::unique_ptr<icu::DateFormat> format(
            icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, icu::Locale::getDefault()));
        icu::UnicodeString text;
        benchmark::DoNotOptimize(format->format(Date{0}.unixSeconds() * 1e3, text));
    }
}

BENCHMARK(ours)->Name("DateText/ours")->DenseRange(0, 3);
BENCHMARK(icuReused)->Name("DateText/peer_icu")->DenseRange(0, 3);
BENCHMARK(oursAsString)->Name("DateTextAsString/ours")->DenseRange(0, 3);
BENCHMARK(icuReused)->Name("DateTextAsString/peer_icu")->DenseRange(0, 3);
BENCHMARK(oursMadeAfresh)->Name("DateTextMadeAfresh/ours");
BENCHMARK(icuMadeAfresh)->Name("DateTextMadeAfresh/peer_icu");

} // namespace
