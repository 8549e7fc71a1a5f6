// SPDX-License-Identifier: MIT
#pragma once

/// SlowCalendar: the calendar's rules written down as plainly as they can be said, over the standard
/// library's civil days and the plain reader of zone files. For whole seconds of the years 1583 to 9999.

#include "support/ZoneFile.hpp"

#include <chrono>
#include <cstdint>
#include <utility>

namespace estatebook::testkit {

class SlowCalendar {
public:
    enum class Unit { Day, Week, Month, Year };

    explicit SlowCalendar(ZoneFile zone) : zone_(std::move(zone)) {}

    const ZoneFile& zone() const { return zone_; }

    std::chrono::sys_days day(std::int64_t second) const {
        return std::chrono::floor<std::chrono::days>(wall(second));
    }

    std::int64_t startOfDay(std::int64_t second) const {
        const auto today = day(second);
        const auto midnights =
            zone_.instantsOfWall(std::chrono::sys_seconds(today).time_since_epoch().count());
        if (!midnights.empty()) return midnights.front();
        std::int64_t first = second; // no midnight: walk back to where the day began
        while (day(first - 1) == today) --first;
        return first;
    }

    /// REQUIRES: an amount of 0 or more.
    std::int64_t add(Unit unit, std::int64_t amount, std::int64_t second) const {
        using namespace std::chrono;
        if (amount == 0) return second;
        sys_days target = day(second);
        if (unit == Unit::Day) target += days(amount);
        if (unit == Unit::Week) target += days(7 * amount);
        if (unit == Unit::Month || unit == Unit::Year) {
            year_month_day date(target);
            date += months(unit == Unit::Year ? 12 * amount : amount);
            if (!date.ok()) date = date.year() / date.month() / last;
            target = date;
        }
        const auto timeOfDay = wall(second) - day(second);
        return instant((target + timeOfDay).time_since_epoch().count());
    }

    /// The instant of a wall time: the earlier of two; a missing one lies behind the gap as far as it lies in
    /// it.
    std::int64_t instant(std::int64_t wallSecond) const {
        const auto found = zone_.instantsOfWall(wallSecond);
        if (!found.empty()) return found.front();
        for (const std::int64_t change : zone_.changes(wallSecond - 200000, wallSecond + 200000)) {
            const std::int64_t gapStart = change + zone_.offsetAt(change - 1);
            const std::int64_t gapEnd = change + zone_.offsetAt(change);
            if (wallSecond >= gapStart && wallSecond < gapEnd) return change + (wallSecond - gapStart);
        }
        return 0;
    }

    /// The largest number of units of which start + number is not past the end, found by trying all.
    std::int64_t difference(Unit unit, std::int64_t start, std::int64_t end) const {
        std::int64_t number = 0;
        while (add(unit, number + 1, start) <= end) ++number;
        return number;
    }

    /// 0 for a reversed pair.
    std::uint64_t daysFromTo(std::int64_t a, std::int64_t b) const {
        const auto difference = (day(b) - day(a)).count();
        return difference < 0 ? 0 : static_cast<std::uint64_t>(difference);
    }

private:
    std::chrono::sys_seconds wall(std::int64_t second) const {
        return std::chrono::sys_seconds(std::chrono::seconds(second + zone_.offsetAt(second)));
    }

    ZoneFile zone_;
};

} // namespace estatebook::testkit
