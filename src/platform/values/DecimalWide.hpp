// SPDX-License-Identifier: MIT
#pragma once

/// Inside Decimal: products of two mantissas, up to 256 bits, and how digits are dropped from them without a division.
/// Not for anybody else.

#include "platform/values/DecimalParts.hpp"

#include <array>
#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>

namespace estatebook::platform::detail {

struct Wide {
    UInt128 high = 0;
    UInt128 low = 0;

    /// The digits of a mantissa's square, at most; all numbers with that many fit.
    static constexpr int MaximumDigits = 2 * Decimal::MaximumDigits;

    static constexpr Wide product(UInt128 a, UInt128 b) noexcept {
        constexpr UInt128 word = ~std::uint64_t{0};
        const UInt128 lowest = (a & word) * (b & word);
        const UInt128 first = (a >> 64) * (b & word);
        const UInt128 second = (a & word) * (b >> 64);
        const UInt128 middle = (lowest >> 64) + (first & word) + (second & word);
        return {(a >> 64) * (b >> 64) + (first >> 64) + (second >> 64) + (middle >> 64),
                middle << 64 | (lowest & word)};
    }

    friend constexpr Wide operator+(const Wide& a, UInt128 b) noexcept {
        return {a.high + (a.low > ~b ? 1 : 0), a.low + b};
    }
    friend constexpr Wide operator-(const Wide& a, UInt128 b) noexcept {
        return {a.high - (a.low < b ? 1 : 0), a.low - b};
    }
    friend constexpr bool operator==(const Wide&, const Wide&) noexcept = default;
    friend constexpr auto operator<=>(const Wide&, const Wide&) noexcept = default;
};

inline constexpr std::array<Wide, Wide::MaximumDigits + 1> WidePowersOfTen = [] {
    std::array<Wide, Wide::MaximumDigits + 1> powers{};
    for (std::size_t i = 0; i < powers.size(); ++i) {
        const std::size_t first = i < PowersOfTen.size() ? i : PowersOfTen.size() - 1;
        powers[i] = Wide::product(PowersOfTen[first], PowersOfTen[i - first]);
    }
    return powers;
}();

/// The decimal digits of a number of up to 253 bits, which 10^76 has; none for 0.
constexpr int digitCount(const Wide& number) noexcept {
    if (number.high == 0 && number.low < MantissaLimit) return digitCount(number.low);
    const int bits = number.high != 0 ? 128 + bitCount(number.high) : bitCount(number.low);
    const int estimate = (bits * 1233) >> 12;
    return estimate + (number >= WidePowersOfTen[static_cast<std::size_t>(estimate)] ? 1 : 0);
}

/// Division by a power of ten through its reciprocal, 2^(127 + bits) / divisor (after Barrett).
struct PowerDivision {
    UInt128 divisor = 1;
    UInt128 reciprocal = 0;
    int bits = 0;

    struct Result {
        UInt128 quotient;
        UInt128 remainder;
    };

    constexpr PowerDivision() noexcept = default;
    constexpr explicit PowerDivision(UInt128 power) noexcept : divisor(power), bits(bitCount(power)) {
        UInt128 remainder = UInt128{1} << (bits - 1); // 2^(bits - 1) is below the divisor; 128 bits follow
        for (int i = 0; i < 128; ++i) {
            remainder <<= 1;
            reciprocal <<= 1;
            if (remainder >= divisor) {
                remainder -= divisor;
                reciprocal |= 1;
            }
        }
    }

    /// REQUIRES: a quotient below 10^38.
    [[nodiscard]] constexpr Result divide(const Wide& number) const noexcept {
        // The leading digits times the reciprocal fall short of the quotient by 2 at most, and what then remains,
        // less than 3 × 10^38, is within 128 bits.
        const UInt128 leading = number.high << (129 - bits) | number.low >> (bits - 1);
        Result result{Wide::product(leading, reciprocal).high, 0};
        result.remainder = number.low - result.quotient * divisor;
        while (result.remainder >= divisor) {
            result.remainder -= divisor;
            ++result.quotient;
        }
        return result;
    }
};

/// By the number of digits dropped, from 1 on.
inline constexpr std::array<PowerDivision, Decimal::MaximumDigits + 1> PowerDivisions = [] {
    std::array<PowerDivision, Decimal::MaximumDigits + 1> divisions{};
    for (std::size_t i = 1; i < divisions.size(); ++i) divisions[i] = PowerDivision(PowersOfTen[i]);
    return divisions;
}();

} // namespace estatebook::platform::detail
