// SPDX-License-Identifier: MIT
#include "store/TKTenureNote.hpp"

#include "tenure/TKTenure.hpp"

namespace estatebook {

using namespace platform;

constinit const ClassDescription TKTenureNote::Class("TKTenureNote", &TKNote::Class, {}, {}, noDependents,
                                                     announcing<TKTenureNote>);

TKTenureNote::~TKTenureNote() = default;

Ref<String> TKTenureNote::regarding() const {
    const TKTenure* subject = tenure();
    return regardingKindNamed("Tenure", subject ? subject->name() : nullptr);
}

} // namespace estatebook
