// SPDX-License-Identifier: MIT
#pragma once

/// Row: one object as a store keeps it.

#include "platform/values/Value.hpp"

#include <compare>
#include <cstdint>
#include <vector>

namespace estatebook::platform {

class EntityDescription;

/// Names a row for good. All rows of a book are numbered in one series from 1 on, in the order of their creation; a number
/// is never used again.
using RowKey = std::int64_t;
/// No row.
inline constexpr RowKey NoRow = 0;

/// Where a to-one relationship leads.
struct RowLink {
    RowKey target = NoRow;
    /// The place among the target's members, counted from 0, where its side of the relationship is ordered; else 0.
    std::int64_t place = 0;

    friend auto operator<=>(const RowLink&, const RowLink&) = default;
};

/// What stands at which place of the two lists is told by RowShape.
struct Row {
    RowKey key = NoRow;
    const EntityDescription* entity = nullptr;
    /// 1 when the row was inserted, one more with each update.
    std::int64_t version = 0;
    /// In the order of the entity's attributes; transient ones are absent.
    std::vector<Value> values{};
    /// In the order of the entity's to-one relationships.
    std::vector<RowLink> links{};
};

} // namespace estatebook::platform
