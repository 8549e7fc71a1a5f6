// SPDX-License-Identifier: MIT
#pragma once

/// InMemoryStore: a store that lives as long as it is held. It keeps the very objects that it is given.
///
/// It is plain on purpose: what it answers is what every other store has to answer. Finding members takes time linear in the
/// rows of their entity.

#include "platform/persistence/store/Store.hpp"

#include <map>
#include <string>
#include <vector>

namespace estatebook::platform {

class ESTATEBOOK_API InMemoryStore final : public Store {
public:
    /// An empty one. REQUIRES: a model.
    [[nodiscard]] static Ref<InMemoryStore> make(Ref<ManagedObjectModel> model);

    [[nodiscard]] std::string_view type() const noexcept override { return "InMemory"; }
    [[nodiscard]] std::string_view location() const noexcept override { return {}; }
    [[nodiscard]] std::string_view identifier() const noexcept override { return identifier_; }
    [[nodiscard]] StoreCapabilities capabilities() const noexcept override { return {}; }
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "InMemoryStore"; }

    [[nodiscard]] StoreResult<RowKey> lastKey() const override { return lastKey_; }
    [[nodiscard]] StoreResult<std::vector<RowKey>>
    fetchKeys(const EntityDescription& entity, const std::optional<Predicate>& predicate = {}) const override;
    StoreResult<std::size_t> fetchRows(const EntityDescription& entity,
                                       const std::optional<Predicate>& predicate,
                                       const RowVisitor& visitor) const override;
    StoreResult<std::size_t> visitRows(const EntityDescription& entity, std::span<const RowKey> keys,
                                       const RowVisitor& visitor) const override;
    [[nodiscard]] StoreResult<std::vector<std::vector<RowKey>>>
    members(const RelationshipDescription& toMany, std::span<const RowKey> owners) const override;
    [[nodiscard]] StoreResult<Decimal> sum(const RelationshipDescription& toMany, RowKey owner, Key attribute,
                                           std::span<const RowKey> exceptions = {}) const override;
    StoreResult<SaveOutcome> save(const StoreChanges& changes) override;
    [[nodiscard]] StoreResult<bool> hasLanded(const CommitToken& token) override;
    [[nodiscard]] StoreResult<std::vector<std::optional<std::string>>>
    identifiers(std::span<const RowKey> keys) const override;
    [[nodiscard]] StoreResult<Metadata> metadata() const override { return metadata_; }
    [[nodiscard]] StoreResult<std::vector<Commit>> commits() const override { return commits_; }
    [[nodiscard]] StoreResult<std::vector<JournalEntry>> journalOfRow(const EntityDescription& entity,
                                                                      RowKey key) const override;
    [[nodiscard]] StoreResult<std::vector<JournalEntry>> journalOfCommit(std::int64_t number) const override;

private:
    using Rows = std::map<RowKey, Row>;

    explicit InMemoryStore(Ref<ManagedObjectModel> model);

    /// The rows of all entities that have their root in common with this one.
    [[nodiscard]] const Rows& rowsOf(const EntityDescription& entity) const noexcept;
    [[nodiscard]] Rows& rowsOf(const EntityDescription& entity) noexcept;
    [[nodiscard]] const Row* find(const EntityDescription& entity, RowKey key) const noexcept;
    [[nodiscard]] std::vector<StoreConflict> conflictsOf(const StoreChanges& changes) const;
    [[nodiscard]] std::optional<std::string> brokenBy(const StoreChanges& changes) const;
    void apply(const StoreChanges& changes);

    std::string identifier_;
    RowKey lastKey_ = NoRow;
    /// At the places of the root entities.
    std::vector<Rows> rows_;
    std::map<RowKey, std::string> identifiers_;
    Metadata metadata_;
    std::vector<Commit> commits_;
    std::vector<JournalEntry> journal_;
};

} // namespace estatebook::platform
