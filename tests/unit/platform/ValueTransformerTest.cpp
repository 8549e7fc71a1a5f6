// SPDX-License-Identifier: MIT
#include "platform/values/ValueTransformer.hpp"

#include "platform/values/Exception.hpp"

#include <gtest/gtest.h>

namespace estatebook::platform {
namespace {

class Plain : public ValueTransformer {};

class Doubling : public ValueTransformer {
public:
    [[nodiscard]] Value transformedValue(const Value& value) const override {
        return value.unsignedIntegerValue() * 2;
    }
};

class OneWay final : public Doubling {
public:
    [[nodiscard]] bool allowsReverseTransformation() const noexcept override { return false; }
};

TEST(ValueTransformerTest, AWayBackIsAllowedUnlessAClassSaysOtherwise) {
    EXPECT_TRUE(makeRef<Plain>()->allowsReverseTransformation());
    EXPECT_FALSE(makeRef<OneWay>()->allowsReverseTransformation());
    EXPECT_EQ(makeRef<Plain>()->transformedValueClass(), "Object");
}

TEST(ValueTransformerTest, AValueIsItsOwnTransformedValue) {
    for (const Value& value : {Value(), Value(7), Value(String::make("a"))}) {
        EXPECT_TRUE(makeRef<Plain>()->transformedValue(value).isIdentical(value));
        EXPECT_TRUE(makeRef<Plain>()->reverseTransformedValue(value).isIdentical(value));
    }
}

TEST(ValueTransformerTest, TheWayBackTransformsForthUnlessAClassSaysOtherwise) {
    EXPECT_EQ(makeRef<Doubling>()->reverseTransformedValue(4), Value(8));
}

TEST(ValueTransformerTest, AWayBackThatIsNotAllowedRaises) {
    EXPECT_EQ(makeRef<OneWay>()->transformedValue(4), Value(8));
    EXPECT_THROW(static_cast<void>(makeRef<OneWay>()->reverseTransformedValue(4)), InvalidArgumentException);
}

} // namespace
} // namespace estatebook::platform
