// SPDX-License-Identifier: MIT
#pragma once

/// Which keys a derived key is computed from, written one row a key, and their transitive closure, computed
/// by the compiler.
///
///     constexpr std::array rows{
///         DependencyRow{keys::endDate, {keys::currentDate}},
///         DependencyRow{keys::numberOfDays, {keys::startDate, keys::endDate}},
///     };
///     constexpr auto closure = closureOf(rows);      // currentDate: endDate, numberOfDays; …
///
/// A cycle among the library's own rows does not compile. Rows that applications add at run time may form
/// cycles; they end (ClassDescription.hpp).

#include "platform/observation/Key.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

namespace estatebook::platform {

struct DependencyRow {
    static constexpr std::size_t MaximalAffecting = 6;

    Key dependent;
    std::array<Key, MaximalAffecting> affectingKeys{};
    std::size_t count = 0;

    constexpr DependencyRow() noexcept = default;
    constexpr DependencyRow(Key key, std::initializer_list<Key> affecting) : dependent(key) {
        if (affecting.size() > MaximalAffecting) throw "a row affects more keys than it has room for";
        for (const Key each : affecting) affectingKeys[count++] = each;
    }

    [[nodiscard]] constexpr std::span<const Key> affecting() const noexcept {
        return {affectingKeys.data(), count};
    }
    [[nodiscard]] constexpr bool isAffectedBy(Key key) const noexcept {
        for (const Key each : affecting())
            if (each == key) return true;
        return false;
    }
};

namespace detail {

/// The keys that follow from `key`, breadth first in the order of the rows. Returns how many there are.
template <std::size_t N>
constexpr std::size_t followDependencies(const DependencyRow* rows, std::size_t count, Key key,
                                         std::array<Key, N>& found) {
    std::size_t size = 0;
    const auto visit = [&](Key cause) {
        for (std::size_t row = 0; row < count; ++row) {
            if (!rows[row].isAffectedBy(cause)) continue;
            if (rows[row].dependent == key) throw "the dependencies of a key lead back to it";
            bool known = false;
            for (std::size_t index = 0; index < size; ++index)
                known = known || found[index] == rows[row].dependent;
            if (!known) found[size++] = rows[row].dependent;
        }
    };
    visit(key);
    for (std::size_t index = 0; index < size; ++index) visit(found[index]);
    return size;
}

} // namespace detail

/// The keys that depend on a key: nearest first and each once, and as a set.
struct DependentKeys {
    std::span<const Key> keys;
    KeySet set;

    [[nodiscard]] constexpr bool contains(Key key) const noexcept {
        return set.mayContain(key) && (KeySet::isExact(key) || std::ranges::find(keys, key) != keys.end());
    }
};

/// Where a closure keeps the dependents of a key: its row of keys and its set.
struct DependentsPlace {
    std::uint16_t first = 0;
    std::uint16_t count = 0;
    std::uint16_t set = 0;
};
/// A closure of whatever size, to look dependents up in.
struct DependentsTable {
    const DependentsPlace* places;
    const Key* keys;
    const KeySet* sets;

    [[nodiscard]] constexpr DependentKeys find(Key key) const noexcept {
        if (key.number() >= SmallKeys) return {};
        const DependentsPlace& place = places[key.number()];
        return {{keys + place.first, place.count}, sets[place.set]};
    }
};

/// The closure of N rows: for each affecting key the keys that depend on it, directly or through others,
/// nearest first and each once.
template <std::size_t N>
struct Closure {
    std::array<DependentsPlace, SmallKeys> places{};
    std::array<Key, N * N * DependencyRow::MaximalAffecting + 1> flat{};
    std::array<KeySet, N * DependencyRow::MaximalAffecting + 1> sets{}; // the first is empty

    [[nodiscard]] constexpr DependentsTable table() const noexcept {
        return {places.data(), flat.data(), sets.data()};
    }
    [[nodiscard]] constexpr std::span<const Key> dependentsOf(Key key) const noexcept {
        const DependentsPlace place = key.number() < SmallKeys ? places[key.number()] : DependentsPlace();
        return {flat.data() + place.first, place.count};
    }
};

template <std::size_t N>
consteval Closure<N> closureOf(const std::array<DependencyRow, N>& rows) {
    Closure<N> closure;
    std::size_t used = 0;
    std::uint16_t setsUsed = 0;
    for (const DependencyRow& row : rows) {
        for (const Key key : row.affecting()) {
            DependentsPlace& place = closure.places[key.number()];
            if (place.count > 0) continue;
            std::array<Key, N> found{};
            const std::size_t count = detail::followDependencies(rows.data(), N, key, found);
            place.first = static_cast<std::uint16_t>(used);
            place.count = static_cast<std::uint16_t>(count);
            place.set = ++setsUsed;
            for (std::size_t index = 0; index < count; ++index) {
                closure.flat[used++] = found[index];
                closure.sets[place.set].insert(found[index]);
            }
        }
    }
    return closure;
}

/// The rows of a class behind those it inherits.
template <std::size_t N, std::size_t M>
consteval std::array<DependencyRow, N + M> withInherited(const std::array<DependencyRow, N>& inherited,
                                                         const std::array<DependencyRow, M>& own) {
    std::array<DependencyRow, N + M> rows;
    for (std::size_t index = 0; index < N; ++index) rows[index] = inherited[index];
    for (std::size_t index = 0; index < M; ++index) rows[N + index] = own[index];
    return rows;
}

} // namespace estatebook::platform
