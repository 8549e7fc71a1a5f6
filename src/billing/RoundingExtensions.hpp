// SPDX-License-Identifier: MIT
#pragma once

/// RoundingExtensions: whole periods, parts of a period, and the sign of an amount.
///
/// Rent is reckoned in periods, and a period count such as 3.75 falls into its whole periods and the part of
/// the one that is running. The trap: whole means the floor, towards minus infinity, and not the number with
/// its fraction cut off. So the part is never negative, and floor plus part gives the number back for every
/// sign.
///
///     const Decimal periods = decimalNumberWithNumeratorDenominator(15, 4);   // 3.75
///     decimalNumberByFlooring(periods);                                       // 3
///     fractionalPart(periods);                                                // 0.75
///     fractionalPart(decimalNumberByNegating(periods));                       // 0.25, as -3.75 is -4 + 0.25

#include "platform/values/Decimal.hpp"

#include <cstdint>

namespace estatebook {

/// decimalNumberByFlooring
/// The greatest whole number that is not above the number: -1.25 gives -2. Never raises; a not-a-number stays
/// one.
[[nodiscard]] ESTATEBOOK_API platform::Decimal decimalNumberByFlooring(const platform::Decimal& number);

/// decimalNumberByCeiling
/// The least whole number that is not below the number: -1.25 gives -1. Never raises; a not-a-number stays
/// one.
[[nodiscard]] ESTATEBOOK_API platform::Decimal decimalNumberByCeiling(const platform::Decimal& number);

/// fractionalPart
/// The number minus its floor, from 0 to below 1: -1.25 gives 0.75. (A negative number closer to 0 than 38
/// digits can tell from 1 gives 1.) Raises OverflowException for a not-a-number.
[[nodiscard]] ESTATEBOOK_API platform::Decimal fractionalPart(const platform::Decimal& number);

/// decimalNumberByNegating
/// The number times minus one, exactly; 0 stays 0. Raises OverflowException for a not-a-number.
[[nodiscard]] ESTATEBOOK_API platform::Decimal decimalNumberByNegating(const platform::Decimal& number);

/// decimalNumberWithUnsignedInteger:
/// The whole number with all its 64 bits.
[[nodiscard]] ESTATEBOOK_API platform::Decimal
decimalNumberWithUnsignedInteger(std::uint64_t number) noexcept;

/// decimalNumberWithNumerator:denominator:
/// The quotient to 38 digits. Raises DivideByZeroException for a denominator of 0, 0 / 0 included.
[[nodiscard]] ESTATEBOOK_API platform::Decimal
decimalNumberWithNumeratorDenominator(std::uint64_t numerator, std::uint64_t denominator);

} // namespace estatebook
