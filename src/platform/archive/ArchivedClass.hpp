// SPDX-License-Identifier: MIT
#pragma once

/// ArchivedClass: how the objects of one class stand in an archive.
///
/// A class that can be archived has one, and whoever writes or reads archives hands over those of his classes. Nothing in an
/// archive can make objects of another class.
///
///     constexpr std::string_view Names[] = {"EstateBook_Model.TKTagNames", "NSObject"};
///     const ArchivedClass TagNames{
///         Names[0], Names,
///         [](const Value& names, KeyedArchiver& coder) { … coder.encodeObject(…); },
///         [](KeyedUnarchiver& coder) -> Value { return … coder.decodeObject() …; }};
///
/// A decoder that finds something else than it needs raises; the reader of the archive gets an error then.

#include "platform/values/Value.hpp"

#include <span>
#include <string_view>

namespace estatebook::platform {

class KeyedArchiver;
class KeyedUnarchiver;

struct ArchivedClass {
    /// Object::runtimeClassName of the objects that are written so; empty for a class that is only read.
    std::string_view runtimeName;
    /// The name in the archive, and after it those of the classes it derives from.
    std::span<const std::string_view> names;
    /// Hands what the object consists of to the archiver.
    void (*encode)(const Value& object, KeyedArchiver& coder) = nullptr;
    /// Makes an object of what the unarchiver hands out, never an absent one.
    Value (*decode)(KeyedUnarchiver& coder) = nullptr;
};

} // namespace estatebook::platform
