// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: one save of a context's changes to its store. It gives new objects the keys of their rows; when the save does
/// not land they get their former numbers back.

#include "platform/persistence/ChangeJournal.hpp"
#include "platform/persistence/ManagedObject.hpp"
#include "platform/persistence/store/StoreChanges.hpp"
#include "platform/persistence/store/StoreError.hpp"

#include <optional>
#include <unordered_map>
#include <vector>

namespace estatebook::platform {

class ManagedObjectContext;
class StoredObjects;

class StoreSave {
public:
    /// Collects what has changed; new rows follow `lastKey`, and are made while they are saved.
    StoreSave(ManagedObjectContext& context, StoredObjects& stored, RowKey lastKey);

    [[nodiscard]] const StoreChanges& changes() const noexcept { return changes_; }
    [[nodiscard]] bool isEmpty() const noexcept;

    /// It has not landed.
    void withdraw() noexcept;
    /// Nobody knows, and it is to be told later what was saved. Raises std::bad_alloc after it has been withdrawn.
    void withdrawUnknown();
    /// It has landed, and it is to be told what was saved: that of new rows is asked of the store unless there was memory to
    /// keep them.
    [[nodiscard]] std::optional<StoreError> recallRows();
    /// It has landed.
    void adopt();
    /// The objects that it inserted or changed.
    [[nodiscard]] const std::vector<Ref<ManagedObject>>& saved() const noexcept { return saved_; }
    [[nodiscard]] const std::vector<Ref<ManagedObject>>& deleted() const noexcept { return deleted_; }
    /// What it gave an object's row. REQUIRES: it has landed after all, and the object is one of those saved.
    [[nodiscard]] FormerValues savedValues(ManagedObject& object) const;

private:
    void collect();
    void keepRows();
    void keepOrders();
    void makeRow(ManagedObject& object, Row& row) const;
    [[nodiscard]] RowKey keyOfInserted(std::size_t place) const noexcept {
        return lastKey_ + 1 + static_cast<RowKey>(place);
    }
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
    const RowKey lastKey_;
    /// What was saved of those inserted, at their places; fewer than those until it is known of all.
    std::vector<Row> rows_;
    /// The place of an object's update.
    std::unordered_map<const ManagedObject*, std::size_t> updates_;
};

/// Whether a store would keep the two in the same way.
[[nodiscard]] bool areStoredAlike(const Value& a, const Value& b) noexcept;

} // namespace estatebook::platform
