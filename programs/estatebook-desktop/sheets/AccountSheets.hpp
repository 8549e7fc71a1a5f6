// SPDX-License-Identifier: MIT
#pragma once

/// PropertySheet and TenantSheet: the two kinds of accounts, edited or made.

#include "estatebook-desktop/sheets/BookSheet.hpp"

namespace estatebook::desktop {

class PropertySheet final : public BookSheet {
public:
    /// Makes a new one when the property is null.
    PropertySheet(BookSession& session, TKProperty* property) : BookSheet(session), property_(property) {}

    [[nodiscard]] platform::Ref<platform::String> nibName() const override;
    /// Null until a new one is made.
    [[nodiscard]] TKProperty* property() const noexcept { return property_.get(); }

protected:
    ~PropertySheet() override = default;
    void prepareControls() override;
    [[nodiscard]] QString fault() override;
    [[nodiscard]] QString stepName() const override;
    void apply() override;

private:
    platform::Ref<TKProperty> property_;
    bool isNew_ = !property_;
};

class TenantSheet final : public BookSheet {
public:
    /// Makes a new one when the tenant is null.
    TenantSheet(BookSession& session, TKTenant* tenant) : BookSheet(session), tenant_(tenant) {}

    [[nodiscard]] platform::Ref<platform::String> nibName() const override;
    /// Null until a new one is made.
    [[nodiscard]] TKTenant* tenant() const noexcept { return tenant_.get(); }

protected:
    ~TenantSheet() override = default;
    void prepareControls() override;
    [[nodiscard]] QString fault() override;
    [[nodiscard]] QString stepName() const override;
    void apply() override;

private:
    platform::Ref<TKTenant> tenant_;
    bool isNew_ = !tenant_;
};

} // namespace estatebook::desktop
