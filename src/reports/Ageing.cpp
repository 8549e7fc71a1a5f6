// SPDX-License-Identifier: MIT
#include "reports/Ageing.hpp"

#include "platform/system/HostOperations.hpp"
#include "statement/TKStatement.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace estatebook {

using platform::Date;
using platform::Decimal;

namespace {

struct Charge {
    /// Absent dates, and those that are no number, stand before all others.
    double instant;
    Decimal amount;

    [[nodiscard]] std::optional<Date> when() const {
        return std::isinf(instant) ? std::nullopt : std::optional(Date{instant});
    }
};

double instantOf(const std::optional<Date>& when) noexcept {
    return when && !std::isnan(when->secondsSinceReferenceDate) ? when->secondsSinceReferenceDate : -HUGE_VAL;
}

std::size_t bucketOf(const std::optional<Date>& when, Date day, std::span<const std::uint64_t> bounds) {
    if (!when) return bounds.size();
    const auto place = std::ranges::lower_bound(bounds, platform::hostOperations().daysUntil(*when, day));
    return static_cast<std::size_t>(place - bounds.begin());
}

} // namespace

Decimal Ageing::owed() const {
    Decimal sum;
    for (const Decimal& bucket : buckets) sum += bucket;
    return sum;
}

Ageing Ageing::ofStatement(const TKStatement& statement, Date day, std::span<const std::uint64_t> bounds) {
    assert(std::ranges::is_sorted(bounds));
    Ageing ageing;
    ageing.buckets.resize(bounds.size() + 1);
    std::vector<Charge> charges;
    Decimal balance;
    for (const TKStatementItem& item : *statement.items()) {
        const auto amount = item.transaction()->amount();
        if (!amount) continue;
        const auto when = item.transaction()->when();
        if (when && *when > day) {
            ageing.notYetDue -= *amount;
            continue;
        }
        balance += *amount;
        if (amount->isNegative()) charges.push_back({instantOf(when), -*amount});
    }
    if (!balance.isNegative()) {
        ageing.credit = balance;
        return ageing;
    }

    // Payments settle the oldest charges, so what is owed is open of the newest ones.
    if (!std::ranges::is_sorted(charges, {}, &Charge::instant))
        std::ranges::stable_sort(charges, {}, &Charge::instant);
    Decimal open = -balance;
    std::size_t bucket = 0;
    for (auto charge = charges.rbegin(); charge != charges.rend() && !open.isZero(); ++charge) {
        ageing.oldest = charge->when();
        bucket = bucketOf(ageing.oldest, day, bounds);
        const Decimal part = std::min(charge->amount, open);
        ageing.buckets[bucket] += part;
        open -= part;
    }
    // Nothing is left, save the last digit of a sum that had more than 38.
    ageing.buckets[bucket] += open;
    return ageing;
}

} // namespace estatebook
