// SPDX-License-Identifier: MIT
#pragma once

/// TKPeriodicBilling: the rhythm in which rent falls due, and what follows from it: rows of billing periods,
/// days turned into periods and back, and the date some periods after another.
///
/// A rhythm is a billing cycle (day, week, month or year), the number of cycles in one period (2 weeks, 3
/// months), and whether a period is billed on its first day or at its end. Dates are moved to the first
/// instant of their day in `calendar`, and every boundary is counted from one anchor, never from the boundary
/// before: a monthly row from 31 January ends its periods on 28 February, 31 March, 30 April.
///
///     auto monthly = TKPeriodicBilling::periodicBillingForCycleWithPeriod(TKBillingCycleMonth, 1);
///     auto row = monthly->periodsFromTo(start, end);              // the last period may pass the end
///     monthly->periodsFromDateForDays(firstOfJanuary, 45);        // 1.5: January and 14 of 28 days
///     monthly->daysFromDateForPeriods(firstOfJanuary, Decimal::parse("1.5"));   // 45
///
/// The traps. Periods are not equally long, so the same number of days is another number of periods from
/// another date. Parts of a period are reckoned to 38 digits and then taken literally: of 5/3 periods the
/// part of 2/3 is a hair above 20 days of 30, and that hair counts as a day. And days are counted by the host
/// (hostOperations().daysUntil), in the current calendar and not in this `calendar`.
///
/// Odd data: an absent start date gives an absent date, 0 days or periods, and no rows. With an unknown
/// cycle, and with a period of 0, every boundary is the anchor. Counts are unsigned; a product of count and
/// period wraps modulo 2^64 and is then read as a signed number, so that one beyond 2^63 goes back in time.
/// What leaves the years 1583 to 9999 raises OverflowException.
///
/// Instances are short-lived and used on one thread.

#include "EstateBook_ModelExport.hpp"

#include "billing/TKPeriod.hpp"
#include "platform/calendar/Calendar.hpp"
#include "platform/calendar/DateComponents.hpp"
#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"
#include "platform/values/String.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace estatebook {

/// The billing cycles, by the nominal number of their days. Books store these numbers.
enum TKBillingCycle : std::uint64_t {
    TKBillingCycleDay = 1,
    TKBillingCycleWeek = 7,
    TKBillingCycleMonth = 30,
    TKBillingCycleYear = 365,
};

/// Whether a period is billed on its start date or on its end date.
enum TKPeriodBillingMode : std::uint64_t {
    TKPeriodBillingModeStart = 0,
    TKPeriodBillingModeEnd = 1,
};

class ESTATEBOOK_API TKPeriodicBilling : public platform::Object {
public:
    using Date = platform::Date;
    using Decimal = platform::Decimal;
    template <class T>
    using Ref = platform::Ref<T>;

    /// initWithCycle:withPeriod:
    /// A rhythm of `period` cycles in the current calendar, billed at the start of periods. Any cycle may be
    /// given; one that is not in TKBillingCycle is unknown.
    [[nodiscard]] static Ref<TKPeriodicBilling> initWithCycleWithPeriod(std::uint64_t cycle,
                                                                        std::uint64_t period);
    /// periodicBillingForCycle:withPeriod:
    /// The same.
    [[nodiscard]] static Ref<TKPeriodicBilling> periodicBillingForCycleWithPeriod(std::uint64_t cycle,
                                                                                  std::uint64_t period);

    /// calendar: in which all dates are reckoned; the current one of the moment the rhythm was made.
    [[nodiscard]] platform::Calendar calendar() const noexcept { return calendar_; }
    void setCalendar(const platform::Calendar& calendar) noexcept { calendar_ = calendar; }

    /// cycle: one of TKBillingCycle; anything else is unknown.
    [[nodiscard]] std::uint64_t cycle() const noexcept { return cycle_; }
    void setCycle(std::uint64_t cycle) noexcept { cycle_ = cycle; }

    /// period: the cycles in one billing period.
    [[nodiscard]] std::uint64_t period() const noexcept { return period_; }
    void setPeriod(std::uint64_t period) noexcept { period_ = period; }

    /// periodBillingMode: one of TKPeriodBillingMode; anything but TKPeriodBillingModeEnd bills at the start.
    [[nodiscard]] std::uint64_t periodBillingMode() const noexcept { return periodBillingMode_; }
    void setPeriodBillingMode(std::uint64_t mode) noexcept { periodBillingMode_ = mode; }

