// SPDX-License-Identifier: MIT
#pragma once

/// The words of an archive, for those who write and read one.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace estatebook::platform::detail {

inline constexpr std::string_view ArchiverKey = "$archiver";
inline constexpr std::string_view ArchiverName = "NSKeyedArchiver";
inline constexpr std::string_view VersionKey = "$version";
inline constexpr std::int64_t ArchiveVersion = 100000;
inline constexpr std::string_view TopKey = "$top";
inline constexpr std::string_view RootKey = "root";
inline constexpr std::string_view ObjectsKey = "$objects";
/// What stands at the place of the UID 0, which is no object.
inline constexpr std::string_view NullEntry = "$null";

inline constexpr std::string_view ClassKey = "$class";
inline constexpr std::string_view ClassNameKey = "$classname";
inline constexpr std::string_view ClassesKey = "$classes";

/// The key of the n-th thing that an object encodes without one.
inline std::string keyOfKeyless(std::size_t number) {
    return "$" + std::to_string(number);
}

/// A key of an object's own, which must not be taken for one of the archive's.
inline std::string escapedKey(std::string_view key) {
    return (key.starts_with('$') ? "$" : "") + std::string(key);
}

} // namespace estatebook::platform::detail
