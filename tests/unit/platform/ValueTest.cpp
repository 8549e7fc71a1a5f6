// SPDX-License-Identifier: MIT
#include "platform/values/Value.hpp"

#include "platform/values/Array.hpp"
#include "platform/values/Protocol.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <unordered_set>

namespace estatebook::platform {
namespace {

static_assert(sizeof(Value) == 32);
static_assert(std::is_nothrow_move_constructible_v<Value>);
static_assert(!std::is_constructible_v<Value, const char*>, "a pointer is no boolean");

Ref<String> text(std::string_view characters) {
    return String::make(characters);
}

TEST(ValueTest, WhatIsAbsentIsNoNumberNoTextAndNoObject) {
    for (const Value& value : {Value(), Value(std::nullopt), Value(std::optional<Decimal>()),
                               Value(Ref<String>()), Value(Ref<Object>()), Value(Ref<Array>())}) {
        EXPECT_TRUE(value.isAbsent());
        EXPECT_FALSE(value.isNullObject());
        EXPECT_FALSE(value.number() || value.decimal() || value.date() || value.string() || value.object());
        EXPECT_EQ(value.unsignedIntegerValue(), 0u);
        EXPECT_FALSE(value.boolValue());
        EXPECT_EQ(value.description(), "(null)");
    }
}

TEST(ValueTest, TheNullObjectIsNotAbsent) {
    const Value value = NullObject{};
    EXPECT_FALSE(value.isAbsent());
    EXPECT_TRUE(value.isNullObject());
    EXPECT_NE(value, Value());
    EXPECT_EQ(value, Value(NullObject{}));
    EXPECT_EQ(value.description(), "<null>");
}

TEST(ValueTest, ANumberKeepsItsKind) {
    EXPECT_EQ(Value(true).number()->kind(), Number::Kind::Boolean);
    EXPECT_EQ(Value(1).number()->kind(), Number::Kind::Signed);
    EXPECT_EQ(Value(1u).number()->kind(), Number::Kind::Unsigned);
    EXPECT_EQ(Value(1.0f).number()->kind(), Number::Kind::Single);
    EXPECT_EQ(Value(1.0).number()->kind(), Number::Kind::Double);
    EXPECT_EQ(Value(Decimal(1)).number()->kind(), Number::Kind::Decimal);
    for (const Number& number :
         {Number(false), Number(-1), Number(1u), Number(0.5f), Number(0.5), Number(Decimal(7))})
        EXPECT_EQ(Value(number).number()->kind(), number.kind());
}

TEST(ValueTest, NumbersOfAllKindsAreEqualByValueAndHaveOneHash) {
    const std::unordered_set<Value> all{Value(true), Value(1),   Value(1u),
                                        Value(1.0f), Value(1.0), Value(Decimal(1))};
    EXPECT_EQ(all.size(), 1u);
    EXPECT_EQ(Value(0.1).decimal(), Decimal::parse("0.1"));
    EXPECT_NE(Value(1), Value(2));
    EXPECT_NE(Value(1), Value(text("1")));
    EXPECT_NE(Value(0), Value());
}

TEST(ValueTest, IdentityIsOfTheSameObjectOrTheSameBits) {
    const auto a = text("a");
    EXPECT_TRUE(Value(a).isIdentical(Value(a)));
    EXPECT_EQ(Value(a), Value(text("a")));
    EXPECT_FALSE(Value(a).isIdentical(Value(text("a"))));
    EXPECT_FALSE(Value(1).isIdentical(Value(1u)));
    EXPECT_TRUE(Value(1).isIdentical(Value(1)));
    EXPECT_FALSE(Value(0.0).isIdentical(Value(-0.0)));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(Value(nan).isIdentical(Value(nan)));
    EXPECT_FALSE(Value(Date{0.0}).isIdentical(Value(Date{-0.0})));
    EXPECT_TRUE(Value().isIdentical(Value()));
}

TEST(ValueTest, ATextIsATextWhateverItIsHandedOverAs) {
    const auto a = text("a");
    const Value value = Ref<Object>(a);
    EXPECT_EQ(value.string(), a);
    EXPECT_EQ(value.object(), Ref<Object>(a));
    EXPECT_EQ(value.as<String>(), a);
    EXPECT_FALSE(value.as<Array>());
    EXPECT_EQ(value.description(), "a");
}

TEST(ValueTest, AnObjectIsGivenAsWhatItIs) {
    const auto list = Array::make({Value(1)});
    const Value value = list;
    EXPECT_EQ(value.object(), Ref<Object>(list));
    EXPECT_EQ(value.as<Array>(), list);
    EXPECT_FALSE(value.as<String>());
    EXPECT_FALSE(value.string());
    EXPECT_FALSE(value.number());
    EXPECT_EQ(value, Value(Array::make({Value(1)}))) << "equality is the class's own";
}

TEST(ValueTest, DatesAreComparedExactly) {
    EXPECT_EQ(Value(Date{1}), Value(Date{1}));
    EXPECT_NE(Value(Date{1}), Value(Date{1.0000001}));
    EXPECT_NE(Value(Date{1}), Value(1.0));
    EXPECT_EQ(Value(Date{0}).description(), "2001-01-01 00:00:00 +0000");
}

TEST(ValueTest, AValueHoldsItsObject) {
    auto list = Array::make({});
    {
        const Value value = list;
        Value copy = value;
        EXPECT_EQ(list->referenceCount(), 3u);
        const Value moved = std::move(copy);
        EXPECT_EQ(list->referenceCount(), 3u);
    }
    EXPECT_EQ(list->referenceCount(), 1u);
}

} // namespace
} // namespace estatebook::platform
