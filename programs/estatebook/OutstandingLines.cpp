// SPDX-License-Identifier: MIT
#include "estatebook/OutstandingLines.hpp"

#include "platform/values/Dictionary.hpp"
#include "tags/TKTagNames.hpp"

#include <algorithm>

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

std::size_t linesBeforeOutstanding(const StatementSheet& sheet, const TKStatement& statement, Date day) {
    const std::size_t count = outstandingOn(statement, day)->count();
    if (count == 0) return sheet.due().size();
    // A line "Rounding" may follow the last one of the statement's own.
    const auto isOwn = [](const StatementSheet::Line& line) { return !line.isRounding; };
    return static_cast<std::size_t>(std::ranges::count_if(sheet.due(), isOwn)) - count;
}

StatementByTag StatementByTag::of(const TKStatement& statement, Date day, ShownLines shown) {
    auto lines =
        transactionsOf(shown == ShownLines::All ? *statement.items() : *outstandingOn(statement, day));
    StatementByTag made;
    made.tagged = TKStatement::initWithTransactionsMetadata(lines)->byPrimaryTag();
    std::erase_if(lines, [](const auto& line) {
        const auto names = line->tagNames();
        return names && names->first();
    });
    made.untaggedCount = lines.size();
    made.untagged = TKStatement::initWithTransactionsMetadata(lines);
    return made;
}

} // namespace estatebook
