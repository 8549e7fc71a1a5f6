// SPDX-License-Identifier: MIT
#include "platform/persistence/ChangeJournal.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/Raised.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/FirstException.hpp"

#include <utility>

namespace estatebook::platform {

void ManagedObjectContext::settleBeforeSave() {
    processPendingChanges();
    // What the hooks do follows from what the user did, and is done anew after an undo.
    const Raised unrecorded(recordingOff_);
    // Also what an earlier save, which failed, has asked before.
    for (const auto& object : changed_) object->set(ManagedObject::ChangedInRound);
    for (std::size_t round = 0;; ++round) {
        processPendingChanges();
        std::vector<Ref<ManagedObject>> changedNow;
        for (const auto& object : changed_)
            if (object->has(ManagedObject::ChangedInRound)) changedNow.push_back(object);
        if (changedNow.empty()) return;
        if (round == MaximalSaveRounds) break;
        for (const auto& object : changedNow) object->clear(ManagedObject::ChangedInRound);
        for (const auto& object : changedNow)
            if (object->managedObjectContext() == this) object->willSave();
    }
    throw InternalInconsistencyException(
        "Failed to process pending changes before save. The context is still dirty "
        "after 1000 attempts.");
}

bool ManagedObjectContext::validateAll(Ref<Error>* error) {
    std::vector<Ref<Error>> failures;
    // False ends the validation.
    const auto validate = [&](const std::vector<Ref<ManagedObject>>& objects,
                              bool (ManagedObject::*hook)(Ref<Error>*)) {
        for (const auto& object : objects) {
            Ref<Error> reason;
            if (((*object).*hook)(error ? &reason : nullptr)) continue;
            failures.push_back(
                reason ? reason : Error::make("Persistence", 1550, object->description() + " is not valid"));
            if (!error) return false;
        }
        return true;
    };
    const bool all = validate(deletedObjects(), &ManagedObject::validateForDelete) &&
                     validate(insertedObjects(), &ManagedObject::validateForInsert) &&
                     validate(updatedObjects(), &ManagedObject::validateForUpdate);
    if (all && failures.empty()) return true;
    if (!error) return false;
    if (failures.size() == 1) {
        *error = failures.front();
        return false;
    }
    std::vector<Value> details(failures.begin(), failures.end());
    *error =
        makeRef<Error>("Persistence", 1560,
                       Dictionary::make({{std::string(LocalizedDescriptionKey),
                                          String::make("Multiple validation errors occurred.")},
                                         {std::string(DetailedErrorsKey), Array::make(std::move(details))}}));
    return false;
}

void ManagedObjectContext::commit() {
    const auto saved = std::exchange(changed_, {});
    bool hasAnyLeft = false;
    for (const auto& object : saved) {
        if (object->managedObjectContext() != this) continue;
        if (object->isDeleted()) {
            leave(*object);
            hasAnyLeft = true;
        } else {
            object->clear(ManagedObject::Inserted);
            object->clear(ManagedObject::Updated);
            object->clear(ManagedObject::ChangedInRound);
            object->clear(ManagedObject::MadeBySystem);
            journals_.erase(object.get());
        }
    }
    if (hasAnyLeft) forgetLinksToThoseGone();
    FirstException exceptions;
    for (const auto& object : saved) exceptions.keep([&] { object->didSave(); });
    exceptions.rethrow();
}

bool ManagedObjectContext::save(Ref<Error>* error) {
    assertThread();
    if (!resolveUnknownSave(error)) return false;
    if (!hasChanges() && identifiers_.empty()) return true;
    settleBeforeSave();
    if (!validateAll(error)) return false;
    if (storedObjects() && !saveToStore(error)) return false;
    commit();
    return true;
}

} // namespace estatebook::platform
