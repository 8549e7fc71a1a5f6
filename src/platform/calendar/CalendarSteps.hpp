// SPDX-License-Identifier: MIT
#pragma once

/// CalendarSteps: the dates anchor, anchor + n units, anchor + 2n units and so on, each counted from the
/// anchor and never from the one before, so that month ends do not drift: monthly steps from 31 January are
/// 28 February, 31 March, 30 April.
///
///     CalendarSteps steps(calendar, CalendarUnit::Month, 1, start);
///     Date boundary;
///     while (steps.next(boundary) && boundary < end) …
///
/// Each date is what `Calendar::dateByAdding` gives for that amount; nothing is allocated, and a step costs
/// some nanoseconds (bench/CalendarBench.cpp). A unit other than year, month, week and day, and a
/// count of 0, give the anchor again and again.
///
/// The trap: `next` answers false when there is no such date to give: the step would go past the year 9999
/// (or, going back, before 1583), or its amount is beyond 2^31. The amount is the product count × step modulo
/// 2^64 read as a signed number, so a huge count may step back in time.

#include "platform/calendar/Calendar.hpp"
#include "platform/calendar/CivilDay.hpp"
#include "platform/calendar/DateComponents.hpp"
#include "platform/values/Date.hpp"

#include <cstdint>

namespace estatebook::platform {

class ESTATEBOOK_API CalendarSteps {
public:
    CalendarSteps(const Calendar& calendar, CalendarUnit unit, std::uint64_t count, Date anchor) noexcept;

    /// Gives the next date; the first call gives anchor + count units. False, and the date untouched, when
    /// the years 1583 to 9999 are left.
    [[nodiscard]] bool next(Date& date) noexcept {
        amount_ += count_;
        if (amount_ - 1 >= LargestAmount) [[unlikely]]
            return nextSlowly(date);
        const std::int64_t units = static_cast<std::int64_t>(amount_) * unitLength_;
        const CivilDay day = inMonths_ ? CivilDay::clamped(anchorMonth_ + units, anchorDayOfMonth_)
                                       : CivilDay{anchorDay_.number + units};
        if (day > Calendar::LastBookDay) [[unlikely]]
            return false;
        const std::int64_t wall = day.number * Calendar::SecondsPerDay + secondOfDay_;
        date.secondsSinceReferenceDate =
            static_cast<double>(calendar_.zone_->instantOfWallSecond(wall) - TimeZone::ReferenceSecond) +
            fraction_;
        return true;
    }

private:
    static constexpr std::uint64_t LargestAmount = std::uint64_t{1} << 31;

    [[nodiscard]] bool nextSlowly(Date& date) const noexcept;

    Calendar calendar_;
    CalendarUnit unit_;
    std::uint64_t count_;
    std::uint64_t amount_ = 0;
    Date anchor_;
    bool inMonths_ = false;
    /// Months or days in one unit.
    std::int64_t unitLength_ = 0;
    CivilDay anchorDay_;
    std::int64_t anchorMonth_ = 0;
    int anchorDayOfMonth_ = 1;
    std::int64_t secondOfDay_ = 0;
    double fraction_ = 0;
};

} // namespace estatebook::platform
