// SPDX-License-Identifier: MIT
#pragma once

/// The bytes of a binary property list: a header, the members, each beginning with a marker, a table of where each member
/// begins, and a trailer that tells where the table stands and how wide its numbers are. All numbers are big-endian.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace estatebook::platform::detail {

inline constexpr std::string_view BinaryPropertyListHeader = "bplist00";
inline constexpr std::size_t BinaryPropertyListTrailerSize = 32;

/// The upper half of a marker. The lower half is a count, or the binary logarithm of a size in bytes.
enum class Marker : std::uint8_t {
    Simple = 0x0,
    Integer = 0x1,
    Real = 0x2,
    Date = 0x3,
    Data = 0x4,
    AsciiText = 0x5,
    Utf16Text = 0x6,
    Uid = 0x8,
    Array = 0xA,
    Dictionary = 0xD,
};

inline constexpr std::uint8_t FalseMarker = 0x08;
inline constexpr std::uint8_t TrueMarker = 0x09;
inline constexpr std::uint8_t DateMarker = 0x33;
/// The lower half of a marker whose count follows as an integer.
inline constexpr std::uint8_t CountFollows = 0xF;

} // namespace estatebook::platform::detail
