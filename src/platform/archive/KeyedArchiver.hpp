// SPDX-License-Identifier: MIT
#pragma once

/// KeyedArchiver: a graph of objects as bytes that a KeyedUnarchiver turns into the like graph.
///
///     Ref<Error> error;
///     Ref<Data> bytes = KeyedArchiver::archivedData(tagNames, {&TKTagNames::archivedClass(), 1}, &error);
///
/// Absent values, texts, numbers of every kind, decimals, dates, data, arrays, sets, ordered sets, dictionaries, attributed
/// strings and the null object can always be written, other objects by the classes that are handed over. An object
/// that is reached twice is written once.
///
/// The archive is a binary property list: a dictionary with a list of all objects, in which each object is a dictionary of
/// what it encoded, and UIDs stand for objects. (Texts, data, numbers but decimals stand for themselves.)
///
/// What an object's class encodes without a key goes under "$0", "$1", … in turn, counted anew for each object. Keys of its
/// own that begin with "$" are written with a second one in front.

#include "platform/archive/ArchivedClass.hpp"
#include "platform/values/Data.hpp"
#include "platform/values/Error.hpp"
#include "platform/values/Value.hpp"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace estatebook::platform {

class ESTATEBOOK_API KeyedArchiver {
public:
    KeyedArchiver(const KeyedArchiver&) = delete;
    KeyedArchiver& operator=(const KeyedArchiver&) = delete;

    /// archivedDataWithRootObject:
    /// Null, with a reason, when there is an object of another class, a text that is not well formed, an object
    /// that contains itself, or more collections in one another than DeepestArchive.
    [[nodiscard]] static Ref<Data>
    archivedData(const Value& root, std::span<const ArchivedClass> classes = {}, Ref<Error>* error = nullptr);

    /// encodeObject:
    /// Under the next key of the object's own.
    void encodeObject(const Value& object);
    /// encodeObject:forKey:
    /// What is encoded under a key that is in use takes its place.
    void encodeObjectForKey(const Value& object, std::string_view key);
    /// A list of objects under one key.
    void encodeObjectsForKey(std::span<const Value> objects, std::string_view key);
    /// encodeBool:forKey:, encodeInteger:forKey:, encodeDouble:forKey:, encodeBytes:length:forKey:
    /// A number or data in the object itself.
    void encodePlainForKey(const Value& plain, std::string_view key);

private:
    class Graph;
    explicit KeyedArchiver(Graph& graph) noexcept : graph_(graph) {}

    // Each object that is encoded has an archiver of its own; they share the graph.
    Graph& graph_;
    std::vector<Dictionary::Entry> entries_;
    std::size_t keylessObjects_ = 0;
};

} // namespace estatebook::platform
