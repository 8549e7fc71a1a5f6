// SPDX-License-Identifier: MIT
#include "statement/TKStatement.hpp"

#include <utility>

namespace estatebook {

using platform::ArrayOf;
using platform::Date;
using platform::Decimal;
using platform::Dictionary;
using platform::OrderedSet;
using platform::Ref;
using platform::String;

namespace {

constinit platform::Constant<String> className{std::string_view("TKStatement")};

platform::Value entry(const Ref<Dictionary>& metadata, std::string_view key) {
    return metadata ? metadata->find(key) : platform::Value();
}

/// The dates that a statement is limited to, both included; an absent one leaves its side open.
struct DateRange {
    std::optional<Date> start;
    std::optional<Date> end;

    explicit DateRange(const Ref<Dictionary>& metadata)
        : start(entry(metadata, "startDate").date()), end(entry(metadata, "endDate").date()) {}

    [[nodiscard]] bool isOpen() const noexcept { return !start && !end; }
    [[nodiscard]] bool contains(const std::optional<Date>& when) const noexcept {
        return !when || (!(start && *when < *start) && !(end && *when > *end));
    }
};

/// Gathers the tag names of one line after another.
class TagNameUnion {
public:
    void add(const TKLedgerTransaction& transaction) {
        const Ref<TKTagNames> names = transaction.tagNames();
        if (!names || names == last_) return;
        union_.unionOrderedSet(*names->items());
        last_ = names;
    }
    Ref<TKTagNames> finish() && { return TKTagNames::initWithOrderedSet(std::move(union_).finish()); }

private:
    OrderedSet::Builder union_;
    Ref<TKTagNames> last_;
};

} // namespace

// References that may be written to are taken over by the lines, others copied.
template <class Transaction>
TKStatement::TKStatement(std::span<Transaction> transactions, Ref<Dictionary> metadata)
    : Adopts(platform::Counting::Shared), metadata_(std::move(metadata)) {
    ArrayOf<TKStatementItem>::Builder items(transactions.size());
    TagNameUnion tagNames;
    Decimal balance;
    for (Transaction& transaction : transactions) {
        const TKLedgerTransaction& movement = *transaction;
        if (const std::optional<Decimal> amount = movement.amount()) balance += *amount;
        items.emplace(std::move(transaction), balance);
        tagNames.add(movement);
    }
    items_ = std::move(items).finish();
    tagNames_ = std::move(tagNames).finish();
}

// What a range leaves out is sorted out first, so that the block of lines has just the room it needs.
template <class Transaction>
Ref<TKStatement> TKStatement::make(std::span<Transaction> transactions, const Ref<Dictionary>& metadata) {
    const DateRange range(metadata);
    if (range.isOpen()) return Ref<TKStatement>(new TKStatement(transactions, metadata));
    std::vector<TKLedgerTransaction*> kept;
    kept.reserve(transactions.size());
    for (const Ref<TKLedgerTransaction>& transaction : transactions)
        if (range.contains(transaction->when())) kept.push_back(transaction.get());
    return Ref<TKStatement>(new TKStatement(std::span(kept), metadata));
}

Ref<TKStatement> TKStatement::initWithTransactionsMetadata(Transactions transactions,
                                                           const Ref<Dictionary>& metadata) {
    return make(transactions, metadata);
}

Ref<TKStatement>
TKStatement::initWithTransactionsMetadata(std::vector<Ref<TKLedgerTransaction>>&& transactions,
                                          const Ref<Dictionary>& metadata) {
    return make(std::span(transactions), metadata);
}

std::optional<Decimal> TKStatement::amount() const {
    if (isEmpty()) return std::nullopt;
    return items_->back().balance();
}

Ref<String> TKStatement::what() const {
    return entry(metadata_, "what").string();
}

std::optional<Date> TKStatement::when() const {
    if (isEmpty()) return std::nullopt;
    return (*items_)[0].transaction()->when();
}

Ref<String> TKStatement::primaryTag() const {
    return tagNames_->first();
}

Ref<String> TKStatement::mappedClassName() const {
    return Ref<String>(className.get());
}

} // namespace estatebook
