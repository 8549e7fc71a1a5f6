// SPDX-License-Identifier: MIT
#pragma once

/// How an attributed string stands in an archive: its text, its dictionaries of attributes, and, unless one of those holds for
/// the whole text, a list of pairs: so many UTF-16 units have the dictionary of that number.

#include "platform/values/Value.hpp"

#include <string_view>

namespace estatebook::platform {

class KeyedArchiver;
class KeyedUnarchiver;

namespace detail {

inline constexpr std::string_view AttributedStringNames[] = {"NSAttributedString", "NSObject"};
inline constexpr std::string_view MutableAttributedStringNames[] = {"NSMutableAttributedString",
                                                                    "NSAttributedString", "NSObject"};

void encodeAttributedString(const Value& value, KeyedArchiver& coder);
[[nodiscard]] Value decodeAttributedString(KeyedUnarchiver& coder);

} // namespace detail
} // namespace estatebook::platform
