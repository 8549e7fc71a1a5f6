// SPDX-License-Identifier: MIT
#include "store/TKNote.hpp"

#include "tags/TKTag.hpp"
#include "tags/TKTagNames.hpp"

namespace estatebook {

using namespace platform;

constinit const ClassDescription TKNote::Class("TKNote", nullptr, {}, {}, noDependents,
                                               replacesAnnouncements<TKNote>);

TKNote::~TKNote() = default;

TKTag* TKNote::createTagWithName(const Ref<String>& name) {
    return insertTag("NoteTag", *this, name);
}

void TKNote::willSave() {
    ManagedObject::willSave();
    if (!isDeleted()) TKTag::updateTagNamesForTaggableObject(tagNames(), *this);
}

void TKNote::awakeFromFetch() {
    ManagedObject::awakeFromFetch();
    setTagNames(TKTag::fetchTagNamesFromTaggableObject(*this));
}

} // namespace estatebook
