// SPDX-License-Identifier: MIT
#include "platform/persistence/RelationshipUpkeep.hpp"

#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/Raised.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/FirstException.hpp"
#include "platform/values/Set.hpp"

#include <algorithm>
#include <cassert>
#include <string>

namespace estatebook::platform {

namespace {

/// A to-one property that was stored without its inverse.
struct OneWay {
    ManagedObject* object;
    const ModelledProperty* property;
};

std::vector<OneWay>& oneWays() noexcept {
    thread_local std::vector<OneWay> links;
    return links;
}

// How many changes are being followed at once: more than one when an observer moves what is being moved.
thread_local unsigned following = 0;

void forgetOneWays(const ManagedObject& object) noexcept {
    if (oneWays().empty()) return;
    std::erase_if(oneWays(), [&](const OneWay& each) {
        ToOneSlot& slot = each.property->toOne(*each.object);
        if (slot.target == &object) slot = {};
        return each.object == &object || !slot.target;
    });
}

} // namespace

// The members of a to-many relationship

ToManySlot::Members ToManySlot::unknown;

void ToManySlot::Drop::operator()(Members* members) const noexcept {
    if (members != &unknown) delete members;
}

std::size_t ToManySlot::count() const noexcept {
    return members_ ? members_->objects.size() - members_->holes : 0;
}

std::span<ManagedObject* const> ToManySlot::members() const {
    assert(!isUnknown());
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

void RelationshipUpkeep::requireLinkable(const ManagedObject& object, const ModelledProperty& property,
                                         const ManagedObject& target) {
    if (target.managedObjectContext() != object.managedObjectContext())
        throw InvalidArgumentException("\"" + std::string(property.key.name()) + "\" cannot lead from " +
                                       object.description() + " to " + target.description() +
                                       ": they are not in one context");
    const RelationshipDescription* relationship = object.entity().relationship(property.key);
    if (relationship && target.entity().isKindOfEntity(*relationship->destinationEntity)) return;
    throw InvalidArgumentException("\"" + std::string(property.key.name()) + "\" of " + object.description() +
                                   " does not lead to objects such as " + target.description());
}

void RelationshipUpkeep::letGo(ManagedObject& object, const ModelledProperty& toOne) noexcept {
    ManagedObject* const target = toOne.toOne(object).target;
    if (!target) return;
    const ModelledProperty& back = *target->modelledProperty(toOne.inverse);
    if (back.kind != PropertyKind::ToOne)
        part(*target, back, object, toOne);
    else if (back.toOne(*target).target == &object)
        back.toOne(*target).target = nullptr;
}

void RelationshipUpkeep::storeOneWay(ManagedObject& object, const ModelledProperty& toOne,
                                     ManagedObject* target) {
    if (target == toOne.toOne(object).target) return;
    letGo(object, toOne);
    toOne.toOne(object) = {target};
    if (!target) return;
    oneWays().push_back({&object, &toOne});
    target->set(ManagedObject::LinkedOneWay);
}

std::size_t RelationshipUpkeep::find(ManagedObject& owner, const ModelledProperty& toMany,
                                     ManagedObject& member, const ModelledProperty& back) {
    const auto& members = toMany.toMany(owner).members_;
    if (!members) return NotFound;
    const auto& objects = members->objects;
    const std::size_t place = back.toOne(member).place;
    if (place < objects.size() && objects[place] == &member) return place;
    const auto found = std::ranges::find(objects, &member);
    return found == objects.end() ? NotFound : static_cast<std::size_t>(found - objects.begin());
}

bool RelationshipUpkeep::hasJoined(ManagedObject& owner, const ModelledProperty& toMany,
                                   ManagedObject& member, const ModelledProperty& back) {
    const auto& members = toMany.toMany(owner).members_;
    if (!members) return false;
    const std::size_t place = back.toOne(member).place;
    if (place < members->objects.size() && members->objects[place] == &member) return true;
    return following > 1 && find(owner, toMany, member, back) != NotFound;
}

void RelationshipUpkeep::join(ManagedObject& owner, const ModelledProperty& toMany, ManagedObject& member,
                              const ModelledProperty& back) {
    ToOneSlot& link = back.toOne(member);
    auto& members = owner.knownMembers(toMany).members_;
    if (link.target != &owner) return;
    if (hasJoined(owner, toMany, member, back)) {
        link.place = static_cast<std::uint32_t>(find(owner, toMany, member, back));
        return;
    }
    if (!members) makeMembers(toMany.toMany(owner), toMany, back);
    if (!members->isOrdered && !members->objects.empty() &&
        members->objects.back()->creationNumber() > member.creationNumber())
        members->inOrderOfCreation = false;
    link.place = static_cast<std::uint32_t>(members->objects.size());
    members->objects.push_back(&member);
}

void RelationshipUpkeep::part(ManagedObject& owner, const ModelledProperty& toMany, ManagedObject& member,
                              const ModelledProperty& back) {
    // Whoever is let go without a word may never have been read.
    if (toMany.toMany(owner).isUnknown()) return;
    const std::size_t place = find(owner, toMany, member, back);
    if (place == NotFound) return;
    auto& members = *toMany.toMany(owner).members_;
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

void RelationshipUpkeep::announceMembers(ManagedObject& owner, const ModelledProperty& toMany,
                                         ManagedObject& member, bool joins, const ModelledProperty& back) {
    const auto store = [&] {
        if (joins)
            join(owner, toMany, member, back);
        else if (back.toOne(member).target != &owner)
            part(owner, toMany, member, back);
    };
    if (!owner.mustAnnounce(toMany.key)) {
        owner.noteWillChange(toMany.key);
        store();
        owner.noteDidChange(toMany.key);
        return;
    }
    const ChangeKind kind = joins ? ChangeKind::Insertion : ChangeKind::Removal;
    if (toMany.kind == PropertyKind::OrderedToMany) {
        const std::size_t place = joins ? toMany.toMany(owner).count() : find(owner, toMany, member, back);
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

void RelationshipUpkeep::follow(ManagedObject& object, const ModelledProperty& property,
                                ManagedObject* before) {
    ManagedObject* after = property.toOne(object).target;
    if (!oneWays().empty())
        std::erase_if(oneWays(), [&](const OneWay& each) {
            return each.object == &object && each.property == &property;
        });
    const Raised guard(following);
    for (ManagedObject* other : {before, after}) {
        if (!other || (other == before && before == after)) continue;
        // An observer of the first side may have led the object elsewhere.
        const bool joins = other == after;
        if (joins && property.toOne(object).target != after) return;
        const ModelledProperty& back = *other->modelledProperty(property.inverse);
        if (back.kind != PropertyKind::ToOne) {
            other->knownMembers(back);
            const bool isMember = joins ? hasJoined(*other, back, object, property)
                                        : find(*other, back, object, property) != NotFound;
            if (isMember != joins) announceMembers(*other, back, object, joins, property);
            continue;
        }
        // One to one: the other side follows in its own right, and lets go of whom it was linked with.
        other->access();
        ManagedObject* const linked = back.toOne(*other).target;
        if (joins && linked != &object) other->setToOne(back, &object);
        if (!joins && linked == &object) other->setToOne(back, nullptr);
    }
}

void RelationshipUpkeep::move(ToManySlot& slot, std::size_t from, std::size_t to) {
    auto& objects = slot.members_->objects;
    const auto place = [&](std::size_t index) {
        return objects.begin() + static_cast<std::ptrdiff_t>(index);
    };
    if (from < to)
        std::rotate(place(from), place(from + 1), place(to + 1));
    else
        std::rotate(place(to), place(from), place(from + 1));
    slot.members_->renumber(std::min(from, to));
}

std::size_t RelationshipUpkeep::placeOf(ManagedObject& member, const ModelledProperty& toMany) {
    return member.modelledProperty(toMany.inverse)->toOne(member).place;
}

// Reading from a store

ToManySlot::Members& RelationshipUpkeep::makeMembers(ToManySlot& slot, const ModelledProperty& toMany,
                                                     const ModelledProperty& back) {
    slot.members_.reset(new ToManySlot::Members);
    slot.members_->isOrdered = toMany.kind == PropertyKind::OrderedToMany;
    slot.members_->slotOf = back.toOne;
    return *slot.members_;
}

void RelationshipUpkeep::forgetMembers(ToManySlot& slot) noexcept {
    slot.members_.reset(&ToManySlot::unknown);
}

void RelationshipUpkeep::takeMembers(ManagedObject& owner, const ModelledProperty& toMany,
                                     std::span<ManagedObject* const> members) {
    ToManySlot& slot = toMany.toMany(owner);
    slot.members_.reset();
    if (members.empty()) return;
    const ModelledProperty& back = *members.front()->modelledProperty(toMany.inverse);
    auto& objects = makeMembers(slot, toMany, back).objects;
    objects.reserve(members.size());
    for (ManagedObject* member : members) {
        ToOneSlot& link = back.toOne(*member);
        if (link.target != &owner) {
            if (member->isRead()) continue;
            letGo(*member, back);
        }
        link = {&owner, static_cast<std::uint32_t>(objects.size())};
        objects.push_back(member);
    }
}

void RelationshipUpkeep::takeLink(ManagedObject& object, const ModelledProperty& toOne,
                                  ManagedObject* target) {
    ToOneSlot& link = toOne.toOne(object);
    if (link.target != target) {
        letGo(object, toOne);
        link = {target};
    }
    if (!target) return;
    // Also where it led before: members that were read meanwhile may have left it out.
    const ModelledProperty& back = *target->modelledProperty(toOne.inverse);
    if (back.kind != PropertyKind::ToOne && !back.toMany(*target).isUnknown())
        join(*target, back, object, toOne);
}

void RelationshipUpkeep::unlinkAll(ManagedObject& object) {
    FirstException exceptions;
    object.forEachModelledProperty([&](const ModelledProperty& property) {
        if (property.kind == PropertyKind::ToOne) {
            if (property.toOne(object).target) exceptions.keep([&] { object.setToOne(property, nullptr); });
        } else if (property.isRelationship()) {
            const auto members = object.knownMembers(property).members();
            for (ManagedObject* member : std::vector<ManagedObject*>(members.begin(), members.end())) {
                const ModelledProperty& back = *member->modelledProperty(property.inverse);
                if (back.toOne(*member).target == &object)
                    exceptions.keep([&] { member->setToOne(back, nullptr); });
            }
        }
    });
    exceptions.rethrow();
}

void RelationshipUpkeep::forgetAll(ManagedObject& object) noexcept {
    forgetOneWays(object);
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
            letGo(object, property);
            property.toOne(object) = {};
        } else if (property.isRelationship() && property.toMany(object).members_) {
            for (ManagedObject* member : property.toMany(object).members_->objects)
                if (member) member->modelledProperty(property.inverse)->toOne(*member) = {};
            property.toMany(object).members_.reset();
        }
    });
    forgetOneWays(object);
}

} // namespace estatebook::platform
