// SPDX-License-Identifier: MIT
#pragma once

/// StoreChanges: all that one save does to a store, and SaveOutcome: what became of it.

#include "platform/persistence/store/CommitToken.hpp"
#include "platform/persistence/store/InsertedRows.hpp"
#include "platform/persistence/store/Row.hpp"
#include "platform/values/Date.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace estatebook::platform {

/// Who saves, and when. It stands in the journal.
struct CommitOrigin {
    Date when;
    std::string author;
    std::string program;
    /// What the program was told to do; empty when it is no matter of a single command.
    std::string command;
};

struct ChangedValue {
    /// The attribute's place, as RowShape tells it.
    std::size_t attribute = 0;
    Value value;
};

struct ChangedLink {
    std::size_t link = 0;
    RowLink target;
};

struct RowUpdate {
    RowKey key = NoRow;
    const EntityDescription* entity = nullptr;
    /// The one that was read. Another one in the store is a conflict.
    std::int64_t version = 0;
    std::vector<ChangedValue> values{};
    std::vector<ChangedLink> links{};
};

struct RowDeletion {
    RowKey key = NoRow;
    const EntityDescription* entity = nullptr;
    std::int64_t version = 0;
};

/// What a document called an object. It goes with the row.
struct RowIdentifier {
    RowKey key = NoRow;
    const EntityDescription* entity = nullptr;
    /// None takes the identifier away.
    std::optional<std::string> identifier;
};

struct MetadataChange {
    std::string name;
    /// None takes the entry away.
    std::optional<std::string> value;
};

struct StoreChanges {
    CommitToken token;
    CommitOrigin origin;
    /// With keys beyond the last one given, growing; their version is not looked at.
    InsertedRows insertions{};
    std::vector<RowUpdate> updates{};
    std::vector<RowDeletion> deletions{};
    /// Of rows that are there afterwards.
    std::vector<RowIdentifier> identifiers{};
    std::vector<MetadataChange> metadata{};
};

/// A row that is not what the save took it for.
struct StoreConflict {
    RowKey key = NoRow;
    const EntityDescription* entity = nullptr;
    std::int64_t expectedVersion = 0;
    /// What the store holds now; none when the row is gone.
    std::optional<Row> stored;
};

struct SaveOutcome {
    /// None when the save landed; else nothing was changed.
    std::vector<StoreConflict> conflicts;

    [[nodiscard]] bool landed() const noexcept { return conflicts.empty(); }
};

} // namespace estatebook::platform
