// SPDX-License-Identifier: MIT
#pragma once

/// Inside Decimal and Number: a decimal in its parts, without a limit to its exponent, and the 128-bit steps
/// on its digits. Not for anybody else.

#include "platform/values/Decimal.hpp"

#include <array>
#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace estatebook::platform::detail {

__extension__ typedef unsigned __int128 UInt128;

inline constexpr std::array<UInt128, Decimal::MaximumDigits + 1> PowersOfTen = [] {
    std::array<UInt128, Decimal::MaximumDigits + 1> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
    return powers;
}();

/// One above the greatest mantissa.
inline constexpr UInt128 MantissaLimit = PowersOfTen[Decimal::MaximumDigits];

constexpr int bitCount(UInt128 number) noexcept {
    const auto high = static_cast<std::uint64_t>(number >> 64);
    return high != 0 ? 64 + std::bit_width(high) : std::bit_width(static_cast<std::uint64_t>(number));
}

/// The decimal digits of a number below 10^38 or with 39 digits; none for 0.
constexpr int digitCount(UInt128 number) noexcept {
    // 1233 / 4096 is just above lg 2: the estimate is right or one too high for up to 128 bits.
    const int estimate = (bitCount(number) * 1233) >> 12;
    return estimate + (estimate <= Decimal::MaximumDigits && number >= PowersOfTen[estimate] ? 1 : 0);
}

struct DecimalParts {
    UInt128 mantissa = 0;
    std::int64_t exponent = 0;
    bool negative = false;

    static constexpr DecimalParts of(const Decimal& number) noexcept {
        return {UInt128{number.high_} << 64 | number.low_, number.exponent_, number.negative_ != 0};
    }

    /// Moves all trailing zeros of the mantissa into the exponent. REQUIRES: mantissa not 0.
    void strip() noexcept;

    /// The number itself, or nothing when it has no exponent in range. REQUIRES: a mantissa of at most 38
    /// digits.
    [[nodiscard]] std::optional<Decimal> decimal() const noexcept;

    /// A hash of a compact number.
    [[nodiscard]] std::size_t hash() const noexcept;
};

/// By value, for numbers proper.
std::strong_ordering compare(const DecimalParts& a, const DecimalParts& b) noexcept;

/// A number read from the start of a text.
struct DecimalScan {
    DecimalParts parts;     ///< compact, up to 38 digits, the exponent without a limit
    std::size_t length = 0; ///< the characters that were read
    bool exact = true;      ///< no digit but zeros was dropped
    bool hasDigits = false;
    bool documentForm = false; ///< the characters read are a number as JSON writes it
};
DecimalScan scanDecimal(std::string_view text) noexcept;

/// The decimal of the shortest text of a finite binary number.
DecimalParts shortestParts(double value) noexcept;
DecimalParts shortestParts(float value) noexcept;

} // namespace estatebook::platform::detail
