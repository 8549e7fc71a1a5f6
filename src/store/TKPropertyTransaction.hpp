// SPDX-License-Identifier: MIT
#pragma once

/// TKPropertyTransaction: a cost or an income of the building itself. All of them, adjustments included, are part of their
/// property's "totalIncome".

#include "model/TKPropertyTransactionProperties.hpp"

namespace estatebook {

class ESTATEBOOK_API TKPropertyTransaction final : public TKPropertyTransactionProperties {
public:
    using TKPropertyTransactionProperties::TKPropertyTransactionProperties;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }

    /// The property's plain name; null without a property.
    [[nodiscard]] platform::Ref<platform::String> name() const;

    /// "amount" and "adjustment" announce the property's "totalIncome".
    void willChangeValueForKey(platform::Key key) override;
    void didChangeValueForKey(platform::Key key) override;
    [[nodiscard]] bool passesOn(const platform::KeySet& changed) const override;

private:
    ~TKPropertyTransaction() override;
};

} // namespace estatebook
