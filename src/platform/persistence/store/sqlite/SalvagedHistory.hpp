// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: SalvagedHistory: makes saves and journal agree again of what could be read of them.

#include "platform/persistence/store/sqlite/BookFile.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>

namespace estatebook::platform::sqlite {

class SalvagedHistory {
public:
    /// By their numbers.
    using Rows = std::map<std::int64_t, Cells>;
    using Loser = std::function<void(std::string)>;

    /// REQUIRES: rows that are each as a book has them; all that is referred to outlives it.
    SalvagedHistory(const BookFile& form, const CommitOrigin& origin, CellRoom& room, Rows& commits,
                    Rows& journal, Loser lose)
        : form_(form), origin_(origin), room_(room), commits_(commits), journal_(journal),
          lose_(std::move(lose)) {}

    /// Numbers the saves from 1 on without gaps, in their order, and the entries under them; entries of a save that is lost get a
    /// stand-in for it, made by the origin. A last save by the origin tells that no key is free up to that of the last
    /// row, or the last one that anything tells of.
    void mend(RowKey lastRow);

private:
    /// By the number of a save that is lost: how many entries tell of it.
    using LostSaves = std::map<std::int64_t, std::size_t>;

    [[nodiscard]] LostSaves sortOutEntries(RowKey& lastKey);
    /// Gives the last key that they gave.
    RowKey mendKeys(const LostSaves& lost);
    void numberAnew();
    [[nodiscard]] Cells commitOf(std::int64_t number, RowKey lastKey);

    const BookFile& form_;
    const CommitOrigin& origin_;
    CellRoom& room_;
    Rows& commits_;
    Rows& journal_;
    Loser lose_;
};

} // namespace estatebook::platform::sqlite
