// SPDX-License-Identifier: MIT
#include "platform/persistence/ChangeJournal.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/Raised.hpp"
#include "platform/persistence/RelationshipUpkeep.hpp"
#include "platform/persistence/StoreSave.hpp"
#include "platform/persistence/StoredObjects.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Dictionary.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/FirstException.hpp"

#include <algorithm>
#include <functional>
#include <utility>

namespace estatebook::platform {

/// What one stored property of an object is, in the store.
struct StoredSide {
    const ModelledProperty* property;
    /// Of an attribute:
    const Value* value;
    /// Of a to-one relationship:
    const RowLink* link;
};

namespace {

constexpr std::int64_t MergeConflictCode = 133020;

std::vector<StoredSide> sidesOf(const StoredProperties& properties, const Row& row) {
    std::vector<StoredSide> sides;
    for (std::size_t place = 0; place < properties.attributes.size(); ++place)
        if (properties.attributes[place])
            sides.push_back({properties.attributes[place], &row.values[place], nullptr});
    for (std::size_t place = 0; place < properties.links.size(); ++place)
        sides.push_back({properties.links[place], nullptr, &row.links[place]});
    return sides;
}

bool isAlike(const StoredSide& side, const Value& value) {
    if (side.value) return areStoredAlike(*side.value, value);
    const auto target = value.as<ManagedObject>();
    return (target ? static_cast<RowKey>(target->creationNumber()) : NoRow) == side.link->target;
}

} // namespace

bool ManagedObjectContext::settleConflicts(std::span<const StoreConflict> all, Ref<Error>* error) {
    // What both have deleted is nothing to argue about.
    const auto isGoneAnyway = [&](const StoreConflict& conflict) {
        return !conflict.stored && stored_->find(conflict.key)->isDeleted();
    };
    std::vector<StoreConflict> conflicts(all.begin(), all.end());
    const auto gone = std::stable_partition(conflicts.begin(), conflicts.end(), std::not_fn(isGoneAnyway));
    const std::vector<StoreConflict> goneAnyway(gone, conflicts.end());
    conflicts.erase(gone, conflicts.end());
    const bool storeWins = mergePolicy_ == MergePolicy::StoreTrump || mergePolicy_ == MergePolicy::Rollback;
    const bool isLost = !storeWins && std::ranges::any_of(conflicts, [](const StoreConflict& conflict) {
        return !conflict.stored.has_value();
    });
    if (!conflicts.empty() && (mergePolicy_ == MergePolicy::Error || isLost)) {
        if (!error) return false;
        std::vector<Value> list;
        list.reserve(conflicts.size());
        for (const StoreConflict& conflict : conflicts)
            list.emplace_back(Ref<Object>(makeRef<MergeConflict>(
                Ref<ManagedObject>(stored_->find(conflict.key)), conflict.expectedVersion,
                conflict.stored ? conflict.stored->version : 0)));
        const std::string message =
            isLost ? "Objects that were changed here were deleted in the store meanwhile."
                   : "Objects were changed here and in the store.";
        *error =
            makeRef<Error>("Persistence", MergeConflictCode,
                           Dictionary::make({{std::string(LocalizedDescriptionKey), String::make(message)},
                                             {std::string(ConflictListKey), Array::make(std::move(list))}}));
        return false;
    }
    FirstException exceptions;
    for (const StoreConflict& conflict : goneAnyway)
        exceptions.keep([&] { loseToStore(*stored_->find(conflict.key)); });
    for (const StoreConflict& conflict : conflicts) {
        ManagedObject& object = *stored_->find(conflict.key);
        exceptions.keep([&] {
            if (conflict.stored)
                merge(object, *conflict.stored, mergePolicy_, SnapshotMergePolicy);
            else
                loseToStore(object);
        });
    }
    exceptions.keep([&] { processPendingChanges(); });
    exceptions.rethrow();
    return true;
}

void ManagedObjectContext::merge(ManagedObject& object, const Row& stored, MergePolicy policy,
                                 unsigned event) {
    const Raised unrecorded(recordingOff_);
    FirstException exceptions;
    if (object.isDeleted()) {
        if (policy == MergePolicy::Overwrite || policy == MergePolicy::ObjectTrump)
            return stored_->setVersion(stored.key, stored.version);
        ChangeSet set;
        set.changes.push_back({ObjectChange::Kind::Deletion, Ref<ManagedObject>(&object),
                               allFormerValues(object, &ObjectJournal::sinceSave)});
        exceptions.keep([&] { restore(set, {}); });
    }

    const ObjectJournal* journal = journalOf(object);
    const auto storeWins = [&](const StoredSide& side) {
        const Value* former = journal ? journal->sinceSave.find(side.property->key) : nullptr;
        switch (policy) {
        case MergePolicy::Rollback:
            return true;
        case MergePolicy::StoreTrump:
            return !former || !isAlike(side, *former);
        case MergePolicy::ObjectTrump:
            return !former || areStoredAlike(*former, object.primitiveValueForKey(side.property->key));
        case MergePolicy::Overwrite:
        case MergePolicy::Error:
            break;
        }
        return false;
    };
    std::vector<StoredSide> taken;
    std::vector<ManagedObject*> targets;
    for (const StoredSide& side : sidesOf(stored_->properties(object.entity()), stored)) {
        if (!storeWins(side) || isAlike(side, object.primitiveValueForKey(side.property->key))) continue;
        ManagedObject* const target = targetOf(object, side);
        taken.push_back(side);
        targets.push_back(target && isWithin(*target) ? target : nullptr);
    }
    // What follows is read before anything is changed.
    for (const StoredSide& side : sidesOf(stored_->properties(object.entity()), stored))
        static_cast<void>(targetOf(object, side));
    std::vector<FormerValue> former;
    for (std::size_t index = 0; index < taken.size(); ++index)
        former.push_back(
            {taken[index].property, taken[index].link ? Value(Ref<Object>(targets[index])) : Value()});
    readyToRestore(object, former);

    for (const StoredSide& side : taken)
        exceptions.keep([&] { object.willChangeValueForKey(side.property->key); });
    for (std::size_t index = 0; index < taken.size(); ++index) {
        const StoredSide& side = taken[index];
        if (side.value)
            exceptions.keep([&] { side.property->setPrimitive(object, *side.value); });
        else
            side.property->toOne(object).target = targets[index];
    }
    for (const StoredSide& side : taken)
        exceptions.keep([&] { object.didChangeValueForKey(side.property->key); });
    rebase(object, stored);
    exceptions.keep([&] { object.awakeFromSnapshotEvents(event); });
    exceptions.rethrow();
}

ManagedObject* ManagedObjectContext::targetOf(const ManagedObject& object, const StoredSide& side) {
    if (!side.link || side.link->target == NoRow) return nullptr;
    const auto& entity = *object.entity().relationship(side.property->key)->destinationEntity;
    const auto found = objectsOf(entity, std::span(&side.link->target, 1));
    return found.empty() ? nullptr : found.front();
}

void ManagedObjectContext::rebase(ManagedObject& object, const Row& stored) {
    stored_->setVersion(stored.key, stored.version);
    ObjectJournal& journal = journals_[&object];
    FormerValues since;
    // The order of members is their rows' matter, of which this row tells nothing.
    for (FormerValue& former : journal.sinceSave.take())
        if (former.property->kind == PropertyKind::OrderedToMany)
            since.keep(*former.property, std::move(former.value));
    for (const StoredSide& side : sidesOf(stored_->properties(object.entity()), stored)) {
        if (isAlike(side, object.primitiveValueForKey(side.property->key))) continue;
        since.keep(*side.property, side.value ? *side.value : Value(Ref<Object>(targetOf(object, side))));
    }
    journal.sinceSave = std::move(since);
}

void ManagedObjectContext::mergeFromStore(ManagedObject& object) {
    if (!object.isStored()) return object.awakeFromSnapshotEvents(SnapshotRefresh);
    const RowKey key = static_cast<RowKey>(object.creationNumber());
    const auto rows = readableStore().rows(object.entity(), std::span(&key, 1));
    if (!rows) throw ObjectInaccessibleException(rows.error().message);
    if (rows->empty()) throw ObjectInaccessibleException(object.description() + " has no record any more");
    const std::size_t changedBefore = changed_.size();
    FirstException exceptions;
    exceptions.keep([&] { merge(object, rows->front(), MergePolicy::ObjectTrump, SnapshotRefresh); });
    forgetUnchanged(changedBefore);
    exceptions.rethrow();
}

/// What was announced only because the store had changed is nothing to save.
void ManagedObjectContext::forgetUnchanged(std::size_t from) {
    const auto begin = changed_.begin() + static_cast<std::ptrdiff_t>(std::min(from, changed_.size()));
    const auto isUnchanged = [&](const Ref<ManagedObject>& object) {
        if (!object->isUpdated()) return false;
        const ObjectJournal* journal = journalOf(*object);
        return !journal || journal->sinceSave.all().empty();
    };
    const auto unchanged = std::stable_partition(begin, changed_.end(), std::not_fn(isUnchanged));
    for (const auto& object : std::ranges::subrange(unchanged, changed_.end())) {
        object->clear(ManagedObject::Updated);
        object->clear(ManagedObject::ChangedInRound);
    }
    changed_.erase(unchanged, changed_.end());
}

/// The row is gone, and with it the object.
void ManagedObjectContext::loseToStore(ManagedObject& object) {
    const Ref<ManagedObject> held(&object);
    const Raised unrecorded(recordingOff_);
    FirstException exceptions;
    exceptions.keep([&] { deleteObject(object); });
    exceptions.keep([&] { processPendingChanges(); });
    if (owns(object)) leave(object);
    forgetLinksToThoseGone();
    const auto isLost = [&](const auto& each) { return each.get() == &object; };
    std::erase_if(changed_, isLost);
    std::erase_if(pendingDeletions_, isLost);
    exceptions.rethrow();
}

void ManagedObjectContext::forgetLinksToThoseGone() noexcept {
    if (!stored_) return;
    for (const Rows& rows : rows_)
        for (ManagedObject* object : rows.objects)
            if (object)
                for (const ModelledProperty* link : stored_->properties(object->entity()).links)
                    if (ToOneSlot& slot = link->toOne(*object); slot.target && !owns(*slot.target)) slot = {};
}

// A save of which the store could not tell what became of it

bool ManagedObjectContext::resolveUnknownSave(Ref<Error>* error) {
    if (!unknownSave_) return true;
    const auto landed = stored_->store().hasLanded(unknownSave_->changes().token);
    if (!landed) {
        if (error) *error = landed.error().asError();
        return false;
    }
    if (*landed) {
        if (const auto failure = unknownSave_->recallRows()) {
            if (error) *error = failure->asError();
            return false;
        }
        unknownSave_->adopt();
    }
    const auto save = std::exchange(unknownSave_, nullptr);
    if (!*landed) return true;
    for (const auto& object : save->saved()) haveRow(*object, *save);
    for (const auto& object : save->deleted()) {
        if (!owns(*object)) continue;
        if (object->isDeleted())
            leave(*object);
        else
            loseRow(*object);
    }
    if (!save->deleted().empty()) forgetLinksToThoseGone();
    std::erase_if(changed_, [&](const auto& object) { return !owns(*object); });
    return true;
}

/// What has changed since the object was saved is all that is left to save.
void ManagedObjectContext::haveRow(ManagedObject& object, const StoreSave& save) {
    if (!owns(object)) {
        // Taken back meanwhile, which is still to be saved.
        object.comeHome(homeOf(object.entity()));
        enter(object);
        object.set(ManagedObject::Deleted);
        object.set(ManagedObject::DeletionPropagated);
    }
    object.clear(ManagedObject::Inserted);
    object.clear(ManagedObject::MadeBySystem);
    if (object.has(ManagedObject::Fault)) return;
    FormerValues saved = save.savedValues(object);
    ObjectJournal& journal = journals_[&object];
    // What is being changed right now may look unchanged; it stays in the journal all the same.
    for (FormerValue& former : journal.sinceSave.take())
        if (!saved.has(former.property->key)) saved.keep(*former.property, std::move(former.value));
    journal.sinceSave = std::move(saved);
    noteChanged(object);
}

/// Its deletion was taken back meanwhile: it gets another row.
void ManagedObjectContext::loseRow(ManagedObject& object) {
    stored_->leave(static_cast<RowKey>(object.creationNumber_));
    object.creationNumber_ = ManagedObject::FirstUnstoredNumber + ++lastCreationNumber_;
    Rows& rows = rows_[object.entity().index()];
    rows.inOrderOfCreation = false;
    rows.greatestNumber = object.creationNumber_;
    object.set(ManagedObject::Inserted);
    if (ObjectJournal* journal = journalOf(object)) journal->sinceSave = {};
    noteChanged(object);
    for (const ModelledProperty* link : stored_->properties(object.entity()).links) {
        ManagedObject* const target = link->toOne(object).target;
        if (!target || target->modelledProperty(link->inverse)->kind != PropertyKind::ToMany) continue;
        RelationshipUpkeep::takeLink(object, *link, nullptr);
        RelationshipUpkeep::takeLink(object, *link, target);
    }
}

} // namespace estatebook::platform
