// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: EarlierForm: how rows stand in a book that an earlier program wrote, and what they are in a book of today.
///
/// An earlier program knew fewer entities and attributes, numbered entities otherwise, or wrote an earlier layout. Entities and
/// attributes that were added since follow from the book's own tables; whatever else changed from one layout to the next
/// has a step in LayoutSteps.

#include "platform/persistence/store/sqlite/BookFile.hpp"
#include "platform/persistence/store/sqlite/LayoutSteps.hpp"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace estatebook::platform::sqlite {

class EarlierForm {
public:
    /// Learns it from the book. Throws a StoreFailure: Newer for a book that knows what the model does not, Damaged for one
    /// whose tables no program made so. REQUIRES: the tables and the model outlive it.
    EarlierForm(Connection& connection, std::uint32_t layout, const BookTables& tables,
                const RowShapes& shapes, const ManagedObjectModel& model, LayoutSteps steps);

    /// How a table of today stands in the book; null when it is not there.
    [[nodiscard]] const SealedTable* stored(const SealedTable& today) const noexcept;
    /// Makes of the cells of a row in the book those of today's, with new bytes in the room; false when it is no row any more.
    /// REQUIRES: the row agrees with its digest. Throws a StoreFailure for one that no program wrote.
    [[nodiscard]] bool bring(const SealedTable& today, const Cells& stored, Cells& cells,
                             CellRoom& room) const;

private:
    /// A table of rows in the book.
    struct StoredRows {
        EntityTable table;
        /// Where the cells of a row of an entity stand today; none where it has no such property.
        std::map<const EntityDescription*, std::vector<std::optional<std::size_t>>> places{};
        /// Where an entity's properties stand today, by their names.
        std::map<const EntityDescription*, std::map<std::string, std::size_t, std::less<>>> names{};
    };
    /// Names of tables and indexes, and what made them.
    using Schema = std::multimap<std::string, std::string, std::less<>>;

    static Schema schemaOf(Connection& connection);
    void learnEntities(Connection& connection, const ManagedObjectModel& model);
    void learnTable(const EntityTable& today, const std::string& sql, const RowShapes& shapes);
    void requireNothingElse(const Schema& schema) const;
    /// What a column of the book is today; none for one that no program makes.
    [[nodiscard]] std::optional<Column> columnOf(const EntityTable& today, std::string_view name,
                                                 std::string_view type, const RowShapes& shapes) const;
    /// The one that rows name by this number.
    [[nodiscard]] const EntityDescription& entityOf(std::int64_t stored) const;
    /// As `bring`, for the tables of rows and those beside them.
    void bringRow(const SealedTable& today, const StoredRows& rows, const Cells& stored, Cells& cells) const;
    [[nodiscard]] bool step(const SealedTable& today, const Cells& stored, Cells& cells,
                            CellRoom& room) const;

    std::uint32_t layout_;
    const BookTables& tables_;
    /// From the book's layout on.
    std::vector<LayoutStep> steps_;
    /// By the numbers that the book gives them, from 1 on.
    std::vector<const EntityDescription*> entities_;
    std::unordered_map<const SealedTable*, StoredRows> rows_;
};

} // namespace estatebook::platform::sqlite
