// SPDX-License-Identifier: MIT
#pragma once

/// TKStatement: an ordered list of movements of money with a running balance, and the tags of its lines.
///
/// A statement is built once, from movements in the order in which they are given, and never changes. The balance
/// starts at zero, and amounts are added as they stand. The metadata may limit the statement to a range of dates
/// and name it. A statement is a movement itself, so it can be one line of another statement.
///
/// The trap: nothing is sorted here. The same movements in another order have other balances on their lines, and
/// when() is the date of the first line, not the earliest date.
///
///     auto statement = TKStatement::initWithTransactionsMetadata(transactions);
///     for (const TKStatementItem& line : *statement->items()) line.balance();
///     statement->amount();                // the last balance; absent without lines
///     statement->outstandingItems();      // the lines since the balance last was zero or more
///
/// What a statement holds may be read from any thread. The movements keep their own rules: their values, what is
/// read through them (when(), a line's primaryTag()), byPrimaryTag(), and letting go of the last reference to a
/// statement belong to the thread that owns them.

#include "EstateBook_ModelExport.hpp"

#include "platform/values/Array.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/Dictionary.hpp"
#include "platform/values/Object.hpp"
#include "platform/values/Protocol.hpp"
#include "platform/values/Ref.hpp"
#include "platform/values/String.hpp"
#include "statement/QBXMLMappedClass.hpp"
#include "statement/TKLedgerTransaction.hpp"
#include "statement/TKStatementItem.hpp"
#include "tags/TKTagNames.hpp"

#include <concepts>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace estatebook {

class ESTATEBOOK_API TKStatement final
    : public platform::Adopts<platform::Object, TKLedgerTransaction, QBXMLMappedClass> {
public:
    using Transactions = std::span<const platform::Ref<TKLedgerTransaction>>;

    TKStatement() = delete;

    /// initWithTransactions:metadata:
    /// One line for each transaction that is kept, in the order given. The metadata is stored as it is and may be
    /// null; of its entries these are read, and count as absent when they are of another type:
    ///   "startDate"   a date; transactions dated before it are left out
    ///   "endDate"     a date; transactions dated after it are left out
    ///   "what"        the text that what() gives
    /// A transaction without a date is always kept, one without an amount leaves the balance as it is. What is left
    /// out touches neither the balance nor the tags. Raises OverflowException for a sum that no decimal holds.
    /// Linear in the number of transactions and tag names. REQUIRES: no transaction is null.
    [[nodiscard]] static platform::Ref<TKStatement>
    initWithTransactionsMetadata(Transactions transactions,
                                 const platform::Ref<platform::Dictionary>& metadata = nullptr);
    /// The same for a list that is not needed any more: its references become the lines'.
    [[nodiscard]] static platform::Ref<TKStatement>
    initWithTransactionsMetadata(std::vector<platform::Ref<TKLedgerTransaction>>&& transactions,
                                 const platform::Ref<platform::Dictionary>& metadata = nullptr);

    /// The same over a list of objects of a class that adopts TKLedgerTransaction.
    template <std::derived_from<TKLedgerTransaction> T>
    [[nodiscard]] static platform::Ref<TKStatement>
    initWithTransactionsMetadata(const platform::Ref<platform::ArrayOf<T>>& transactions,
                                 const platform::Ref<platform::Dictionary>& metadata = nullptr) {
        std::vector<platform::Ref<TKLedgerTransaction>> lines;
        lines.reserve(transactions->count());
        for (T& transaction : *transactions) lines.emplace_back(&transaction);
        return initWithTransactionsMetadata(std::move(lines), metadata);
    }

    /// The lines, in the order of the transactions.
    [[nodiscard]] const platform::Ref<platform::ArrayOf<TKStatementItem>>& items() const noexcept {
        return items_;
    }

    /// The metadata as given; null when there is none.
    [[nodiscard]] const platform::Ref<platform::Dictionary>& metadata() const noexcept { return metadata_; }

    /// The tag names of all lines: those of the first line, then what each further line adds. Never null.
    [[nodiscard]] platform::Ref<TKTagNames> tagNames() const override { return tagNames_; }

    /// The balance of the last line; absent when there is none.
    [[nodiscard]] std::optional<platform::Decimal> amount() const override;

    /// The text "what" of the metadata; null when there is none.
    [[nodiscard]] platform::Ref<platform::String> what() const override;

    /// The date of the first line's transaction; absent without lines and when it has none.
    [[nodiscard]] std::optional<platform::Date> when() const override;

    /// The first of tagNames; null when there is none.
    [[nodiscard]] platform::Ref<platform::String> primaryTag() const;

    [[nodiscard]] bool isEmpty() const noexcept { return items_->empty(); }

    /// "TKStatement".
    [[nodiscard]] platform::Ref<platform::String> mappedClassName() const override;

    // -- Views: worked out on each call, without a change to the statement. -------------------------------------

    /// The lines since the balance last was zero or more, oldest first: all lines when it never was, none when it
    /// is now. Only the balances are looked at, not the amounts.
    [[nodiscard]] platform::Ref<platform::ArrayOf<TKStatementItem>> outstandingItems() const;

    /// One statement for each primary tag, in the order in which the tags first appear, without metadata and with
    /// balances of its own. Spellings that are canonically equivalent are one tag, letter case matters. Lines
    /// without a primary tag are in none of them.
    [[nodiscard]] platform::Ref<platform::ArrayOf<TKStatement>> byPrimaryTag() const;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override {
        return "EstateBook_Model.TKStatement";
    }

private:
    template <class>
    friend class platform::ObjectBlock;

    template <class Transaction>
    TKStatement(std::span<Transaction> transactions, platform::Ref<platform::Dictionary> metadata);
    template <class Transaction>
    static platform::Ref<TKStatement> make(std::span<Transaction> transactions,
                                           const platform::Ref<platform::Dictionary>& metadata);
    ~TKStatement() override = default;

    platform::Ref<platform::ArrayOf<TKStatementItem>> items_;
    platform::Ref<platform::Dictionary> metadata_;
    platform::Ref<TKTagNames> tagNames_;
};

} // namespace estatebook
