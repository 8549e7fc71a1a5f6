// SPDX-License-Identifier: MIT
#pragma once

/// TKTransaction: one movement of money that somebody recorded: a rent payment, a bond, an expense, a correction.
/// Money received is positive, money spent or charged negative.
///
/// It belongs to a property or to a tenure (TKPropertyTransaction, TKTenureTransaction), whose totals it is part
/// of. A change of `amount` or `adjustment` announces these totals on the owner.
///
/// The keys "categoryName" and "details" have no value here; an application may give them one. Observers of
/// either are told when `what` changes.

#include "model/Keys.hpp"
#include "model/TKTransactionProperties.hpp"
#include "statement/TKLedgerTransaction.hpp"
#include "tags/TKTaggable.hpp"

#include <array>
#include <compare>

namespace estatebook {

class ESTATEBOOK_API TKTransaction
    : public platform::Adopts<TKTransactionProperties, TKTaggable, TKLedgerTransaction> {
public:
    using Adopts::Adopts;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }
    static constexpr std::array Dependencies{
        platform::DependencyRow{keys::categoryName, {keys::what}},
        platform::DependencyRow{keys::details, {keys::what}},
    };

    [[nodiscard]] std::optional<platform::Decimal> amount() const override {
        return TKTransactionProperties::amount();
    }
    [[nodiscard]] platform::Ref<platform::String> what() const override {
        return TKTransactionProperties::what();
    }
    [[nodiscard]] std::optional<platform::Date> when() const override {
        return TKTransactionProperties::when();
    }
    [[nodiscard]] platform::Ref<TKTagNames> tagNames() const override {
        return TKTransactionProperties::tagNames();
    }

    /// Whether the transaction is a correction, which counts among a tenure's adjustments; absent means it is none.
    [[nodiscard]] bool isAdjustment() const;

    /// compare:
    /// By `when` alone: the earlier is less. Without a date it is less than a dated one, yet a dated one is
    /// equivalent to one without. That is no strict weak order: never hand it to a sort of the standard library.
    [[nodiscard]] std::weak_ordering compare(const TKTransaction& other) const;

    TKTag* createTagWithName(const platform::Ref<platform::String>& name) override;
    [[nodiscard]] platform::ToManyView<TKTag> tags() const override {
        return TKTransactionProperties::tags();
    }
    void setTags(const platform::Ref<platform::OrderedSet>& tags) override {
        TKTransactionProperties::setTags(tags);
    }

    void willSave() override;
    void awakeFromFetch() override;

protected:
    ~TKTransaction() override = default;
};

} // namespace estatebook
