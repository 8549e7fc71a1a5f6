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

/// REQUIRES: 0 to 38.
constexpr UInt128 powerOfTen(std::int64_t exponent) noexcept {
    return PowersOfTen[static_cast<std::size_t>(exponent)];
}

/// One above the greatest mantissa.
inline constexpr UInt128 MantissaLimit = powerOfTen(Decimal::MaximumDigits);

constexpr int bitCount(UInt128 number) noexcept {
    const auto high = static_cast<std::uint64_t>(number >> 64);
    const auto low = static_cast<std::uint64_t>(number);
    return static_cast<int>(high != 0 ? 64 + std::bit_width(high) : std::bit_width(low));
}

/// The decimal digits of a number below 10^38 or with 39 digits; none for 0.
constexpr int digitCount(UInt128 number) noexcept {
    // 1233 / 4096 is just above lg 2: the estimate is right or one too high for up to 128 bits.
    const int estimate = (bitCount(number) * 1233) >> 12;
    return estimate + (estimate <= Decimal::MaximumDigits && number >= powerOfTen(estimate) ? 1 : 0);
}

/// Division by a power of ten where it leaves no remainder: a product with the inverse of 5^digits modulo
/// 2^128 takes just the multiples of it to [0, max / 5^digits], and the rotation tests the factors 2 along
/// with it.
struct ExactDivision {
    int digits;
    UInt128 inverse = 1;
    UInt128 greatestQuotient;

    constexpr explicit ExactDivision(int count) noexcept
        : digits(count), greatestQuotient(~UInt128{0} / powerOfTen(count)) {
        UInt128 power = 1;
        for (int i = 0; i < count; ++i) power *= 5;
        for (int bits = 1; bits < 128; bits *= 2) inverse *= 2 - power * inverse;
    }

    /// Above the greatest quotient when there is a remainder.
    [[nodiscard]] constexpr UInt128 quotient(UInt128 number) const noexcept {
        const UInt128 product = number * inverse;
        return product >> digits | product << (128 - digits);
    }
};

inline constexpr ExactDivision ByTen(1);

struct DecimalParts {
    UInt128 mantissa = 0;
    std::int64_t exponent = 0;
    bool negative = false;

    static constexpr DecimalParts of(const Decimal& number) noexcept {
        return {UInt128{number.high_} << 64 | number.low_, number.exponent_, number.negative_ != 0};
    }

    /// Makes the number compact and gives whether a decimal can hold it. REQUIRES: a mantissa of 1 to 38
    /// digits.
    [[nodiscard]] bool settle() noexcept {
        if (divide(ByTen)) stripMore();
        return exponent >= Decimal::MinimumExponent &&
               (exponent <= Decimal::MaximumExponent || bringBelowMaximum());
    }

    /// The decimal. REQUIRES: settled, or zero.
    [[nodiscard]] constexpr Decimal settled() const noexcept {
        return Decimal(static_cast<std::uint64_t>(mantissa), static_cast<std::uint64_t>(mantissa >> 64),
                       static_cast<std::int32_t>(exponent), negative);
    }

    /// The decimal of any number of at most 38 digits, or nothing when it is out of range.
    [[nodiscard]] std::optional<Decimal> decimal() const noexcept {
        DecimalParts parts = *this;
        if (mantissa == 0) return Decimal();
        if (!parts.settle()) return std::nullopt;
        return parts.settled();
    }

    /// A hash of a compact number.
    [[nodiscard]] std::size_t hash() const noexcept;

private:
    bool divide(const ExactDivision& division) noexcept {
        const UInt128 quotient = division.quotient(mantissa);
        if (quotient > division.greatestQuotient) return false;
        mantissa = quotient;
        exponent += division.digits;
        return true;
    }
    void stripMore() noexcept;
    bool bringBelowMaximum() noexcept;
};

/// By value, for numbers proper.
std::strong_ordering compare(const DecimalParts& a, const DecimalParts& b) noexcept;

/// A number read from the start of a text.
struct DecimalScan {
    DecimalParts parts;        ///< compact, up to 38 digits, the exponent without a limit
    std::size_t length = 0;    ///< the characters that were read
    bool exact = true;         ///< no digit but zeros was dropped
    bool documentForm = false; ///< the characters read are a number as JSON writes it
};
DecimalScan scanDecimal(std::string_view text) noexcept;

/// The decimal of the shortest text of a finite binary number.
DecimalParts shortestParts(double value) noexcept;
DecimalParts shortestParts(float value) noexcept;

} // namespace estatebook::platform::detail
