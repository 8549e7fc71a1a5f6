// SPDX-License-Identifier: MIT
#include "store/TKPropertyNote.hpp"

#include "store/TKProperty.hpp"

namespace estatebook {

using namespace platform;

constinit const ClassDescription TKPropertyNote::Class("TKPropertyNote", &TKNote::Class, {}, {}, noDependents,
                                                       announcing<TKPropertyNote>);

TKPropertyNote::~TKPropertyNote() = default;

Ref<String> TKPropertyNote::regarding() const {
    const TKProperty* subject = property();
    return regardingKindNamed("Property", subject ? subject->fullName() : nullptr);
}

} // namespace estatebook
