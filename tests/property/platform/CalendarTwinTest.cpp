// SPDX-License-Identifier: MIT
// The calendar against a slow one that tries everything, in every zone of the system.

#include "platform/calendar/Calendar.hpp"
#include "platform/calendar/CalendarSteps.hpp"

#include "support/Dates.hpp"
#include "support/SlowCalendar.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using estatebook::testkit::shown;
using estatebook::testkit::SlowCalendar;
using estatebook::testkit::ZoneFile;

struct Pair {
    std::string name;
    Calendar calendar;
    SlowCalendar slow;
};

const std::vector<Pair>& pairs() {
    static const std::vector<Pair> all = [] {
        std::vector<Pair> made;
        for (const std::string& name : ZoneFile::names())
            made.push_back({name, Calendar(TimeZone::named(name)), SlowCalendar(*ZoneFile::read(name))});
        return made;
    }();
    return all;
}

struct UnitPair {
    CalendarUnit unit;
    SlowCalendar::Unit slow;
    std::optional<std::int64_t> DateComponents::*part;
};
constexpr UnitPair Units[] = {
    {CalendarUnit::Day, SlowCalendar::Unit::Day, &DateComponents::day},
    {CalendarUnit::WeekOfYear, SlowCalendar::Unit::Week, &DateComponents::weekOfYear},
    {CalendarUnit::Month, SlowCalendar::Unit::Month, &DateComponents::month},
    {CalendarUnit::Year, SlowCalendar::Unit::Year, &DateComponents::year},
};

Date date(std::int64_t second) {
    return Date::fromUnixSeconds(static_cast<double>(second));
}

/// Instants at which calendars go wrong: around transitions, at month ends, on leap days, far ahead.
class Script {
public:
    explicit Script(std::uint64_t seed) : random_(seed) {}

    std::int64_t number(std::int64_t from, std::int64_t to) {
        return std::uniform_int_distribution<std::int64_t>(from, to)(random_);
    }

    std::int64_t instant(const SlowCalendar& slow) {
        static constexpr int Eras[][2] = {
            {1583, 1900}, {1900, 2037}, {2000, 2037}, {2037, 2500}, {2500, 9989}};
        const auto& era = Eras[number(0, 4)];
        const auto year = std::chrono::year(static_cast<int>(number(era[0], era[1])));
        std::chrono::year_month_day day =
            year / static_cast<int>(number(1, 12)) / static_cast<int>(number(1, 28));
        if (number(0, 2) == 0) day = day.year() / day.month() / std::chrono::last;
        if (number(0, 3) == 0) day = std::chrono::year_month_day(year / 2 / std::chrono::last);
        std::int64_t wall = std::chrono::sys_days(day).time_since_epoch().count() * 86400;
        if (number(0, 2) == 0) wall += number(0, 86399);
        const std::int64_t second = slow.instant(wall);
        if (number(0, 3) != 0) return second;
        const auto changes = slow.zone().changes(second, second + 400 * 86400);
        return changes.empty() ? second : changes.front() + number(-90000, 90000);
    }

private:
    std::mt19937_64 random_;
};

class CalendarTwinTest : public ::testing::Test {
protected:
    void SetUp() override {
        const std::uint64_t seed = std::random_device{}();
        std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
        script_ = Script(seed);
    }
    Script script_{0};
};

TEST_F(CalendarTwinTest, AdditionsAgree) {
    for (const Pair& pair : pairs()) {
        for (int i = 0; i < 40; ++i) {
            const std::int64_t start = script_.instant(pair.slow);
            for (const UnitPair& unit : Units) {
                const std::int64_t amount = script_.number(0, i % 2                             ? 10
                                                              : unit.unit == CalendarUnit::Year ? 10
                                                                                                : 120);
                const auto found = pair.calendar.dateByAdding(unit.unit, amount, date(start));
                ASSERT_EQ(found, date(pair.slow.add(unit.slow, amount, start)))
                    << pair.name << ' ' << shown(pair.calendar, date(start)) << " + " << amount << " × "
                    << static_cast<std::uint64_t>(unit.unit) << " = " << shown(pair.calendar, found);
            }
        }
    }
}

TEST_F(CalendarTwinTest, StepsAreTheAdditionsFromTheAnchor) {
    for (const Pair& pair : pairs()) {
        for (int i = 0; i < 6; ++i) {
            const std::int64_t anchor = script_.instant(pair.slow);
            const auto count = static_cast<std::uint64_t>(script_.number(1, 5));
            for (const UnitPair& unit : Units) {
                CalendarSteps steps(pair.calendar, unit.unit, count, date(anchor));
                for (std::uint64_t n = 1; n <= 20; ++n) {
                    Date found;
                    if (!steps.next(found)) {
                        const auto last = pair.calendar.dateByAdding(
                            unit.unit, static_cast<std::int64_t>(n * count), date(anchor));
                        ASSERT_FALSE(pair.calendar.isInBookYears(*last)) << pair.name;
                        break;
                    }
                    ASSERT_EQ(found,
                              date(pair.slow.add(unit.slow, static_cast<std::int64_t>(n * count), anchor)))
                        << pair.name << ' ' << shown(pair.calendar, date(anchor)) << " step " << n;
                }
            }
        }
    }
}

