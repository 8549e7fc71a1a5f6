// SPDX-License-Identifier: MIT
#include "platform/values/String.hpp"

#include <gtest/gtest.h>

namespace estatebook::platform {
namespace {

constinit Constant<String> greeting{std::string_view("hello")};

TEST(StringTest, TwoObjectsOfOneTextAreEqualButNotTheSame) {
    const Ref<String> a = String::make("Rent");
    const Ref<String> b = String::make("Rent");
    EXPECT_EQ(*a, *b);
    EXPECT_TRUE(a->isEqual(*b));
    EXPECT_EQ(a->hash(), b->hash());
    EXPECT_FALSE(a == b);
}

TEST(StringTest, ComposedAndDecomposedLettersAreTwoTexts) {
    EXPECT_FALSE(*String::make("\u00e9") == "e\u0301");
}

TEST(StringTest, AReferenceCountsAndTheLastOneDisposes) {
    Ref<String> a = String::make("x");
    EXPECT_EQ(a->referenceCount(), 1u);
    {
        const Ref<String> b = a;
        EXPECT_EQ(a->referenceCount(), 2u);
    }
    EXPECT_EQ(a->referenceCount(), 1u);
}

TEST(StringTest, AConstantIsNeverCounted) {
    const Ref<String> a(greeting.get());
    const Ref<String> b = a;
    EXPECT_EQ(a->referenceCount(), 0u);
    EXPECT_EQ(b->view(), "hello");
}

} // namespace
} // namespace estatebook::platform