    /// periodicCalendarUnits: the calendar unit of the cycle (day 16, week 8192, month 8, year 4); 0 for an
    /// unknown one.
    [[nodiscard]] std::uint64_t periodicCalendarUnits() const noexcept;

    /// periodicNameForBillingCycle:
    /// The main program's text for "days", "weeks", "months" or "years", or that word itself where it has none;
    /// null for an unknown cycle.
    [[nodiscard]] static Ref<platform::String> periodicNameForBillingCycle(std::uint64_t cycle);

    /// numberOfDays:
    /// The days from the start of the first period to the end of the last; 0 for an empty row, for null, and
    /// where one of the two dates is absent.
    [[nodiscard]] static std::uint64_t numberOfDays(const Ref<TKPeriodRow>& periods);

    /// dateComponentsWithOffset:
    /// Parts with the cycle's unit set to the offset; no parts for an unknown cycle.
    [[nodiscard]] platform::DateComponents dateComponentsWithOffset(std::uint64_t offset) const;

    /// dateWithZeroOffset:
    /// The first instant of the date's day.
    [[nodiscard]] std::optional<Date> dateWithZeroOffset(std::optional<Date> date) const;

    /// dateWithPeriodOffset:fromStartDate:
    /// The date that many periods after the start date, which is taken as it is, hour and all. Raises
    /// OverflowException when the years 1583 to 9999 are left.
    [[nodiscard]] std::optional<Date> dateWithPeriodOffsetFromStartDate(std::uint64_t periods,
                                                                        std::optional<Date> startDate) const;

    /// daysFromDate:forPeriods:
    /// The days that the periods from that date's day on take. A part of a period takes its share of the
    /// days of the period it falls into, rounded up to whole days. An absent number of periods is 0. Raises
    /// OverflowException when the years 1583 to 9999 are left and for a number that is none.
    [[nodiscard]] std::uint64_t daysFromDateForPeriods(std::optional<Date> date,
                                                       const std::optional<Decimal>& periods) const;

    /// dateFromDate:afterPeriods:
    /// The date those days after the first instant of the date's day.
    [[nodiscard]] std::optional<Date> dateFromDateAfterPeriods(std::optional<Date> date,
                                                               const std::optional<Decimal>& periods) const;

    /// periodsFromDate:forDays:
    /// The periods that the days from that date's day on make up: days over `period` for the day cycle; else
    /// the whole periods and the share of the next one's days, not rounded. Raises DivideByZeroException for
    /// a period of 0 and for an unknown cycle, OverflowException when the years 1583 to 9999 are left.
    [[nodiscard]] Decimal periodsFromDateForDays(std::optional<Date> date, std::uint64_t days) const;

    /// periodsFrom:until:
    /// The periods from the date's day on. The predicate is asked with the anchor first, and then with the end
    /// of each period made; when it answers true the row is done. Raises OverflowException when a period would
    /// leave the years 1583 to 9999. REQUIRES: a predicate that answers true at last.
    [[nodiscard]] Ref<TKPeriodRow> periodsFromUntil(std::optional<Date> startDate,
                                                    const std::function<bool(Date)>& isDone) const;

    /// periodsFrom:to:
    /// The periods from the start date's day up to the first boundary that is not before the end date's day. No
    /// periods when both fall on one day, or one of them is absent. Raises OverflowException when the years
    /// 1583 to 9999 are left before that, and where boundaries do not move (a period of 0, an unknown
    /// cycle), in place of an endless row.
    [[nodiscard]] Ref<TKPeriodRow> periodsFromTo(std::optional<Date> startDate,
                                                 std::optional<Date> endDate) const;

    /// periodsFrom:count:
    /// The first `count` periods from the start date's day on. Takes 64 bytes for each. Raises OverflowException
    /// when the years 1583 to 9999 are left.
    [[nodiscard]] Ref<TKPeriodRow> periodsFromCount(std::optional<Date> startDate, std::uint64_t count) const;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "TKPeriodicBilling"; }

protected:
    TKPeriodicBilling(std::uint64_t cycle, std::uint64_t period);
    ~TKPeriodicBilling() override = default;

private:
    [[nodiscard]] Date dateAfter(std::uint64_t periods, Date start) const;

    platform::Calendar calendar_;
    std::uint64_t cycle_;
    std::uint64_t period_;
    std::uint64_t periodBillingMode_ = TKPeriodBillingModeStart;
};

} // namespace estatebook
