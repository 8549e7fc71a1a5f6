// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: how values stand in cells. docs/book-file.md tells the forms; each value has one.

#include "platform/archive/ArchivedClass.hpp"
#include "platform/persistence/ManagedClass.hpp"
#include "platform/persistence/store/sqlite/Cell.hpp"
#include "platform/values/Data.hpp"
#include "platform/values/Value.hpp"

#include <array>
#include <deque>
#include <span>
#include <string>

namespace estatebook::platform::sqlite {

/// Holds the bytes of cells that were made of values, until it is cleared.
class CellRoom {
public:
    [[nodiscard]] std::string_view keep(std::string_view bytes) { return texts_.emplace_back(bytes); }
    void clear() { texts_.clear(); }

private:
    std::deque<std::string> texts_;
};

class CellCoding {
public:
    explicit CellCoding(std::span<const ArchivedClass> classes) noexcept : classes_(classes) {}

    /// Throws a StoreFailure for a value of another type, and for an object that no archive holds. A text stays the
    /// value's.
    [[nodiscard]] Cell encode(const Value& value, AttributeType type, CellRoom& room) const;
    /// Throws a StoreFailure for a cell that `encode` cannot have made.
    [[nodiscard]] Value decode(const Cell& cell, AttributeType type) const;

private:
    [[nodiscard]] Cell encodeObject(const Value& value, CellRoom& room) const;

    std::span<const ArchivedClass> classes_;
};

/// The bytes of a cell that holds nothing but text, in UTF-8. Throws a StoreFailure for another one.
[[nodiscard]] std::string_view textOf(const Cell& cell);
/// Throws a StoreFailure for a cell that holds no whole number.
[[nodiscard]] std::int64_t wholeNumberOf(const Cell& cell);
[[nodiscard]] Cell encodeDate(Date date, CellRoom& room);
[[nodiscard]] Date decodeDate(const Cell& cell);

} // namespace estatebook::platform::sqlite
