// SPDX-License-Identifier: MIT
#pragma once

/// PaymentSheet: money of a letting or of a property, recorded or changed. A new payment of a letting is one rent, today.

#include "estatebook-desktop/sheets/BookSheet.hpp"

namespace estatebook::desktop {

class PaymentSheet final : public BookSheet {
public:
    /// A new one.
    PaymentSheet(BookSession& session, TKTenure& tenure) : BookSheet(session), tenure_(&tenure) {}
    PaymentSheet(BookSession& session, TKProperty& property) : BookSheet(session), property_(&property) {}
    /// One that was recorded.
    PaymentSheet(BookSession& session, TKTransaction& transaction);

    [[nodiscard]] platform::Ref<platform::String> nibName() const override;
    /// Null until a new one is recorded.
    [[nodiscard]] TKTransaction* transaction() const noexcept { return transaction_.get(); }

protected:
    ~PaymentSheet() override = default;
    void prepareControls() override;
    [[nodiscard]] QString fault() override;
    [[nodiscard]] QString stepName() const override;
    void apply() override;

private:
    void showDirection() const;

    platform::Ref<TKTenure> tenure_;
    platform::Ref<TKProperty> property_;
    platform::Ref<TKTransaction> transaction_;
    bool isNew_ = true;
    platform::Ref<TKDateController> dates_;
};

} // namespace estatebook::desktop
