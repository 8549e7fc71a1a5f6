// SPDX-License-Identifier: MIT
#include "platform/persistence/StoreSave.hpp"

#include "platform/persistence/ChangeJournal.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/StoredObjects.hpp"
#include "platform/system/Clock.hpp"
#include "platform/values/Set.hpp"

#include <algorithm>
#include <cassert>
#include <new>
#include <utility>

namespace estatebook::platform {

namespace {

std::size_t placeOf(std::span<const ModelledProperty* const> properties, const ModelledProperty& property) {
    const auto found = std::ranges::find(properties, &property);
    assert(found != properties.end());
    return static_cast<std::size_t>(found - properties.begin());
}

RowKey keyOf(const ManagedObject& object) noexcept {
    return static_cast<RowKey>(object.creationNumber());
}

RowLink linkOf(ManagedObject& object, const ModelledProperty& toOne, const StoredLink& link) {
    const ToOneSlot& slot = toOne.toOne(object);
    if (!slot.target) return {};
    return {keyOf(*slot.target), link.isPlaced ? std::int64_t{slot.place} : 0};
}

} // namespace

bool areStoredAlike(const Value& a, const Value& b) noexcept {
    return a.isIdentical(b) || (a.object() && b.object() && a.isEqual(b));
}

StoreSave::StoreSave(ManagedObjectContext& context, StoredObjects& stored, RowKey lastKey)
    : context_(context), stored_(stored), lastKey_(lastKey) {
    changes_.token = CommitToken::random();
    changes_.origin = context.origin_;
    changes_.origin.when = Clock::now();

    // All keys first: rows lead to one another.
    saved_ = context.insertedObjects();
    formerNumbers_.reserve(saved_.size());
    for (const auto& object : saved_) {
        formerNumbers_.push_back(object->creationNumber_);
        object->creationNumber_ = static_cast<std::uint64_t>(keyOfInserted(formerNumbers_.size() - 1));
    }
    try {
        collect();
    } catch (...) {
        withdraw();
        throw;
    }
}

void StoreSave::collect() {
    changes_.insertions =
        InsertedRows(saved_.size(), [this](std::size_t place, Row& row) { makeRow(*saved_[place], row); });
    for (const auto& object : context_.updatedObjects()) update(*object);
    for (const auto& object : context_.deletedObjects()) {
        if (!object->isStored()) continue;
        changes_.deletions.push_back({keyOf(*object), &object->entity(), stored_.version(keyOf(*object))});
        deleted_.push_back(object);
    }
    for (const auto& [object, identifier] : context_.identifiers_)
        if (!object->isDeleted())
            changes_.identifiers.push_back({keyOf(*object), &object->entity(), identifier});
    std::ranges::sort(changes_.identifiers, {}, &RowIdentifier::key);
}

bool StoreSave::isEmpty() const noexcept {
    return changes_.insertions.empty() && changes_.updates.empty() && changes_.deletions.empty() &&
           changes_.identifiers.empty();
}

void StoreSave::makeRow(ManagedObject& object, Row& row) const {
    const StoredProperties& properties = stored_.properties(object.entity());
    row.key = keyOf(object);
    row.entity = &object.entity();
    row.values.clear();
    for (const ModelledProperty* attribute : properties.attributes)
        row.values.push_back(attribute ? attribute->primitive(object) : Value());
    row.links.clear();
    for (std::size_t place = 0; place < properties.links.size(); ++place)
        row.links.push_back(linkOf(object, *properties.links[place], properties.shape->links()[place]));
}

RowUpdate& StoreSave::updateOf(ManagedObject& object) {
    const auto [found, isNew] = updates_.try_emplace(&object, changes_.updates.size());
    if (isNew) {
        changes_.updates.push_back({keyOf(object), &object.entity(), stored_.version(keyOf(object))});
        saved_.emplace_back(&object);
    }
    return changes_.updates[found->second];
}

void StoreSave::changeLink(ManagedObject& object, const ModelledProperty& toOne) {
    const StoredProperties& properties = stored_.properties(object.entity());
    const std::size_t place = placeOf(properties.links, toOne);
    // Its version is that of its row.
    if (!object.isRead()) context_.readAhead(object);
    RowUpdate& update = updateOf(object);
    if (std::ranges::find(update.links, place, &ChangedLink::link) != update.links.end()) return;
    update.links.push_back({place, linkOf(object, toOne, properties.shape->links()[place])});
}

void StoreSave::update(ManagedObject& object) {
    const ObjectJournal* journal = context_.journalOf(object);
    if (!journal) return;
    const StoredProperties& properties = stored_.properties(object.entity());
    for (const FormerValue& former : journal->sinceSave.all()) {
        const ModelledProperty& property = *former.property;
        switch (property.kind) {
        case PropertyKind::Attribute:
            if (property.flags & PropertyTransient) break;
            if (Value current = property.primitive(object); !areStoredAlike(former.value, current))
                updateOf(object).values.push_back(
                    {placeOf(properties.attributes, property), std::move(current)});
            break;
        case PropertyKind::ToOne:
            if (former.value.as<ManagedObject>().get() != property.toOne(object).target ||
                properties.shape->links()[placeOf(properties.links, property)].isPlaced)
                changeLink(object, property);
            break;
        case PropertyKind::OrderedToMany:
            updateOrder(object, property, former.value);
            break;
        case PropertyKind::ToMany:
            break; // follows from the other side
        }
    }
}

void StoreSave::updateOrder(ManagedObject& owner, const ModelledProperty& ordered, const Value& former) {
    std::unordered_map<const Object*, std::size_t> places;
    if (const auto members = former.as<OrderedSet>())
        for (const Value& member : members->members()) places.emplace(member.object().get(), places.size());
    std::size_t place = 0;
    for (ManagedObject* member : owner.knownMembers(ordered).members()) {
        const auto before = places.find(member);
        if (!member->isInserted() && (before == places.end() || before->second != place))
            changeLink(*member, *member->modelledProperty(ordered.inverse));
        ++place;
    }
}

void StoreSave::withdraw() noexcept {
    for (std::size_t index = 0; index < formerNumbers_.size(); ++index)
        saved_[index]->creationNumber_ = formerNumbers_[index];
}

void StoreSave::withdrawUnknown() {
    try {
        keepRows();
    } catch (const std::bad_alloc&) {
        withdraw();
        throw;
    }
    withdraw();
    keepOrders();
}

void StoreSave::keepRows() {
    rows_.reserve(formerNumbers_.size());
    for (const Row& row : changes_.insertions) rows_.push_back(row);
}

void StoreSave::keepOrders() {
    const std::size_t rows = saved_.size();
    const auto keepOrdersOf = [&](ManagedObject& owner) {
        for (const ModelledProperty* toMany : stored_.properties(owner.entity()).toMany)
            if (toMany->kind == PropertyKind::OrderedToMany && !toMany->toMany(owner).isUnknown())
                orders_[&owner].push_back({toMany, owner.primitiveValueForKey(toMany->key)});
    };
    for (std::size_t index = 0; index < rows; ++index) keepOrdersOf(*saved_[index]);
    for (const auto& object : context_.updatedObjects()) {
        if (updates_.contains(object.get())) continue;
        keepOrdersOf(*object);
        if (orders_.contains(object.get())) saved_.push_back(object);
    }
}

std::optional<StoreError> StoreSave::recallRows() {
    if (rows_.size() == formerNumbers_.size()) return std::nullopt;
    std::vector<Row> rows;
    std::unordered_map<const EntityDescription*, std::vector<RowKey>> keys;
    for (std::size_t place = 0; place < formerNumbers_.size(); ++place) {
        const RowShape& shape = *stored_.properties(saved_[place]->entity()).shape;
        // One that somebody has deleted since then has nothing of what the object has.
        rows.push_back(shape.emptyRow(keyOfInserted(place)));
        keys[&shape.root()].push_back(keyOfInserted(place));
    }
    for (const auto& [root, ofRoot] : keys) {
        const auto read = stored_.store().visitRows(*root, ofRoot, [&](const Row& row) {
            rows[static_cast<std::size_t>(row.key - keyOfInserted(0))] = row;
        });
        if (!read) return read.error();
    }
    rows_ = std::move(rows);
    return std::nullopt;
}

void StoreSave::adopt() {
    for (std::size_t index = 0; index < formerNumbers_.size(); ++index) {
        const RowKey key = keyOfInserted(index);
        saved_[index]->creationNumber_ = static_cast<std::uint64_t>(key);
        stored_.enter(key, *saved_[index]);
    }
    for (const RowUpdate& update : changes_.updates) stored_.setVersion(update.key, update.version + 1);
    for (const RowIdentifier& each : changes_.identifiers) {
        const auto named = context_.identifiers_.find(stored_.find(each.key));
        if (named != context_.identifiers_.end() && named->second == each.identifier)
            context_.identifiers_.erase(named);
    }
}

void StoreSave::keepLink(ManagedObject& object, const ModelledProperty& toOne, const RowLink& saved,
                         FormerValues& values) const {
    ManagedObject* const target = saved.target == NoRow ? nullptr : stored_.find(saved.target);
    // Members that have been forgotten will be read in the order of their rows.
    if (target && toOne.toOne(object).target == target) {
        const ModelledProperty& back = *target->modelledProperty(toOne.inverse);
        if (back.kind != PropertyKind::ToOne && back.toMany(*target).isUnknown()) return;
    }
    values.keep(toOne, Value(Ref<Object>(target)));
}

FormerValues StoreSave::savedValues(ManagedObject& object) const {
    const StoredProperties& properties = stored_.properties(object.entity());
    FormerValues values;
    if (const auto orders = orders_.find(&object); orders != orders_.end())
        for (const FormerValue& each : orders->second)
            if (!each.property->toMany(object).isUnknown()) values.keep(*each.property, each.value);
    if (const auto update = updates_.find(&object); update != updates_.end()) {
        for (const ChangedValue& each : changes_.updates[update->second].values)
            values.keep(*properties.attributes[each.attribute], each.value);
        for (const ChangedLink& each : changes_.updates[update->second].links)
            keepLink(object, *properties.links[each.link], each.target, values);
        return values;
    }
    if (keyOf(object) <= lastKey_) return values;
    const Row& row = rows_[static_cast<std::size_t>(keyOf(object) - keyOfInserted(0))];
    for (std::size_t place = 0; place < properties.attributes.size(); ++place)
        if (properties.attributes[place]) values.keep(*properties.attributes[place], row.values[place]);
    for (std::size_t place = 0; place < properties.links.size(); ++place)
        keepLink(object, *properties.links[place], row.links[place], values);
    return values;
}

} // namespace estatebook::platform
