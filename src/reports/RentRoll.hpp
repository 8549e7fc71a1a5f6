// SPDX-License-Identifier: MIT
#pragma once

/// RentRollEntry: one line of a rent roll: who lives where, for how much, paid to when, and what comes next.
///
///     for (const RentRollEntry& entry : rentRoll(tenures)) entry.paidTo;
///
/// Everything is reckoned on a tenure's own current date. The trap: periods are paid by money, oldest first. An adjustment
/// counts as the money it stands for, so that a bond that is owed makes rent look unpaid, and part of a period's rent pays no period.

#include "EstateBook_ModelExport.hpp"

#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/Ref.hpp"
#include "platform/values/String.hpp"

#include <optional>
#include <span>
#include <vector>

namespace estatebook {

class TKTenure;

struct ESTATEBOOK_API RentRollEntry {
    platform::Ref<TKTenure> tenure;
    /// The full name of the property, and the name of the tenant; null where there is none.
    platform::Ref<platform::String> property;
    platform::Ref<platform::String> tenant;
    /// The term: its first and its last day. Absent where it is open.
    std::optional<platform::Date> start;
    std::optional<platform::Date> end;
    /// The rent of one period.
    std::optional<platform::Decimal> rent;
    /// Until when rent is paid: the end of the last period that is paid whole, or the tenure's end when that comes first.
    /// Absent when no period is paid, and without rent.
    std::optional<platform::Date> paidTo;
    /// The first day after the current date on which rent falls due that is not paid yet. Absent without rent, and when the
    /// tenure ends before.
    std::optional<platform::Date> nextDue;
    /// As the tenure has it: below zero, that much is owed.
    platform::Decimal balance;

    /// Only what the terms say, with nothing reckoned: never raises, whatever the terms.
    [[nodiscard]] static RentRollEntry ofTerms(const platform::Ref<TKTenure>& tenure);
    /// The entry of a tenure, active or not. Raises as TKTenure::duePeriods.
    [[nodiscard]] static RentRollEntry ofTenure(const platform::Ref<TKTenure>& tenure);
};

/// The entries of those tenures that are active on their current date, in the order given. Raises as TKTenure::duePeriods.
[[nodiscard]] ESTATEBOOK_API std::vector<RentRollEntry>
rentRoll(std::span<const platform::Ref<TKTenure>> tenures);

} // namespace estatebook
