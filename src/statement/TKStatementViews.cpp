// SPDX-License-Identifier: MIT
#include "statement/TKStatement.hpp"

#include "platform/text/Text.hpp"

#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace estatebook {

using platform::ArrayOf;
using platform::Decimal;
using platform::Ref;
using platform::String;

namespace {

/// The transactions of one primary tag. The tag is kept, since its text is the key of the group.
struct TagGroup {
    Ref<String> tag;
    std::vector<Ref<TKLedgerTransaction>> transactions;
};

} // namespace

Ref<ArrayOf<TKStatementItem>> TKStatement::outstandingItems() const {
    std::size_t first = items_->count();
    while (first > 0 && (*items_)[first - 1].balance() < Decimal::zero()) --first;
    std::vector<Ref<TKStatementItem>> lines;
    for (std::size_t index = first; index < items_->count(); ++index) lines.emplace_back(&(*items_)[index]);
    return ArrayOf<TKStatementItem>::of(std::move(lines));
}

Ref<ArrayOf<TKStatement>> TKStatement::byPrimaryTag() const {
    std::vector<TagGroup> groups;
    std::unordered_map<std::string_view, std::size_t, platform::CanonicalHash, platform::CanonicalEqual>
        places;
    for (const TKStatementItem& line : *items_) {
        const Ref<String> tag = line.primaryTag();
        if (!tag) continue;
        const auto [place, isNew] = places.try_emplace(tag->view(), groups.size());
        if (isNew) groups.push_back({tag, {}});
        groups[place->second].transactions.push_back(line.transaction());
    }
    std::vector<Ref<TKStatement>> statements;
    statements.reserve(groups.size());
    for (const TagGroup& group : groups)
        statements.push_back(initWithTransactionsMetadata(group.transactions));
    return ArrayOf<TKStatement>::of(std::move(statements));
}

} // namespace estatebook
