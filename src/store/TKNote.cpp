// SPDX-License-Identifier: MIT
#include "store/TKNote.hpp"

#include "model/Keys.hpp"
#include "platform/persistence/EntityDescription.hpp"
#include "platform/system/Clock.hpp"
#include "platform/system/UserName.hpp"
#include "platform/values/AttributedString.hpp"
#include "tags/TKTag.hpp"
#include "tags/TKTagNames.hpp"

namespace estatebook {

using namespace platform;

namespace {

constexpr Property properties[] = {derived<&TKNote::regarding>(keys::regarding)};

/// Looked up once, since notes may come by the thousand.
const Ref<String>& nameOfUser() {
    static const Ref<String> name = String::make(fullUserName());
    return name;
}

} // namespace

constinit const ClassDescription TKNote::Class("TKNote", nullptr, properties, {}, noDependents,
                                               announcing<TKNote>);

TKNote::~TKNote() = default;

Ref<String> TKNote::regarding() const {
    return String::make(entity().name());
}

Ref<String> TKNote::regardingKindNamed(std::string_view kind, const Ref<String>& name) {
    return String::make(std::string(kind) + ": " + Value(name).description());
}

TKTag* TKNote::createTagWithName(const Ref<String>& name) {
    return insertTag("NoteTag", *this, name);
}

// The base is not told, deliberately: a note does nothing but sign itself.
void TKNote::awakeFromInsert() {
    setCreatedDate(Clock::now());
    setCreatedBy(nameOfUser());
    setContent(Value(AttributedString::empty()));
}

void TKNote::awakeFromFetch() {
    ManagedObject::awakeFromFetch();
    setTagNames(TKTag::fetchTagNamesFromTaggableObject(*this));
}

void TKNote::willSave() {
    ManagedObject::willSave();
    if (!isDeleted()) TKTag::updateTagNamesForTaggableObject(tagNames(), *this);
}

} // namespace estatebook
