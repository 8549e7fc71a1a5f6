// SPDX-License-Identifier: MIT
#pragma once

/// OutstandingLines: the lines of a statement that are outstanding on a day, whatever is dated later.

#include "platform/values/Array.hpp"
#include "platform/values/Date.hpp"
#include "platform/values/Ref.hpp"
#include "statement/TKStatement.hpp"

#include <vector>

namespace estatebook {

/// The movements behind lines.
[[nodiscard]] std::vector<platform::Ref<TKLedgerTransaction>>
transactionsOf(const platform::ArrayOf<TKStatementItem>& lines);

/// Of the lines dated by the day those since the balance last was zero or more; none when it is on the day.
[[nodiscard]] platform::Ref<platform::ArrayOf<TKStatementItem>> outstandingOn(const TKStatement& statement,
                                                                              platform::Date day);

} // namespace estatebook
