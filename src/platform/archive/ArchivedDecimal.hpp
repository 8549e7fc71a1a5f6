// SPDX-License-Identifier: MIT
#pragma once

/// How a decimal stands in an archive: its digits as eight little-endian words of sixteen bits, its exponent and its sign.

#include "platform/values/Value.hpp"

#include <string_view>

namespace estatebook::platform {

class KeyedArchiver;
class KeyedUnarchiver;

namespace detail {

inline constexpr std::string_view DecimalNames[] = {"NSDecimalNumber", "NSNumber", "NSValue", "NSObject"};

void encodeDecimal(const Value& value, KeyedArchiver& coder);
[[nodiscard]] Value decodeDecimal(KeyedUnarchiver& coder);

} // namespace detail
} // namespace estatebook::platform
