// SPDX-License-Identifier: MIT
#pragma once

/// Format: for whom something is printed: a table for people, comma-separated values or JSON for programs, or pages for
/// paper, which statements alone have.

#include <cstdint>

namespace estatebook {

enum class Format : std::uint8_t { Text, Csv, Json, Pdf };

} // namespace estatebook
