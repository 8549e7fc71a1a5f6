// SPDX-License-Identifier: MIT
#include "reports/BondLedger.hpp"

#include "platform/text/Text.hpp"
#include "tags/TKTagNames.hpp"
#include "tenure/TKTenure.hpp"

#include <algorithm>

namespace estatebook {

using platform::Date;
using platform::Decimal;
using platform::Ref;

namespace {

bool isTagged(const TKTransaction& transaction, std::string_view tagName) {
    if (tagName.empty()) return true;
    const auto names = transaction.tagNames();
    return names && std::ranges::any_of(names->items()->members(), [&](const platform::Value& name) {
               return name.string() && platform::CanonicalEqual{}(name.string()->view(), tagName);
           });
}

} // namespace

Decimal BondLedgerEntry::held() const {
    return std::max(Decimal::zero(), paid - std::max(released, returned));
}

bool BondLedgerEntry::isEmpty() const {
    return charged.isZero() && paid.isZero() && returned.isZero();
}

BondLedgerEntry BondLedgerEntry::ofTenure(const Ref<TKTenure>& tenure, Date day, std::string_view tagName) {
    const auto isLater = [&](const std::optional<Date>& date) { return date && *date > day; };
    BondLedgerEntry entry;
    entry.tenure = tenure;
    if (!isLater(tenure->startDate())) entry.charged = tenure->bondAmount().value_or(Decimal::zero());
    for (const TKTransaction& transaction : tenure->transactions()) {
        const auto amount = transaction.amount();
        if (!amount || !transaction.isAdjustment() || isLater(transaction.when())) continue;
        if (!isTagged(transaction, tagName)) continue;
        if (amount->isNegative())
            entry.returned -= *amount;
        else
            entry.paid += *amount;
    }
    if (entry.charged > Decimal::zero() && entry.paid > entry.charged) {
        entry.released = entry.paid - entry.charged;
        entry.paid = entry.charged;
    }
    return entry;
}

std::vector<BondLedgerEntry> bondLedger(std::span<const Ref<TKTenure>> tenures, Date day,
                                        std::string_view tagName) {
    std::vector<BondLedgerEntry> entries;
    for (const Ref<TKTenure>& tenure : tenures) {
        auto entry = BondLedgerEntry::ofTenure(tenure, day, tagName);
        if (!entry.isEmpty()) entries.push_back(std::move(entry));
    }
    return entries;
}

} // namespace estatebook
