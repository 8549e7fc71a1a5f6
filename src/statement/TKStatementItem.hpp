// SPDX-License-Identifier: MIT
#pragma once

/// TKStatementItem: one line of a statement, a movement of money together with the balance reached after it.
///
/// The movement and the balance never change; what is read through the movement does. A transaction that is
/// tagged anew has a new primary tag on its line at once, while the balance stays what it was.
///
///     Ref<TKStatementItem> line = TKStatementItem::initWithTransactionBalance(rent, -1000);
///     line->balance();            // -1000
///     line->primaryTag();         // the first tag of rent now, or null

#include "EstateBook_ModelExport.hpp"

#include "platform/values/Decimal.hpp"
#include "platform/values/Object.hpp"
#include "platform/values/ObjectBlock.hpp"
#include "platform/values/Ref.hpp"
#include "platform/values/String.hpp"
#include "statement/TKLedgerTransaction.hpp"

#include <string_view>
#include <utility>

namespace estatebook {

class ESTATEBOOK_API TKStatementItem final : public platform::Object {
public:
    TKStatementItem() = delete;

    /// initWithTransaction:balance:
    /// A line of its own with both as given. REQUIRES: a transaction.
    [[nodiscard]] static platform::Ref<TKStatementItem>
    initWithTransactionBalance(platform::Ref<TKLedgerTransaction> transaction,
                               const platform::Decimal& balance) {
        return platform::makeRef<TKStatementItem>(std::move(transaction), balance);
    }

    /// The same, for lines that stand side by side in one block of memory.
    TKStatementItem(platform::Ref<TKLedgerTransaction> transaction, const platform::Decimal& balance) noexcept
        : Object(platform::Counting::Shared), transaction_(std::move(transaction)), balance_(balance) {}
    ~TKStatementItem() override = default;

    /// The movement that this line shows; never null.
    [[nodiscard]] const platform::Ref<TKLedgerTransaction>& transaction() const noexcept {
        return transaction_;
    }

    /// The balance of the statement after the movement.
    [[nodiscard]] const platform::Decimal& balance() const noexcept { return balance_; }

    /// The first tag name of the movement, read afresh; null when it has none.
    [[nodiscard]] platform::Ref<platform::String> primaryTag() const;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override {
        return "EstateBook_Model.TKStatementItem";
    }

protected:
    void dispose() const noexcept override { platform::ObjectBlock<TKStatementItem>::dispose(this); }

private:
    platform::Ref<TKLedgerTransaction> transaction_;
    platform::Decimal balance_;
};

} // namespace estatebook
