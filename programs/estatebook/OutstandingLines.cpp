// SPDX-License-Identifier: MIT
#include "estatebook/OutstandingLines.hpp"

#include "platform/values/Dictionary.hpp"

namespace estatebook {

using platform::ArrayOf;
using platform::Date;
using platform::Dictionary;
using platform::Ref;

std::vector<Ref<TKLedgerTransaction>> transactionsOf(const ArrayOf<TKStatementItem>& lines) {
    std::vector<Ref<TKLedgerTransaction>> transactions;
    transactions.reserve(lines.count());
    for (const TKStatementItem& line : lines) transactions.push_back(line.transaction());
    return transactions;
}

Ref<ArrayOf<TKStatementItem>> outstandingOn(const TKStatement& statement, Date day) {
    const auto byTheDay = Dictionary::make({{"endDate", platform::Value(day)}});
    return TKStatement::initWithTransactionsMetadata(transactionsOf(*statement.items()), byTheDay)
        ->outstandingItems();
}

} // namespace estatebook
