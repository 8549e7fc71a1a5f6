// SPDX-License-Identifier: MIT
#include "platform/persistence/ManagedObjectContext.hpp"

#include "platform/persistence/ChangeJournal.hpp"
#include "platform/persistence/RelationshipUpkeep.hpp"
#include "platform/persistence/StoreSave.hpp"
#include "platform/persistence/StoredObjects.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/FirstException.hpp"

#include <algorithm>
#include <cassert>
#include <string>
#include <unordered_set>
#include <utility>

namespace estatebook::platform {

ManagedObjectContext::ManagedObjectContext(ConcurrencyType type)
    : Object(Counting::Local), type_(type), thread_(std::this_thread::get_id()) {
    setUndoManager(makeRef<UndoManager>());
}

ManagedObjectContext::~ManagedObjectContext() = default;

void ManagedObjectContext::dispose() const noexcept {
    auto* self = const_cast<ManagedObjectContext*>(this);
    // Hooks may hold on to the context while it ends.
    self->retain();
    self->setUndoManager(nullptr);
    self->endAll();
    delete self;
}

void ManagedObjectContext::assertThread() const noexcept {
    assert(thread_ == std::this_thread::get_id());
}

void ManagedObjectContext::setPersistentStoreCoordinator(Ref<PersistentStoreCoordinator> coordinator) {
    assert(objectCount_ == 0);
    stored_.reset();
    coordinator_ = std::move(coordinator);
    rows_.clear();
    homes_.clear();
    if (!coordinator_ || !coordinator_->managedObjectModel()) return;
    for (const auto& entity : coordinator_->managedObjectModel()->entities())
        homes_.push_back({entity.get(), this});
    rows_.resize(homes_.size());
}

const ManagedObjectHome& ManagedObjectContext::homeOf(const EntityDescription& entity) const {
    if (!coordinator_ || coordinator_->managedObjectModel().get() != &entity.model())
        throw InvalidArgumentException("the entity \"" + std::string(entity.name()) +
                                       "\" is of another model than the context's");
    return homes_[entity.index()];
}

void ManagedObjectContext::refuseClass(std::string_view entityName) {
    throw InvalidArgumentException("objects of the entity \"" + std::string(entityName) +
                                   "\" are not of the class asked for");
}

// Coming and going

void ManagedObjectContext::enter(ManagedObject& object) {
    auto& rows = rows_[object.entity().index()];
    if (object.creationNumber_ == 0)
        object.creationNumber_ = ManagedObject::FirstUnstoredNumber + ++lastCreationNumber_;
    if (object.creationNumber_ < rows.greatestNumber) rows.inOrderOfCreation = false;
    rows.greatestNumber = std::max(rows.greatestNumber, object.creationNumber_);
    object.place_ = static_cast<std::uint32_t>(rows.objects.size());
    rows.objects.push_back(&object);
    object.retain();
    ++objectCount_;
}

void ManagedObjectContext::insert(ManagedObject& object) {
    assertThread();
    enter(object);
    object.set(ManagedObject::Inserted);
    object.set(ManagedObject::Awake);
    noteChanged(object);
    if (isRecording()) noteInBatch(object, ManagedObject::InsertedInBatch);
    if (systemChanges_ > 0) object.set(ManagedObject::MadeBySystem);
    object.awakeFromInsert();
}

void ManagedObjectContext::Rows::tidy() {
    std::erase(objects, nullptr);
    holes = 0;
    if (!inOrderOfCreation) std::ranges::sort(objects, {}, &ManagedObject::creationNumber);
    inOrderOfCreation = true;
    for (std::size_t place = 0; place < objects.size(); ++place)
        objects[place]->place_ = static_cast<std::uint32_t>(place);
}

// The values and links go with it; whoever still holds the object finds it empty.
void ManagedObjectContext::leave(ManagedObject& object) {
    const Ref<ManagedObject> held(&object);
    auto& rows = rows_[object.entity().index()];
    rows.objects[object.place_] = nullptr;
    if (++rows.holes > rows.objects.size() / 2) rows.tidy();
    --objectCount_;
    RelationshipUpkeep::sever(object);
    object.dropValues();
    journals_.erase(&object);
    records_.erase(&object);
    identifiers_.erase(&object);
    if (object.isStored()) storedObjects()->leave(static_cast<RowKey>(object.creationNumber_));
    object.state_ = 0;
    object.goOutside();
    object.release();
}

void ManagedObjectContext::endAll() noexcept {
    changed_.clear();
    batch_.clear();
    pendingDeletions_.clear();
    const auto forEach = [&](auto action) {
        for (std::size_t entity = 0; entity < rows_.size(); ++entity)
            for (std::size_t place = 0; place < rows_[entity].objects.size(); ++place)
                if (ManagedObject* object = rows_[entity].objects[place]) action(*object);
    };
    forEach([](ManagedObject& object) {
        if (!object.has(ManagedObject::Awake)) return;
        object.clear(ManagedObject::Awake);
        try {
            object.willTurnIntoFault();
        } catch (...) {
            // The end cannot be stopped, and nobody is left to tell.
        }
    });
    forEach([](ManagedObject& object) {
        object.dropValues();
        RelationshipUpkeep::forgetAll(object);
        object.state_ = 0;
        object.goOutside();
    });
    std::vector<Rows> rows(rows_.size());
    rows.swap(rows_);
    objectCount_ = 0;
    changed_.clear();
    batch_.clear();
    pendingDeletions_.clear();
    journals_.clear();
    records_.clear();
    identifiers_.clear();
    openRowLinks_.clear();
    unknownSave_.reset();
    if (stored_) stored_->clear();
    for (const Rows& each : rows)
        for (ManagedObject* object : each.objects)
            if (object) object->release();
}

void ManagedObjectContext::reset() {
    assertThread();
    endAll();
    if (undoManager_) undoManager_->removeAllActionsWithTarget(this);
}

// Changes

void ManagedObjectContext::noteChanged(ManagedObject& object) {
    if (!object.has(ManagedObject::Updated)) {
        object.set(ManagedObject::Updated);
        changed_.emplace_back(&object);
    }
    object.set(ManagedObject::ChangedInRound);
}

bool ManagedObjectContext::hasChanges() const noexcept {
    return std::ranges::any_of(changed_, [](const auto& object) { return object->hasChanges(); });
}

std::vector<Ref<ManagedObject>> ManagedObjectContext::changed(ManagedObject::State state) const {
    std::vector<Ref<ManagedObject>> found;
    if (state == ManagedObject::Inserted) found.reserve(changed_.size());
    for (const auto& object : changed_) {
        const bool matches = state == ManagedObject::Deleted    ? object->isDeleted()
                             : state == ManagedObject::Inserted ? object->isInserted() && !object->isDeleted()
                                                                : object->isUpdated();
        if (matches) found.push_back(object);
    }
    // Most often they have changed in this order, too.
    const auto isEarlier = [](const Ref<ManagedObject>& a, const Ref<ManagedObject>& b) {
        return a->creationNumber() < b->creationNumber();
    };
    if (!std::ranges::is_sorted(found, isEarlier)) std::ranges::sort(found, isEarlier);
    return found;
}

std::vector<Ref<ManagedObject>> ManagedObjectContext::insertedObjects() const {
    return changed(ManagedObject::Inserted);
}

std::vector<Ref<ManagedObject>> ManagedObjectContext::updatedObjects() const {
    return changed(ManagedObject::Updated);
}

std::vector<Ref<ManagedObject>> ManagedObjectContext::deletedObjects() const {
    return changed(ManagedObject::Deleted);
}

// Deletion

void ManagedObjectContext::deleteObject(ManagedObject& object) {
    assertThread();
    const bool hasLeft = !object.managedObjectContext() && object.creationNumber_ != 0;
    if (object.isDeleted() || hasLeft) return;
    if (object.managedObjectContext() != this)
        throw InvalidArgumentException(object.description() + " is no object of this context");
    const Ref<ManagedObject> held(&object);
    object.access();
    object.set(ManagedObject::Deleted); // hooks that delete one another come to an end
    FirstException exceptions;
    exceptions.keep([&] { object.prepareForDeletion(); });
    if (object.has(ManagedObject::Awake)) {
        object.clear(ManagedObject::Awake);
        exceptions.keep([&] { object.willTurnIntoFault(); });
    }
    if (object.managedObjectContext() == this) {
        noteChanged(object);
        if (isRecording()) noteInBatch(object, ManagedObject::DeletedInBatch);
        pendingDeletions_.emplace_back(&object);
    }
    exceptions.rethrow();
}

void ManagedObjectContext::readAround(ManagedObject& object) {
    std::vector<ManagedObject*> going{&object};
    std::unordered_set<const ManagedObject*> known{&object};
    const auto goes = [&](ManagedObject* each) {
        if (known.insert(each).second) going.push_back(each);
    };
    for (std::size_t next = 0; next < going.size(); ++next) {
        ManagedObject& each = *going[next];
        for (const RelationshipDescription& relationship : each.entity().relationships()) {
            const ModelledProperty& property = *each.modelledProperty(relationship.name);
            const bool isCascade = relationship.deleteRule == DeleteRule::Cascade;
            if (property.kind == PropertyKind::ToOne) {
                ManagedObject* const target = property.toOne(each).target;
                if (!target) continue;
                target->access();
                target->knowMembersOf(property.inverse);
                if (isCascade) goes(target);
                continue;
            }
            const auto members = each.knownMembers(property).members();
            for (ManagedObject* member : std::vector<ManagedObject*>(members.begin(), members.end())) {
                member->access();
                if (isCascade) goes(member);
            }
        }
    }
}

bool ManagedObjectContext::isDenied(ManagedObject& object) {
    return std::ranges::any_of(
        object.entity().relationships(), [&](const RelationshipDescription& relationship) {
            if (relationship.deleteRule != DeleteRule::Deny) return false;
            const ModelledProperty& property = *object.modelledProperty(relationship.name);
            if (property.kind == PropertyKind::ToOne) {
                const ManagedObject* target = property.toOne(object).target;
                return target && !target->isDeleted();
            }
            return std::ranges::any_of(object.knownMembers(property).members(),
                                       [](const ManagedObject* member) { return !member->isDeleted(); });
        });
}

void ManagedObjectContext::propagateDeletion(ManagedObject& object) {
    object.set(ManagedObject::DeletionPropagated);
    // It may have been refused until now.
    if (isRecording()) noteInBatch(object, ManagedObject::DeletedInBatch);
    FirstException exceptions;
    for (const RelationshipDescription& relationship : object.entity().relationships()) {
        if (relationship.deleteRule != DeleteRule::Cascade) continue;
        const ModelledProperty& property = *object.modelledProperty(relationship.name);
        if (property.kind == PropertyKind::ToOne) {
            if (ManagedObject* target = property.toOne(object).target)
                exceptions.keep([&] { deleteObject(*target); });
            continue;
        }
        const auto members = object.knownMembers(property).members();
        for (ManagedObject* member : std::vector<ManagedObject*>(members.begin(), members.end()))
            exceptions.keep([&] { deleteObject(*member); });
    }
    exceptions.keep([&] { RelationshipUpkeep::unlinkAll(object); });
    exceptions.rethrow();
}

void ManagedObjectContext::processPendingChanges() {
    assertThread();
    if (restoring_ > 0) return;
    static_cast<void>(resolveUnknownSave(nullptr)); // else asked again
    std::vector<Ref<ManagedObject>> refused;
    std::vector<Ref<ManagedObject>> leaving;
    FirstException exceptions;
    while (!pendingDeletions_.empty()) {
        for (const auto& object : std::exchange(pendingDeletions_, {})) {
            if (object->managedObjectContext() != this || !object->isDeleted()) continue;
            // Neither a refused deletion nor one that cannot be read changes anything; it is asked again when the next changes
            // are processed.
            bool isDue = false;
            exceptions.keep([&] {
                readAround(*object);
                isDue = !isDenied(*object);
            });
            if (!isDue) {
                refused.push_back(object);
                continue;
            }
            exceptions.keep([&] { propagateDeletion(*object); });
            if (object->has(ManagedObject::Inserted)) leaving.push_back(object);
        }
    }
    pendingDeletions_ = std::move(refused);
    exceptions.keep([&] { registerChanges(); });
    for (const auto& object : leaving)
        if (owns(*object) && object->isDeleted()) leave(*object);
    if (!leaving.empty()) std::erase_if(changed_, [&](const auto& object) { return !owns(*object); });
    exceptions.rethrow();
}

// Fetching

std::optional<std::vector<Ref<ManagedObject>>>
ManagedObjectContext::executeFetchRequest(const FetchRequest& request, Ref<Error>* error) {
    processPendingChanges();
    const EntityDescription* entity =
        EntityDescription::entityForNameInManagedObjectContext(request.entityName, *this);
    if (!entity) {
        if (error)
            *error = Error::make("Persistence", 1550,
                                 "there is no entity \"" + request.entityName + "\" to fetch objects of");
        return std::nullopt;
    }
    if (storedObjects()) return fetchFromStore(request, *entity, error);
    std::vector<Ref<ManagedObject>> found;
    std::size_t entities = 0;
    for (const auto& each : coordinator_->managedObjectModel()->entities()) {
        if (!each->isKindOfEntity(*entity)) continue;
        Rows& rows = rows_[each->index()];
        if (!rows.inOrderOfCreation) rows.tidy();
        if (!rows.objects.empty()) ++entities;
        for (ManagedObject* object : rows.objects)
            if (object && !object->isDeleted()) found.emplace_back(object);
    }
    // Reading a key may run foreign code, which may insert and delete.
    if (request.predicate)
        std::erase_if(found,
                      [&](const auto& object) { return !request.predicate->evaluateWithObject(*object); });
    if (entities > 1) std::ranges::sort(found, {}, &ManagedObject::creationNumber);
    return found;
}

std::vector<Ref<ManagedObject>> ManagedObjectContext::fetchAllObjects(std::string_view entityName) {
    if (!EntityDescription::entityForNameInManagedObjectContext(entityName, *this)) return {};
    Ref<Error> error;
    auto found = executeFetchRequest({std::string(entityName)}, &error);
    if (!found) throw ObjectInaccessibleException(error->localizedDescription());
    return *std::move(found);
}

} // namespace estatebook::platform
