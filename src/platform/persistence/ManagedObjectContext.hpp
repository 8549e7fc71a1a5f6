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
/// When its coordinator has a store, objects come from there as faults: reading one fetches its values, along with those of its
/// neighbours, and the members of a relationship are fetched when somebody asks for them. A store that cannot
/// be read then raises ObjectInaccessibleException. One row has one object. Saved objects are rows of the store, and
/// `save` fails as the store does.
///
/// A context belongs to the thread that made it; debug builds assert that at every entry. Nothing here locks.

#include "platform/persistence/ManagedObject.hpp"
#include "platform/persistence/PersistentStoreCoordinator.hpp"
#include "platform/persistence/Predicate.hpp"
#include "platform/persistence/UndoManager.hpp"
#include "platform/persistence/store/StoreChanges.hpp"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

namespace estatebook::platform {

struct ChangeSet;
class Store;
class StoredObjects;
struct StoredSide;
class StoreSave;
struct ObjectChange;
struct FormerValue;
class FormerValues;
struct ObjectJournal;

/// How a context is bound to threads. This library makes main-queue contexts.
enum class ConcurrencyType : unsigned { Confinement = 0, PrivateQueue = 1, MainQueue = 2 };

/// What a save does about rows that were changed in the store since they were read. A row that was deleted there is lost to the
/// policies that let the store win, and fails the save under the others.
enum class MergePolicy : std::uint8_t {
    /// The save fails with code 133020 of "Persistence" and the MergeConflicts under ConflictListKey.
    Error,
    /// Property by property, the store wins what both have changed.
    StoreTrump,
    /// Property by property, the object wins what both have changed.
    ObjectTrump,
    /// The whole object replaces what the store has.
    Overwrite,
    /// The object's changes are dropped.
    Rollback,
};

/// The user-info key of a failed save's Array of MergeConflict.
inline constexpr std::string_view ConflictListKey = "conflictList";

/// An object that was changed here and in the store.
class ESTATEBOOK_API MergeConflict final : public Object {
public:
    MergeConflict(Ref<ManagedObject> object, std::int64_t oldVersion, std::int64_t newVersion)
        : Object(Counting::Local), object_(std::move(object)), old_(oldVersion), new_(newVersion) {}

