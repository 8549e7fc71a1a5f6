// SPDX-License-Identifier: MIT
#include "platform/persistence/Slots.hpp"

#include "store/TKTenureTransaction.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <optional>

namespace estatebook::platform {
namespace {

static_assert(sizeof(DateSlot) == sizeof(Date));
static_assert(sizeof(DecimalSlot) == sizeof(Decimal));
static_assert(sizeof(NumberSlot) == sizeof(std::uint64_t));
static_assert(sizeof(ToManySlot) == sizeof(void*));

void expectKept(const Number& number) {
    NumberSlot slot;
    slot = number;
    const std::optional<Number> kept = slot.get();
    ASSERT_TRUE(kept) << number.description();
    EXPECT_EQ(kept->kind(), number.kind()) << number.description();
    EXPECT_EQ(*kept, number);
}

TEST(NumberSlotTest, HoldsNothingAtFirst) {
    const NumberSlot slot;
    EXPECT_EQ(slot.get(), std::nullopt);
}

TEST(NumberSlotTest, KeepsNumbersOfEachKindWithTheirKind) {
    expectKept(false);
    expectKept(true);
    expectKept(0);
    expectKept(-1);
    expectKept(0u);
    expectKept(30u);
    expectKept(0.5f);
    expectKept(0.0);
    expectKept(-2.5);
    expectKept(Decimal::parse("0.1"));
}

TEST(NumberSlotTest, KeepsWholeNumbersUpToTheirLimits) {
    for (int bits = 0; bits < 63; ++bits) {
        const std::int64_t power = std::int64_t{1} << bits;
        for (const std::int64_t whole : {power - 1, power, -power, -power - 1}) {
            expectKept(whole);
            expectKept(static_cast<std::uint64_t>(whole));
        }
    }
    expectKept(std::numeric_limits<std::int64_t>::min());
    expectKept(std::numeric_limits<std::int64_t>::max());
    expectKept(std::numeric_limits<std::uint64_t>::max());
}

TEST(NumberSlotTest, KeepsEachBitOfABinaryNumber) {
    for (const double binary : {0.1, -0.0, 1.0 / 3, std::numeric_limits<double>::denorm_min(),
                                std::numeric_limits<double>::infinity()}) {
        NumberSlot slot;
        slot = Number(binary);
        ASSERT_TRUE(slot.get());
        EXPECT_EQ(std::bit_cast<std::uint64_t>(slot.get()->doubleValue()),
                  std::bit_cast<std::uint64_t>(binary));
    }
    expectKept(std::numeric_limits<float>::denorm_min());
    expectKept(-std::numeric_limits<float>::infinity());
}

TEST(NumberSlotTest, TakesOneNumberAfterAnother) {
    NumberSlot slot;
    for (const std::optional<Number> number :
         {std::optional(Number(Decimal::parse("1.5"))), std::optional(Number(0.1)), std::optional(Number(7)),
          std::optional<Number>(), std::optional(Number(Decimal::parse("2")))}) {
        slot = number;
        EXPECT_EQ(slot.get(), number);
    }
}

// A book of a large property management has hundreds of thousands of them.
static_assert(sizeof(TKTenureTransaction) <= 160);

} // namespace
} // namespace estatebook::platform
