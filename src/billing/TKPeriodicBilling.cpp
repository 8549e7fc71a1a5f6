// SPDX-License-Identifier: MIT
#include "billing/TKPeriodicBilling.hpp"

#include "billing/RoundingExtensions.hpp"
#include "platform/calendar/CalendarSteps.hpp"
#include "platform/system/HostOperations.hpp"
#include "platform/text/StringsTable.hpp"
#include "platform/values/Exception.hpp"

#include <algorithm>
#include <vector>

namespace estatebook {

using platform::Calendar;
using platform::CalendarSteps;
using platform::CalendarUnit;
using platform::Constant;
using platform::Date;
using platform::DateComponents;
using platform::Decimal;
using platform::OverflowException;
using platform::Ref;
using platform::String;
using platform::TimeZone;

namespace {

constinit Constant<String> daysWord{std::string_view("days")};
constinit Constant<String> weeksWord{std::string_view("weeks")};
constinit Constant<String> monthsWord{std::string_view("months")};
constinit Constant<String> yearsWord{std::string_view("years")};

/// What a billing cycle is to the calendar.
struct CycleRow {
    std::uint64_t cycle;
    CalendarUnit unit;
    std::optional<std::int64_t> DateComponents::*part;
    Constant<String>* name;
    /// The days of the shortest such cycle.
    std::uint64_t shortest;
};

constexpr CycleRow Cycles[] = {
    {TKBillingCycleDay, CalendarUnit::Day, &DateComponents::day, &daysWord, 1},
    {TKBillingCycleWeek, CalendarUnit::WeekOfYear, &DateComponents::weekOfYear, &weeksWord, 7},
    {TKBillingCycleMonth, CalendarUnit::Month, &DateComponents::month, &monthsWord, 28},
    {TKBillingCycleYear, CalendarUnit::Year, &DateComponents::year, &yearsWord, 365},
};

/// Null for an unknown cycle.
const CycleRow* rowOf(std::uint64_t cycle) {
    const auto* const row = std::ranges::find(Cycles, cycle, &CycleRow::cycle);
    return row == std::end(Cycles) ? nullptr : row;
}

CalendarUnit unitOf(std::uint64_t cycle) {
    const CycleRow* const row = rowOf(cycle);
    return row ? row->unit : CalendarUnit::None;
}

[[noreturn]] void raiseOutOfYears() {
    throw OverflowException("Billing periods beyond the years 1583 to 9999");
}

/// The addition, if it stays within the years of books. Only a step out of them raises: an odd date that stays
/// where it is is nobody's mistake.
Date stepped(const Calendar& calendar, CalendarUnit unit, std::uint64_t amount, Date date) {
    const auto units = static_cast<std::int64_t>(amount);
    const std::optional<Date> result = calendar.dateByAdding(unit, units, date);
    if (!result) raiseOutOfYears();
    if (*result == date) return *result;
    const auto day = calendar.civilDay(*result);
    if (units > 0 ? day > Calendar::LastBookDay : day < Calendar::FirstBookDay) raiseOutOfYears();
    return *result;
}

std::uint64_t daysUntil(Date from, Date to) {
    return platform::hostOperations().daysUntil(from, to);
}

/// Makes a row, period after period.
class RowMaker {
public:
    RowMaker(std::size_t capacity, Date anchor, std::uint64_t mode)
        : builder_(capacity), last_(anchor), billsAtEnd_(mode == TKPeriodBillingModeEnd) {}

    void append(Date end) {
        builder_.emplace(last_, end, billsAtEnd_ ? end : last_);
        last_ = end;
    }

