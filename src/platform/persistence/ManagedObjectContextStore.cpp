// SPDX-License-Identifier: MIT
#include "platform/persistence/ChangeJournal.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/RelationshipUpkeep.hpp"
#include "platform/persistence/StoreSave.hpp"
#include "platform/persistence/StoredObjects.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/FirstException.hpp"

#include <algorithm>
#include <ranges>
#include <utility>

namespace estatebook::platform {

namespace {

[[noreturn]] void raiseUnreadable(const StoreError& error) {
    throw ObjectInaccessibleException(error.message);
}

/// A book may come from anywhere.
void requireEntity(const ManagedObject& object, const EntityDescription& entity) {
    if (!object.entity().isKindOfEntity(entity))
        throw ObjectInaccessibleException("The book leads to " + object.description() + " as to one of \"" +
                                          std::string(entity.name()) + "\". Check the book.");
}

RowKey keyOf(const ManagedObject& object) noexcept {
    return static_cast<RowKey>(object.creationNumber());
}

/// Stored attributes are the store's to compare, everything else is asked of the objects.
bool canBeAskedOfStore(const EntityDescription& entity, const StoredProperties& properties, Key key) {
    const auto place = properties.shape->attribute(key);
    return place && !entity.attributes()[*place].isTransient;
}

} // namespace

StoredObjects* ManagedObjectContext::storedObjects() {
    if (!stored_ && coordinator_ && coordinator_->persistentStore())
        stored_ = std::make_unique<StoredObjects>(coordinator_->persistentStore());
    return stored_.get();
}

Store& ManagedObjectContext::readableStore() {
    Ref<Error> error;
    if (!resolveUnknownSave(&error)) throw ObjectInaccessibleException(error->localizedDescription());
    return stored_->store();
}

// Rows become objects

ManagedObject& ManagedObjectContext::makeFault(const EntityDescription& entity, RowKey key) {
    const Ref<ManagedObject> object(entity.managedClass().make(ManagedObjectBirth(homeOf(entity))));
    object->creationNumber_ = static_cast<std::uint64_t>(key);
    object->set(ManagedObject::Fault);
    for (const ModelledProperty* toMany : stored_->properties(entity).toMany)
        RelationshipUpkeep::forgetMembers(toMany->toMany(*object));
    enter(*object);
    stored_->enter(key, *object);
    return *object;
}

ManagedObject& ManagedObjectContext::objectOf(const Row& row) {
    ManagedObject* const object = stored_->find(row.key);
    if (!object) return makeFault(*row.entity, row.key);
    requireEntity(*object, *row.entity);
    return *object;
}

void ManagedObjectContext::takeRow(ManagedObject& object, const Row& row) {
    requireEntity(object, *row.entity);
    const StoredProperties& properties = stored_->properties(object.entity());
    for (std::size_t place = 0; place < properties.attributes.size(); ++place)
        if (const ModelledProperty* attribute = properties.attributes[place])
            attribute->setPrimitive(object, row.values[place]);
    takeLinks(object, row);
    stored_->setVersion(row.key, row.version);
    object.set(ManagedObject::ReadAhead);
}

void ManagedObjectContext::takeLinks(ManagedObject& object, const Row& row) {
    const StoredProperties& properties = stored_->properties(object.entity());
    for (std::size_t place = 0; place < properties.links.size(); ++place) {
        const RowLink& link = row.links[place];
        const EntityDescription& entity = *properties.shape->links()[place].relationship->destinationEntity;
        ManagedObject* target = link.target == NoRow ? nullptr : stored_->find(link.target);
        if (!target && link.target != NoRow) {
            if (!stored_->properties(entity).isLeaf) {
                openRowLinks_.push_back(
                    {Ref<ManagedObject>(&object), properties.links[place], &entity, link});
                continue;
            }
            target = &makeFault(entity, link.target);
        }
        if (target) requireEntity(*target, entity);
        takeLink(object, *properties.links[place], target);
    }
}

void ManagedObjectContext::takeLink(ManagedObject& object, const ModelledProperty& toOne,
                                    ManagedObject* target) {
    // Whoever leads there already is about to be let go.
    const bool isGone =
        target && target->has(ManagedObject::DeletionPropagated) && toOne.toOne(object).target != target;
    RelationshipUpkeep::takeLink(object, toOne, isGone ? nullptr : target);
    if (!isGone) return;
    // The deletion is not saved yet, and would have taken the link along if it had been there.
    ObjectJournal& journal = journals_[&object];
    if (!journal.sinceSave.has(toOne.key)) journal.sinceSave.keep(toOne, Value(Ref<Object>(target)));
    noteChanged(object);
}

void ManagedObjectContext::followOpenLinks() {
    while (!openRowLinks_.empty()) {
        const auto links = std::exchange(openRowLinks_, {});
        // Those that lead to one family of entities are read together.
        std::unordered_map<const EntityDescription*, std::vector<RowKey>> keysOf;
        for (const OpenRowLink& each : links)
            if (!stored_->find(each.link.target)) keysOf[each.target].push_back(each.link.target);
        try {
            for (auto& [entity, keys] : keysOf) {
                std::ranges::sort(keys);
                keys.erase(std::ranges::unique(keys).begin(), keys.end());
                objectsOf(*entity, keys);
            }
        } catch (...) {
            openRowLinks_.insert(openRowLinks_.begin(), links.begin(), links.end());
            throw;
        }
        for (const OpenRowLink& each : links) {
            ManagedObject* const target = stored_->find(each.link.target);
            if (target) requireEntity(*target, *each.target);
            takeLink(*each.object, *each.property, target);
        }
    }
}

std::vector<ManagedObject*> ManagedObjectContext::objectsOf(const EntityDescription& entity,
                                                            std::span<const RowKey> keys) {
    std::vector<RowKey> unknown;
    for (const RowKey key : keys) {
        if (stored_->find(key)) continue;
        if (stored_->properties(entity).isLeaf)
            makeFault(entity, key);
        else
            unknown.push_back(key);
    }
    if (!unknown.empty()) {
        const auto visited = readableStore().visitRows(entity, unknown, [&](const Row& row) {
            if (!stored_->find(row.key)) takeRow(makeFault(*row.entity, row.key), row);
        });
        if (!visited) raiseUnreadable(visited.error());
        followOpenLinks();
    }
    std::vector<ManagedObject*> objects;
    objects.reserve(keys.size());
    for (const RowKey key : keys)
        if (ManagedObject* object = stored_->find(key)) objects.push_back(object);
    return objects;
}

// Reading in batches

/// The object and those that come behind it, among the members of a relationship that was read, else among the objects
/// of its entity.
std::vector<ManagedObject*> ManagedObjectContext::neighbours(ManagedObject& object, std::size_t most,
                                                             bool (*isWanted)(ManagedObject&, const void*),
                                                             const void* info) {
    if (most <= 1) return {&object};
    // Not to walk past thousands that are there already.
    const std::size_t furthest = 4 * most;
    std::vector<ManagedObject*> found{&object};
    const auto collect = [&](std::span<ManagedObject* const> behind) {
        for (ManagedObject* other : behind.first(std::min(behind.size(), furthest))) {
            if (found.size() >= most) return;
            if (other && other->isStored() && isWanted(*other, info)) found.push_back(other);
        }
    };
    for (const ModelledProperty* link : stored_->properties(object.entity()).links) {
        const ToOneSlot& slot = link->toOne(object);
        if (!slot.target) continue;
        const ModelledProperty& back = *slot.target->modelledProperty(link->inverse);
        if (back.kind == PropertyKind::ToOne || back.toMany(*slot.target).isUnknown()) continue;
        const auto members = back.toMany(*slot.target).members();
        if (slot.place < members.size() && members[slot.place] == &object)
            collect(members.subspan(slot.place + 1));
    }
    if (found.size() == 1) {
        const std::span<ManagedObject* const> all = rows_[object.entity().index()].objects;
        collect(all.subspan(object.place_ + 1));
    }
    return found;
}

void ManagedObjectContext::readAhead(ManagedObject& object) {
    const auto isUnread = [](ManagedObject& other, const void*) { return !other.isRead(); };
    std::vector<RowKey> keys;
    const std::size_t most = stored_->store().capabilities().batchSize;
    for (const ManagedObject* each : neighbours(object, most, isUnread, nullptr))
        keys.push_back(keyOf(*each));
    std::ranges::sort(keys);
    const auto visited = readableStore().visitRows(object.entity(), keys, [&](const Row& row) {
        if (ManagedObject* each = stored_->find(row.key); each && !each->isRead()) takeRow(*each, row);
    });
    if (!visited) raiseUnreadable(visited.error());
    followOpenLinks();
    if (!object.has(ManagedObject::ReadAhead))
        throw ObjectInaccessibleException(object.description() + " has no record any more");
}

void ManagedObjectContext::fetchMembers(ManagedObject& owner, const ModelledProperty& toMany) {
    assertThread();
    const auto isUnknown = [](ManagedObject& other, const void* info) {
        const auto* property = other.modelledProperty(static_cast<const ModelledProperty*>(info)->key);
        return property == info && property->toMany(other).isUnknown();
    };
    // Whoever asks for one owner's members may want no others, and there may be thousands; whoever asks again walks the owners.
    std::size_t& most = ownersAtOnce_[&toMany];
    most = most == 0 ? 1 : std::min(16 * most, stored_->store().capabilities().batchSize);
    const auto owners = neighbours(owner, most, isUnknown, &toMany);
    std::vector<RowKey> keys;
    keys.reserve(owners.size());
    for (const ManagedObject* each : owners) keys.push_back(keyOf(*each));
    const RelationshipDescription& relationship = *owner.entity().relationship(toMany.key);
    const auto members = readableStore().members(relationship, keys);
    if (!members) raiseUnreadable(members.error());
    for (std::size_t place = 0; place < owners.size(); ++place)
        RelationshipUpkeep::takeMembers(*owners[place], toMany,
                                        objectsOf(*relationship.destinationEntity, (*members)[place]));
}

std::optional<Decimal> ManagedObjectContext::sumOfMembers(ManagedObject& owner,
                                                          const ModelledProperty& toMany, Key attribute) {
    assertThread();
    if (!owner.isStored()) return std::nullopt;
    const auto isRead = [](const ManagedObject* each) { return each->isRead(); };
    if (const ToManySlot& slot = toMany.toMany(owner); !slot.isUnknown()) {
        const auto members = slot.members();
        if (2 * std::ranges::count_if(members, isRead) >= std::ssize(members)) return std::nullopt;
    }
    const RelationshipDescription& relationship = *owner.entity().relationship(toMany.key);
    const EntityDescription& entity = *relationship.destinationEntity;
    if (!stored_->properties(entity).isLeaf ||
        !canBeAskedOfStore(entity, stored_->properties(entity), attribute))
        return std::nullopt;
    const Ref<ManagedObject> sample(
        entity.managedClass().make(ManagedObjectBirth::withoutContextAndModel(entity)));
    const ModelledProperty& summed = *sample->modelledProperty(attribute);
    if (summed.type != AttributeType::Decimal && summed.type != AttributeType::Number) return std::nullopt;
    if (const Property* own = sample->classDescription().property(attribute); own && own->get)
        return std::nullopt;

    const ModelledProperty& back = *sample->modelledProperty(toMany.inverse);
    std::vector<RowKey> exceptions;
    Decimal sum;
    for (ManagedObject* each : rows_[entity.index()].objects) {
        if (!each || !isRead(each)) continue;
        if (each->isStored()) exceptions.push_back(keyOf(*each));
        if (back.toOne(*each).target != &owner) continue;
        if (const auto amount = summed.primitive(*each).decimal()) sum = sum.decimalNumberByAdding(*amount);
    }
    std::ranges::sort(exceptions);
    const auto stored = readableStore().sum(relationship, keyOf(owner), attribute, exceptions);
    if (!stored) raiseUnreadable(stored.error());
    return sum.decimalNumberByAdding(*stored);
}

void ManagedObjectContext::forgetUnchangedMembers(ManagedObject& object) {
    for (const ModelledProperty* toMany : stored_->properties(object.entity()).toMany) {
        ToManySlot& slot = toMany->toMany(object);
        if (slot.isUnknown()) continue;
        if (std::ranges::none_of(slot.members(), &ManagedObject::hasChanges))
            RelationshipUpkeep::forgetMembers(slot);
    }
}

/// Finds the member and all that it owns; false when there is more of one of them than what was read, or somebody else
/// holds it or is led to by it.
bool ManagedObjectContext::findReadAlone(ManagedObject& member, const ManagedObject& owner,
                                         std::vector<Ref<ManagedObject>>& found) const {
    found.emplace_back(&member);
    constexpr std::uint32_t OursAlone = 2; // the context's hold, and this one
    if (!member.isStored() || member.hasChanges() || member.isLinked() || member.referenceCount() > OursAlone)
        return false;
    const StoredProperties& properties = stored_->properties(member.entity());
    for (const ModelledProperty* link : properties.links)
        if (const ManagedObject* target = link->toOne(member).target; target && target != &owner)
            return false;
    for (const ModelledProperty* toMany : properties.toMany) {
        const ToManySlot& slot = toMany->toMany(member);
        if (slot.isUnknown()) return false;
        for (ManagedObject* each : slot.members())
            if (!findReadAlone(*each, member, found)) return false;
    }
    return true;
}

void ManagedObjectContext::forgetMembers(ManagedObject& owner, Key toMany) {
    assertThread();
    const ModelledProperty* property = owner.modelledProperty(toMany);
    if (!owns(owner) || !property || !property->isRelationship() || property->kind == PropertyKind::ToOne)
        throw InvalidArgumentException("\"" + std::string(toMany.name()) + "\" leads from " +
                                       owner.description() + " to no members of this context");
    processPendingChanges();
    ToManySlot& slot = property->toMany(owner);
    if (!owner.isStored() || slot.isUnknown()) return;
    std::vector<Ref<ManagedObject>> found;
    for (ManagedObject* member : slot.members())
        if (!findReadAlone(*member, owner, found)) return;
    FirstException exceptions;
    for (const auto& each : found) {
        if (!each->has(ManagedObject::Awake)) continue;
        each->clear(ManagedObject::Awake);
        exceptions.keep([&] { each->willTurnIntoFault(); });
    }
    RelationshipUpkeep::forgetMembers(slot);
    // Whoever is owned goes before its owner.
    for (const auto& each : std::ranges::reverse_view(found)) leave(*each);
    exceptions.rethrow();
}

// Fetching

// By whichever list is the shorter: each letting that comes in asks for a setting, and may be one of thousands.
std::vector<Ref<ManagedObject>> ManagedObjectContext::changedOfEntity(const EntityDescription& entity) const {
    std::vector<Ref<ManagedObject>> found;
    const auto collect = [&](ManagedObject* object) {
        if (object && object->hasChanges() && !object->isDeleted() && object->entity().isKindOfEntity(entity))
            found.emplace_back(object);
    };
    std::size_t count = 0;
    std::vector<const Rows*> all;
    for (const auto& each : coordinator_->managedObjectModel()->entities()) {
        if (!each->isKindOfEntity(entity)) continue;
        all.push_back(&rows_[each->index()]);
        count += all.back()->objects.size();
    }
    if (count < changed_.size()) {
        for (const Rows* rows : all) std::ranges::for_each(rows->objects, collect);
    } else {
        for (const auto& object : changed_) collect(object.get());
    }
    return found;
}

std::optional<std::vector<Ref<ManagedObject>>>
ManagedObjectContext::fetchFromStore(const FetchRequest& request, const EntityDescription& entity,
                                     Ref<Error>* error) {
    if (!resolveUnknownSave(error)) return std::nullopt;
    const bool asksStore =
        request.predicate && canBeAskedOfStore(entity, stored_->properties(entity), request.predicate->key());
    std::vector<Ref<ManagedObject>> found;
    const auto refuse = [&](const Ref<Error>& reason) {
        if (error) *error = reason;
        return std::nullopt;
    };
    try {
        const auto visited = stored_->store().fetchRows(entity, asksStore ? request.predicate : std::nullopt,
                                                        [&](const Row& row) {
                                                            ManagedObject& object = objectOf(row);
                                                            if (!object.isRead()) takeRow(object, row);
                                                            // What has changed here is found below.
                                                            if (!object.isDeleted() && !object.hasChanges())
                                                                found.emplace_back(&object);
                                                        });
        if (!visited) return refuse(visited.error().asError());
        followOpenLinks();
    } catch (const ObjectInaccessibleException& exception) {
        return refuse(Error::make("Persistence", static_cast<std::int64_t>(StoreErrorCode::Unreadable),
                                  exception.reason()));
    }
    // Reading a key may run foreign code, which may insert and delete.
    const auto matches = [&](const Ref<ManagedObject>& object) {
        return request.predicate->evaluateWithObject(*object);
    };
    if (request.predicate && !asksStore) std::erase_if(found, std::not_fn(matches));
    const std::size_t unchanged = found.size();
    for (const auto& object : changedOfEntity(entity))
        if (!request.predicate || matches(object)) found.push_back(object);
    if (found.size() > unchanged) std::ranges::sort(found, {}, &ManagedObject::creationNumber);
    return found;
}

// Saving

void ManagedObjectContext::setCommitOrigin(std::string author, std::string program, std::string command) {
    origin_ = {{}, std::move(author), std::move(program), std::move(command)};
}

void ManagedObjectContext::setIdentifier(ManagedObject& object, std::string identifier) {
    assertThread();
    if (!owns(object)) throw InvalidArgumentException(object.description() + " is no object of this context");
    identifiers_.insert_or_assign(&object, std::move(identifier));
}

std::optional<std::vector<std::optional<std::string>>>
ManagedObjectContext::identifiers(std::span<const Ref<ManagedObject>> objects, Ref<Error>* error) {
    assertThread();
    if (!resolveUnknownSave(error)) return std::nullopt;
    std::vector<std::optional<std::string>> all(objects.size());
    std::vector<RowKey> keys;
    std::vector<std::size_t> places;
    for (std::size_t place = 0; place < objects.size(); ++place) {
        if (!owns(*objects[place]))
            throw InvalidArgumentException(objects[place]->description() + " is no object of this context");
        if (const auto unsaved = identifiers_.find(objects[place].get()); unsaved != identifiers_.end()) {
            all[place] = unsaved->second;
        } else if (objects[place]->isStored()) {
            keys.push_back(keyOf(*objects[place]));
            places.push_back(place);
        }
    }
    if (keys.empty()) return all;
    const auto stored = stored_->store().identifiers(keys);
    if (!stored) {
        if (error) *error = stored.error().asError();
        return std::nullopt;
    }
    for (std::size_t index = 0; index < places.size(); ++index) all[places[index]] = (*stored)[index];
    return all;
}

Ref<ManagedObject> ManagedObjectContext::objectWithIdentifier(std::string_view entityName,
                                                              std::string_view identifier,
                                                              Ref<Error>* error) {
    assertThread();
    if (!coordinator_ || !resolveUnknownSave(error)) return nullptr;
    const EntityDescription* const entity = coordinator_->managedObjectModel()->entityNamed(entityName);
    if (!entity) return nullptr;
    const auto isIt = [&](const ManagedObject& object) {
        return object.entity().isKindOfEntity(*entity) && !object.isDeleted();
    };
    for (const auto& [object, name] : identifiers_)
        if (name == identifier && isIt(*object))
            return Ref<ManagedObject>(const_cast<ManagedObject*>(object));
    if (!storedObjects()) return nullptr;
    const auto refuse = [&](const StoreError& reason) -> Ref<ManagedObject> {
        if (error) *error = reason.asError();
        return nullptr;
    };
    const auto keys = stored_->store().fetchKeys(*entity);
    if (!keys) return refuse(keys.error());
    // A few at a time: what is found need not be looked for behind it.
    constexpr std::size_t AtOnce = 256;
    for (std::span<const RowKey> left = *keys; !left.empty();) {
        const auto asked = left.first(std::min(AtOnce, left.size()));
        left = left.subspan(asked.size());
        const auto names = stored_->store().identifiers(asked);
        if (!names) return refuse(names.error());
        for (std::size_t place = 0; place < asked.size(); ++place) {
            if ((*names)[place] != identifier) continue;
            const auto found = objectsOf(*entity, asked.subspan(place, 1));
            // Another name may have been given to it, which is not saved yet.
            if (!found.empty() && isIt(*found.front()) && !identifiers_.contains(found.front()))
                return Ref<ManagedObject>(found.front());
        }
    }
    return nullptr;
}

bool ManagedObjectContext::saveToStore(Ref<Error>* error) {
    const auto refuse = [&](const StoreError& reason) {
        if (error) *error = reason.asError();
        return false;
    };
    // Each round settles conflicts with what others saved; they cannot go on for ever on one thread.
    for (;;) {
        const auto lastKey = stored_->store().lastKey();
        if (!lastKey) return refuse(lastKey.error());
        auto save = std::make_unique<StoreSave>(*this, *stored_, *lastKey);
        if (save->isEmpty()) return true;
        const auto outcome = stored_->store().save(save->changes());
        if (outcome && outcome->landed()) {
            // It has landed, whatever happens on the way to knowing it.
            unknownSave_ = std::move(save);
            unknownSave_->adopt();
            unknownSave_.reset();
            return true;
        }
        if (!outcome && outcome.error().code == StoreErrorCode::OutcomeUnknown) {
            // To forget it, for want of memory, would be to save everything twice.
            unknownSave_ = std::move(save);
            unknownSave_->withdrawUnknown();
            return refuse(outcome.error());
        }
        save->withdraw();
        if (!outcome) return refuse(outcome.error());
        if (!settleConflicts(outcome->conflicts, error)) return false;
        // What others have changed may be what a hook or a rule is about.
        settleBeforeSave();
        if (!validateAll(error)) return false;
    }
}

} // namespace estatebook::platform
