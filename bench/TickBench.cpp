// SPDX-License-Identifier: MIT
// The day moves on: every awake tenure takes the new date over, rebuilds its schedule and announces all that follows, to
// its property as well. Against an ICU calendar that is made once and reused, and does nothing but add the months of the
// same schedules.

#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/system/Clock.hpp"
#include "platform/system/Log.hpp"
#include "store/TKCurrentDateController.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKProperty.hpp"
#include "tenure/TKTenure.hpp"

#include <benchmark/benchmark.h>
#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <memory>
#include <string_view>
#include <vector>

namespace {

using namespace estatebook;
using namespace estatebook::platform;

constexpr const char* Zone = "Europe/Berlin";
constexpr int Tenures = 10000;
constexpr int TenuresOfProperty = 10;
constexpr int Periods = 60;
/// 1 January 2025, 00:00 in Berlin.
constexpr double AnchorUnixSecond = 1735686000;
/// 15 January 2030.
constexpr double TodayUnixSecond = 1894662000;

/// A book in Berlin of lettings by the month, all in the middle of their sixty-first.
struct Town {
    Town() {
        TimeZone::setDefaultTimeZone(TimeZone::named(Zone));
        Log::setSink([](std::string_view) {});
        Clock::setNow([this] { return Date::fromUnixSeconds(now); });
        TKCurrentDateController::sharedInstance().dailyUpdate();
        context = TKManagedObjectModel::inMemoryManagedObjectContext();
        Ref<TKProperty> property;
        for (int number = 0; number < Tenures; ++number) {
            if (number % TenuresOfProperty == 0) property = context->insertNewObject<TKProperty>("Property");
            const auto tenure = context->insertNewObject<TKTenure>("Tenure");
            tenure->setProperty(property.get());
            tenure->setStartDate(Date::fromUnixSeconds(AnchorUnixSecond));
            tenure->setRentalBillingCycle(Number(30u));
            tenure->setRentalPeriod(Number(1u));
            tenure->setRentalAmount(Decimal::parse("1234.50"));
            tenures.push_back(tenure);
        }
    }
    void moveOn() {
        constexpr double Day = 86400;
        now = now > TodayUnixSecond ? TodayUnixSecond : TodayUnixSecond + Day;
        TKCurrentDateController::sharedInstance().dailyUpdate();
    }

    double now = TodayUnixSecond;
    Ref<ManagedObjectContext> context;
    std::vector<Ref<TKTenure>> tenures;
};

void DayTick_ours(benchmark::State& state) {
    static Town town; // ends with the program, as taking so many away again is another work
    for (auto _ : state) {
        const auto before = town.tenures.back()->periods();
        town.moveOn();
        const auto after = town.tenures.back()->periods();
        if (after == before || after->count() != Periods) state.SkipWithError("the day did not move on");
    }
    state.SetItemsProcessed(state.iterations() * Tenures);
}

void DayTick_peer_icu_additions(benchmark::State& state) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(Zone));
    icu::GregorianCalendar calendar(*zone, status);
    for (auto _ : state) {
        for (int tenure = 0; tenure < Tenures; ++tenure) {
            for (int period = 1; period <= Periods; ++period) {
                calendar.setTime(AnchorUnixSecond * 1000, status);
                calendar.add(UCAL_MONTH, period, status);
                benchmark::DoNotOptimize(calendar.getTime(status));
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * Tenures);
}

BENCHMARK(DayTick_ours)->Name("DayTick/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(DayTick_peer_icu_additions)->Name("DayTick/peer_icu_additions")->Unit(benchmark::kMillisecond);

} // namespace
