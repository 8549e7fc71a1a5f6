// SPDX-License-Identifier: MIT
#include "billing/RoundingExtensions.hpp"
#include "platform/values/Exception.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string_view>

namespace estatebook {
namespace {

using platform::Decimal;
using platform::DivideByZeroException;
using platform::OverflowException;

const Decimal NaN = Decimal::notANumber();

Decimal d(std::string_view text) {
    return Decimal::parse(text);
}

TEST(RoundingExtensionsTest, FlooringRoundsTowardsMinusInfinity) {
    EXPECT_EQ(decimalNumberByFlooring(d("2.5")), 2);
    EXPECT_EQ(decimalNumberByFlooring(d("3.75")), 3);
    EXPECT_EQ(decimalNumberByFlooring(d("-1.25")), -2);
    EXPECT_EQ(decimalNumberByFlooring(d("0.99999999999999999999999999999999999999")), 0);
    EXPECT_EQ(decimalNumberByFlooring(d("-1e-128")), -1);
}

TEST(RoundingExtensionsTest, CeilingRoundsTowardsPlusInfinity) {
    EXPECT_EQ(decimalNumberByCeiling(d("2.5")), 3);
    EXPECT_EQ(decimalNumberByCeiling(d("3.01")), 4);
    EXPECT_EQ(decimalNumberByCeiling(d("-1.25")), -1);
    EXPECT_EQ(decimalNumberByCeiling(d("1e-128")), 1);
}

TEST(RoundingExtensionsTest, ZeroFloorsCeilsAndNegatesToZeroAndHasNoFraction) {
    EXPECT_EQ(decimalNumberByFlooring(0), 0);
    EXPECT_EQ(decimalNumberByCeiling(0), 0);
    EXPECT_EQ(decimalNumberByNegating(0), 0);
    EXPECT_FALSE(decimalNumberByNegating(0).isNegative());
    EXPECT_EQ(fractionalPart(0), 0);
}

TEST(RoundingExtensionsTest, WholeNumbersStayAndHaveNoFraction) {
    for (const Decimal whole : {Decimal(7), Decimal(-7), Decimal(1200), d("1e100"), d("-1e100")}) {
        EXPECT_EQ(decimalNumberByFlooring(whole), whole);
        EXPECT_EQ(decimalNumberByCeiling(whole), whole);
        EXPECT_EQ(fractionalPart(whole), 0);
    }
}

TEST(RoundingExtensionsTest, MinusAHalfFloorsToMinusOneCeilsToZeroAndHasTheFractionAHalf) {
    EXPECT_EQ(decimalNumberByFlooring(d("-0.5")), -1);
    EXPECT_EQ(decimalNumberByCeiling(d("-0.5")), 0);
    EXPECT_FALSE(decimalNumberByCeiling(d("-0.5")).isNegative());
    EXPECT_EQ(fractionalPart(d("-0.5")), d("0.5"));
}

TEST(RoundingExtensionsTest, TheFractionIsNeverNegative) {
    EXPECT_EQ(fractionalPart(d("3.75")), d("0.75"));
    EXPECT_EQ(fractionalPart(d("-1.25")), d("0.75"));
    EXPECT_EQ(fractionalPart(d("-0.01")), d("0.99"));
}

TEST(RoundingExtensionsTest, FloorAndFractionGiveTheNumberBack) {
    for (const char* text : {"3.75", "-1.25", "-0.5", "0.5", "7", "-7", "-1234567.89", "0"})
        EXPECT_EQ(decimalNumberByFlooring(d(text)) + fractionalPart(d(text)), d(text)) << text;
}

TEST(RoundingExtensionsTest, NegatingFlipsTheSignExactly) {
    EXPECT_EQ(decimalNumberByNegating(d("535.71")), d("-535.71"));
    EXPECT_EQ(decimalNumberByNegating(d("-535.71")), d("535.71"));
    const Decimal longest = d("99999999999999999999999999999999999999e127");
    EXPECT_EQ(decimalNumberByNegating(decimalNumberByNegating(longest)), longest);
    EXPECT_EQ(decimalNumberByNegating(longest) + longest, 0);
}

TEST(RoundingExtensionsTest, UnsignedIntegersKeepAll64Bits) {
    EXPECT_EQ(decimalNumberWithUnsignedInteger(0), 0);
    EXPECT_EQ(decimalNumberWithUnsignedInteger(std::numeric_limits<std::uint64_t>::max()),
              d("18446744073709551615"));
}

TEST(RoundingExtensionsTest, AFractionIsTheQuotientOfItsParts) {
    EXPECT_EQ(decimalNumberWithNumeratorDenominator(3, 4), d("0.75"));
    EXPECT_EQ(decimalNumberWithNumeratorDenominator(0, 9), 0);
    EXPECT_EQ(decimalNumberWithNumeratorDenominator(std::numeric_limits<std::uint64_t>::max(), 1),
              d("18446744073709551615"));
}

TEST(RoundingExtensionsTest, AThirdHasAllDigitsOfTheDivision) {
    EXPECT_EQ(decimalNumberWithNumeratorDenominator(1, 3).toString(),
              "0.33333333333333333333333333333333333333");
}

TEST(RoundingExtensionsTest, ADenominatorOfZeroRaises) {
    EXPECT_THROW((void)decimalNumberWithNumeratorDenominator(1, 0), DivideByZeroException);
    EXPECT_THROW((void)decimalNumberWithNumeratorDenominator(0, 0), DivideByZeroException);
}

TEST(RoundingExtensionsTest, RoundingNeverRaises) {
    for (const char* text :
         {"0.1", "-0.1", "1e-128", "-1e-128", "99999999999999999999999999999999999999e127", "x"}) {
        EXPECT_NO_THROW((void)decimalNumberByFlooring(d(text))) << text;
        EXPECT_NO_THROW((void)decimalNumberByCeiling(d(text))) << text;
    }
}

TEST(RoundingExtensionsTest, ANotANumberRoundsToItselfButHasNoFractionAndNoOpposite) {
    EXPECT_EQ(decimalNumberByFlooring(NaN), NaN);
    EXPECT_EQ(decimalNumberByCeiling(NaN), NaN);
    EXPECT_THROW((void)fractionalPart(NaN), OverflowException);
    EXPECT_THROW((void)decimalNumberByNegating(NaN), OverflowException);
}

TEST(RoundingExtensionsTest, TheNumberItselfIsNotChanged) {
    const Decimal number = d("-1.25");
    (void)decimalNumberByFlooring(number);
    (void)decimalNumberByCeiling(number);
    (void)fractionalPart(number);
    (void)decimalNumberByNegating(number);
    EXPECT_EQ(number, d("-1.25"));
}

} // namespace
} // namespace estatebook
