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
#include <unordered_map>
#include <vector>

namespace estatebook::platform {

struct ChangeSet;
struct ObjectChange;
struct FormerValue;
class FormerValues;
struct ObjectJournal;

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
    /// What the former one remembers of this context is forgotten.
    void setUndoManager(Ref<UndoManager> manager);
    /// undo, redo: of the undo manager; nothing happens without one. All that was one step changes at once: nobody is told before
    /// every value is restored. Objects that return are awakened anew, with `awakeFromFetch` and then
    /// `awakeFromSnapshotEvents`; those that go are deleted.
    void undo();
    void redo();

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

    /// Carries out what deletions entail, and registers all changes since the last time for undoing. Called by fetches,
    /// saves, and whatever asks the undo manager for something.
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

    /// Takes back everything since the last save: inserted objects go, deleted ones return, values are what they
    /// were; then `awakeFromSnapshotEvents` of the restored. Nothing can be undone any more.
    void rollback();

    /// Forgets every object, every unsaved change and what could be undone. Awake objects are told as at the end of the context.
    void reset();

    /// refreshObject:mergeChanges: Without merging, unsaved changes of the object are dropped and it becomes a fault: its
    /// values go, after `willTurnIntoFault`, and come back with `awakeFromFetch` when it is next read. With merging it keeps
    /// its changes and hears of the refresh. Nothing happens to a fault, nor to an object that is inserted or deleted:
    /// there is nothing to read it from. Raises InvalidArgumentException for an object of another context.
    void refreshObjectMergeChanges(ManagedObject& object, bool mergeChanges);

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override {
        return "ManagedObjectContext";
    }

private:
    friend class ManagedObject;
    friend class RelationshipUpkeep;
    friend class SystemChanges;

    /// The objects of one entity; those that left leave holes, closed when they are many.
    struct Rows {
        std::vector<ManagedObject*> objects;
        std::size_t holes = 0;
        /// Lost when an object returns.
        bool inOrderOfCreation = true;

        void tidy();
    };
    /// What objects hear when their state was restored.
    struct RestoringEvents {
        unsigned returned = 0;
        unsigned updated = 0;
    };

    ~ManagedObjectContext() override;
    void dispose() const noexcept override;
    void assertThread() const noexcept;
    [[noreturn]] static void refuseClass(std::string_view entityName);

    /// Raises InvalidArgumentException for an entity of another model.
    [[nodiscard]] const ManagedObjectHome& homeOf(const EntityDescription& entity) const;
    void insert(ManagedObject& object);
    void enter(ManagedObject& object);
    void leave(ManagedObject& object);
    void noteChanged(ManagedObject& object);
    void endAll() noexcept;
    [[nodiscard]] bool owns(const ManagedObject& object) const noexcept {
        return object.managedObjectContext() == this;
    }

    /// Whether the object can be linked with others here: one whose deletion was refused still can.
    [[nodiscard]] bool isWithin(const ManagedObject& object) const noexcept {
        return owns(object) && !object.has(ManagedObject::DeletionPropagated);
    }

    // Taking back

    [[nodiscard]] bool isRecording() const noexcept { return undoManager_ && recordingOff_ == 0; }
    [[nodiscard]] bool isRolledBack(const ManagedObject& object) const noexcept;
    [[nodiscard]] bool isUndone(const ManagedObject& object) const noexcept;
    /// Whether what the key held is remembered wherever it is wanted.
    [[nodiscard]] bool keepsFormerValue(const ManagedObject& object, Key key) const noexcept;
    void keepFormerValue(ManagedObject& object, const ModelledProperty& property);
    void noteInBatch(ManagedObject& object, ManagedObject::State how);
    void registerChanges();
    [[nodiscard]] std::vector<FormerValue> allFormerValues(ManagedObject& object,
                                                           FormerValues ObjectJournal::*since);
    void restore(const ChangeSet& set, RestoringEvents events);
    void takeBack(ManagedObject& object);
    void awakeReturned(const ObjectChange& change);
    /// Null when there is nothing to take back.
    [[nodiscard]] ObjectJournal* journalOf(const ManagedObject& object);
    void fulfilFault(ManagedObject& object);
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
    /// By entity.
    std::vector<Rows> rows_;
    std::vector<ManagedObjectHome> homes_;
    std::size_t objectCount_ = 0;
    std::uint64_t lastCreationNumber_ = 0;
    std::vector<Ref<ManagedObject>>
        changed_; // each object with a change once, and some that have none any more
    std::vector<Ref<ManagedObject>> pendingDeletions_;
    /// Objects with changes that are not registered for undoing yet.
    std::vector<Ref<ManagedObject>> batch_;
    std::unordered_map<const ManagedObject*, ObjectJournal> journals_;
    /// The values of faults.
    std::unordered_map<const ManagedObject*, std::vector<FormerValue>> records_;
    /// Above zero while fetch hooks run: changes then mark nothing and keep no inverses.
    unsigned changeProcessingOff_ = 0;
    /// Above zero while what happens leaves no undo entry.
    unsigned recordingOff_ = 0;
    /// Above zero while what is inserted is the system's own.
    unsigned systemChanges_ = 0;
    /// Above zero while values are being restored: half of it is nothing to register.
    unsigned restoring_ = 0;
};

/// While one lives, what happens in the context is the system's own doing: it leaves no undo entry, and an object
/// that is inserted stays after a rollback.
class ESTATEBOOK_API SystemChanges {
public:
    explicit SystemChanges(ManagedObjectContext& context) noexcept;
    ~SystemChanges();
    SystemChanges(const SystemChanges&) = delete;
    SystemChanges& operator=(const SystemChanges&) = delete;

private:
    ManagedObjectContext& context_;
};

} // namespace estatebook::platform
