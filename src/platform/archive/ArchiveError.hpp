// SPDX-License-Identifier: MIT
#pragma once

/// What the errors of property lists and archives have in common.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace estatebook::platform {

inline constexpr std::string_view ArchiveErrorDomain = "Archive";

enum class ArchiveErrorCode : std::int64_t {
    ReadCorrupt = 4864,  ///< the bytes are not what an archive consists of
    InvalidValue = 4866, ///< an object cannot be written
};

/// How deep collections may stand in one another. What is deeper is neither written nor read.
inline constexpr std::size_t DeepestArchive = 256;

} // namespace estatebook::platform
