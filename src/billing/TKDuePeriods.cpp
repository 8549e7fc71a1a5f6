// SPDX-License-Identifier: MIT
#include "billing/TKDuePeriods.hpp"

#include "billing/RoundingExtensions.hpp"
#include "billing/TKPeriodicBilling.hpp"
#include "platform/values/Exception.hpp"
#include "tenure/TKTenure.hpp"

#include <algorithm>

namespace estatebook {

using namespace platform;

namespace {

/// A count of periods; a negative number counts as none.
std::uint64_t countOf(const Decimal& periods) {
    return periods < Decimal::zero() ? 0 : periods.unsignedIntegerValue();
}

/// The period at one place of the row that the calendar would make, without the row.
Ref<TKPeriod> periodAt(const TKPeriodicBilling& billing, const std::optional<Date>& startDate,
                       std::uint64_t place) {
    // More periods, or cycles in one, than there are days in the years of books; their product could wrap around.
    constexpr std::uint64_t TooMany = std::uint64_t{1} << 31;
    const auto anchor = billing.dateWithZeroOffset(startDate);
    if (!anchor) return nullptr;
    if (place >= TooMany || billing.period() >= TooMany)
        throw OverflowException("the next period lies beyond the years 1583 to 9999");
    auto period =
        TKPeriod::periodWithStartDateEndDate(billing.dateWithPeriodOffsetFromStartDate(place, anchor),
                                             billing.dateWithPeriodOffsetFromStartDate(place + 1, anchor));
    if (billing.periodBillingMode() == TKPeriodBillingModeEnd) period->setBillingDate(period->endDate());
    return period;
}

} // namespace

TKDuePeriods::~TKDuePeriods() = default;

bool TKDuePeriods::hasOutstandingBalance() const noexcept {
    return balance_ && *balance_ > Decimal::zero();
}

void TKDuePeriods::readTenure(const TKTenure& tenure) {
    periods_ = tenure.periods();
    outstanding_ = {};
    const auto rent = tenure.rentalAmount();
    if (rent && *rent <= Decimal::zero()) return;

    balance_ = decimalNumberByNegating(tenure.balance());
    // An absent rent divides like a rent of zero.
    const Decimal divisor = rent.value_or(Decimal::zero());
    const Decimal received = tenure.totalIncome().decimalNumberByAdding(tenure.totalAdjustment());
    const std::uint64_t paid = countOf(received.decimalNumberByDividingBy(divisor));
    const std::uint64_t charged = countOf(decimalNumberByCeiling(
        decimalNumberByNegating(tenure.totalCost().decimalNumberByDividingBy(divisor))));
    outstanding_ = {paid, charged > paid ? charged - paid : 0};

    const std::uint64_t place = std::max(paid, charged);
    if (periods_ && place < periods_->count())
        next_ = periods_->at(place).as<TKPeriod>();
    else
        next_ = periodAt(*tenure.rentalPeriodicBilling(), tenure.startDate(), place);
    const auto start = next_ ? next_->startDate() : std::nullopt;
    const auto end = tenure.endDate();
    if (start && end && *start >= *end) next_ = nullptr;
}

} // namespace estatebook
