// SPDX-License-Identifier: MIT
#pragma once

/// Ageing: how old the debts of a statement are on a day.
///
/// What was paid by the day settles the oldest charge first, whichever it was meant for. What is then open of the charges
/// lies in buckets, by the days since they fell due; what was paid beyond all of them is credit. So there is either
/// something owed or a credit, never both. Lines dated after the day stand apart, charges and payments alike:
///
///     const auto ageing = Ageing::ofStatement(*tenure->statement(), *tenure->currentDate());
///     ageing.buckets[0];                  // due on the day itself; then 1 to 30, 31 to 60, 61 to 90 days, and older
///     ageing.credit - (ageing.owed() + ageing.notYetDue) == *tenure->statement()->amount();
///
/// The equation holds to the last digit unless a sum has more than 38 of them, as rent charged pro rata may; then it
/// holds as far as a statement's own balances do. The trap: it speaks of the statement. A negative bond counts in a tenure's
/// balance and has no line, so there the two differ by the bond.

#include "EstateBook_ModelExport.hpp"

#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace estatebook {

class TKStatement;

struct ESTATEBOOK_API Ageing {
    /// The most days past due of each bucket but the last.
    static constexpr std::array<std::uint64_t, 4> UsualBounds{0, 30, 60, 90};

    /// What is open of the charges of each age, zero or more: one amount for each bound, and one for what is older than the last.
    /// A charge without a date counts as older.
    std::vector<platform::Decimal> buckets;
    /// Charges less payments dated after the day; below zero when the payments are more.
    platform::Decimal notYetDue;
    /// What was paid by the day and not needed, zero or more.
    platform::Decimal credit;
    /// Since when the oldest open charge is due; absent when nothing is open, or when it has no date.
    std::optional<platform::Date> oldest;

    /// The sum of the buckets.
    [[nodiscard]] platform::Decimal owed() const;

    /// Ages a statement in any order of lines. Those dated later than `day`, as full instants, are not yet due. Days are
    /// counted as the host counts them, by the calendar and not by 24 hours. Lines without an amount are passed over. Raises
    /// OverflowException for a sum that no decimal holds. Linear in the lines when they stand by date, as a tenure's do.
    /// REQUIRES: ascending bounds.
    [[nodiscard]] static Ageing ofStatement(const TKStatement& statement, platform::Date day,
                                            std::span<const std::uint64_t> bounds = UsualBounds);
};

} // namespace estatebook
