// SPDX-License-Identifier: MIT
#pragma once

/// CommitToken: the name of one save, made before it begins. Whoever lost sight of a save, because the machine or the
/// connection failed within it, asks the store by its token whether it landed.

#include "EstateBook_ModelExport.hpp"

#include <array>
#include <compare>
#include <cstdint>

namespace estatebook::platform {

struct CommitToken {
    std::array<std::uint8_t, 16> bytes{};

    /// One that nobody else makes: random, from the system.
    [[nodiscard]] ESTATEBOOK_API static CommitToken random();

    friend auto operator<=>(const CommitToken&, const CommitToken&) = default;
};

} // namespace estatebook::platform
