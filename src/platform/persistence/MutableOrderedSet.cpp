// SPDX-License-Identifier: MIT
#include "platform/persistence/MutableOrderedSet.hpp"

#include "platform/persistence/RelationshipUpkeep.hpp"
#include "platform/values/Exception.hpp"

#include <numeric>
#include <string>

namespace estatebook::platform {

std::size_t MutableOrderedSet::count() const {
    owner_->access();
    return owner_->knownMembers(*property_).count();
}

ManagedObject& MutableOrderedSet::objectAtIndex(std::size_t index) const {
    owner_->access();
    return *owner_->knownMembers(*property_).members()[index];
}

const ModelledProperty& MutableOrderedSet::back(ManagedObject& member) const {
    RelationshipUpkeep::requireLinkable(*owner_, *property_, member);
    return *member.modelledProperty(property_->inverse);
}

bool MutableOrderedSet::containsObject(const ManagedObject& object) const {
    owner_->access();
    auto& member = const_cast<ManagedObject&>(object);
    const ModelledProperty* inverse = member.modelledProperty(property_->inverse);
    return inverse && inverse->kind == PropertyKind::ToOne && inverse->toOne(member).target == owner_.get();
}

void MutableOrderedSet::addObject(ManagedObject& object) {
    insertObjectAtIndex(object, count());
}

void MutableOrderedSet::insertObjectAtIndex(ManagedObject& object, std::size_t index) {
    const ModelledProperty& inverse = back(object);
    if (containsObject(object)) return;
    if (const std::size_t last = count(); index > last)
        throw RangeException("place " + std::to_string(index) + " lies beyond the " + std::to_string(last) +
                             " members of \"" + std::string(property_->key.name()) + "\"");
    owner_->willChangeValuesAtIndexesForKey(ChangeKind::Insertion, {index}, property_->key);
    object.setToOne(inverse, owner_.get());
    // Observers may have changed the members in the meantime.
    if (containsObject(object) && index < count())
        RelationshipUpkeep::move(owner_->knownMembers(*property_),
                                 RelationshipUpkeep::placeOf(object, *property_), index);
    owner_->didChangeValuesAtIndexesForKey(ChangeKind::Insertion, {index}, property_->key);
}

void MutableOrderedSet::removeObject(ManagedObject& object) {
    if (containsObject(object)) removeObjectAtIndex(RelationshipUpkeep::placeOf(object, *property_));
}

void MutableOrderedSet::removeObjectAtIndex(std::size_t index) {
    if (index >= count())
        throw RangeException("\"" + std::string(property_->key.name()) + "\" has no member at place " +
                             std::to_string(index));
    ManagedObject& member = objectAtIndex(index);
    const Ref<ManagedObject> held(&member);
    owner_->willChangeValuesAtIndexesForKey(ChangeKind::Removal, {index}, property_->key);
    member.setToOne(back(member), nullptr);
    owner_->didChangeValuesAtIndexesForKey(ChangeKind::Removal, {index}, property_->key);
}

void MutableOrderedSet::removeAllObjects() {
    std::vector<std::size_t> all(count());
    if (all.empty()) return;
    std::iota(all.begin(), all.end(), std::size_t{0});
    owner_->willChangeValuesAtIndexesForKey(ChangeKind::Removal, all, property_->key);
    const auto members = owner_->knownMembers(*property_).members();
    const std::vector<Ref<ManagedObject>> leaving(members.begin(), members.end());
    // From the end, so that nobody has to move up.
    for (std::size_t index = leaving.size(); index-- > 0;)
        if (containsObject(*leaving[index])) leaving[index]->setToOne(back(*leaving[index]), nullptr);
    owner_->didChangeValuesAtIndexesForKey(ChangeKind::Removal, all, property_->key);
}

} // namespace estatebook::platform
