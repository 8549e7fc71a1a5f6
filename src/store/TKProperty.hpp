// SPDX-License-Identifier: MIT
#pragma once

/// TKProperty: a rental property, a building or a part of one, with its own costs and income and any number of tenures
/// over time.
///
/// A property owes nobody: it is always balanced and always active. Its `balance` is its net income: the rent received
/// through its tenures and its own transactions.

#include "model/TKPropertyProperties.hpp"
#include "platform/values/Decimal.hpp"
#include "store/TKLedger.hpp"
#include "store/TKNotable.hpp"
#include "store/TKPropertyNote.hpp"
#include "store/TKPropertyTransaction.hpp"

#include <string>
#include <vector>

namespace estatebook {

class ESTATEBOOK_API TKProperty final : public platform::Adopts<TKPropertyProperties, TKLedger, TKNotable> {
public:
    using Adopts::Adopts;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }
    static constexpr auto Dependencies = platform::withInherited(
        TKAccount::Dependencies,
        std::array{
            platform::DependencyRow{keys::aggregateTransactions, {keys::tenures, keys::transactions}},
            platform::DependencyRow{keys::balance, {keys::tenureIncome, keys::totalIncome}},
            platform::DependencyRow{keys::tenureIncome, {keys::tenures}},
            platform::DependencyRow{keys::totalIncome, {keys::transactions}},
            platform::DependencyRow{keys::tenureBalance, {keys::tenures}},
            platform::DependencyRow{keys::currentTenures, {keys::currentDate}},
        });

    /// The name, followed by " - " and the sublease when there is one.
    [[nodiscard]] platform::Ref<platform::String> fullName() const;

    /// activeTenuresAtDate:
    /// The tenures active on the day of the date, in the order of their creation.
    [[nodiscard]] std::vector<platform::Ref<TKTenure>>
    activeTenuresAtDate(const std::optional<platform::Date>& date) const;
    /// The tenures active on the current date.
    [[nodiscard]] platform::Ref<platform::Set> currentTenures() const;
    /// The names of their tenants, joined with ", ". A tenure without a tenant, or whose tenant has no name, raises
    /// InvalidArgumentException.
    [[nodiscard]] platform::Ref<platform::String> currentTenuresNames() const;

    /// Income, respectively balance, summed over the tenures.
    [[nodiscard]] platform::Decimal tenureIncome() const;
    [[nodiscard]] platform::Decimal tenureBalance() const;
    /// The sum of the property's own transactions, adjustments included.
    [[nodiscard]] platform::Decimal totalIncome() const;
    /// `tenureIncome` plus `totalIncome`.
    [[nodiscard]] platform::Decimal balance() const;
    /// The property's own transactions, and those of its tenures that are no adjustments.
    [[nodiscard]] platform::Ref<platform::Set> aggregateTransactions() const;

    /// The localised name of the rental billing cycle; null when that is none of the four.
    [[nodiscard]] platform::Ref<platform::String> periodicNameForRentalBillingCycle() const;

    TKPropertyTransaction* createTransaction() override;
    [[nodiscard]] platform::ToManyView<TKTransaction> transactions() const override;
    void setTransactions(const platform::Ref<platform::Set>& transactions) override {
        TKPropertyProperties::setTransactions(transactions);
    }
    TKPropertyNote* createNote() override;
    [[nodiscard]] platform::ToManyView<TKNote> notes() const override;
    void setNotes(const platform::Ref<platform::Set>& notes) override {
        TKPropertyProperties::setNotes(notes);
    }

private:
    ~TKProperty() override;
};

} // namespace estatebook
