// SPDX-License-Identifier: MIT
// The billing engine against the rules written down plainly over the slow calendar.

#include "billing/TKPeriodicBilling.hpp"

#include "billing/RoundingExtensions.hpp"
#include "support/Dates.hpp"
#include "support/SlowCalendar.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace estatebook {
namespace {

using platform::Calendar;
using platform::Date;
using platform::Decimal;
using platform::Ref;
using platform::TimeZone;
using testkit::shown;
using testkit::SlowCalendar;
using testkit::ZoneFile;
using Unit = SlowCalendar::Unit;

constexpr const char* Zones[] = {
    "UTC",
    "Europe/Berlin",
    "Europe/London",
    "America/New_York",
    "America/Sao_Paulo",
    "America/Havana",
    "Africa/Cairo",
    "Asia/Beirut",
    "Asia/Kathmandu",
    "Asia/Tokyo",
    "Australia/Sydney",
    "Pacific/Auckland",
    "Pacific/Apia",
    "Atlantic/Azores",
    "America/Toronto",
    "Asia/Amman",
    "Pacific/Kiritimati",
};

Date date(std::int64_t second) {
    return Date::fromUnixSeconds(static_cast<double>(second));
}

struct SlowPeriod {
    std::int64_t start, end, billing;
    bool operator==(const SlowPeriod&) const = default;
};

/// One operation after the other, as the rules tell them.
struct SlowBilling {
    const SlowCalendar& calendar;
    Unit unit;
    std::int64_t period;
    bool atEnd;

    std::int64_t boundary(std::int64_t anchor, std::int64_t count) const {
        return calendar.add(unit, count * period, anchor);
    }

    template <class Predicate>
    std::vector<SlowPeriod> row(std::int64_t start, Predicate isDone) const {
        std::vector<SlowPeriod> made;
        const std::int64_t anchor = calendar.startOfDay(start);
        std::int64_t previous = anchor;
        for (std::int64_t i = 1; !isDone(previous); ++i) {
            const std::int64_t end = boundary(anchor, i);
            made.push_back({previous, end, atEnd ? end : previous});
            previous = end;
        }
        return made;
    }

    std::uint64_t daysFor(std::int64_t start, const Decimal& periods) const {
        const std::int64_t anchor = calendar.startOfDay(start);
        std::int64_t whole = 0;
        while (Decimal(whole + 1) <= periods) ++whole;
        const std::int64_t running = boundary(anchor, whole);
        const std::uint64_t days = calendar.daysFromTo(anchor, running);
        const Decimal fraction = periods - Decimal(whole);
        if (fraction == Decimal(0)) return days;
        const Decimal part = fraction * Decimal(calendar.daysFromTo(running, boundary(anchor, whole + 1)));
        std::uint64_t more = 0;
        while (Decimal(more) < part) ++more;
        return days + more;
    }

    Decimal periodsIn(std::int64_t start, std::int64_t days) const {
        const std::int64_t anchor = calendar.startOfDay(start);
        const std::int64_t end = calendar.add(Unit::Day, days, anchor);
        if (unit == Unit::Day) return Decimal(calendar.difference(Unit::Day, anchor, end)) / Decimal(period);
        std::int64_t whole = 0;
        while (boundary(anchor, whole + 1) <= end) ++whole;
        const std::int64_t running = boundary(anchor, whole);
        return Decimal(whole) + Decimal(calendar.daysFromTo(running, end)) /
                                    Decimal(calendar.daysFromTo(running, boundary(anchor, whole + 1)));
    }
};

class PeriodicBillingTwinTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        const std::uint64_t seed = std::random_device{}();
        std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
        random_.seed(seed);
        TimeZone::setDefaultTimeZone(TimeZone::named(GetParam()));
    }
    void TearDown() override { TimeZone::setDefaultTimeZone(nullptr); }

    std::int64_t number(std::int64_t from, std::int64_t to) {
        return std::uniform_int_distribution<std::int64_t>(from, to)(random_);
    }

    /// A date of 1900 to 2100 or of far ahead: often the end of a month, a day of change, or some hours into it.
    std::int64_t start() {
        const std::int64_t year = number(0, 4) == 0 ? number(2100, 9700) : number(1900, 2100);
        const auto month = static_cast<int>(number(1, 12));
        int day = static_cast<int>(number(1, 28));
        if (number(0, 1) == 0) day = platform::CivilDay::lengthOfMonth(year, month);
        auto found =
            Calendar::current().startOfCivilDay(platform::CivilDay::fromYearMonthDay(year, month, day));
        if (number(0, 3) == 0) found = Calendar::current().timeZone()->nextTransition(found).value_or(found);
        return static_cast<std::int64_t>(found.unixSeconds()) + number(0, 1) * number(0, 80000);
    }

    struct Both {
        Ref<TKPeriodicBilling> fast;
        SlowBilling slow;
        std::string text;
    };
    Both rhythm() {
        static constexpr std::pair<std::uint64_t, Unit> Cycles[] = {{TKBillingCycleDay, Unit::Day},
                                                                    {TKBillingCycleWeek, Unit::Week},
                                                                    {TKBillingCycleMonth, Unit::Month},
                                                                    {TKBillingCycleYear, Unit::Year}};
        const auto& [cycle, unit] = Cycles[number(0, 3)];
        const std::int64_t period = number(1, 6);
        const bool atEnd = number(0, 1) == 1;
        auto fast =
            TKPeriodicBilling::periodicBillingForCycleWithPeriod(cycle, static_cast<std::uint64_t>(period));
        fast->setPeriodBillingMode(atEnd ? TKPeriodBillingModeEnd : TKPeriodBillingModeStart);
        return {fast, SlowBilling{slow_, unit, period, atEnd},
                std::to_string(period) + " × " + std::to_string(cycle) + " in " + GetParam()};
    }
    static std::vector<SlowPeriod> seconds(const Ref<TKPeriodRow>& row) {
        std::vector<SlowPeriod> all;
        for (const TKPeriod& each : *row)
            all.push_back({second(each.startDate()), second(each.endDate()), second(each.billingDate())});
        return all;
    }
    static std::int64_t second(std::optional<Date> each) {
        return static_cast<std::int64_t>(each->unixSeconds());
    }
    static std::string text(std::int64_t each) { return shown(Calendar::current(), date(each)); }

    std::mt19937_64 random_;
    SlowCalendar slow_{*ZoneFile::read(GetParam())};
};

