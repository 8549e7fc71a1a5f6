// SPDX-License-Identifier: MIT
#include "platform/values/Array.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <stdexcept>

namespace estatebook::platform {
namespace {

/// An object of a kilobyte, so that few of them need several pieces of memory. Counts those that live.
class Large final : public Object {
public:
    explicit Large(std::size_t number) : Object(Counting::Shared) {
        if (number == failAt) throw std::runtime_error("Large");
        content_[0] = number;
        ++living;
    }
    ~Large() override { --living; }
    [[nodiscard]] std::size_t number() const { return content_[0]; }

    static inline std::size_t living = 0;
    static inline std::size_t failAt = static_cast<std::size_t>(-1);

protected:
    void dispose() const noexcept override { ObjectBlock<Large>::dispose(this); }

private:
    std::array<std::size_t, 126> content_{};
};

constexpr std::size_t Many = 70000; // some 68 MiB, three pieces

Ref<ArrayOf<Large>> row(std::size_t count) {
    ArrayOf<Large>::Builder builder(count);
    for (std::size_t number = 0; number < count; ++number) builder.emplace(number);
    return std::move(builder).finish();
}

TEST(ObjectBlockTest, ObjectsStandInTheOrderInWhichTheyWereMade) {
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}, std::size_t{12}, Many}) {
        const auto objects = row(count);
        ASSERT_EQ(objects->count(), count);
        EXPECT_EQ(Large::living, count);
        std::size_t number = 0;
        for (const Large& object : *objects) ASSERT_EQ(object.number(), number++);
    }
    EXPECT_EQ(Large::living, 0u);
}

TEST(ObjectBlockTest, AnObjectThatIsHeldOutlivesItsBlock) {
    for (const std::size_t place : {std::size_t{0}, std::size_t{31000}, std::size_t{32000}, Many - 1}) {
        Ref<Large> held;
        {
            const auto objects = row(Many);
            held = Ref<Large>(&(*objects)[place]);
        }
        EXPECT_EQ(Large::living, 1u);
        EXPECT_EQ(held->number(), place);
        held = nullptr;
        EXPECT_EQ(Large::living, 0u);
    }
}

TEST(ObjectBlockTest, ABlockNeedNotBeFilled) {
    ArrayOf<Large>::Builder builder(Many);
    builder.emplace(std::size_t{7});
    EXPECT_EQ(builder.count(), 1u);
    EXPECT_EQ((*std::move(builder).finish())[0].number(), 7u);
    EXPECT_EQ(Large::living, 0u);
}

TEST(ObjectBlockTest, WhenAnObjectCannotBeMadeTheOthersAreEnded) {
    for (const std::size_t place : {std::size_t{0}, std::size_t{5}, Many - 1}) {
        Large::failAt = place;
        EXPECT_THROW((void)row(Many), std::runtime_error);
        Large::failAt = static_cast<std::size_t>(-1);
        EXPECT_EQ(Large::living, 0u);
    }
}

TEST(ObjectBlockTest, TooManyObjectsAreRefused) {
    EXPECT_THROW(ArrayOf<Large>::Builder(std::size_t{1} << 30), std::length_error);
}

} // namespace
} // namespace estatebook::platform
