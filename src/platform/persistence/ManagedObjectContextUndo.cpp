// SPDX-License-Identifier: MIT
#include "platform/observation/ObservationEngine.hpp"
#include "platform/persistence/ChangeJournal.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/Raised.hpp"
#include "platform/persistence/RelationshipUpkeep.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/FirstException.hpp"
#include "platform/values/Set.hpp"

#include <memory>
#include <ranges>
#include <unordered_set>
#include <utility>
#include <vector>

namespace estatebook::platform {

namespace {

/// Whether the property's values are kept at all: what the system writes is no edit, and members of an
/// unordered relationship follow from the other side.
bool isKept(const ModelledProperty& property) noexcept {
    return property.kind != PropertyKind::ToMany && !(property.flags & PropertyWrittenBySystem);
}

} // namespace

SystemChanges::SystemChanges(ManagedObjectContext& context) noexcept : context_(context) {
    ++context_.recordingOff_;
    ++context_.systemChanges_;
}

SystemChanges::~SystemChanges() {
    --context_.recordingOff_;
    --context_.systemChanges_;
}

// Remembering

// What the system makes is never taken back, only what is done to it later.
bool ManagedObjectContext::isRolledBack(const ManagedObject& object) const noexcept {
    return !object.has(ManagedObject::Inserted) ||
           (object.has(ManagedObject::MadeBySystem) && systemChanges_ == 0);
}

bool ManagedObjectContext::isUndone(const ManagedObject& object) const noexcept {
    return isRecording() && !object.has(ManagedObject::InsertedInBatch);
}

bool ManagedObjectContext::keepsFormerValue(const ManagedObject& object, Key key) const noexcept {
    const bool forRollback = isRolledBack(object);
    const bool forUndo = isUndone(object);
    if (!forRollback && !forUndo) return true;
    const auto journal = journals_.find(&object);
    return journal != journals_.end() && (!forRollback || journal->second.sinceSave.has(key)) &&
           (!forUndo || journal->second.sinceProcessing.has(key));
}

void ManagedObjectContext::keepFormerValue(ManagedObject& object, const ModelledProperty& property) {
    if (changeProcessingOff_ > 0 || !isKept(property) || keepsFormerValue(object, property.key)) return;
    ObjectJournal& journal = journals_[&object];
    const Value former = object.primitiveValueForKey(property.key);
    if (isRolledBack(object) && !journal.sinceSave.has(property.key))
        journal.sinceSave.keep(property, former);
    if (isUndone(object) && !journal.sinceProcessing.has(property.key)) {
        journal.sinceProcessing.keep(property, former);
        noteInBatch(object, ManagedObject::InBatch);
    }
}

void ManagedObjectContext::noteInBatch(ManagedObject& object, ManagedObject::State how) {
    if (!object.has(ManagedObject::InBatch)) batch_.emplace_back(&object);
    object.set(ManagedObject::InBatch);
    object.set(how);
}

ObjectJournal* ManagedObjectContext::journalOf(const ManagedObject& object) {
    const auto journal = journals_.find(&object);
    return journal == journals_.end() ? nullptr : &journal->second;
}

void ManagedObjectContext::registerChanges() {
    if (batch_.empty()) return;
    const bool isWanted = undoManager_ && undoManager_->isUndoRegistrationEnabled();
    ChangeSet set;
    // What an object held may have to be read; while it cannot be, all of them wait.
    for (const auto& object : std::vector(batch_)) {
        if (!isWanted || !owns(*object)) continue;
        const bool isInserted = object->has(ManagedObject::InsertedInBatch);
        const bool isDeleted = object->has(ManagedObject::DeletedInBatch);
        if (isInserted != isDeleted) {
            if (isInserted)
                set.changes.push_back({ObjectChange::Kind::Insertion, object});
            else
                set.changes.push_back({ObjectChange::Kind::Deletion, object,
                                       allFormerValues(*object, &ObjectJournal::sinceProcessing)});
        } else if (!isInserted) {
            set.changes.push_back(
                {ObjectChange::Kind::Update, object, journalOf(*object)->sinceProcessing.all()});
        }
    }
    for (const auto& object : std::exchange(batch_, {})) {
        if (!owns(*object)) continue;
        if (ObjectJournal* journal = journalOf(*object)) journal->sinceProcessing = {};
        object->clear(ManagedObject::InBatch);
        object->clear(ManagedObject::InsertedInBatch);
        object->clear(ManagedObject::DeletedInBatch);
    }
    if (set.changes.empty()) return;
    const auto changes = std::make_shared<const ChangeSet>(std::move(set));
    const auto takeBackAll = [this, changes] {
        FirstException exceptions;
        exceptions.keep([&] {
            restore(*changes, {undoManager_->isRedoing() ? SnapshotUndoInsertion : SnapshotUndoDeletion,
                               SnapshotUndoUpdate});
        });
        exceptions.keep([&] { processPendingChanges(); });
        exceptions.rethrow();
    };
    undoManager_->registerUndo(this, takeBackAll, [this, changes] { readyToRestore(*changes); });
}

/// Every value that is kept, as it was before the changes that a part of the journal tells of.
std::vector<FormerValue> ManagedObjectContext::allFormerValues(ManagedObject& object,
                                                               FormerValues ObjectJournal::*since) {
    const ObjectJournal* journal = journalOf(object);
    std::vector<FormerValue> all;
    object.forEachModelledProperty([&](const ModelledProperty& property) {
        if (!isKept(property)) return;
        const Value* former = journal ? (journal->*since).find(property.key) : nullptr;
        all.push_back({&property, former ? *former : object.primitiveValueForKey(property.key)});
    });
    return all;
}

// Taking back

void ManagedObjectContext::setUndoManager(Ref<UndoManager> manager) {
    if (undoManager_) {
        undoManager_->removeCheckpoint(this);
        undoManager_->removeAllActionsWithTarget(this);
    }
    undoManager_ = std::move(manager);
    if (undoManager_) undoManager_->addCheckpoint(this, [this] { processPendingChanges(); });
}

void ManagedObjectContext::undo() {
    if (undoManager_) undoManager_->undo();
}

void ManagedObjectContext::redo() {
    if (undoManager_) undoManager_->redo();
}

void ManagedObjectContext::takeBack(ManagedObject& object) {
    if (owns(object)) {
        object.clear(ManagedObject::Deleted);
        object.clear(ManagedObject::DeletionPropagated);
    } else {
        object.comeHome(homeOf(object.entity()));
        object.set(ManagedObject::Inserted);
        // Its row is gone for good: it gets another one.
        if (object.isStored()) object.creationNumber_ = 0;
        enter(object);
    }
    noteChanged(object);
    if (isRecording()) noteInBatch(object, ManagedObject::InsertedInBatch);
}

// The fetch hook derives some values from others; those that are kept are put back after it.
void ManagedObjectContext::awakeReturned(const ObjectChange& change) {
    const Raised off(changeProcessingOff_);
    FirstException exceptions;
    change.object->set(ManagedObject::Awake);
    exceptions.keep([&] { change.object->awakeFromFetch(); });
    for (const FormerValue& former : change.former)
        if (former.property->kind == PropertyKind::Attribute)
            former.property->setPrimitive(*change.object, former.value);
    exceptions.rethrow();
}

namespace {

/// A value on its way back.
struct Restored {
    ManagedObject* object;
    const FormerValue* former;

