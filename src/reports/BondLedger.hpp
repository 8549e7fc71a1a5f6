// SPDX-License-Identifier: MIT
#pragma once

/// BondLedgerEntry: what became of a tenure's bond: charged, paid, released, returned, and what is still held.
///
/// A book does not say which adjustment is a payment of the bond. A name that people tag such adjustments with tells it;
/// of the adjustments so tagged those above zero pay the bond up to what is charged, and what goes beyond releases it
/// to the tenant's account. Those below zero are money that left it: returned, kept, or carried to another tenure.
///
///     bond 1095; adjustments tagged "Bond": 1095, 1095, -60, -1035
///     BondLedgerEntry::ofTenure(tenure, today, "Bond");    // charged 1095, paid 1095, released 1095, returned 1095, held 0
///
/// The trap: untagged payments are not seen. With an empty name every adjustment is taken for one of the bond.

#include "EstateBook_ModelExport.hpp"

#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/Ref.hpp"

#include <span>
#include <string_view>
#include <vector>

namespace estatebook {

class TKTenure;

struct ESTATEBOOK_API BondLedgerEntry {
    platform::Ref<TKTenure> tenure;
    /// The bond of the terms once the tenure has begun; 0 before, and without one. May be below zero in odd books.
    platform::Decimal charged;
    /// Zero or more each. Without a bond that is charged, all that came in is paid and nothing released.
    platform::Decimal paid;
    platform::Decimal released;
    platform::Decimal returned;

    /// What was paid less what was released or returned, whichever is more; never below zero.
    [[nodiscard]] platform::Decimal held() const;
    /// Whether there is anything to tell.
    [[nodiscard]] bool isEmpty() const;

    /// The entry of a tenure by `day`: what is dated later, as full instants, is left out. Names are told apart by canonical
    /// equivalence, letter case matters, and any tag of a transaction will do. Linear in the transactions.
    [[nodiscard]] static BondLedgerEntry ofTenure(const platform::Ref<TKTenure>& tenure, platform::Date day,
                                                  std::string_view tagName);
};

/// The entries of the tenures that have a bond or a payment of one, in the order given.
[[nodiscard]] ESTATEBOOK_API std::vector<BondLedgerEntry>
bondLedger(std::span<const platform::Ref<TKTenure>> tenures, platform::Date day, std::string_view tagName);

} // namespace estatebook
