// SPDX-License-Identifier: MIT
#pragma once

/// TKTenant: a person or firm that rents. A tenant has no money of its own in the books: all it owes or has paid is the sum
/// over its tenures. A change in a tenure does not announce these sums; they are right whenever they are read.

#include "model/TKTenantProperties.hpp"
#include "platform/values/Decimal.hpp"
#include "store/TKNotable.hpp"
#include "store/TKTenantNote.hpp"

namespace estatebook {

class ESTATEBOOK_API TKTenant final : public platform::Adopts<TKTenantProperties, TKNotable> {
public:
    using Adopts::Adopts;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }
    static constexpr auto Dependencies = platform::withInherited(
        TKAccount::Dependencies, std::array{platform::DependencyRow{keys::isActive, {keys::currentDate}}});

    /// Sums over the tenures; below zero the tenant owes money.
    [[nodiscard]] platform::Decimal balance() const;
    [[nodiscard]] platform::Decimal totalIncome() const;
    /// Zero or negative.
    [[nodiscard]] platform::Decimal totalCost() const;
    /// Every transaction of every tenure, each once.
    [[nodiscard]] platform::Ref<platform::Set> transactions() const;

    /// isActiveAtDate:
    /// Whether one of the tenures is active on the day of the date.
    [[nodiscard]] bool isActiveAtDate(const std::optional<platform::Date>& date) const;
    /// At the current date.
    [[nodiscard]] bool isActive() const override;
    /// Whether the balance is 0 or more.
    [[nodiscard]] bool isBalanced() const override;

    TKTenantNote* createNote() override;
    [[nodiscard]] platform::ToManyView<TKNote> notes() const override;
    void setNotes(const platform::Ref<platform::Set>& notes) override { TKTenantProperties::setNotes(notes); }

private:
    ~TKTenant() override;
};

} // namespace estatebook
