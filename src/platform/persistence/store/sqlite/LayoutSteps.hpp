// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: LayoutSteps: what changed in the rows of a book from one layout to the next.
///
/// A change of the layout raises it by one and adds a step, and a sample of the former one stays in tests/books. A step that
/// halves an amount wherever it stands, in rows and in what the journal tells of them:
///
///     void halve(SteppedRow& row) {
///         if (row.table() == "Transaction") row.set("amount", half(row.cell("amount")));
///         if (row.table() == "book_journal" && row.cell("property").bytes == "amount") …   // row.entity() tells whose
///     }
///     {.from = 3, .bring = halve}

#include "platform/persistence/store/sqlite/BookTables.hpp"
#include "platform/persistence/store/sqlite/Cell.hpp"
#include "platform/persistence/store/sqlite/CellCoding.hpp"

#include <cstdint>
#include <iterator>
#include <map>
#include <span>
#include <string>
#include <string_view>

namespace estatebook::platform::sqlite {

/// A row on its way from layout to layout. Its cells are found by the names of columns, those of rows by what the entity calls its
/// properties.
class SteppedRow {
public:
    using CellsByName = std::map<std::string, Cell, std::less<>>;

    /// REQUIRES: all of them outlive it.
    SteppedRow(std::string_view table, std::string_view entity, CellsByName& cells, CellRoom& room) noexcept
        : table_(table), entity_(entity), cells_(cells), room_(room) {}

    [[nodiscard]] std::string_view table() const noexcept { return table_; }
    /// That of the row, or of the row that an entry of the journal tells of; empty in other tables.
    [[nodiscard]] std::string_view entity() const noexcept { return entity_; }
    /// NULL where there is none.
    [[nodiscard]] Cell cell(std::string_view name) const noexcept {
        const auto found = cells_.find(name);
        return found == cells_.end() ? Cell() : found->second;
    }
    /// The bytes are copied.
    void set(std::string_view name, Cell cell) {
        if (!cell.bytes.empty()) cell.bytes = room_.keep(cell.bytes);
        cells_.insert_or_assign(std::string(name), cell);
    }
    /// Takes it away: what is not taken away must be something that there is in the end.
    Cell take(std::string_view name) {
        const Cell taken = cell(name);
        if (const auto found = cells_.find(name); found != cells_.end()) cells_.erase(found);
        return taken;
    }
    /// The row is no row of the next layout. REQUIRES: nothing leads to it, or the check refuses the book.
    void drop() noexcept { isDropped_ = true; }
    [[nodiscard]] bool isDropped() const noexcept { return isDropped_; }

private:
    std::string_view table_;
    std::string_view entity_;
    CellsByName& cells_;
    CellRoom& room_;
    bool isDropped_ = false;
};

/// An attribute that a layout had, and that the model has no more, or with another type.
struct FormerAttribute {
    std::string_view table;
    std::string_view name;
    AttributeType type{};
};

struct LayoutStep {
    /// The layout that it begins with; it leads to the next one.
    std::uint32_t from = 0;
    std::span<const FormerAttribute> attributes{};
    /// Makes of a row one of the next layout. Null when all rows stay as they are.
    void (*bring)(SteppedRow& row) = nullptr;
};

/// In their order.
inline constexpr LayoutStep ProgramsSteps[] = {
    {.from = 1}, // Layout 2 has indexes over attributes; its rows are those of layout 1.
};
static_assert(std::size(ProgramsSteps) == Layout - 1);

/// Those of the program, or of a test.
struct LayoutSteps {
    std::span<const LayoutStep> steps = ProgramsSteps;
};

} // namespace estatebook::platform::sqlite
