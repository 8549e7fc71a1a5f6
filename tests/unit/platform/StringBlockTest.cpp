// SPDX-License-Identifier: MIT
#include "platform/values/StringBlock.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace estatebook::platform {
namespace {

static_assert(!std::is_copy_constructible_v<StringBlock>);

std::unique_ptr<StringBlock> blockOf(const std::vector<std::string>& texts, std::size_t expectedCount) {
    StringBlock::Builder builder(expectedCount);
    for (const std::string& text : texts) {
        char* room = builder.room(text.size() + 7);
        if (!text.empty()) std::memcpy(room, text.data(), text.size());
        builder.append(text.size());
    }
    return std::make_unique<StringBlock>(std::move(builder));
}

TEST(StringBlockTest, AnEmptyBlockHasNoTexts) {
    EXPECT_EQ(blockOf({}, 0)->count(), 0u);
}

TEST(StringBlockTest, TextsAreThoseThatWereAppended) {
    const std::vector<std::string> texts{
        "first", "", "a third, longer than an ordinary text of sixty characters, as it is", ""};
    for (const std::size_t expected : {4u, 5u, 100u}) {
        const auto block = blockOf(texts, expected);
        ASSERT_EQ(block->count(), texts.size());
        for (std::size_t place = 0; place < texts.size(); ++place)
            EXPECT_EQ((*block)[place]->view(), texts[place]);
    }
}

TEST(StringBlockTest, TextsMayBeLongerThanAnybodyExpected) {
    std::vector<std::string> texts;
    for (std::size_t number = 0; number < 50; ++number)
        texts.emplace_back(number * 100, static_cast<char>('a' + number % 26));
    const auto block = blockOf(texts, texts.size());
    for (std::size_t place = 0; place < texts.size(); ++place)
        EXPECT_EQ((*block)[place]->view(), texts[place]);
}

TEST(StringBlockTest, ABuilderThatIsGivenUpLeavesNothing) {
    StringBlock::Builder builder(3);
    std::memcpy(builder.room(5), "first", 5);
    builder.append(5);
}

TEST(StringBlockTest, ATextIsOneObjectHoweverOftenItIsAskedFor) {
    const auto block = blockOf({"first", "second"}, 2);
    EXPECT_EQ((*block)[0], (*block)[0]);
    EXPECT_NE((*block)[0], (*block)[1]);
    EXPECT_TRUE((*block)[0]->isEqual(*String::make("first")));
}

TEST(StringBlockTest, ATextOutlivesItsBlock) {
    auto block = blockOf({"first", "", "third"}, 3);
    Ref<String> first = (*block)[0];
    const Ref<String> second = (*block)[1];
    block.reset();
    EXPECT_EQ(first->view(), "first");
    EXPECT_EQ(first->referenceCount(), 1u);
    const Ref<String> again = first;
    first = nullptr;
    EXPECT_EQ(again->view(), "first");
    EXPECT_EQ(second->view(), "");
}

TEST(StringBlockTest, TextsMayBeLetGoOnManyThreads) {
    for (int round = 0; round < 50; ++round) {
        std::vector<std::string> texts;
        for (int number = 0; number < 40; ++number) texts.push_back(std::to_string(number));
        auto block = blockOf(texts, texts.size());
        std::vector<std::thread> threads;
        for (std::size_t part = 0; part < 4; ++part) {
            std::vector<Ref<String>> held;
            for (std::size_t place = part; place < texts.size(); place += 2) held.push_back((*block)[place]);
            threads.emplace_back([held = std::move(held)]() mutable { held.clear(); });
        }
        block.reset();
        for (auto& thread : threads) thread.join();
    }
}

} // namespace
} // namespace estatebook::platform
