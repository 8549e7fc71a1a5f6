// SPDX-License-Identifier: MIT
#include "store/TKTenantNote.hpp"

namespace estatebook {

using namespace platform;

constinit const ClassDescription TKTenantNote::Class("TKTenantNote", &TKNote::Class, {}, {}, noDependents,
                                                     replacesAnnouncements<TKTenantNote>);

TKTenantNote::~TKTenantNote() = default;

} // namespace estatebook
