// SPDX-License-Identifier: MIT
#pragma once

/// OutstandingLines: the lines of a statement that are outstanding on a day, whatever is dated later; StatementByTag: a statement
/// taken apart by the tags of its lines.

#include "estatebook/StatementSheet.hpp"

#include "platform/values/Array.hpp"
#include "platform/values/Date.hpp"
#include "platform/values/Ref.hpp"
#include "statement/TKStatement.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace estatebook {

/// The movements behind lines.
[[nodiscard]] std::vector<platform::Ref<TKLedgerTransaction>>
transactionsOf(const platform::ArrayOf<TKStatementItem>& lines);

/// Of the lines dated by the day those since the balance last was zero or more; none when it is on the day.
[[nodiscard]] platform::Ref<platform::ArrayOf<TKStatementItem>> outstandingOn(const TKStatement& statement,
                                                                              platform::Date day);

/// How many of the lines due on a statement's sheet stand before those outstanding on the day; all when none is.
[[nodiscard]] std::size_t linesBeforeOutstanding(const StatementSheet& sheet, const TKStatement& statement,
                                                 platform::Date day);

enum class ShownLines : std::uint8_t { All, Outstanding };

struct StatementByTag {
    /// One for each primary tag.
    platform::Ref<platform::ArrayOf<TKStatement>> tagged;
    /// The lines that have none.
    platform::Ref<TKStatement> untagged;
    std::size_t untaggedCount = 0;

    [[nodiscard]] static StatementByTag of(const TKStatement& statement, platform::Date day,
                                           ShownLines shown);
};

} // namespace estatebook
