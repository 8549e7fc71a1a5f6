// SPDX-License-Identifier: MIT
#pragma once

/// TKLedger: whatever transactions are recorded on: properties and tenures.

#include "platform/persistence/ToManyView.hpp"
#include "platform/values/Protocol.hpp"
#include "platform/values/Set.hpp"

namespace estatebook {

class TKTransaction;

class ESTATEBOOK_API TKLedger : public platform::Protocol {
public:
    /// createTransaction
    /// A new transaction on this ledger in its context. Raises InvalidArgumentException for one without a context.
    virtual TKTransaction* createTransaction() = 0;
    [[nodiscard]] virtual platform::ToManyView<TKTransaction> transactions() const = 0;
    virtual void setTransactions(const platform::Ref<platform::Set>& transactions) = 0;

protected:
    ~TKLedger() = default;
};

} // namespace estatebook
