// SPDX-License-Identifier: MIT
#include "store/TKTenantNote.hpp"

#include "store/TKTenant.hpp"

namespace estatebook {

using namespace platform;

constinit const ClassDescription TKTenantNote::Class("TKTenantNote", &TKNote::Class, {}, {}, noDependents,
                                                     announcing<TKTenantNote>);

TKTenantNote::~TKTenantNote() = default;

Ref<String> TKTenantNote::regarding() const {
    const TKTenant* subject = tenant();
    return regardingKindNamed("Tenant", subject ? subject->name() : nullptr);
}

} // namespace estatebook