TEST_P(PeriodicBillingTwinTest, RowsOfACountAgree) {
    for (int i = 0; i < 150; ++i) {
        const Both both = rhythm();
        const std::int64_t from = start();
        const auto count = static_cast<std::size_t>(number(0, 14));
        std::size_t calls = 0;
        const auto expected = both.slow.row(from, [&](std::int64_t) { return ++calls > count; });
        ASSERT_EQ(seconds(both.fast->periodsFromCount(date(from), count)), expected)
            << text(from) << ' ' << both.text;
        calls = 0;
        ASSERT_EQ(seconds(both.fast->periodsFromUntil(date(from), [&](Date) { return ++calls > count; })),
                  expected)
            << text(from) << ' ' << both.text;
    }
}

TEST_P(PeriodicBillingTwinTest, RowsToAnEndAgree) {
    for (int i = 0; i < 150; ++i) {
        const Both both = rhythm();
        const std::int64_t from = start();
        const std::int64_t to = from + number(-3, 900) * 86400 + number(0, 1) * number(-80000, 80000);
        const std::int64_t end = slow_.startOfDay(to);
        const auto expected = both.slow.row(from, [&](std::int64_t at) { return at >= end; });
        ASSERT_EQ(seconds(both.fast->periodsFromTo(date(from), date(to))), expected)
            << text(from) << " to " << text(to) << ' ' << both.text;
    }
}

TEST_P(PeriodicBillingTwinTest, DaysForPeriodsAgree) {
    for (int i = 0; i < 150; ++i) {
        const Both both = rhythm();
        const std::int64_t from = start();
        const Decimal periods = Decimal(number(0, 40)) / Decimal(number(1, 12));
        const std::uint64_t expected = both.slow.daysFor(from, periods);
        ASSERT_EQ(both.fast->daysFromDateForPeriods(date(from), periods), expected)
            << text(from) << ' ' << periods << " of " << both.text;
        ASSERT_EQ(both.fast->dateFromDateAfterPeriods(date(from), periods),
                  date(slow_.add(Unit::Day, static_cast<std::int64_t>(expected), slow_.startOfDay(from))))
            << text(from) << ' ' << periods << " of " << both.text;
    }
}

TEST_P(PeriodicBillingTwinTest, PeriodsInDaysAgree) {
    for (int i = 0; i < 150; ++i) {
        const Both both = rhythm();
        const std::int64_t from = start();
        const std::int64_t days = number(0, number(0, 1) == 0 ? 40 : 1200);
        ASSERT_EQ(both.fast->periodsFromDateForDays(date(from), static_cast<std::uint64_t>(days)),
                  both.slow.periodsIn(from, days))
            << text(from) << ' ' << days << " days of " << both.text;
    }
}

TEST_P(PeriodicBillingTwinTest, TheDaysOfWholePeriodsAreThosePeriods) {
    for (int i = 0; i < 150; ++i) {
        const Both both = rhythm();
        if (both.fast->cycle() == TKBillingCycleDay) continue;
        const Date from = date(start());
        const Decimal periods(number(0, 40));
        const std::uint64_t days = both.fast->daysFromDateForPeriods(from, periods);
        const Date boundary = *both.fast->dateWithPeriodOffsetFromStartDate(
            periods.unsignedIntegerValue(), both.fast->dateWithZeroOffset(from));
        // Where the boundary's wall time is missing, or its day, the day before is not yet the whole period.
        if (both.fast->dateFromDateAfterPeriods(from, periods) != boundary) continue;
        ASSERT_EQ(both.fast->periodsFromDateForDays(from, days), periods)
            << shown(Calendar::current(), from) << both.text;
    }
}

INSTANTIATE_TEST_SUITE_P(Zones, PeriodicBillingTwinTest, ::testing::ValuesIn(Zones), [](const auto& tested) {
    std::string name = tested.param;
    for (char& c : name) c = c == '/' ? '_' : c;
    return name;
});

} // namespace
} // namespace estatebook
