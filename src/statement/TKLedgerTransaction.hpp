// SPDX-License-Identifier: MIT
#pragma once

/// TKLedgerTransaction: what a statement needs to know of a movement of money, wherever it comes from.
///
/// Stored transactions adopt it, and so do statements, so that a whole statement can stand as one line of another.
/// An application may list objects of its own in the same way:
///
///     class Fee : public platform::Adopts<platform::Object, TKLedgerTransaction> {
///         std::optional<platform::Decimal> amount() const override { return -5; }
///         …
///     };
///
/// Everything may be absent; who reads a movement asks first.

#include "EstateBook_ModelExport.hpp"

#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/Protocol.hpp"
#include "platform/values/Ref.hpp"
#include "platform/values/String.hpp"
#include "tags/TKTagNames.hpp"

#include <optional>

namespace estatebook {

class ESTATEBOOK_API TKLedgerTransaction : public platform::Protocol {
public:
    /// The signed amount: money received is positive, money charged negative.
    [[nodiscard]] virtual std::optional<platform::Decimal> amount() const = 0;
    /// A description in free words.
    [[nodiscard]] virtual platform::Ref<platform::String> what() const = 0;
    /// The instant at which the movement counts.
    [[nodiscard]] virtual std::optional<platform::Date> when() const = 0;
    /// The names it is tagged with; the first is its primary tag.
    [[nodiscard]] virtual platform::Ref<TKTagNames> tagNames() const = 0;

protected:
    ~TKLedgerTransaction() = default;
};

} // namespace estatebook
