// SPDX-License-Identifier: MIT
#pragma once

/// KeyedUnarchiver: reads what a KeyedArchiver wrote.
///
///     Ref<Error> error;
///     Value root = KeyedUnarchiver::unarchivedObject(bytes, {&TKTagNames::archivedClass(), 1}, &error);
///     if (error) …
///
/// Bytes may come from anywhere: objects of classes that were not handed over, that contain themselves or that miss
/// something give an error, in time and memory linear in the bytes. What would take more than that, as a set of very
/// many collections, which have to be compared with one another, is refused beyond a fixed amount of work.
///
/// The trap: an absent root is a fine archive, and so is an absent result without an error.

#include "platform/archive/ArchivedClass.hpp"
#include "platform/values/Dictionary.hpp"
#include "platform/values/Error.hpp"
#include "platform/values/Value.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace estatebook::platform {

class ESTATEBOOK_API KeyedUnarchiver {
public:
    KeyedUnarchiver(const KeyedUnarchiver&) = delete;
    KeyedUnarchiver& operator=(const KeyedUnarchiver&) = delete;

    /// unarchivedObjectFromData:
    /// The root; absent, with a reason, when it cannot be read.
    [[nodiscard]] static Value unarchivedObject(std::span<const std::byte> bytes,
                                                std::span<const ArchivedClass> classes = {},
                                                Ref<Error>* error = nullptr);

    /// containsValueForKey:
    [[nodiscard]] bool containsValueForKey(std::string_view key) const;
    /// decodeObject
    /// What was encoded without a key, in the same order; absent when there is no more.
    [[nodiscard]] Value decodeObject();
    /// decodeObjectForKey:
    /// Absent when there is nothing under the key.
    [[nodiscard]] Value decodeObjectForKey(std::string_view key);
    /// The list of objects under the key; none when there is nothing. Raises when there is something else.
    [[nodiscard]] std::optional<std::vector<Value>> decodeObjectsForKey(std::string_view key);
    /// decodeBoolForKey:, decodeIntegerForKey:, decodeDoubleForKey:, decodeBytesForKey:
    /// The number or the data in the object itself; absent when there is nothing under the key. Raises when there is
    /// something else.
    [[nodiscard]] Value decodePlainForKey(std::string_view key) const;

    /// Says that the members are going to be compared with one another, as those of a set. Raises when they are too many
    /// or too large for that. REQUIRES: all of them decoded here.
    void requireComparable(std::span<const Value> members);
    /// Says that decoding takes so many steps, such as bytes to copy, for something that the archive may hold once and
    /// mention often. Raises when it is too much for the whole archive.
    void requireWork(std::uint64_t steps);

private:
    class Graph;
    KeyedUnarchiver(Graph& graph, Ref<Dictionary> entry) noexcept;
    [[nodiscard]] Value object(const Value& reference);

    // Each object that is decoded has an unarchiver of its own; they share the graph.
    Graph& graph_;
    Ref<Dictionary> entry_;
    std::size_t keylessObjects_ = 0;
    std::uint64_t weight_ = 1; // the steps of comparing the object with another
};

} // namespace estatebook::platform
