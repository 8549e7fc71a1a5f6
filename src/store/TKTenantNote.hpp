// SPDX-License-Identifier: MIT
#pragma once

/// TKTenantNote: a note on a tenant.

#include "model/TKTenantNoteProperties.hpp"

namespace estatebook {

class ESTATEBOOK_API TKTenantNote final : public TKTenantNoteProperties {
public:
    using TKTenantNoteProperties::TKTenantNoteProperties;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }

    /// "Tenant: NAME", with the tenant's name.
    [[nodiscard]] platform::Ref<platform::String> regarding() const override;

private:
    ~TKTenantNote() override;
};

} // namespace estatebook
