// SPDX-License-Identifier: MIT
#include "billing/RoundingExtensions.hpp"

namespace estatebook {

using platform::Decimal;
using platform::DecimalBehavior;
using platform::RoundingMode;

namespace {

constexpr DecimalBehavior toWholeNumbers(RoundingMode mode) {
    return {.mode = mode,
            .scale = 0,
            .raiseOnExactness = false,
            .raiseOnOverflow = false,
            .raiseOnUnderflow = false,
            .raiseOnDivideByZero = false};
}

constexpr DecimalBehavior Flooring = toWholeNumbers(RoundingMode::Down);
constexpr DecimalBehavior Ceiling = toWholeNumbers(RoundingMode::Up);
constexpr Decimal MinusOne = -1;

} // namespace

Decimal decimalNumberByFlooring(const Decimal& number) {
    return number.decimalNumberByRoundingAccordingToBehavior(Flooring);
}

Decimal decimalNumberByCeiling(const Decimal& number) {
    return number.decimalNumberByRoundingAccordingToBehavior(Ceiling);
}

Decimal fractionalPart(const Decimal& number) {
    return number.decimalNumberBySubtracting(decimalNumberByFlooring(number));
}

Decimal decimalNumberByNegating(const Decimal& number) {
    return number.decimalNumberByMultiplyingBy(MinusOne);
}

Decimal decimalNumberWithUnsignedInteger(std::uint64_t number) noexcept {
    return number;
}

Decimal decimalNumberWithNumeratorDenominator(std::uint64_t numerator, std::uint64_t denominator) {
    return decimalNumberWithUnsignedInteger(numerator).decimalNumberByDividingBy(
        decimalNumberWithUnsignedInteger(denominator));
}

} // namespace estatebook
