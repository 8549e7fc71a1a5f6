// SPDX-License-Identifier: MIT
#include "store/TKPropertyNote.hpp"

namespace estatebook {

using namespace platform;

constinit const ClassDescription TKPropertyNote::Class("TKPropertyNote", &TKNote::Class, {}, {}, noDependents,
                                                       replacesAnnouncements<TKPropertyNote>);

TKPropertyNote::~TKPropertyNote() = default;

} // namespace estatebook
