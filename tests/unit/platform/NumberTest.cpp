// SPDX-License-Identifier: MIT
#include "platform/values/Number.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <unordered_set>

namespace estatebook::platform {
namespace {

static_assert(Number(true).kind() == Number::Kind::Boolean);
static_assert(Number(1).kind() == Number::Kind::Signed);
static_assert(Number(1L).kind() == Number::Kind::Signed);
static_assert(Number(1u).kind() == Number::Kind::Unsigned);
static_assert(Number(1.0f).kind() == Number::Kind::Single);
static_assert(Number(1.0).kind() == Number::Kind::Double);
static_assert(Number(Decimal(1)).kind() == Number::Kind::Decimal);

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::uint64_t GreatestUnsigned = std::numeric_limits<std::uint64_t>::max();
constexpr std::int64_t Greatest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t Least = std::numeric_limits<std::int64_t>::min();

Decimal d(std::string_view text) {
    return Decimal::parse(text);
}

TEST(NumberTest, AnEmptyNumberIsTheSignedZero) {
    EXPECT_EQ(Number().kind(), Number::Kind::Signed);
    EXPECT_EQ(Number(), Number(0));
}

TEST(NumberTest, IntegersCutTheFraction) {
    for (const Number& number : {Number(2.9), Number(2.9f), Number(d("2.9"))}) {
        EXPECT_EQ(number.integerValue(), 2);
        EXPECT_EQ(number.unsignedIntegerValue(), 2u);
    }
    EXPECT_EQ(Number(-1.5).integerValue(), -1);
    EXPECT_EQ(Number(d("-1.5")).integerValue(), -1);
    EXPECT_EQ(Number(-0.9).unsignedIntegerValue(), 0u);
    EXPECT_EQ(Number(true).integerValue(), 1);
}

TEST(NumberTest, NegativeNumbersWrapToUnsigned) {
    for (const Number& number : {Number(-1), Number(-1.0), Number(-1.5f), Number(d("-1"))})
        EXPECT_EQ(number.unsignedIntegerValue(), GreatestUnsigned) << number;
    EXPECT_EQ(Number(GreatestUnsigned).integerValue(), -1);
    EXPECT_EQ(Number(GreatestUnsigned).unsignedIntegerValue(), GreatestUnsigned);
}

TEST(NumberTest, BinaryNumbersOutOfRangeGiveTheNearestInteger) {
    EXPECT_EQ(Number(1e30).integerValue(), Greatest);
    EXPECT_EQ(Number(9223372036854775808.0).integerValue(), Greatest);
    EXPECT_EQ(Number(9223372036854774784.0).integerValue(), 9223372036854774784);
    EXPECT_EQ(Number(-1e30).integerValue(), Least);
    EXPECT_EQ(Number(-9223372036854775808.0).integerValue(), Least);
    EXPECT_EQ(Number(Infinity).integerValue(), Greatest);
    EXPECT_EQ(Number(-Infinity).integerValue(), Least);
    EXPECT_EQ(Number(1e30).unsignedIntegerValue(), GreatestUnsigned);
    EXPECT_EQ(Number(9223372036854775808.0).unsignedIntegerValue(), 9223372036854775808u);
    EXPECT_EQ(Number(Infinity).unsignedIntegerValue(), GreatestUnsigned);
    EXPECT_EQ(Number(-1e30).unsignedIntegerValue(), 9223372036854775808u);
    EXPECT_EQ(Number(NotANumber).integerValue(), 0);
    EXPECT_EQ(Number(NotANumber).unsignedIntegerValue(), 0u);
}

TEST(NumberTest, EverythingButZeroIsTrue) {
    for (const Number& zero :
         {Number(false), Number(0), Number(0u), Number(0.0f), Number(-0.0), Number(Decimal())})
        EXPECT_FALSE(zero.boolValue()) << zero;
    for (const Number& other : {Number(true), Number(-1), Number(7u), Number(0.1f), Number(NotANumber),
                                Number(d("0.1")), Number(Decimal::notANumber())})
        EXPECT_TRUE(other.boolValue()) << other;
}

TEST(NumberTest, BinaryValues) {
    EXPECT_EQ(Number(true).doubleValue(), 1.0);
    EXPECT_EQ(Number(-3).doubleValue(), -3.0);
    EXPECT_EQ(Number(GreatestUnsigned).doubleValue(), 18446744073709551616.0);
    EXPECT_EQ(Number(0.1f).doubleValue(), static_cast<double>(0.1f));
    EXPECT_EQ(Number(0.1).floatValue(), 0.1f);
    EXPECT_EQ(Number(d("0.1")).doubleValue(), 0.1);
    EXPECT_EQ(Number(d("0.1")).floatValue(), 0.1f);
    EXPECT_EQ(Number(1e100).floatValue(), std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(Number(Decimal::notANumber()).doubleValue()));
}

TEST(NumberTest, TheDecimalOfABinaryNumberIsThatOfItsShortestText) {
    EXPECT_EQ(Number(3.133).decimalValue(), d("3.133"));
    EXPECT_EQ(Number(0.1).decimalValue(), d("0.1"));
    EXPECT_EQ(Number(0.1f).decimalValue(), d("0.1"));
    EXPECT_EQ(Number(-0.0).decimalValue(), 0);
    EXPECT_EQ(Number(1e300).decimalValue(), Decimal::notANumber());
    EXPECT_EQ(Number(1e-300).decimalValue(), Decimal::notANumber());
    EXPECT_EQ(Number(Infinity).decimalValue(), Decimal::notANumber());
    EXPECT_EQ(Number(NotANumber).decimalValue(), Decimal::notANumber());
}

TEST(NumberTest, TheDecimalOfAWholeNumberIsExact) {
    EXPECT_EQ(Number(true).decimalValue(), 1);
    EXPECT_EQ(Number(false).decimalValue(), 0);
    EXPECT_EQ(Number(Least).decimalValue(), d("-9223372036854775808"));
    EXPECT_EQ(Number(GreatestUnsigned).decimalValue(), d("18446744073709551615"));
    EXPECT_EQ(Number(d("1.50")).decimalValue(), d("1.5"));
}

TEST(NumberTest, EqualityIsByValueAcrossKindsAndHashesAgree) {
    const Number ones[] = {Number(true), Number(1),   Number(1u),
                           Number(1.0f), Number(1.0), Number(Decimal(1))};
    const Number tenths[] = {Number(0.1f), Number(0.1), Number(d("0.10"))};
    const Number thousands[] = {Number(1000), Number(1000.0), Number(d("1e3"))};
    const Number zeros[] = {Number(false), Number(0),   Number(0u),
                            Number(-0.0f), Number(0.0), Number(d("-0"))};
    const Number great[] = {Number(std::uint64_t{1} << 63), Number(9223372036854775808.0),
                            Number(d("9223372036854775808"))};
    const auto expectOne = [](const auto& numbers) {
        for (const Number& a : numbers)
            for (const Number& b : numbers) {
                EXPECT_EQ(a, b);
                EXPECT_EQ(a.hash(), b.hash());
                EXPECT_EQ(a.hash(), a.decimalValue().hash());
            }
        EXPECT_EQ((std::unordered_set<Number>(std::begin(numbers), std::end(numbers)).size()), 1u);
    };
    expectOne(ones);
    expectOne(tenths);
    expectOne(thousands);
    expectOne(zeros);
    expectOne(great);
    EXPECT_NE(Number(true), Number(2));
    EXPECT_NE(Number(-1), Number(GreatestUnsigned));
}

TEST(NumberTest, BinaryNumbersOutOfADecimalsRangeAreEqualOnlyToThemselves) {
    EXPECT_EQ(Number(1e300), Number(1e300));
    EXPECT_EQ(Number(1e300).hash(), Number(1e300).hash());
    EXPECT_EQ(Number(1e130), Number(d("1e130")));
    EXPECT_EQ(Number(1e130).hash(), Number(d("1e130")).hash());
    EXPECT_NE(Number(1e300), Number(2e300));
    EXPECT_NE(Number(1e300), Number(Infinity));
    EXPECT_NE(Number(1e-300), Number(0));
    EXPECT_NE(Number(1e300), Number(NotANumber));
}

TEST(NumberTest, OrderIsByValueAcrossKinds) {
    const Number ascending[] = {Number(NotANumber),
                                Number(-Infinity),
                                Number(-1e300),
                                Number(d("-1e164")),
                                Number(Least),
                                Number(-2.5f),
                                Number(-1),
                                Number(-1e-300),
                                Number(0),
                                Number(5e-324),
                                Number(d("1e-128")),
                                Number(0.1),
                                Number(true),
                                Number(d("1.00000000000000000000000001")),
                                Number(2u),
                                Number(Greatest),
                                Number(9223372036854775808.0),
                                Number(GreatestUnsigned),
                                Number(18446744073709551616.0),
                                Number(d("1e164")),
                                Number(1e300),
                                Number(Infinity)};
    for (std::size_t i = 0; i < std::size(ascending); ++i)
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            EXPECT_EQ(ascending[i].compare(ascending[j]), i <=> j) << ascending[i] << " " << ascending[j];
            EXPECT_EQ(ascending[i] < ascending[j], i < j);
        }
}

TEST(NumberTest, WhatIsNotANumberIsOneValue) {
    EXPECT_EQ(Number(NotANumber), Number(Decimal::notANumber()));
    EXPECT_EQ(Number(NotANumber).hash(), Number(Decimal::notANumber()).hash());
    EXPECT_EQ(Number(std::numeric_limits<float>::quiet_NaN()), Number(-NotANumber));
}

TEST(NumberTest, DescriptionsAreTheShortestTexts) {
    EXPECT_EQ(Number(true).description(), "1");
    EXPECT_EQ(Number(false).description(), "0");
    EXPECT_EQ(Number(-42).description(), "-42");
    EXPECT_EQ(Number(GreatestUnsigned).description(), "18446744073709551615");
    EXPECT_EQ(Number(2.5).description(), "2.5");
    EXPECT_EQ(Number(0.1f).description(), "0.1");
    EXPECT_EQ(Number(1e100).description(), "1e+100");
    EXPECT_EQ(Number(3.0).description(), "3");
    EXPECT_EQ(Number(Infinity).description(), "inf");
    EXPECT_EQ(Number(-Infinity).description(), "-inf");
    EXPECT_EQ(Number(-NotANumber).description(), "nan");
    EXPECT_EQ(Number(d("-535.710")).description(), "-535.71");
    EXPECT_EQ(Number(Decimal::notANumber()).description(), "NaN");
}

} // namespace
} // namespace estatebook::platform
