// SPDX-License-Identifier: MIT
#pragma once

/// Store: where the objects of a book are kept as rows, in memory, in a file or elsewhere.
///
/// A store knows rows, keys and versions; it knows nothing of contexts, hooks and live objects. What it is asked for comes in
/// batches, so that it may be far away. What it is given to keep comes as one change set, which lands as a whole or not
/// at all:
///
///     StoreChanges changes{.token = CommitToken::random(), .origin = {Clock::now(), "Ada", "estatebook", "pay"}};
///     changes.updates.push_back({key, &entity, row.version, {{amount, Decimal(20)}}, {}});
///     auto outcome = store->save(changes);
///     if (!outcome) …                 // told why; nothing was changed
///     else if (!outcome->landed()) …  // outcome->conflicts: the rows that somebody else has changed
///
/// The trap: StoreErrorCode::OutcomeUnknown. The save may have landed; `hasLanded` tells once the store can be reached
/// again. Saving the same changes another time without asking may keep them twice.
///
/// Used on one thread. Errors are values; only what a visitor raises leaves as an exception, and sums raise as adding does.

#include "platform/persistence/Predicate.hpp"
#include "platform/persistence/store/Row.hpp"
#include "platform/persistence/store/RowShape.hpp"
#include "platform/persistence/store/StoreChanges.hpp"
#include "platform/persistence/store/StoreError.hpp"
#include "platform/persistence/store/StoreJournal.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/Object.hpp"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::platform {

class ManagedObjectModel;

struct StoreCapabilities {
    /// Whether rows outlive the process.
    bool isPersistent = false;
    /// Whether rows may be saved.
    bool isWritable = true;
    /// Whether others may save while it is open, so that conflicts are to be reckoned with.
    bool isShared = false;
    /// How many neighbours are worth reading with a row that is needed.
    std::size_t batchSize = 64;
};

class ESTATEBOOK_API Store : public Object {
public:
    using RowVisitor = std::function<void(const Row&)>;
    using Metadata = std::map<std::string, std::string, std::less<>>;

    /// "InMemory", "SQLite".
    [[nodiscard]] virtual std::string_view type() const noexcept = 0;
    /// Where it is kept; empty when nowhere.
    [[nodiscard]] virtual std::string_view location() const noexcept = 0;
    /// Made with the store, and unlike that of any other.
    [[nodiscard]] virtual std::string_view identifier() const noexcept = 0;
    [[nodiscard]] virtual StoreCapabilities capabilities() const noexcept = 0;
    [[nodiscard]] const ManagedObjectModel& model() const noexcept { return *model_; }
    [[nodiscard]] const RowShapes& shapes() const noexcept { return shapes_; }

    /// The greatest key that ever was given to a row; NoRow before the first.
    [[nodiscard]] virtual StoreResult<RowKey> lastKey() const = 0;

    /// The rows of an entity and its sub-entities that match, in the order of their creation. A predicate is about a stored
    /// attribute (Unsupported otherwise), with the equality of values. Without one no row is read, so that damage to one is
    /// found out later.
    [[nodiscard]] virtual StoreResult<std::vector<RowKey>>
    fetchKeys(const EntityDescription& entity, const std::optional<Predicate>& predicate = {}) const = 0;
    /// The same, as rows; gives their number. The row is the visitor's only during the call. REQUIRES: the visitor
    /// does not use the store.
    virtual StoreResult<std::size_t> fetchRows(const EntityDescription& entity,
                                               const std::optional<Predicate>& predicate,
                                               const RowVisitor& visitor) const = 0;
    /// The rows of these keys, in the order of the keys, as far as they are there. REQUIRES: keys of rows whose
    /// entity is of one root with `entity`. Keys that grow and lie close together are read at once.
    virtual StoreResult<std::size_t> visitRows(const EntityDescription& entity, std::span<const RowKey> keys,
                                               const RowVisitor& visitor) const = 0;
    [[nodiscard]] StoreResult<std::vector<Row>> rows(const EntityDescription& entity,
                                                     std::span<const RowKey> keys) const;

    /// The members of each owner, at the owner's place: in the relationship's order, else in that of their creation.
    /// REQUIRES: a to-many relationship of the model.
    [[nodiscard]] virtual StoreResult<std::vector<std::vector<RowKey>>>
    members(const RelationshipDescription& toMany, std::span<const RowKey> owners) const = 0;
    /// The sum of a decimal or number attribute over an owner's members but those excepted; members without a value
    /// count as zero. Raises as adding does. REQUIRES: a to-many relationship; exceptions that grow.
    [[nodiscard]] virtual StoreResult<Decimal> sum(const RelationshipDescription& toMany, RowKey owner,
                                                   Key attribute,
                                                   std::span<const RowKey> exceptions = {}) const = 0;

    /// Lands as a whole or not at all. Versions that are not the store's come as the outcome. InvalidChange: what rows of
    /// the model cannot hold, a key that was given before, a link that leads nowhere, a deleted row that another still
    /// leads to, and a token that was used.
    virtual StoreResult<SaveOutcome> save(const StoreChanges& changes) = 0;
    /// Whether the save of this token landed.
    [[nodiscard]] virtual StoreResult<bool> hasLanded(const CommitToken& token) = 0;

    /// From here to `endReading`, or to a save, reads keep their hold on what they read from, so that each of many costs less.
    /// Calls nest. A hint: there is nothing to be told when it cannot be had. Held for long, it keeps others from saving. See
    /// StoreReading.
    virtual void beginReading() noexcept {}
    virtual void endReading() noexcept {}

    /// What documents called the rows of these keys, each at its key's place.
    [[nodiscard]] virtual StoreResult<std::vector<std::optional<std::string>>>
    identifiers(std::span<const RowKey> keys) const = 0;
    /// What was kept by MetadataChange.
    [[nodiscard]] virtual StoreResult<Metadata> metadata() const = 0;

    /// All saves, the first one first.
    [[nodiscard]] virtual StoreResult<std::vector<Commit>> commits() const = 0;
    /// All that happened to a row since it was inserted, in order. REQUIRES: an entity of one root with the row's.
    [[nodiscard]] virtual StoreResult<std::vector<JournalEntry>> journalOfRow(const EntityDescription& entity,
                                                                              RowKey key) const = 0;
    /// What a commit changed and deleted, in the order of keys.
    [[nodiscard]] virtual StoreResult<std::vector<JournalEntry>>
    journalOfCommit(std::int64_t number) const = 0;

protected:
    explicit Store(Ref<ManagedObjectModel> model);
    ~Store() override;

    [[nodiscard]] StoreError failure(StoreErrorCode code, std::string message) const;

private:
    Ref<ManagedObjectModel> model_;
    const RowShapes& shapes_;
};

} // namespace estatebook::platform