    [[nodiscard]] const ModelledProperty& property() const noexcept { return *former->property; }
};

void arrange(ManagedObject& owner, const ModelledProperty& ordered, const Value& former) {
    const auto wanted = former.as<OrderedSet>();
    if (!wanted) return;
    std::size_t place = 0;
    for (const Value& each : wanted->members()) {
        const auto member = each.as<ManagedObject>();
        if (member->modelledProperty(ordered.inverse)->toOne(*member).target != &owner) continue;
        RelationshipUpkeep::move(ordered.toMany(owner), RelationshipUpkeep::placeOf(*member, ordered),
                                 place++);
    }
}

} // namespace

void ManagedObjectContext::readOtherSide(const ModelledProperty& link, ManagedObject* other) {
    if (!other || !isWithin(*other)) return;
    other->access();
    other->knowMembersOf(link.inverse);
}

namespace {

/// Calls for each managed object that observes the object.
template <class Visit>
void forEachObserver(const ManagedObject& object, Visit visit) {
    const Observation* observation = ObservationEngine::observationIfAny(object);
    if (!observation) return;
    const auto visitOne = [&](const Registration& registration) {
        if (registration.kind != Registration::Kind::Observer) return;
        if (auto* observer = dynamic_cast<ManagedObject*>(registration.observer())) visit(observer);
    };
    if (const Registration* only = observation->only()) visitOne(*only);
    if (const ObserverLists* lists = observation->lists())
        for (const auto& list : lists->all())
            for (std::size_t place = 0; place < list->places(); ++place) visitOne(list->at(place));
}

} // namespace

void ManagedObjectContext::readyToRestore(ManagedObject& object, std::span<const FormerValue> former) {
    // The object, those who observe it, and all that these lead to, now or then: whoever hears of a change passes it on.
    std::vector<ManagedObject*> hearers;
    std::unordered_set<const ManagedObject*> known;
    const auto hears = [&](ManagedObject* each) {
        if (each && isWithin(*each) && known.insert(each).second) hearers.push_back(each);
    };
    hears(&object);
    for (const FormerValue& each : former)
        if (each.property->kind == PropertyKind::ToOne) hears(each.value.as<ManagedObject>().get());
    for (std::size_t next = 0; next < hearers.size(); ++next) {
        ManagedObject& hearer = *hearers[next];
        hearer.access();
        hearer.forEachModelledProperty([&](const ModelledProperty& property) {
            if (property.kind == PropertyKind::ToOne) hears(property.toOne(hearer).target);
        });
        forEachObserver(hearer, hears);
    }
    for (const FormerValue& each : former) {
        if (each.property->kind == PropertyKind::OrderedToMany && isWithin(object))
            object.knownMembers(*each.property);
        if (each.property->kind != PropertyKind::ToOne) continue;
        readOtherSide(*each.property, each.property->toOne(object).target);
        readOtherSide(*each.property, each.value.as<ManagedObject>().get());
    }
}

void ManagedObjectContext::readyToRestore(const ChangeSet& set) {
    for (const ObjectChange& change : set.changes) {
        readyToRestore(*change.object, change.former);
        if (change.kind == ObjectChange::Kind::Insertion && isWithin(*change.object))
            readAround(*change.object);
    }
}

void ManagedObjectContext::restore(const ChangeSet& set, RestoringEvents events) {
    FirstException exceptions;
    std::vector<Ref<ManagedObject>> leaving;
    std::vector<const ObjectChange*> returned;
    std::vector<const ObjectChange*> updated;
    {
        const Raised restoring(restoring_);
        std::vector<Restored> attributes;
        std::vector<Restored> orders;
        std::vector<Restored> links;
        const auto sortOut = [&](const ObjectChange& change) {
            for (const FormerValue& former : change.former) {
                const auto kind = former.property->kind;
                (kind == PropertyKind::Attribute ? attributes
                 : kind == PropertyKind::ToOne   ? links
                                                 : orders)
                    .push_back({change.object.get(), &former});
            }
        };
        for (const ObjectChange& change : set.changes) {
            ManagedObject& object = *change.object;
            const bool isHere = isWithin(object);
            switch (change.kind) {
            case ObjectChange::Kind::Insertion:
                if (isHere) leaving.push_back(change.object);
                break;
            case ObjectChange::Kind::Deletion:
                if (isHere && !object.isDeleted()) break;
                takeBack(object);
                returned.push_back(&change);
                sortOut(change);
                break;
            case ObjectChange::Kind::Update:
                if (!isHere) break;
                exceptions.keep([&] { object.access(); });
                updated.push_back(&change);
                sortOut(change);
                break;
            }
        }

        // Everything opens, is stored, and closes in the opposite order, so that whoever is told finds all of it done. Links close
        // first: what is read of an owner sums over its members.
        const auto will = [&](const Restored& each) {
            exceptions.keep([&] { each.object->willChangeValueForKey(each.property().key); });
        };
        const auto did = [&](const Restored& each) {
            exceptions.keep([&] { each.object->didChangeValueForKey(each.property().key); });
        };
        std::ranges::for_each(attributes, will);
        std::ranges::for_each(orders, will);
        std::ranges::for_each(links, will);
        for (const Restored& each : attributes)
            each.property().setPrimitive(*each.object, each.former->value);
        for (const Restored& each : links) {
            const auto target = each.former->value.as<ManagedObject>();
            each.property().toOne(*each.object).target = target && isWithin(*target) ? target.get() : nullptr;
        }
        std::ranges::for_each(links | std::views::reverse, did);
        for (const Restored& each : orders | std::views::reverse) {
            each.object->knownMembers(each.property());
            arrange(*each.object, each.property(), each.former->value);
            did(each);
        }
        for (const ObjectChange* change : returned) exceptions.keep([&] { awakeReturned(*change); });
        std::ranges::for_each(attributes | std::views::reverse, did);
    }
    const auto tell = [&](const ObjectChange* change, unsigned event) {
        if (event != 0) exceptions.keep([&] { change->object->awakeFromSnapshotEvents(event); });
    };
    for (const ObjectChange* change : returned) tell(change, events.returned);
    for (const ObjectChange* change : updated) tell(change, events.updated);
    for (const auto& object : leaving) exceptions.keep([&] { deleteObject(*object); });
    exceptions.rethrow();
}

void ManagedObjectContext::rollback() {
    assertThread();
    const Raised unrecorded(recordingOff_);
    static_cast<void>(resolveUnknownSave(nullptr)); // else asked again
    // What deletions entail is taken back where it was carried out, and is not carried out for that.
    ChangeSet set;
    const auto collect = [&] {
        set.changes.clear();
        // Reading what an object held may fetch, and so may change the list.
        for (const auto& object : std::vector(changed_)) {
            // One that is both is here because its deletion was refused or was not processed.
            if (object->has(ManagedObject::Inserted) && !object->has(ManagedObject::MadeBySystem))
                set.changes.push_back({ObjectChange::Kind::Insertion, object});
            else if (object->isDeleted())
                set.changes.push_back({ObjectChange::Kind::Deletion, object,
                                       allFormerValues(*object, &ObjectJournal::sinceSave)});
            else if (ObjectJournal* journal = journalOf(*object))
                set.changes.push_back({ObjectChange::Kind::Update, object, journal->sinceSave.all()});
        }
    };
    // What is read may have lost a link to what is deleted, which is to be taken back as well.
    std::size_t known = 0;
    do {
        known = changed_.size();
        collect();
        readyToRestore(set);
    } while (changed_.size() != known);

    FirstException exceptions;
    exceptions.keep([&] { restore(set, {SnapshotRollback, SnapshotRollback}); });
    exceptions.keep([&] { processPendingChanges(); });
    for (const auto& object : std::exchange(changed_, {})) {
        journals_.erase(object.get());
        if (object->has(ManagedObject::Inserted)) {
            changed_.push_back(object);
        } else {
            object->clear(ManagedObject::Updated);
            object->clear(ManagedObject::ChangedInRound);
        }
    }
    if (undoManager_) undoManager_->removeAllActionsWithTarget(this);
    exceptions.rethrow();
}

// Faults

void ManagedObjectContext::refreshObjectMergeChanges(ManagedObject& object, bool mergeChanges) {
    assertThread();
    if (!owns(object)) throw InvalidArgumentException(object.description() + " is no object of this context");
    processPendingChanges();
    if (object.has(ManagedObject::Fault) || object.has(ManagedObject::Inserted) || object.isDeleted()) return;
    if (mergeChanges) return mergeFromStore(object);

    if (const ObjectJournal* journal = journalOf(object))
        readyToRestore(object, std::vector(journal->sinceSave.all()));
    FirstException exceptions;
    FormerValues remaining;
    if (ObjectJournal* journal = journalOf(object)) {
        const Raised unrecorded(recordingOff_);
        ChangeSet set;
        set.changes.push_back(
            {ObjectChange::Kind::Update, Ref<ManagedObject>(&object), journal->sinceSave.take()});
        exceptions.keep([&] { restore(set, {}); });
        // Members that came or went are no changes of this object; their order is known here only.
        for (FormerValue& former : set.changes.front().former)
            if (former.property->kind == PropertyKind::OrderedToMany &&
                !object.primitiveValueForKey(former.property->key).isEqual(former.value))
                remaining.keep(*former.property, std::move(former.value));
    }
    if (remaining.all().empty()) {
        object.clear(ManagedObject::Updated);
        object.clear(ManagedObject::ChangedInRound);
        std::erase_if(changed_, [&](const auto& each) { return each.get() == &object; });
        journals_.erase(&object);
    } else {
        journals_[&object].sinceSave = std::move(remaining);
    }
    if (object.has(ManagedObject::Awake)) {
        object.clear(ManagedObject::Awake);
        exceptions.keep([&] { object.willTurnIntoFault(); });
    }
    if (!object.isStored()) {
        auto& record = records_[&object];
        object.forEachModelledProperty([&](const ModelledProperty& property) {
            if (property.kind == PropertyKind::Attribute)
                record.push_back({&property, property.primitive(object)});
        });
    }
    object.dropValues();
    object.set(ManagedObject::Fault);
    if (object.isStored()) forgetUnchangedMembers(object);
    exceptions.keep([&] { object.didTurnIntoFault(); });
    exceptions.rethrow();
}

void ManagedObjectContext::fulfilFault(ManagedObject& object) {
    if (object.isStored()) {
        if (!object.has(ManagedObject::ReadAhead)) readAhead(object);
        followOpenLinks(); // what an earlier reading could not
        object.clear(ManagedObject::ReadAhead);
        object.clear(ManagedObject::Fault);
    } else {
        auto record = records_.extract(&object);
        if (record.empty())
            throw ObjectInaccessibleException(object.description() + " has no record any more");
        object.clear(ManagedObject::Fault);
        for (const FormerValue& each : record.mapped()) each.property->setPrimitive(object, each.value);
    }
    object.set(ManagedObject::Awake);
    const Raised off(changeProcessingOff_);
    try {
        object.awakeFromFetch();
    } catch (const ObjectInaccessibleException&) {
        if (object.isStored()) sleepAgain(object);
        throw;
    }
}

/// Takes back an awakening that could not read what it needs: the next reading of the object awakens it.
void ManagedObjectContext::sleepAgain(ManagedObject& object) noexcept {
    FirstException exceptions; // what awakening did not come to
    if (object.has(ManagedObject::Awake)) exceptions.keep([&] { object.willTurnIntoFault(); });
    object.clear(ManagedObject::Awake);
    object.set(ManagedObject::ReadAhead);
    object.set(ManagedObject::Fault);
}

} // namespace estatebook::platform
