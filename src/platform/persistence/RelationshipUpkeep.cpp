// SPDX-License-Identifier: MIT
#include "platform/persistence/RelationshipUpkeep.hpp"

#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/values/Set.hpp"

#include <algorithm>

namespace estatebook::platform {

// The members of a to-many relationship

ToManySlot::ToManySlot() noexcept = default;
ToManySlot::~ToManySlot() = default;

std::size_t ToManySlot::count() const noexcept {
    return members_ ? members_->objects.size() - members_->holes : 0;
}

std::span<ManagedObject* const> ToManySlot::members() const {
    if (!members_) return {};
    if (members_->holes > 0 || !members_->inOrderOfCreation) members_->tidy();
    return members_->objects;
}

void ToManySlot::Members::tidy() {
    std::erase(objects, nullptr);
    holes = 0;
    if (!inOrderOfCreation) std::ranges::sort(objects, {}, &ManagedObject::creationNumber);
    inOrderOfCreation = true;
    renumber(0);
}

void ToManySlot::Members::renumber(std::size_t from) {
    for (std::size_t index = from; index < objects.size(); ++index)
        slotOf(*objects[index]).place = static_cast<std::uint32_t>(index);
}

// Following a change

void RelationshipUpkeep::join(ManagedObject& owner, const ModelledProperty& toMany, ManagedObject& member,
                              const ModelledProperty& back) {
    auto& members = toMany.toMany(owner).members_;
    if (!members) {
        members = std::make_unique<ToManySlot::Members>();
        members->isOrdered = toMany.kind == PropertyKind::OrderedToMany;
        members->slotOf = back.toOne;
    }
    if (!members->isOrdered && !members->objects.empty() &&
        members->objects.back()->creationNumber() > member.creationNumber())
        members->inOrderOfCreation = false;
    back.toOne(member).place = static_cast<std::uint32_t>(members->objects.size());
    members->objects.push_back(&member);
}

void RelationshipUpkeep::part(ManagedObject& owner, const ModelledProperty& toMany, ManagedObject& member,
                              const ModelledProperty& back) {
    auto& members = *toMany.toMany(owner).members_;
    const std::size_t place = back.toOne(member).place;
    if (members.isOrdered) {
        members.objects.erase(members.objects.begin() + static_cast<std::ptrdiff_t>(place));
        members.renumber(place);
        return;
    }
    members.objects[place] = nullptr;
    ++members.holes;
    // The last place always holds a member.
    while (!members.objects.empty() && !members.objects.back()) {
        members.objects.pop_back();
        --members.holes;
    }
}

void RelationshipUpkeep::announceMembers(ManagedObject& owner, const ModelledProperty& toMany, ManagedObject& member,
                                         bool joins, const ModelledProperty& back) {
    const auto store = [&] { joins ? join(owner, toMany, member, back) : part(owner, toMany, member, back); };
    if (!owner.mustAnnounce()) {
        owner.noteWillChange(toMany.key);
        store();
        owner.noteDidChange(toMany.key);
        return;
    }
    const ChangeKind kind = joins ? ChangeKind::Insertion : ChangeKind::Removal;
    if (toMany.kind == PropertyKind::OrderedToMany) {
        const std::size_t place = joins ? toMany.toMany(owner).count() : back.toOne(member).place;
        owner.willChangeValuesAtIndexesForKey(kind, {place}, toMany.key);
        store();
        owner.didChangeValuesAtIndexesForKey(kind, {place}, toMany.key);
    } else {
        const auto members = Set::make({Value(Ref<Object>(&member))});
        owner.willChangeValueForKeyWithSetMutationUsingObjects(toMany.key, kind, members);
        store();
        owner.didChangeValueForKeyWithSetMutationUsingObjects(toMany.key, kind, members);
    }
}

void RelationshipUpkeep::follow(ManagedObject& object, const ModelledProperty& property, ManagedObject* before) {
    ManagedObject* after = property.toOne(object).target;
    if (before == after) return;
    for (ManagedObject* other : {before, after}) {
        if (!other) continue;
        const bool joins = other == after;
        const ModelledProperty& back = *other->modelledProperty(property.inverse);
        if (back.kind != PropertyKind::ToOne) {
            announceMembers(*other, back, object, joins, property);
            continue;
        }
        // One to one: the other side follows in its own right, and lets go of whom it was linked with.
        ManagedObject* const linked = back.toOne(*other).target;
        if (joins && linked != &object) other->setToOne(back, &object);
        if (!joins && linked == &object) other->setToOne(back, nullptr);
    }
}

void RelationshipUpkeep::move(ToManySlot& slot, std::size_t from, std::size_t to) {
    auto& objects = slot.members_->objects;
    const auto place = [&](std::size_t index) { return objects.begin() + static_cast<std::ptrdiff_t>(index); };
    if (from < to)
        std::rotate(place(from), place(from + 1), place(to + 1));
    else
        std::rotate(place(to), place(from), place(from + 1));
    slot.members_->renumber(std::min(from, to));
}

std::size_t RelationshipUpkeep::placeOf(ManagedObject& member, const ModelledProperty& toMany) {
    return member.modelledProperty(toMany.inverse)->toOne(member).place;
}

void RelationshipUpkeep::unlinkAll(ManagedObject& object) {
    object.forEachModelledProperty([&](const ModelledProperty& property) {
        if (property.kind == PropertyKind::ToOne) {
            if (property.toOne(object).target) object.setToOne(property, nullptr);
        } else if (property.isRelationship()) {
            const auto members = property.toMany(object).members();
            for (ManagedObject* member : std::vector<ManagedObject*>(members.begin(), members.end()))
                member->setToOne(*member->modelledProperty(property.inverse), nullptr);
        }
    });
}

void RelationshipUpkeep::forgetAll(ManagedObject& object) noexcept {
    object.forEachModelledProperty([&](const ModelledProperty& property) {
        if (property.kind == PropertyKind::ToOne)
            property.toOne(object) = {};
        else if (property.isRelationship())
            property.toMany(object).members_.reset();
    });
}

void RelationshipUpkeep::sever(ManagedObject& object) noexcept {
    object.forEachModelledProperty([&](const ModelledProperty& property) {
        if (property.kind == PropertyKind::ToOne) {
            ToOneSlot& slot = property.toOne(object);
            if (!slot.target) return;
            const ModelledProperty& back = *slot.target->modelledProperty(property.inverse);
            if (back.kind == PropertyKind::ToOne)
                back.toOne(*slot.target).target = nullptr;
            else
                part(*slot.target, back, object, property);
        } else if (property.isRelationship() && property.toMany(object).members_) {
            for (ManagedObject* member : property.toMany(object).members_->objects)
                if (member) member->modelledProperty(property.inverse)->toOne(*member) = {};
        }
    });
    forgetAll(object);
}

} // namespace estatebook::platform
