// SPDX-License-Identifier: MIT
#include "tags/TKTag.hpp"

#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/MutableOrderedSet.hpp"
#include "platform/values/Exception.hpp"
#include "tags/TKTagNames.hpp"

#include <vector>

namespace estatebook {

using namespace platform;

constinit const ClassDescription TKTag::Class("TKTag", nullptr, {}, {}, noDependents, announcing<TKTag>);

Ref<TKTagNames> TKTag::fetchTagNamesFromTaggableObject(const TKTaggable& owner) {
    const auto tags = owner.tags();
    // Most owners have none, and nobody can tell one list of no names from another.
    static const Ref<TKTagNames> none = TKTagNames::initWithArray(Array::make({}));
    if (tags.count() == 0) return none;
    std::vector<Value> names;
    names.reserve(tags.count());
    for (const TKTag& tag : tags) {
        if (!tag.name())
            throw InvalidArgumentException("a tag without a name cannot be listed among the tag names");
        names.emplace_back(tag.name());
    }
    return TKTagNames::initWithArray(Array::make(std::move(names)));
}

namespace {

// Before anything is deleted: without a name a tag could never be in step with it.
void requireTexts(const TKTagNames& names, const ManagedObject& owner) {
    for (const Value& name : names.items()->members())
        if (!name.string())
            throw InvalidArgumentException("the tag name " + name.description() + " of " +
                                           owner.description() + " is no text");
}

} // namespace

void TKTag::replaceTagNamesForTaggableObject(const Ref<TKTagNames>& names, TKTaggable& owner) {
    auto& object = dynamic_cast<ManagedObject&>(owner);
    if (names) requireTexts(*names, object);
    MutableOrderedSet tags = object.mutableOrderedSetValueForKey(keys::tags);
    if (tags.count() > 0) {
        ManagedObjectContext* const context = object.managedObjectContext();
        if (!context)
            throw InvalidArgumentException(object.description() +
                                           " is in no context that its tags could leave");
        for (std::size_t index = 0; index < tags.count(); ++index)
            context->deleteObject(tags.objectAtIndex(index));
    }
    tags.removeAllObjects();
    if (!names) return;
    for (const Value& name : names->items()->members())
        tags.addObject(*owner.createTagWithName(name.string()));
}

void TKTag::updateTagNamesForTaggableObject(const Ref<TKTagNames>& names, TKTaggable& owner) {
    if (!names) return;
    // Walked as they stand before anything is replaced.
    const std::vector<Ref<TKTag>> tags = owner.tags().members();
    std::size_t place = 0;
    for (const Value& name : names->items()->members()) {
        const Ref<String> present = place < tags.size() ? tags[place]->name() : nullptr;
        ++place;
        if (present && present == name.string()) continue;
        // Replacing once leads to the same end as replacing again for each further name that differs.
        replaceTagNamesForTaggableObject(names, owner);
        return;
    }
}

TKTag* insertTag(std::string_view entityName, const ManagedObject& owner, const Ref<String>& name) {
    ManagedObjectContext* context = owner.managedObjectContext();
    if (!context)
        throw InvalidArgumentException(owner.description() + " is in no context and can have no tags");
    const auto tag = context->insertNewObject<TKTag>(entityName);
    tag->setName(name);
    return tag.get();
}

} // namespace estatebook
