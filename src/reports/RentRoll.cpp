// SPDX-License-Identifier: MIT
#include "reports/RentRoll.hpp"

#include "billing/RoundingExtensions.hpp"
#include "billing/TKDuePeriods.hpp"
#include "platform/system/HostOperations.hpp"
#include "store/TKProperty.hpp"
#include "store/TKTenant.hpp"
#include "tenure/TKTenure.hpp"

#include <algorithm>
#include <cstdint>

namespace estatebook {

using platform::Date;
using platform::Ref;

namespace {

/// The first boundary of the rhythm after today from period `first` on, as the start or the end of a period that begins within the
/// tenure.
std::optional<Date> nextBilling(const TKTenure& tenure, std::uint64_t first) {
    const auto billing = tenure.rentalPeriodicBilling();
    const auto anchor = billing->dateWithZeroOffset(tenure.startDate());
    const auto end = tenure.endDate();
    const auto today = tenure.currentDate();
    if (!anchor || !today) return std::nullopt;
    const std::uint64_t days = platform::hostOperations().daysUntil(*anchor, *today);
    const auto begun = decimalNumberByFlooring(billing->periodsFromDateForDays(anchor, days));
    const std::uint64_t atEnd = billing->periodBillingMode() == TKPeriodBillingModeEnd ? 1 : 0;
    for (std::uint64_t place = std::max(first, begun.unsignedIntegerValue());; ++place) {
        const auto start = billing->dateWithPeriodOffsetFromStartDate(place, anchor);
        if (end && start >= end) return std::nullopt;
        const auto due = billing->dateWithPeriodOffsetFromStartDate(place + atEnd, anchor);
        if (due > today) return due;
    }
}

} // namespace

RentRollEntry RentRollEntry::ofTerms(const Ref<TKTenure>& tenure) {
    RentRollEntry entry;
    entry.tenure = tenure;
    if (const auto property = tenure->property()) entry.property = property->fullName();
    if (const auto tenant = tenure->tenant()) entry.tenant = tenant->name();
    entry.start = tenure->startDate();
    entry.end = tenure->endDate();
    entry.rent = tenure->rentalAmount();
    return entry;
}

RentRollEntry RentRollEntry::ofTenure(const Ref<TKTenure>& tenure) {
    RentRollEntry entry = ofTerms(tenure);
    entry.balance = tenure->balance();
    if (!entry.rent) return entry;
    const auto due = tenure->duePeriods();
    const std::uint64_t paid = due->outstanding().location;
    if (paid == Range::NotFound) return entry;
    if (paid > 0) {
        const auto billing = tenure->rentalPeriodicBilling();
        entry.paidTo =
            billing->dateWithPeriodOffsetFromStartDate(paid, billing->dateWithZeroOffset(entry.start));
        if (entry.paidTo && entry.end) entry.paidTo = std::min(*entry.paidTo, *entry.end);
    }
    entry.nextDue = nextBilling(*tenure, paid);
    return entry;
}

std::vector<RentRollEntry> rentRoll(std::span<const Ref<TKTenure>> tenures) {
    std::vector<RentRollEntry> entries;
    for (const Ref<TKTenure>& tenure : tenures)
        if (tenure->isActive()) entries.push_back(RentRollEntry::ofTenure(tenure));
    return entries;
}

} // namespace estatebook
