// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: BookWriter: one save into a book file.

#include "platform/persistence/store/StoreChanges.hpp"
#include "platform/persistence/store/sqlite/BookFile.hpp"

#include <unordered_map>
#include <vector>

namespace estatebook::platform::sqlite {

class BookWriter {
public:
    BookWriter(BookFile& file, const StoreChanges& changes) : file_(file), changes_(changes) {}

    /// Throws a StoreFailure.
    [[nodiscard]] SaveOutcome save();

private:
    /// How many rows of a table come or go, and what that does to the sum of their digests.
    struct Change {
        std::int64_t rows = 0;
        std::uint64_t digests = 0;
    };

    /// All but the commit itself; true when there are no conflicts.
    [[nodiscard]] bool prepare(SaveOutcome& outcome);
    [[nodiscard]] SaveOutcome settle(const StoreFailure& failure);

    [[nodiscard]] std::vector<StoreConflict> conflicts();
    [[nodiscard]] std::optional<Row> storedRow(const EntityDescription& entity, RowKey key);
    [[nodiscard]] StoreFailure danglingLink();
    [[nodiscard]] StoreFailure danglingLinkOf(const Row& row);

    void insert(const Row& row);
    void update(const RowUpdate& update);
    void remove(const RowDeletion& deletion);
    void identify(const RowIdentifier& identifier);
    void describe(const MetadataChange& metadata);
    void writeJournal();
    void writeCommit(RowKey lastKey);
    void writeSums();

    void insertCells(const SealedTable& table, const Cells& cells);
    void replaceCells(const SealedTable& table, const Cells& former, const Cells& cells);
    void removeCells(const SealedTable& table, const Cells& former);
    /// The cells of a row that is known to be there, with their bytes in the room.
    [[nodiscard]] Cells presentCells(const EntityTable& table, RowKey key);
    // Into the cells of the row that is made.
    void set(const EntityDescription& entity, std::size_t attribute, const Value& value);
    void link(const EntityColumns::Link& place, const RowLink& link);

    BookFile& file_;
    const StoreChanges& changes_;
    std::int64_t number_ = 0;
    RowKey lastKey_ = NoRow;
    CellRoom room_;
    Cells cells_;
    std::unordered_map<const SealedTable*, Change> sums_;
    std::vector<JournalEntry> journal_;
};

} // namespace estatebook::platform::sqlite
