// SPDX-License-Identifier: MIT
#include "tags/TKNegateValueTransformer.hpp"

#include "platform/values/Array.hpp"
#include "platform/values/Exception.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace estatebook {
namespace {

using platform::Decimal;
using platform::makeRef;
using platform::NullObject;
using platform::Number;
using platform::String;
using platform::Value;

Value negated(const Value& value) {
    return makeRef<TKNegateValueTransformer>()->transformedValue(value);
}

Value reversed(const Value& value) {
    return makeRef<TKNegateValueTransformer>()->reverseTransformedValue(value);
}

void expectDecimal(const Value& value, std::string_view text) {
    ASSERT_TRUE(value.isNumber());
    EXPECT_EQ(value.number()->kind(), Number::Kind::Decimal);
    EXPECT_EQ(value.decimal()->toString(), text);
}

TEST(TKNegateValueTransformerTest, TheSignOfADecimalIsTurnedRound) {
    expectDecimal(negated(Decimal::parse("12.50")), "-12.5");
    expectDecimal(negated(Decimal(-3)), "3");
    expectDecimal(negated(Decimal(0)), "0");
}

TEST(TKNegateValueTransformerTest, ANumberOfAnyKindComesBackAsADecimal) {
    expectDecimal(negated(7), "-7");
    expectDecimal(negated(7u), "-7");
    expectDecimal(negated(std::numeric_limits<std::uint64_t>::max()), "-18446744073709551615");
    expectDecimal(negated(-2.5), "2.5");
    expectDecimal(negated(0.1f), "-0.1");
    expectDecimal(negated(true), "-1");
}

TEST(TKNegateValueTransformerTest, TheWayBackIsTheWayForth) {
    expectDecimal(reversed(Decimal::parse("-12.50")), "12.5");
    expectDecimal(reversed(7), "-7");
    EXPECT_TRUE(reversed({}).isAbsent());
    EXPECT_TRUE(makeRef<TKNegateValueTransformer>()->allowsReverseTransformation());
    EXPECT_EQ(makeRef<TKNegateValueTransformer>()->transformedValueClass(), "Object");
}

TEST(TKNegateValueTransformerTest, WhatIsNoNumberBecomesNothing) {
    for (const Value& value : {Value(), Value(String::make("12.50")), Value(NullObject{}),
                               Value(platform::Date{12}), Value(platform::Array::make({7}))})
        EXPECT_TRUE(negated(value).isAbsent()) << value.description();
}

TEST(TKNegateValueTransformerTest, AmountsAreMultipliedByMinusOne) {
    const auto transformer = makeRef<TKNegateValueTransformer>();
    EXPECT_EQ(transformer->negativeOne(), Decimal(-1));
    EXPECT_EQ(transformer->invert(Decimal::parse("0.01")), Decimal::parse("-0.01"));
}

TEST(TKNegateValueTransformerTest, WhatIsNotANumberRaisesAsArithmeticDoes) {
    EXPECT_THROW(static_cast<void>(negated(Decimal::notANumber())), platform::OverflowException);
    EXPECT_THROW(static_cast<void>(negated(std::numeric_limits<double>::infinity())),
                 platform::OverflowException);
}

TEST(TKNegateValueTransformerTest, AnotherWayToInvertServesBothDirections) {
    class Halving final : public TKNegateValueTransformer {
    public:
        [[nodiscard]] Decimal invert(const Decimal& amount) const override { return amount / 2; }
    };
    const auto transformer = makeRef<Halving>();
    expectDecimal(transformer->transformedValue(4), "2");
    expectDecimal(transformer->reverseTransformedValue(4), "2");
}

} // namespace
} // namespace estatebook
