// SPDX-License-Identifier: MIT
#pragma once

/// ManagedObject: the root of everything a book keeps. It has an entity, and as a rule a context that owns it,
/// tracks its changes and calls its hooks.
///
///     auto tenure = context.insertNewObject<TKTenure>("Tenure");
///     tenure->setTenant(tenant.get());             // tenant->tenures() has it at once
///     context.deleteObject(*tenure);
///
/// Within a context objects lead to one another by plain pointers, and the context keeps them alive. A `Ref` held
/// outside may outlive it: it then finds absent values, never freed memory. An object made without a context is
/// complete, but is never saved, never awakes and leaves no undo entry; it may not be linked with objects of a context.
///
/// Used on the context's thread only.

#include "platform/observation/ObservableObject.hpp"
#include "platform/persistence/ManagedClass.hpp"
#include "platform/persistence/Slots.hpp"
#include "platform/values/Error.hpp"

#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace estatebook::platform {

class MutableOrderedSet;

/// Why an object's state was restored; bits that may come together.
enum SnapshotEvents : unsigned {
    SnapshotUndoInsertion = 2,
    SnapshotUndoDeletion = 4,
    SnapshotUndoUpdate = 8,
    SnapshotRollback = 16,
    SnapshotRefresh = 32,
    SnapshotMergePolicy = 64,
};

class ESTATEBOOK_API ManagedObject : public ObservableObject {
public:
    /// initWithEntity:insertIntoManagedObjectContext: With a context the object is inserted and its `awakeFromInsert` has run;
    /// with null it belongs to none. Raises InternalInconsistencyException for an abstract entity.
    static Ref<ManagedObject> initWithEntityInsertIntoManagedObjectContext(const EntityDescription& entity,
                                                                           ManagedObjectContext* context);

    /// Null for an object without a context, or that left it.
    [[nodiscard]] ManagedObjectContext* managedObjectContext() const noexcept { return home_->context; }
    [[nodiscard]] const EntityDescription& entity() const noexcept { return *home_->entity; }
    /// The order of creation. A save to a store gives the object another number, that of its row, and keeps the order.
    [[nodiscard]] std::uint64_t creationNumber() const noexcept { return creationNumber_; }

    [[nodiscard]] bool isInserted() const noexcept { return has(Inserted); }
    [[nodiscard]] bool isUpdated() const noexcept { return has(Updated) && !has(Inserted) && !has(Deleted); }
    /// Whether its values are not there yet; reading one fetches them.
    [[nodiscard]] bool isFault() const noexcept { return has(Fault); }
    /// From the deletion until it is saved.
    [[nodiscard]] bool isDeleted() const noexcept { return has(Deleted); }
    [[nodiscard]] bool hasChanges() const noexcept { return (state_ & (Inserted | Updated | Deleted)) != 0; }

    // By key. Every modelled property is a known key; a class's own accessor wins over it.

    [[nodiscard]] Value valueForKey(Key key) const override;
    using ObservableObject::valueForKey;
    [[nodiscard]] bool hasValueForKey(Key key) const override;
    /// The store adds up what nobody has read.
    [[nodiscard]] std::optional<Decimal> sumOfMembers(Key collection, Key ofMember) const override;
    void setValueForKey(const Value& value, Key key) override;
    using ObservableObject::setValueForKey;

    /// primitiveValueForKey: what is stored, without any announcement. Raises UndefinedKeyException for a key that is not modelled.
    [[nodiscard]] Value primitiveValueForKey(Key key) const;
    /// setPrimitiveValue:forKey: stores without announcing, marking or keeping inverses; between willChangeValueForKey and
    /// didChangeValueForKey it is the normal write, inverses included.
    void setPrimitiveValueForKey(const Value& value, Key key);

    /// mutableOrderedSetValueForKey: a live proxy; each change through it is announced and keeps inverses. Raises
    /// InvalidArgumentException for a key that is no ordered relationship.
    [[nodiscard]] MutableOrderedSet mutableOrderedSetValueForKey(Key key);

    // Life-cycle hooks. An override calls its base unless it says why not.

    /// Once, inside the insertion.
    virtual void awakeFromInsert() {}
    /// When the object becomes real after a fetch. Changes made inside leave no trace in the context.
    virtual void awakeFromFetch() {}
    /// awakeFromSnapshotEvents: after undo, redo, rollback or refresh restored the object.
    virtual void awakeFromSnapshotEvents(unsigned events);
    /// Before the values go, and before a deletion: once for each awakening.
    virtual void willTurnIntoFault() {}
    virtual void didTurnIntoFault() {}
    /// At the deletion, while all relationships stand.
    virtual void prepareForDeletion() {}
    /// Before each save of a changed object, deleted ones included; again when it changes during that.
    virtual void willSave() {}
    virtual void didSave() {}

    /// validateForInsert: whether the object may be saved. On failure the reason is stored through `error` unless that is null.
    virtual bool validateForInsert(Ref<Error>* error);
    virtual bool validateForUpdate(Ref<Error>* error);
    /// Fails with code 1600 of "Persistence" while a relationship that denies deletion has members.
    virtual bool validateForDelete(Ref<Error>* error);

    [[nodiscard]] std::string description() const override;
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override;

