// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: LayoutSteps: what changed in the rows of a book from one layout to the next.

#include "platform/persistence/store/sqlite/BookTables.hpp"
#include "platform/persistence/store/sqlite/Cell.hpp"

#include <cstdint>
#include <iterator>
#include <vector>

namespace estatebook::platform::sqlite {

struct LayoutStep {
    /// The layout that it begins with; it leads to the next one.
    std::uint32_t from = 0;
    /// Makes of the cells of a row those of the next layout, the table being as it stands in the book.
    void (*bring)(const SealedTable& table, std::vector<Cell>& cells) = nullptr;
};

/// In their order. A change of the layout raises it by one and adds a step, and a sample of the former one stays in tests/books.
inline constexpr LayoutStep LayoutSteps[] = {
    // Layout 2 has indexes over attributes; its rows are those of layout 1.
    {.from = 1, .bring = [](const SealedTable&, std::vector<Cell>&) {}},
};
static_assert(std::size(LayoutSteps) == Layout - 1);

} // namespace estatebook::platform::sqlite
