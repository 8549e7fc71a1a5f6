// SPDX-License-Identifier: MIT
#pragma once

/// ManagedObjectContext: a graph of managed objects, the changes made to it, and the way to save them.
///
///     Ref<ManagedObjectContext> context = TKManagedObjectModel::inMemoryManagedObjectContext();
///     Ref<TKProperty> flat = context->insertNewObject<TKProperty>("Property");
///     Ref<Error> error;
///     if (!context->save(&error)) report(error->localizedDescription());
///
/// A context owns its objects. When it ends, each awake object is told (`willTurnIntoFault`), then all values go,
/// then the objects themselves, save those that a `Ref` outside still holds; these read as absent.
///
/// A context belongs to the thread that made it; debug builds assert that at every entry. Nothing here locks.

#include "platform/persistence/ManagedObject.hpp"
#include "platform/persistence/PersistentStoreCoordinator.hpp"
#include "platform/persistence/Predicate.hpp"
#include "platform/persistence/UndoManager.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace estatebook::platform {

/// How a context is bound to threads. This library makes main-queue contexts.
enum class ConcurrencyType : unsigned { Confinement = 0, PrivateQueue = 1, MainQueue = 2 };

struct FetchRequest {
    /// Objects of this entity and of those that inherit from it.
    std::string entityName;
    /// None takes all.
    std::optional<Predicate> predicate = std::nullopt;
};

class ESTATEBOOK_API ManagedObjectContext final : public Object {
public:
    /// Rounds of willSave after which a save gives up.
    static constexpr std::size_t MaximalSaveRounds = 1000;

    explicit ManagedObjectContext(ConcurrencyType type);

    [[nodiscard]] ConcurrencyType concurrencyType() const noexcept { return type_; }
    [[nodiscard]] const Ref<PersistentStoreCoordinator>& persistentStoreCoordinator() const noexcept {
        return coordinator_;
    }
    /// REQUIRES: no objects yet.
    void setPersistentStoreCoordinator(Ref<PersistentStoreCoordinator> coordinator);

    /// There is one from the start; null takes it away.
    [[nodiscard]] const Ref<UndoManager>& undoManager() const noexcept { return undoManager_; }
    void setUndoManager(Ref<UndoManager> manager) noexcept { undoManager_ = std::move(manager); }

    /// As EntityDescription's insertion by name, typed. Raises InvalidArgumentException when the entity's class is no T.
    template <class T>
    Ref<T> insertNewObject(std::string_view entityName) {
        auto object = refCast<T>(
            EntityDescription::insertNewObjectForEntityForNameInManagedObjectContext(entityName, *this));
        if (!object) refuseClass(entityName);
        return object;
    }

    /// deleteObject: marks it deleted at once; its relationships are cleaned up by their rules later, when changes are
    /// processed (a fetch, a save, or on demand), so that a relationship may be walked while its members are
    /// deleted. A second deletion does nothing. Raises InvalidArgumentException for an object of another context.
    void deleteObject(ManagedObject& object);

    /// executeFetchRequest:error: The objects that match, in the order of their creation: inserted ones in, deleted
    /// ones out, unsaved changes seen. None when the fetch failed. Linear in the objects of the entity.
    [[nodiscard]] std::optional<std::vector<Ref<ManagedObject>>>
    executeFetchRequest(const FetchRequest& request, Ref<Error>* error = nullptr);
    /// All objects of an entity, typed; empty when there is no such entity.
    template <class T>
    [[nodiscard]] std::vector<Ref<T>> fetchAll(std::string_view entityName) {
        std::vector<Ref<T>> all;
        if (const auto found = executeFetchRequest({std::string(entityName)}))
            for (const auto& object : *found)
                if (auto typed = refCast<T>(object)) all.push_back(std::move(typed));
        return all;
    }

    /// Carries out what deletions entail. Called by fetches and saves.
    void processPendingChanges();

    /// Whether anything was inserted, deleted or changed since the last save; setting a value to itself counts.
    [[nodiscard]] bool hasChanges() const noexcept;
    [[nodiscard]] std::vector<Ref<ManagedObject>> insertedObjects() const;
    [[nodiscard]] std::vector<Ref<ManagedObject>> updatedObjects() const;
    [[nodiscard]] std::vector<Ref<ManagedObject>> deletedObjects() const;
    [[nodiscard]] std::size_t objectCount() const noexcept { return objectCount_; }

    /// save: `willSave` of every changed object until nothing changes any more, validation, then the commit. On failure
    /// nothing is committed and every object stays changed; the reason is stored through `error`: the one failure itself,
    /// or code 1560 of "Persistence" with all of them under DetailedErrorsKey. With a null `error` the first
    /// failure ends the validation. Raises InternalInconsistencyException when `willSave` never comes to rest.
    bool save(Ref<Error>* error = nullptr);

    /// Forgets every object and every unsaved change. Awake objects are told as at the end of the context.
    void reset();

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override {
        return "ManagedObjectContext";
    }

private:
    friend class ManagedObject;
    friend class RelationshipUpkeep;

    /// The objects of one entity in the order of creation; those that left leave holes, closed when they are many.
    struct Rows {
        std::vector<ManagedObject*> objects;
        std::size_t holes = 0;
    };

    ~ManagedObjectContext() override = default;
    void dispose() const noexcept override;
    void assertThread() const noexcept;
    [[noreturn]] static void refuseClass(std::string_view entityName);

    void insert(ManagedObject& object);
    void enter(ManagedObject& object);
    void leave(ManagedObject& object);
    void noteChanged(ManagedObject& object);
    void endAll() noexcept;
    [[nodiscard]] std::vector<Ref<ManagedObject>> changed(ManagedObject::State state) const;

    void propagateDeletion(ManagedObject& object);
    [[nodiscard]] static bool isDenied(ManagedObject& object);
    void settleBeforeSave();
    bool validateAll(Ref<Error>* error);
    void commit();

    ConcurrencyType type_;
    std::thread::id thread_;
    Ref<PersistentStoreCoordinator> coordinator_;
    Ref<UndoManager> undoManager_;
    std::vector<Rows> rows_;
    std::size_t objectCount_ = 0;
    std::uint64_t lastCreationNumber_ = 0;
    std::vector<Ref<ManagedObject>>
        changed_; // each object with a change once, and some that have none any more
    std::vector<Ref<ManagedObject>> pendingDeletions_;
    /// Above zero while fetch hooks run: changes then mark nothing and keep no inverses.
    unsigned changeProcessingOff_ = 0;
};

} // namespace estatebook::platform