    /// The table entry of a key; null for a key that is not modelled.
    [[nodiscard]] virtual const ModelledProperty* modelledProperty(Key key) const noexcept;
    /// Calls for each modelled property, inherited ones first.
    template <class Visit>
    void forEachModelledProperty(Visit visit) const {
        visitModelledProperties(
            [](const ModelledProperty& property, void* info) { (*static_cast<Visit*>(info))(property); },
            &visit);
    }

protected:
    explicit ManagedObject(const ManagedObjectBirth& birth) noexcept
        : ObservableObject(Notes::Taken), home_(&birth.home()) {
        if (birth.holdsModel()) holdModel();
    }
    ~ManagedObject() override {
        if (has(HoldsModel)) dropModel();
    }
    void dispose() const noexcept override;
    /// For classes that replace `dispose`: REQUIRES: called first in it.
    void endManaging() const noexcept;

    /// Whether any other object must learn when this one ends.
    [[nodiscard]] bool isLinked() const noexcept { return has(LinkedOneWay); }
    virtual void visitModelledProperties(ModelledPropertyVisitor, void*) const {}
    /// Forgets every attribute.
    virtual void dropValues() noexcept {}

    /// Makes sure that the values are there.
    void access() const {
        if (state_ & Fault) [[unlikely]]
            fireFault();
    }

    /// The same for the members of a relationship.
    void access(const ModelledProperty& toMany, const ToManySlot& slot) const {
        access();
        if (slot.isUnknown()) [[unlikely]]
            fetchMembers(toMany);
    }

    /// As for any observable object; but a write that nobody hears of, and that leaves nothing new to remember, is the
    /// store and no more. Not for relationships.
    template <class Store>
    void change(Key key, Store&& store) {
        if (mustAnnounce(key)) return changeAnnounced(key, std::forward<Store>(store));
        if (hasNothingToNote(key)) return store();
        noteWillChange(key);
        store();
        noteDidChange(key);
    }

    void setToOne(const ModelledProperty& property, ManagedObject* target);
    void setToMany(const ModelledProperty& property, std::span<const Value> members);

    void noteWillChange(Key key) override;
    void noteDidChange(Key key) override;

private:
    friend class ManagedObjectContext;
    friend class MutableOrderedSet;
    friend class RelationshipUpkeep;
    friend class StoreSave;

    enum State : std::uint16_t {
        Inserted = 1,
        Updated = 2,
        Deleted = 4,
        /// Its hooks of awakening have run, and those of turning into a fault have not.
        Awake = 8,
        Fault = 16,
        /// Its relationships were cleaned up after its deletion.
        DeletionPropagated = 32,
        /// Changed since the last round of willSave.
        ChangedInRound = 64,
        /// Outside every context, an object keeps the model alive that describes it.
        HoldsModel = 128,
        /// Inserted or deleted since changes were last processed, and to be undone as such.
        InsertedInBatch = 256,
        DeletedInBatch = 512,
        /// Among the objects whose changes are to be registered for undoing.
        InBatch = 1024,
        /// Inserted by the system for its own sake: it stays after a rollback.
        MadeBySystem = 2048,
        /// A to-one property of another object was led here primitively, without its inverse.
        LinkedOneWay = 4096,
        /// A fault whose values have been read along with others': only its hook has not run.
        ReadAhead = 8192,
    };
    [[nodiscard]] bool has(State state) const noexcept { return (state_ & state) != 0; }
    void set(State state) noexcept { state_ = static_cast<std::uint16_t>(state_ | state); }
    void clear(State state) noexcept { state_ = static_cast<std::uint16_t>(state_ & ~state); }

    void fireFault() const;
    void fetchMembers(const ModelledProperty& toMany) const;
    /// Where the members are, read if they have to be.
    ToManySlot& knownMembers(const ModelledProperty& toMany);
    /// Has the members of a relationship read, or the one object it leads to.
    void knowMembersOf(Key relationship);
    /// Whether its links are those of its row or newer ones.
    [[nodiscard]] bool isRead() const noexcept { return !has(Fault) || has(ReadAhead); }
    /// Whether the number is that of a row.
    [[nodiscard]] bool isStored() const noexcept {
        return creationNumber_ != 0 && creationNumber_ < FirstUnstoredNumber;
    }
    /// Objects that no store has yet come after all that one has.
    static constexpr std::uint64_t FirstUnstoredNumber = std::uint64_t{1} << 62;
    /// From now on it belongs to no context, or to one.
    void goOutside() noexcept;
    void comeHome(const ManagedObjectHome& home) noexcept;
    /// Whether the object is known as changed, and the key's former value is kept wherever it is wanted.
    [[nodiscard]] bool hasNothingToNote(Key key) const noexcept;
    void holdModel() noexcept;
    void dropModel() noexcept;
    [[nodiscard]] const ModelledProperty& requireModelled(Key key) const;
    [[nodiscard]] Value relationshipValue(const ModelledProperty& property) const;

    // In an order that fills the room behind the base's members.
    std::uint16_t state_ = 0;
    std::uint32_t place_ = 0; // among the context's objects of its entity
    const ManagedObjectHome* home_;
    std::uint64_t creationNumber_ = 0;
};

} // namespace estatebook::platform
