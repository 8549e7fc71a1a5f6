// SPDX-License-Identifier: MIT
#pragma once

/// The names of the library's own keys, at the places of their numbers; the first is empty. Generated from the
/// model file and constant-initialised, so that keys can be named before any other code has run.

#include "platform/observation/Key.hpp"

#include <cstddef>
#include <string_view>

namespace estatebook::platform {

extern const std::string_view* const libraryKeyNames;
extern const std::size_t libraryKeyCount;

/// Key::name, where it matters.
[[nodiscard]] inline std::string_view nameOf(Key key) noexcept {
    return key.number() < libraryKeyCount ? libraryKeyNames[key.number()] : key.name();
}

} // namespace estatebook::platform