TEST_F(CalendarTwinTest, DifferencesAgree) {
    for (const Pair& pair : pairs()) {
        for (int i = 0; i < 6; ++i) {
            const std::int64_t start = script_.instant(pair.slow);
            for (const UnitPair& unit : Units) {
                // An end near a whole number of units, where the answer turns.
                const std::int64_t whole = pair.slow.add(unit.slow, script_.number(0, 14), start);
                const std::int64_t end =
                    std::max(start, whole + script_.number(-1, 1) * script_.number(0, 90000));
                const auto found = pair.calendar.componentsFromDateToDate(unit.unit, date(start), date(end));
                ASSERT_EQ(found.*unit.part, pair.slow.difference(unit.slow, start, end))
                    << pair.name << ' ' << shown(pair.calendar, date(start)) << " to "
                    << shown(pair.calendar, date(end)) << " in " << static_cast<std::uint64_t>(unit.unit);
            }
        }
    }
}

TEST_F(CalendarTwinTest, ADifferenceBackIsTheFarthestThatDoesNotPassTheEnd) {
    for (const Pair& pair : pairs()) {
        for (int i = 0; i < 20; ++i) {
            const Date start = date(script_.instant(pair.slow));
            const Date end{start.secondsSinceReferenceDate -
                           static_cast<double>(script_.number(1, 40'000'000))};
            for (const UnitPair& unit : Units) {
                const auto found = pair.calendar.componentsFromDateToDate(unit.unit, start, end);
                const std::int64_t count = *(found.*unit.part);
                ASSERT_LE(count, 0);
                ASSERT_GE(*pair.calendar.dateByAdding(unit.unit, count, start), end) << pair.name;
                ASSERT_LT(*pair.calendar.dateByAdding(unit.unit, count - 1, start), end) << pair.name;
            }
        }
    }
}

TEST_F(CalendarTwinTest, DaysAndTheirStartsAgree) {
    for (const Pair& pair : pairs()) {
        for (int i = 0; i < 40; ++i) {
            const std::int64_t a = script_.instant(pair.slow), b = script_.instant(pair.slow);
            ASSERT_EQ(pair.calendar.civilDay(date(a)).number, pair.slow.day(a).time_since_epoch().count())
                << pair.name;
            ASSERT_EQ(pair.calendar.daysFromTo(date(a), date(b)), pair.slow.daysFromTo(a, b)) << pair.name;
            const Date start = pair.calendar.startOfDay(date(a));
            ASSERT_EQ(start, date(pair.slow.startOfDay(a)))
                << pair.name << ' ' << shown(pair.calendar, date(a));
            ASSERT_EQ(pair.calendar.startOfDay(start), start) << pair.name;
            auto day = pair.calendar.componentsFromDate(CalendarUnit::Era | CalendarUnit::Year |
                                                            CalendarUnit::Month | CalendarUnit::Day |
                                                            CalendarUnit::TimeZone,
                                                        date(a));
            ASSERT_EQ(pair.calendar.dateFromComponents(day), start) << pair.name;
        }
    }
}

TEST_F(CalendarTwinTest, EveryDayOfTwoHundredYearsBeginsWhereTheSlowCalendarSays) {
    for (const char* name :
         {"America/Sao_Paulo", "Asia/Beirut", "Africa/Cairo", "America/Havana", "Pacific/Apia",
          "Atlantic/Azores", "America/St_Johns", "Asia/Amman", "America/Toronto"}) {
        const Calendar calendar(TimeZone::named(name));
        const SlowCalendar slow(*ZoneFile::read(name));
        const CivilDay last = CivilDay::fromYearMonthDay(2050, 1, 1);
        for (CivilDay day = CivilDay::fromYearMonthDay(1850, 1, 1); day < last; day = day + 1) {
            const Date start = calendar.startOfCivilDay(day);
            const auto second = static_cast<std::int64_t>(start.unixSeconds());
            ASSERT_GE(slow.day(second).time_since_epoch().count(), day.number) << name;
            if (calendar.civilDay(start) == day) {
                ASSERT_EQ(start, date(slow.startOfDay(second))) << name;
            }
        }
    }
}

TEST_F(CalendarTwinTest, DatesOfAnyBitsAreHarmless) {
    const Calendar berlin(TimeZone::named("Europe/Berlin"));
    for (int i = 0; i < 20000; ++i) {
        const auto bits = static_cast<std::uint64_t>(script_.number(
            std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()));
        const Date any{std::bit_cast<double>(bits)};
        const std::int64_t amount = static_cast<std::int64_t>(bits * 0x9E3779B97F4A7C15u) >> (bits % 64);
        (void)berlin.componentsFromDate(static_cast<CalendarUnit>(~std::uint64_t{0}), any);
        (void)berlin.daysFromTo(any, Date{0});
        (void)berlin.timeZone()->nextTransition(any);
        (void)berlin.dateFromComponents({.year = amount, .month = amount, .day = amount, .hour = amount});
        for (const UnitPair& unit : Units) {
            (void)berlin.dateByAdding(unit.unit, amount, any);
            (void)berlin.componentsFromDateToDate(unit.unit, any, Date{0});
            CalendarSteps steps(berlin, unit.unit, static_cast<std::uint64_t>(amount), any);
            Date next;
            for (int n = 0; n < 3; ++n) (void)steps.next(next);
        }
        if (TimeZone::isCalendarDate(any)) {
            const Date start = berlin.startOfDay(any);
            ASSERT_LE(start, any);
            ASSERT_EQ(berlin.civilDay(start), berlin.civilDay(any));
        }
    }
}

} // namespace
} // namespace estatebook::platform
