// SPDX-License-Identifier: MIT
#include "billing/RoundingExtensions.hpp"
#include "platform/calendar/Calendar.hpp"
#include "platform/system/HostOperations.hpp"
#include "store/OwnedObjects.hpp"
#include "tenure/TKTenure.hpp"

#include <algorithm>

namespace estatebook {

using namespace platform;

namespace {

/// Days between the midnights of two dates; 0 when either is absent.
std::uint64_t daysBetweenMidnights(const TKPeriodicBilling& billing, const std::optional<Date>& from,
                                   const std::optional<Date>& to) {
    if (!from || !to) return 0;
    const Calendar calendar = billing.calendar();
    return hostOperations().daysUntil(calendar.startOfDay(*from), calendar.startOfDay(*to));
}

} // namespace

std::optional<Number> TKTenure::maximumChargableDays() const {
    const auto end = endDate();
    if (!end) return std::nullopt;
    const std::uint64_t days = daysBetweenMidnights(*rentalPeriodicBilling(), startDate(), end);
    return Number(static_cast<std::int64_t>(days));
}

Number TKTenure::chargableDays() const {
    const auto start = startDate();
    if (!start) return Number(std::uint64_t{0});
    const auto today = currentDate();
    const auto flag = chargeFullDuration();
    const bool full = flag && flag->boolValue();
    const auto rental = rentalPeriodicBilling();

    auto end = full && endDate() ? endDate() : today;
    if (end && *end < *start) end = start;
    std::uint64_t days = daysBetweenMidnights(*rental, start, end);

    if (!full && advancePeriod() && today) {
        const auto advance = advancePeriodicBilling();
        const auto next =
            advance->period() != 0 ? advance->dateFromDateAfterPeriods(today, Decimal::one()) : std::nullopt;
        if (next) {
            const auto& daysUntil = hostOperations().daysUntil;
            const std::uint64_t fromToday = daysUntil(advance->calendar().startOfDay(*today), *next);
            const std::uint64_t fromStart = daysUntil(rental->calendar().startOfDay(*start), *next);
            days += std::min(fromToday, fromStart);
        }
    }
    if (const auto maximum = maximumChargableDays()) days = std::min(days, maximum->unsignedIntegerValue());
    return Number(days);
}

Decimal TKTenure::chargablePeriods() const {
    if (!rentalPeriod() || !rentalAmount() || !startDate()) return Decimal::zero();
    const Decimal periods =
        rentalPeriodicBilling()->periodsFromDateForDays(startDate(), chargableDays().unsignedIntegerValue());
    switch (unsignedValue(chargeBehaviour())) {
    case TKChargeBehaviourEnd:
        return decimalNumberByCeiling(periods);
    case TKChargeBehaviourStart:
        return decimalNumberByFlooring(periods);
    default:
        return periods;
    }
}

// The length of the letting

std::optional<Number> TKTenure::numberOfDays() const {
    const auto start = startDate();
    if (!start) return std::nullopt;
    return Number(
        daysBetweenMidnights(*rentalPeriodicBilling(), start, endDate() ? endDate() : currentDate()));
}

void TKTenure::setNumberOfDays(const std::optional<Number>& days) {
    const auto start = startDate();
    if (!start) return setEndDate(std::nullopt);
    const Calendar calendar = Calendar::current();
    const auto end = calendar.dateByAdding(CalendarUnit::Day, days ? days->integerValue() : 0, *start);
    if (!end || (calendar.isInBookYears(*start) && !calendar.isInBookYears(*end)))
        throw OverflowException("the letting would end beyond the years that books have");
    setEndDate(end);
}

std::optional<Decimal> TKTenure::numberOfPeriods() const {
    const auto days = numberOfDays();
    if (!days || !rentalPeriod()) return std::nullopt;
    return rentalPeriodicBilling()->periodsFromDateForDays(startDate(), days->unsignedIntegerValue());
}

void TKTenure::setNumberOfPeriods(const std::optional<Number>& periods) {
    const Decimal count = periods ? periods->decimalValue() : Decimal::zero();
    setNumberOfDays(Number(rentalPeriodicBilling()->daysFromDateForPeriods(startDate(), count)));
}

// Totals

Decimal TKTenure::totalCost() const {
    const auto rent = rentalAmount();
    if (!rent) return Decimal::zero();
    return decimalNumberByNegating(rent->decimalNumberByMultiplyingBy(chargablePeriods()));
}

Decimal TKTenure::totalIncome() const {
    Decimal total;
    for (const TKTransaction& transaction : transactions()) {
        const auto amount = transaction.amount();
        if (amount && !transaction.isAdjustment()) total = total.decimalNumberByAdding(*amount);
    }
    return total;
}

Decimal TKTenure::totalAdjustment() const {
    Decimal total;
    if (const auto bond = bondAmount()) total = Decimal::zero().decimalNumberBySubtracting(*bond);
    for (const TKTransaction& transaction : transactions()) {
        const auto amount = transaction.amount();
        if (amount && transaction.isAdjustment()) total = total.decimalNumberByAdding(*amount);
    }
    return total;
}

Decimal TKTenure::balance() const {
    const Decimal sum =
        totalIncome().decimalNumberByAdding(totalCost()).decimalNumberByAdding(totalAdjustment());
    if (unsignedValue(chargeBehaviour()) != TKChargeBehaviourPartial) return sum;
    return sum.decimalNumberByRoundingAccordingToBehavior(
        hostOperations().currencyRoundingBehaviourForCurrencyCode(currencyCode()));
}

bool TKTenure::isBalanced() const {
    return balance() >= Decimal::zero();
}

} // namespace estatebook
