// SPDX-License-Identifier: MIT
#pragma once

/// Key paths: "property.name", "tenures.@sum.balance".

#include "platform/values/Value.hpp"

#include <string_view>
#include <utility>

namespace estatebook::platform {

/// The first step of a path and what follows it (empty after the last).
[[nodiscard]] inline std::pair<std::string_view, std::string_view>
splitKeyPath(std::string_view path) noexcept {
    const std::size_t point = path.find('.');
    if (point == std::string_view::npos) return {path, {}};
    return {path.substr(0, point), path.substr(point + 1)};
}

/// The value of a path that starts at any value: an observable object, a collection (mapped over), or absent.
/// Raises UndefinedKeyException for a value without keys.
[[nodiscard]] ESTATEBOOK_API Value valueForKeyPathOfValue(const Value& start, std::string_view path);

} // namespace estatebook::platform
