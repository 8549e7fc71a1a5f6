// SPDX-License-Identifier: MIT
#include "platform/persistence/ManagedObject.hpp"

#include "platform/persistence/ChangeJournal.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/MutableOrderedSet.hpp"
#include "platform/persistence/RelationshipUpkeep.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Set.hpp"

#include <algorithm>
#include <optional>
#include <string>

namespace estatebook::platform {

namespace {

/// A to-one relationship between its will and its did, with where it led before.
struct OpenLink {
    const ManagedObject* object;
    Key key;
    ManagedObject* before;
};

std::vector<OpenLink>& openLinks() noexcept {
    thread_local std::vector<OpenLink> links;
    return links;
}

} // namespace

void ManagedObject::holdModel() noexcept {
    entity().model().retain();
    set(HoldsModel);
}

void ManagedObject::dropModel() noexcept {
    clear(HoldsModel);
    entity().model().release();
}

void ManagedObject::goOutside() noexcept {
    home_ = &entity().homeOutside();
    holdModel();
}

void ManagedObject::comeHome(const ManagedObjectHome& home) noexcept {
    home_ = &home;
    dropModel(); // the context holds it, too
}

void ManagedObject::dispose() const noexcept {
    endManaging();
    ObservableObject::dispose();
}

void ManagedObject::endManaging() const noexcept {
    endObserving();
    RelationshipUpkeep::sever(const_cast<ManagedObject&>(*this));
}

Ref<ManagedObject>
ManagedObject::initWithEntityInsertIntoManagedObjectContext(const EntityDescription& entity,
                                                            ManagedObjectContext* context) {
    const ManagedClass& managedClass = entity.managedClass();
    if (entity.isAbstract() || !managedClass.make)
        throw InternalInconsistencyException("the entity \"" + std::string(entity.name()) +
                                             "\" is abstract: it has no objects of its own");
    Ref<ManagedObject> object(managedClass.make(context ? ManagedObjectBirth(context->homeOf(entity))
                                                        : ManagedObjectBirth::withoutContext(entity)));
    if (context) context->insert(*object);
    return object;
}

// By key

const ModelledProperty* ManagedObject::modelledProperty(Key) const noexcept {
    return nullptr;
}

const ModelledProperty& ManagedObject::requireModelled(Key key) const {
    if (const ModelledProperty* property = modelledProperty(key)) return *property;
    throw UndefinedKeyException("the entity \"" + std::string(entity().name()) + "\" has no property \"" +
                                std::string(key.name()) + "\"");
}

Value ManagedObject::relationshipValue(const ModelledProperty& property) const {
    auto& self = const_cast<ManagedObject&>(*this);
    if (property.kind == PropertyKind::ToOne) return Value(Ref<Object>(property.toOne(self).target));
    std::vector<Value> members;
    const auto objects = self.knownMembers(property).members();
    members.reserve(objects.size());
    for (ManagedObject* member : objects) members.emplace_back(Ref<Object>(member));
    if (property.kind == PropertyKind::OrderedToMany) return Value(OrderedSet::make(std::move(members)));
    return Value(Set::make(std::move(members)));
}

Value ManagedObject::primitiveValueForKey(Key key) const {
    const ModelledProperty& property = requireModelled(key);
    return property.isRelationship() ? relationshipValue(property) : property.primitive(*this);
}

Value ManagedObject::valueForKey(Key key) const {
    if (const Property* own = classDescription().property(key); own && own->get) return own->get(*this);
    if (!modelledProperty(key)) return ObservableObject::valueForKey(key);
    access();
    return primitiveValueForKey(key);
}

std::optional<Decimal> ManagedObject::sumOfMembers(Key collection, Key ofMember) const {
    const ModelledProperty* property = modelledProperty(collection);
    ManagedObjectContext* context = managedObjectContext();
    if (!context || !property || property->kind == PropertyKind::Attribute ||
        property->kind == PropertyKind::ToOne)
        return std::nullopt;
    if (const Property* own = classDescription().property(collection); own && own->get) return std::nullopt;
    access();
    auto& self = const_cast<ManagedObject&>(*this);
    if (const auto sum = context->sumOfMembers(self, *property, ofMember)) return sum;

    // Those of one class with the attribute as it is stored need not be asked by key.
    const auto known = self.knownMembers(*property).members();
    const std::vector<Ref<ManagedObject>> members(known.begin(), known.end());
    if (members.empty()) return std::nullopt;
    const ManagedObject& first = *members.front();
    const ModelledProperty* attribute = first.modelledProperty(ofMember);
    const Property* own = first.classDescription().property(ofMember);
    if (!attribute || attribute->isRelationship() || (own && own->get) ||
        !std::ranges::all_of(members, [&](const auto& each) { return &each->entity() == &first.entity(); }))
        return std::nullopt;
    Decimal sum;
    for (const auto& member : members) {
        member->access();
        if (const auto amount = attribute->primitive(*member).decimal())
            sum = sum.decimalNumberByAdding(*amount);
    }
    return sum;
}

bool ManagedObject::hasValueForKey(Key key) const {
    return modelledProperty(key) || ObservableObject::hasValueForKey(key);
}

void ManagedObject::setPrimitiveValueForKey(const Value& value, Key key) {
    const ModelledProperty& property = requireModelled(key);
    switch (property.kind) {
    case PropertyKind::Attribute:
        property.setPrimitive(*this, value);
        return;
    case PropertyKind::ToOne: {
        const auto target = value.as<ManagedObject>();
        if (!target && !value.isAbsent() && !value.isNullObject()) refuseForSlot(value, key);
        if (target) RelationshipUpkeep::requireLinkable(*this, property, *target);
        const bool isInPair = std::ranges::any_of(
            openLinks(), [&](const OpenLink& each) { return each.object == this && each.key == key; });
        if (isInPair)
            property.toOne(*this).target = target.get();
        else
            RelationshipUpkeep::storeOneWay(*this, property, target.get());
        return;
    }
    case PropertyKind::ToMany:
    case PropertyKind::OrderedToMany:
        throw InvalidArgumentException("the members of \"" + std::string(key.name()) +
                                       "\" are not written primitively; set the relationship itself");
    }
}

namespace {

// Refuses a value of the wrong kind before anybody is told of a change.
void requireFit(ManagedObject& object, const ModelledProperty& attribute, const Value& value) {
    const Value present = attribute.primitive(object);
    attribute.setPrimitive(object, value);
    attribute.setPrimitive(object, present);
}

std::vector<Value> membersGiven(const Value& value, Key key) {
    const Ref<Object> object = value.object();
    if (const auto set = refCast<DistinctValues>(object))
        return {set->members().begin(), set->members().end()};
    if (const auto array = refCast<Array>(object)) {
        OrderedSet::Builder members;
        for (std::size_t index = 0; index < array->count(); ++index) members.add(array->at(index));
        const auto distinct = std::move(members).finish();
        return {distinct->members().begin(), distinct->members().end()};
    }
    if (!value.isAbsent() && !value.isNullObject()) refuseForSlot(value, key);
    return {};
}

} // namespace

void ManagedObject::setValueForKey(const Value& value, Key key) {
    if (const Property* own = classDescription().property(key); own && own->set)
        return ObservableObject::setValueForKey(value, key);
    const ModelledProperty* property = modelledProperty(key);
    if (!property) return ObservableObject::setValueForKey(value, key);
    access();
    if (property->kind == PropertyKind::Attribute) {
        requireFit(*this, *property, value);
        change(key, [&] { property->setPrimitive(*this, value); });
    } else if (property->kind == PropertyKind::ToOne) {
        const auto target = value.as<ManagedObject>();
        if (!target && !value.isAbsent() && !value.isNullObject()) refuseForSlot(value, key);
        setToOne(*property, target.get());
    } else {
        setToMany(*property, membersGiven(value, key));
    }
}

MutableOrderedSet ManagedObject::mutableOrderedSetValueForKey(Key key) {
    const ModelledProperty* property = modelledProperty(key);
    if (!property || property->kind != PropertyKind::OrderedToMany)
        throw InvalidArgumentException("\"" + std::string(key.name()) +
                                       "\" is no ordered relationship of \"" + std::string(entity().name()) +
                                       "\"");
    return MutableOrderedSet(*this, *property);
}

// Relationships

void ManagedObject::setToOne(const ModelledProperty& property, ManagedObject* target) {
    access();
    if (target) RelationshipUpkeep::requireLinkable(*this, property, *target);
    // Read now: what cannot be read must not leave the two sides apart.
    for (ManagedObject* other : {property.toOne(*this).target, target}) {
        if (!other) continue;
        other->access();
        other->knowMembersOf(property.inverse);
    }
    ObservableObject::change(property.key, [&] { property.toOne(*this).target = target; });
}

void ManagedObject::setToMany(const ModelledProperty& property, std::span<const Value> members) {
    access();
    std::vector<Ref<ManagedObject>> wanted;
    for (const Value& each : members) {
        auto member = each.as<ManagedObject>();
        if (!member) refuseForSlot(each, property.key);
        RelationshipUpkeep::requireLinkable(*this, property, *member);
        wanted.push_back(std::move(member));
    }
    const Ref<ManagedObject> held(this);
    willChangeValueForKey(property.key);
    const auto present = knownMembers(property).members();
    for (ManagedObject* member : std::vector<ManagedObject*>(present.begin(), present.end()))
        if (std::ranges::find(wanted, member, [](const auto& each) { return each.get(); }) == wanted.end())
            member->setToOne(*member->modelledProperty(property.inverse), nullptr);
    for (const auto& member : wanted) member->setToOne(*member->modelledProperty(property.inverse), this);
    if (property.kind == PropertyKind::OrderedToMany) {
        // Observers may have led one elsewhere.
        std::erase_if(wanted, [&](const auto& each) {
            return each->modelledProperty(property.inverse)->toOne(*each).target != this;
        });
        for (std::size_t place = 0; place < wanted.size(); ++place)
            RelationshipUpkeep::move(knownMembers(property),
                                     RelationshipUpkeep::placeOf(*wanted[place], property), place);
    }
    didChangeValueForKey(property.key);
}

// Changes

bool ManagedObject::hasNothingToNote(Key key) const noexcept {
    constexpr unsigned Noted = Updated | ChangedInRound;
    const ManagedObjectContext* context = managedObjectContext();
    if ((state_ & (Noted | Fault)) != Noted || !context) return false;
    context->assertThread();
    return context->keepsFormerValue(*this, key);
}

void ManagedObject::noteWillChange(Key key) {
    ManagedObjectContext* const context = managedObjectContext();
    if (context) context->assertThread();
    access();
    const ModelledProperty* property = modelledProperty(key);
    if (!property) return;
    if (context) context->keepFormerValue(*this, *property);
    if (property->kind != PropertyKind::ToOne) return;
    ManagedObject* const before = property->toOne(*this).target;
    // Read now, its members still are what they were before the change.
    if (before) before->knowMembersOf(property->inverse);
    openLinks().push_back({this, key, before});
}

void ManagedObject::noteDidChange(Key key) {
    const ModelledProperty* property = modelledProperty(key);
    if (!property) return;
    ManagedObjectContext* const context = managedObjectContext();
    const bool isProcessed = !context || context->changeProcessingOff_ == 0;
    if (context && isProcessed && !(property->flags & PropertyWrittenBySystem)) context->noteChanged(*this);
    if (property->kind != PropertyKind::ToOne) return;

    auto& links = openLinks();
    const auto link = std::find_if(links.rbegin(), links.rend(), [&](const OpenLink& each) {
        return each.object == this && each.key == key;
    });
    if (link == links.rend()) return;
    ManagedObject* before = link->before;
    links.erase(std::next(link).base());
    ManagedObject* after = property->toOne(*this).target;
    // A pair further out has seen the move done.
    for (OpenLink& each : links)
        if (each.object == this && each.key == key) each.before = after;
    if (isProcessed) RelationshipUpkeep::follow(*this, *property, before);
}

// Hooks

void ManagedObject::awakeFromSnapshotEvents(unsigned) {}

bool ManagedObject::validateForInsert(Ref<Error>*) {
    return true;
}

bool ManagedObject::validateForUpdate(Ref<Error>*) {
    return true;
}

bool ManagedObject::validateForDelete(Ref<Error>* error) {
    if (!ManagedObjectContext::isDenied(*this)) return true;
    if (error)
        *error = Error::make("Persistence", 1600,
                             "The " + std::string(entity().name()) +
                                 " cannot be deleted while other objects depend on it");
    return false;
}

void ManagedObject::fireFault() const {
    managedObjectContext()->fulfilFault(const_cast<ManagedObject&>(*this));
}

void ManagedObject::fetchMembers(const ModelledProperty& toMany) const {
    managedObjectContext()->fetchMembers(const_cast<ManagedObject&>(*this), toMany);
}

ToManySlot& ManagedObject::knownMembers(const ModelledProperty& toMany) {
    ToManySlot& slot = toMany.toMany(*this);
    if (slot.isUnknown()) [[unlikely]]
        fetchMembers(toMany);
    return slot;
}

void ManagedObject::knowMembersOf(Key relationship) {
    const ModelledProperty& property = *modelledProperty(relationship);
    if (property.kind == PropertyKind::ToOne)
        access();
    else
        knownMembers(property);
}

std::string ManagedObject::description() const {
    const std::string number = isStored() || creationNumber_ == 0
                                   ? std::to_string(creationNumber_)
                                   : "unsaved " + std::to_string(creationNumber_ - FirstUnstoredNumber);
    return "<" + std::string(entity().managedObjectClassName()) + " " + std::string(entity().name()) + " " +
           number + ">";
}

std::string_view ManagedObject::runtimeClassName() const noexcept {
    return entity().managedObjectClassName();
}

} // namespace estatebook::platform
