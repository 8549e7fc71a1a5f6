// SPDX-License-Identifier: MIT
#pragma once

/// What a store remembers of its saves: Commit tells of a save as a whole, JournalEntry of one property of one object in it.
///
/// A commit tells which rows it inserted by their keys, which follow one another; what they held at first follows from
/// the entries of later changes, or else is what they hold.

#include "platform/persistence/store/StoreChanges.hpp"

#include <cstdint>
#include <string>

namespace estatebook::platform {

struct Commit {
    /// 1 for the first, and so on without gaps.
    std::int64_t number = 0;
    CommitToken token;
    CommitOrigin origin;
    /// The keys given by the time it was done are those up to `lastKey`; those from `firstKey` on were given to the rows that
    /// it inserted. `firstKey` is beyond `lastKey` when it inserted none.
    RowKey firstKey = NoRow;
    RowKey lastKey = NoRow;
};

struct JournalEntry {
    enum class Kind : std::uint8_t { Insertion = 1, Update = 2, Deletion = 3 };

    std::int64_t commit = 0;
    Kind kind = Kind::Update;
    RowKey key = NoRow;
    /// Null when the row of an insertion is not there any more.
    const EntityDescription* entity = nullptr;
    /// The name of an attribute or a to-one relationship, or that of the relationship followed by ".place". Empty
    /// for an insertion, and for a deletion of a row that held nothing.
    std::string property{};
    /// Links as numbers.
    Value former{};
    Value current{};
};

} // namespace estatebook::platform
