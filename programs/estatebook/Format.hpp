// SPDX-License-Identifier: MIT
#pragma once

/// Format: for whom something is printed: a table for people, comma-separated values or JSON for programs.

#include <cstdint>

namespace estatebook {

enum class Format : std::uint8_t { Text, Csv, Json };

} // namespace estatebook
