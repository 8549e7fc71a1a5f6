// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: what every store holds to, wherever it keeps its rows.

#include "platform/persistence/store/RowShape.hpp"
#include "platform/persistence/store/StoreChanges.hpp"
#include "platform/persistence/store/StoreJournal.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace estatebook::platform::detail {

/// Finds why no store of a model can take changes; what is stored may still speak against them.
class ChangesExaminer {
public:
    /// `lastGiven` is the last key that was given before.
    ChangesExaminer(const StoreChanges& changes, const RowShapes& shapes, RowKey lastGiven) noexcept
        : changes_(changes), shapes_(shapes), lastGiven_(lastGiven), lastKey_(lastGiven) {}

    /// None when all but the inserted rows can be taken.
    [[nodiscard]] std::optional<std::string> refusal();
    /// The same of an inserted row. REQUIRES: asked of each of them, in their order.
    [[nodiscard]] std::optional<std::string> refusalOf(const Row& row);

private:
    [[nodiscard]] bool acceptsAllButInsertions();
    [[nodiscard]] bool accepts(const Row& row);
    [[nodiscard]] bool acceptsUpdate(const RowUpdate& update);
    [[nodiscard]] bool acceptsTexts();
    [[nodiscard]] bool isOurs(const EntityDescription* entity) const;
    [[nodiscard]] bool hasRows(const EntityDescription* entity);
    /// Of a row that is not inserted.
    template <class Change>
    [[nodiscard]] bool names(const Change& change);
    [[nodiscard]] bool isInserted(RowKey key) const;

    bool refuse(std::string reason);
    template <class Change>
    bool refuse(const Change& change, std::string_view reason);
    template <class Change>
    bool refuseValue(const Change& change, Key property);

    const StoreChanges& changes_;
    const RowShapes& shapes_;
    const RowKey lastGiven_;
    RowKey lastKey_;
    std::unordered_set<RowKey> named_;
    std::string reason_;
};

/// Made of random bits: 32 hexadecimal digits.
[[nodiscard]] std::string newStoreIdentifier();

/// The place of a stored attribute among a row's values; none when the entity has no such attribute.
[[nodiscard]] std::optional<std::size_t> storedAttribute(const RowShape& shape, Key name) noexcept;

/// Whether the members' values can be added up.
[[nodiscard]] bool canBeSummed(const AttributeDescription& attribute) noexcept;

// Messages that are the same for all stores.

/// "the Tenure 12"
[[nodiscard]] std::string nameOf(const EntityDescription& entity, RowKey key);
[[nodiscard]] std::string unstoredProperty(const EntityDescription& entity, Key property);
[[nodiscard]] std::string danglingLink(const EntityDescription& entity, RowKey key, RowKey target);
[[nodiscard]] std::string identifierOfNoRow(const EntityDescription& entity, RowKey key);
[[nodiscard]] std::string savedAlready();

/// What the journal and the tables call the place of a link.
[[nodiscard]] std::string placeName(const StoredLink& link);
/// A link as the journal has it: absent when it leads nowhere.
[[nodiscard]] Value targetValue(const RowLink& link) noexcept;
[[nodiscard]] Value placeValue(const RowLink& link) noexcept;

/// Has the row hold what the update says, and tells so in the journal.
void applyUpdate(Row& row, const RowUpdate& update, const RowShape& shape, std::int64_t commit,
                 std::vector<JournalEntry>& journal);
void journalDeletion(const Row& row, const RowShape& shape, std::int64_t commit,
                     std::vector<JournalEntry>& journal);

} // namespace estatebook::platform::detail