    [[nodiscard]] Ref<TKPeriodRow> finish() { return std::move(builder_).finish(); }

private:
    TKPeriodRow::Builder builder_;
    Date last_;
    bool billsAtEnd_;
};

Ref<TKPeriodRow> emptyRow() {
    return TKPeriodRow::Builder(0).finish();
}

} // namespace

TKPeriodicBilling::TKPeriodicBilling(std::uint64_t cycle, std::uint64_t period)
    : Object(platform::Counting::Local), calendar_(Calendar::current()), cycle_(cycle), period_(period) {}

Ref<TKPeriodicBilling> TKPeriodicBilling::initWithCycleWithPeriod(std::uint64_t cycle, std::uint64_t period) {
    return Ref<TKPeriodicBilling>(new TKPeriodicBilling(cycle, period));
}

Ref<TKPeriodicBilling> TKPeriodicBilling::periodicBillingForCycleWithPeriod(std::uint64_t cycle,
                                                                            std::uint64_t period) {
    return initWithCycleWithPeriod(cycle, period);
}

std::uint64_t TKPeriodicBilling::periodicCalendarUnits() const noexcept {
    return static_cast<std::uint64_t>(unitOf(cycle_));
}

Ref<String> TKPeriodicBilling::periodicNameForBillingCycle(std::uint64_t cycle) {
    const CycleRow* const row = rowOf(cycle);
    if (!row) return nullptr;
    return platform::localizedStringForKeyValueTable(Ref<String>(row->name->get()));
}

std::uint64_t TKPeriodicBilling::numberOfDays(const Ref<TKPeriodRow>& periods) {
    if (!periods || periods->empty()) return 0;
    const auto start = (*periods)[0].startDate();
    const auto end = periods->back().endDate();
    return start && end ? daysUntil(*start, *end) : 0;
}

DateComponents TKPeriodicBilling::dateComponentsWithOffset(std::uint64_t offset) const {
    DateComponents components;
    if (const CycleRow* const row = rowOf(cycle_)) components.*row->part = static_cast<std::int64_t>(offset);
    return components;
}

std::optional<Date> TKPeriodicBilling::dateWithZeroOffset(std::optional<Date> date) const {
    if (!date) return {};
    return calendar_.startOfDay(*date);
}

std::optional<Date>
TKPeriodicBilling::dateWithPeriodOffsetFromStartDate(std::uint64_t periods,
                                                     std::optional<Date> startDate) const {
    if (!startDate) return {};
    return dateAfter(periods, *startDate);
}

Date TKPeriodicBilling::dateAfter(std::uint64_t periods, Date start) const {
    return stepped(calendar_, unitOf(cycle_), periods * period_, start);
}

std::uint64_t TKPeriodicBilling::daysFromDateForPeriods(std::optional<Date> date,
                                                        const std::optional<Decimal>& periods) const {
    if (!date || !periods) return 0;
    const Date start = calendar_.startOfDay(*date);
    const Decimal whole = decimalNumberByFlooring(*periods);
    const Decimal fraction = *periods - whole;
    const std::uint64_t wholePeriods = whole.unsignedIntegerValue();
    const Date running = dateAfter(wholePeriods, start);
    std::uint64_t days = daysUntil(start, running);
    if (fraction != Decimal::zero()) {
        const Date next = dateAfter(wholePeriods + 1, start);
        const Decimal share = fraction * decimalNumberWithUnsignedInteger(daysUntil(running, next));
        days += decimalNumberByCeiling(share).unsignedIntegerValue();
    }
    return days;
}

std::optional<Date> TKPeriodicBilling::dateFromDateAfterPeriods(std::optional<Date> date,
                                                                const std::optional<Decimal>& periods) const {
    const std::optional<Date> start = dateWithZeroOffset(date);
    if (!start) return {};
    return stepped(calendar_, CalendarUnit::Day, daysFromDateForPeriods(start, periods), *start);
}

Decimal TKPeriodicBilling::periodsFromDateForDays(std::optional<Date> date, std::uint64_t days) const {
    if (!date) return Decimal::zero();
    const Date start = calendar_.startOfDay(*date);
    const Date end = stepped(calendar_, CalendarUnit::Day, days, start);
    const CycleRow* const row = rowOf(cycle_);
    if (!row) return decimalNumberWithNumeratorDenominator(daysUntil(start, end), 0);
    const DateComponents difference = calendar_.componentsFromDateToDate(row->unit, start, end);
    const auto cycles = static_cast<std::uint64_t>((difference.*row->part).value_or(0));
    const Decimal quotient = decimalNumberWithNumeratorDenominator(cycles, period_);
    if (cycle_ == TKBillingCycleDay) return quotient;
    const Decimal whole = decimalNumberByFlooring(quotient);
    const std::uint64_t wholePeriods = whole.unsignedIntegerValue();
    const Date running = dateAfter(wholePeriods, start);
    const Date next = dateAfter(wholePeriods + 1, start);
    return whole + decimalNumberWithNumeratorDenominator(daysUntil(running, end), daysUntil(running, next));
}

Ref<TKPeriodRow> TKPeriodicBilling::periodsFromUntil(std::optional<Date> startDate,
                                                     const std::function<bool(Date)>& isDone) const {
    const std::optional<Date> anchor = dateWithZeroOffset(startDate);
    if (!anchor || isDone(*anchor)) return emptyRow();
    if (!TimeZone::isCalendarDate(*anchor)) raiseOutOfYears();
    std::vector<Date> ends;
    CalendarSteps steps(calendar_, unitOf(cycle_), period_, *anchor);
    do {
        if (!steps.next(ends.emplace_back())) raiseOutOfYears();
    } while (!isDone(ends.back()));
    RowMaker row(ends.size(), *anchor, periodBillingMode_);
    for (const Date end : ends) row.append(end);
    return row.finish();
}

Ref<TKPeriodRow> TKPeriodicBilling::periodsFromTo(std::optional<Date> startDate,
                                                  std::optional<Date> endDate) const {
    const std::optional<Date> anchor = dateWithZeroOffset(startDate);
    const std::optional<Date> end = dateWithZeroOffset(endDate);
    if (!anchor || !end || *anchor >= *end) return emptyRow();
    const CycleRow* const cycle = rowOf(cycle_);
    const bool advances = cycle && static_cast<std::int64_t>(period_) > 0;
    if (!advances || !TimeZone::isCalendarDate(*anchor) || !TimeZone::isCalendarDate(*end)) raiseOutOfYears();
    // Room for as many of the shortest periods; October 1582 was ten days shorter than its name says.
    const auto first = calendar_.civilDay(*anchor);
    const auto last = std::min(calendar_.civilDay(*end), Calendar::LastBookDay);
    const std::int64_t days = last - first + (first < Calendar::FirstBookDay ? 10 : 0);
    const std::uint64_t cycles = days > 0 ? static_cast<std::uint64_t>(days) / cycle->shortest : 0;
    RowMaker row(cycles / period_ + 1, *anchor, periodBillingMode_);
    CalendarSteps steps(calendar_, cycle->unit, period_, *anchor);
    Date boundary;
    do {
        if (!steps.next(boundary)) raiseOutOfYears();
        row.append(boundary);
    } while (!(boundary >= *end));
    return row.finish();
}

Ref<TKPeriodRow> TKPeriodicBilling::periodsFromCount(std::optional<Date> startDate,
                                                     std::uint64_t count) const {
    const std::optional<Date> anchor = dateWithZeroOffset(startDate);
    if (!anchor || count == 0) return emptyRow();
    if (!TimeZone::isCalendarDate(*anchor) || count > platform::ObjectBlock<TKPeriod>::MaximalCount)
        raiseOutOfYears();
    // Boundaries run one way, so when the last one can be had, all can. A row that leaves the years is refused
    // before there is any room made for it.
    constexpr std::int64_t Farthest = std::int64_t{1} << 31;
    const auto amount = static_cast<std::int64_t>(period_);
    if (amount > Farthest || amount < -Farthest) raiseOutOfYears();
    const auto farthest = amount * static_cast<std::int64_t>(count);
    (void)stepped(calendar_, unitOf(cycle_), static_cast<std::uint64_t>(farthest), *anchor);
    RowMaker row(count, *anchor, periodBillingMode_);
    CalendarSteps steps(calendar_, unitOf(cycle_), period_, *anchor);
    Date boundary;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (!steps.next(boundary)) raiseOutOfYears();
        row.append(boundary);
    }
    return row.finish();
}

} // namespace estatebook