    [[nodiscard]] const Ref<ManagedObject>& sourceObject() const noexcept { return object_; }
    /// The version that was read.
    [[nodiscard]] std::int64_t oldVersionNumber() const noexcept { return old_; }
    /// The store's; 0 when the row is gone.
    [[nodiscard]] std::int64_t newVersionNumber() const noexcept { return new_; }
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "MergeConflict"; }

private:
    Ref<ManagedObject> object_;
    std::int64_t old_;
    std::int64_t new_;
};

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
    /// undo, redo: of the undo manager; nothing happens without one. What they need is read first: when the store cannot be read, they
    /// raise ObjectInaccessibleException, change nothing, and can be tried again. All that was one step changes at once: nobody is told before
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
    /// ones out, unsaved changes seen. None when the fetch failed. Linear in the objects of the entity; a store answers
    /// for a stored attribute itself.
    [[nodiscard]] std::optional<std::vector<Ref<ManagedObject>>>
    executeFetchRequest(const FetchRequest& request, Ref<Error>* error = nullptr);
    /// All objects of an entity, typed; empty when there is no such entity. Raises ObjectInaccessibleException when the store cannot
    /// be read, as reading an object does.
    template <class T>
    [[nodiscard]] std::vector<Ref<T>> fetchAll(std::string_view entityName) {
        std::vector<Ref<T>> all;
        const auto found = fetchAllObjects(entityName);
        all.reserve(found.size());
        for (const auto& object : found)
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
    ///
    /// A store's refusal comes as its StoreErrorCode. After OutcomeUnknown whatever comes next, a save, a fetch, an undo, asks
    /// the store first what became of this one, and nothing is ever saved twice. Until the store can tell, reading from it
    /// fails.
    bool save(Ref<Error>* error = nullptr);

    /// MergePolicy::Error from the start.
    [[nodiscard]] MergePolicy mergePolicy() const noexcept { return mergePolicy_; }
    void setMergePolicy(MergePolicy policy) noexcept { mergePolicy_ = policy; }
    /// Who saves, with which program and for which command; it stands in the store's journal. The time is that of the save.
    void setCommitOrigin(std::string author, std::string program, std::string command);

    /// What a document calls an object. It is kept beside the object's row from the next save on. Raises
    /// InvalidArgumentException for an object of another context.
    void setIdentifier(ManagedObject& object, std::string identifier);
    /// The object of an entity, or of its sub-entities, that documents call so; null when there is none, and when the store
    /// failed, which the error tells. Unsaved names count. Reads the names of all rows of the entity, but none of the rows.
    [[nodiscard]] Ref<ManagedObject> objectWithIdentifier(std::string_view entityName,
                                                          std::string_view identifier,
                                                          Ref<Error>* error = nullptr);
    /// What documents call these objects, each at its object's place; unsaved names count. None when the store failed.
    [[nodiscard]] std::optional<std::vector<std::optional<std::string>>>
    identifiers(std::span<const Ref<ManagedObject>> objects, Ref<Error>* error = nullptr);

    /// Takes back everything since the last save: inserted objects go, deleted ones return, values are what they
    /// were; then `awakeFromSnapshotEvents` of the restored. Nothing can be undone any more. It reads first, as undoing does.
    void rollback();

    /// Forgets every object, every unsaved change and what could be undone. Awake objects are told as at the end of the context.
    void reset();

    /// refreshObject:mergeChanges: Without merging, unsaved changes of the object are dropped and it becomes a fault: its
    /// values go, after `willTurnIntoFault`, and come back with `awakeFromFetch` when it is next read. With merging it keeps
    /// its changes, takes the rest from the store, and hears of the refresh. Nothing happens to a fault, nor to an object that is inserted or deleted:
    /// there is nothing to read it from. Raises InvalidArgumentException for an object of another context.
    void refreshObjectMergeChanges(ManagedObject& object, bool mergeChanges);

    /// Lets go of the members of a to-many relationship that were read, and of their own, so that who walks through a large book
    /// needs no room for all of it. They are read again when they are next asked for; those that are awake get `willTurnIntoFault`
    /// now. Nothing happens while one of them is changed, held by somebody or linked with others, or has members that are
    /// not read. Linear in the members. Raises InvalidArgumentException for an object of another context and for a key that
    /// is no to-many relationship.
    void forgetMembers(ManagedObject& owner, Key toMany);

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override {
        return "ManagedObjectContext";
    }

private:
    friend class ManagedObject;
    friend class RelationshipUpkeep;
    friend class StoreSave;
    friend class SystemChanges;

    /// The objects of one entity; those that left leave holes, closed when they are many.
    struct Rows {
        std::vector<ManagedObject*> objects;
        std::size_t holes = 0;
        /// Lost when an object comes that was made before another was.
        bool inOrderOfCreation = true;
        /// Of all that ever came.
        std::uint64_t greatestNumber = 0;

        void tidy();
    };
    struct OpenRowLink {
        Ref<ManagedObject> object;
        const ModelledProperty* property;
        const EntityDescription* target;
        RowLink link;
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
    /// Reads all that restoring needs, so that what cannot be read leaves nothing half restored.
    void readyToRestore(const ChangeSet& set);
    void readyToRestore(ManagedObject& object, std::span<const FormerValue> former);
    /// What a link leads to, or is to lead to, with the side that follows.
    void readOtherSide(const ModelledProperty& link, ManagedObject* other);
    void restore(const ChangeSet& set, RestoringEvents events);
    void takeBack(ManagedObject& object);
    void awakeReturned(const ObjectChange& change);
    /// Null when there is nothing to take back.
    [[nodiscard]] ObjectJournal* journalOf(const ManagedObject& object);
    void fulfilFault(ManagedObject& object);
    static void sleepAgain(ManagedObject& object) noexcept;
    [[nodiscard]] std::vector<Ref<ManagedObject>> changed(ManagedObject::State state) const;

    // The store

    /// Null without a store.
    [[nodiscard]] StoredObjects* storedObjects();
    /// The store, when it is known which of its rows the objects here have become. Raises ObjectInaccessibleException.
    [[nodiscard]] Store& readableStore();
    [[nodiscard]] std::optional<std::vector<Ref<ManagedObject>>>
    fetchFromStore(const FetchRequest& request, const EntityDescription& entity, Ref<Error>* error);
    [[nodiscard]] std::vector<Ref<ManagedObject>> fetchAllObjects(std::string_view entityName);
    [[nodiscard]] std::vector<Ref<ManagedObject>> changedOfEntity(const EntityDescription& entity) const;
    ManagedObject& makeFault(const EntityDescription& entity, RowKey key);
    /// The object that stands for the row, a fault if there was none. Raises ObjectInaccessibleException when it is of another
    /// entity, as a file may say that nobody can trust.
    ManagedObject& objectOf(const Row& row);
    /// Gives a fault the values of its row.
    void takeRow(ManagedObject& object, const Row& row);
    void takeLinks(ManagedObject& object, const Row& row);
    void takeLink(ManagedObject& object, const ModelledProperty& toOne, ManagedObject* target);
    /// The objects of these rows, in their order; those that are gone are left out.
    std::vector<ManagedObject*> objectsOf(const EntityDescription& entity, std::span<const RowKey> keys);
    /// Reads the rows that links lead to, where the key alone does not tell the entity.
    void followOpenLinks();
    void readAhead(ManagedObject& object);
    void fetchMembers(ManagedObject& owner, const ModelledProperty& toMany);
    /// None where most members are here, or what is added up is no stored attribute.
    [[nodiscard]] std::optional<Decimal> sumOfMembers(ManagedObject& owner, const ModelledProperty& toMany,
                                                      Key attribute);
    [[nodiscard]] std::vector<ManagedObject*> neighbours(ManagedObject& object, std::size_t most,
                                                         bool (*isWanted)(ManagedObject&, const void*),
                                                         const void* info);
    bool saveToStore(Ref<Error>* error);
    /// Whether the conflicts were settled by the policy, so that the save may be tried again.
    bool settleConflicts(std::span<const StoreConflict> conflicts, Ref<Error>* error);
    /// Brings what is stored and what has changed here together, and tells the object.
    void merge(ManagedObject& object, const Row& stored, MergePolicy policy, unsigned event);
    void loseToStore(ManagedObject& object);
    /// Where a stored link leads; null for nowhere.
    [[nodiscard]] ManagedObject* targetOf(const ManagedObject& object, const StoredSide& side);
    /// The object's changes are now those against this row.
    void rebase(ManagedObject& object, const Row& stored);
    void mergeFromStore(ManagedObject& object);
    /// Whoever was read before others led it elsewhere may still lead to an object that has left just now. Linear in the
    /// objects. REQUIRES: those that left still live.
    void forgetLinksToThoseGone() noexcept;
    void forgetUnchanged(std::size_t from);
    [[nodiscard]] bool findReadAlone(ManagedObject& member, const ManagedObject& owner,
                                     std::vector<Ref<ManagedObject>>& found) const;
    /// Has members read again, but for those whose changes are not saved.
    void forgetUnchangedMembers(ManagedObject& object);
    bool resolveUnknownSave(Ref<Error>* error);
    void haveRow(ManagedObject& object, const StoreSave& save);
    void loseRow(ManagedObject& object);

    void propagateDeletion(ManagedObject& object);
    /// Reads whatever is linked with the object, and with all that its deletion takes along.
    static void readAround(ManagedObject& object);
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
    std::unique_ptr<StoredObjects> stored_;
    /// To-one properties of rows that were read, whose targets are to be read yet.
    std::vector<OpenRowLink> openRowLinks_;
    /// Of how many owners the members were read together the last time.
    std::unordered_map<const ModelledProperty*, std::size_t> ownersAtOnce_;
    std::unordered_map<const ManagedObject*, std::string> identifiers_;
    /// A save of which the store could not tell what became of it.
    std::unique_ptr<StoreSave> unknownSave_;
    CommitOrigin origin_;
    MergePolicy mergePolicy_ = MergePolicy::Error;
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
