// SPDX-License-Identifier: MIT
#include "store/TKTenureNote.hpp"

namespace estatebook {

using namespace platform;

constinit const ClassDescription TKTenureNote::Class("TKTenureNote", &TKNote::Class, {}, {}, noDependents,
                                                     replacesAnnouncements<TKTenureNote>);

TKTenureNote::~TKTenureNote() = default;

} // namespace estatebook
