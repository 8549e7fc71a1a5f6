// SPDX-License-Identifier: MIT
#pragma once

/// TKTenureTransaction: what a tenant paid, or was charged or credited beside the rent. Adjustments are part of the tenure's
/// "totalAdjustment", all others of its "totalIncome".
///
/// The lines that a tenure's statement makes for rent and bond are of this class, too, in no context.

#include "model/TKTenureTransactionProperties.hpp"

namespace estatebook {

class TKProperty;

class ESTATEBOOK_API TKTenureTransaction : public TKTenureTransactionProperties {
public:
    using TKTenureTransactionProperties::TKTenureTransactionProperties;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }
    static constexpr auto Dependencies = platform::withInherited(
        TKTransaction::Dependencies, std::array{platform::DependencyRow{keys::property, {keys::tenure}}});

    /// The name of the tenure's tenant; null when either is missing.
    [[nodiscard]] platform::Ref<platform::String> name() const;
    /// The tenure's property; null without a tenure.
    [[nodiscard]] TKProperty* property() const;

    /// "amount" and "adjustment" announce the tenure's "totalIncome", then its "totalAdjustment".
    void willChangeValueForKey(platform::Key key) override;
    void didChangeValueForKey(platform::Key key) override;
    [[nodiscard]] bool passesOn(const platform::KeySet& changed) const override;

protected:
    ~TKTenureTransaction() override = default;
};

} // namespace estatebook
