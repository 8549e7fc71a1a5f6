// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: one save of a context's changes to its store. It gives new objects the keys of their rows; when the save does
/// not land they get their former numbers back.

#include "platform/persistence/ChangeJournal.hpp"
#include "platform/persistence/ManagedObject.hpp"
#include "platform/persistence/store/StoreChanges.hpp"

#include <unordered_map>
#include <vector>

namespace estatebook::platform {

class ManagedObjectContext;
class StoredObjects;

class StoreSave {
public:
    /// Collects what has changed; new rows follow `lastKey`.
    StoreSave(ManagedObjectContext& context, StoredObjects& stored, RowKey lastKey);

    [[nodiscard]] const StoreChanges& changes() const noexcept { return changes_; }
    [[nodiscard]] bool isEmpty() const noexcept;

    /// It has not landed, or nobody knows.
    void withdraw() noexcept;
    /// Nobody knows, and it is to be told later what was saved.
    void keepOrders();
    /// It has landed.
    void adopt();
    /// The objects that it inserted or changed.
    [[nodiscard]] const std::vector<Ref<ManagedObject>>& saved() const noexcept { return saved_; }
    [[nodiscard]] const std::vector<Ref<ManagedObject>>& deleted() const noexcept { return deleted_; }
    /// What it gave an object's row. REQUIRES: it has landed after all, and the object is one of those saved.
    [[nodiscard]] FormerValues savedValues(ManagedObject& object) const;

private:
    void collect();
    void insert(const Ref<ManagedObject>& object, RowKey key);
    void update(ManagedObject& object);
    void updateOrder(ManagedObject& owner, const ModelledProperty& ordered, const Value& former);
    void keepLink(ManagedObject& object, const ModelledProperty& toOne, const RowLink& saved,
                  FormerValues& values) const;
    RowUpdate& updateOf(ManagedObject& object);
    void changeLink(ManagedObject& object, const ModelledProperty& toOne);

    ManagedObjectContext& context_;
    StoredObjects& stored_;
    StoreChanges changes_;
    std::vector<Ref<ManagedObject>> saved_;
    std::vector<Ref<ManagedObject>> deleted_;
    /// Of the first ones of those saved: the numbers they have while they are in no store.
    std::vector<std::uint64_t> formerNumbers_;
    /// The members of ordered relationships.
    std::unordered_map<const ManagedObject*, std::vector<FormerValue>> orders_;
    /// The place of an object's update.
    std::unordered_map<const ManagedObject*, std::size_t> updates_;
};

/// Whether a store would keep the two in the same way.
[[nodiscard]] bool areStoredAlike(const Value& a, const Value& b) noexcept;

} // namespace estatebook::platform
