// SPDX-License-Identifier: MIT
#include "platform/observation/Key.hpp"

#include "model/Keys.hpp"
#include "platform/values/Exception.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

namespace estatebook::platform {
namespace {

static_assert(sizeof(Key) == 2 && std::is_trivially_copyable_v<Key>);
static_assert(sizeof(KeySet) == 16 && std::is_trivially_copyable_v<KeySet>);
static_assert(!Key() && keys::balance);

TEST(KeyTest, TheLibrarysKeysAreTheirNames) {
    EXPECT_EQ(keys::balance.name(), "balance");
    EXPECT_EQ(Key::named("balance"), keys::balance);
    EXPECT_EQ(Key::find("isActive"), keys::isActive);
    EXPECT_NE(keys::active, keys::isActive);
}

TEST(KeyTest, EveryNameIsFoundAtItsNumberAndStandsOnce) {
    std::set<std::string_view> names;
    std::uint16_t number = 1;
    for (; !Key(number).name().empty(); ++number) {
        EXPECT_EQ(Key::named(Key(number).name()).number(), number);
        names.insert(Key(number).name());
    }
    EXPECT_EQ(names.size(), number - 1u);
    EXPECT_TRUE(names.contains("duePeriods"));
}

TEST(KeyTest, ANewNameMakesANewKeyOnce) {
    static int runs = 0; // keys stay for as long as the program runs
    const std::string name = "keyTestNewName" + std::to_string(++runs);
    EXPECT_FALSE(Key::find(name));
    const Key made = Key::named(name);
    EXPECT_GT(made.number(), keys::duePeriods.number());
    EXPECT_EQ(Key::named(std::string(name)), made);
    EXPECT_EQ(Key::find(name), made);
    EXPECT_EQ(made.name(), name);
}

TEST(KeyTest, NamesThatBeginAndEndAlikeAreToldApart) {
    for (const std::size_t middle : {0u, 1u, 2u, 3u, 9u, 300u}) {
        const std::string filling(middle, '-');
        const std::string names[] = {"keyTest1" + filling + "a" + filling + "keyTest1",
                                     "keyTest1" + filling + "b" + filling + "keyTest1"};
        const Key first = Key::named(names[0]);
        const Key second = Key::named(names[1]);
        EXPECT_NE(first, second) << middle;
        EXPECT_EQ(first.name(), names[0]);
        EXPECT_EQ(second.name(), names[1]);
        EXPECT_EQ(Key::find(names[0]), first);
    }
    std::set<Key> made;
    for (const char* name : {"k", "kk", "kkk", "kkkk", "kkkkk", "kkkkkk", "kkkkkkk", "kkkkkkkk", "kkkkkkkkk"})
        made.insert(Key::named(name));
    EXPECT_EQ(made.size(), 9u);
}

TEST(KeyTest, ThousandsOfNamesAreFoundAgain) {
    const auto nameOf = [](int number) { return "keyTestOfMany" + std::to_string(number); };
    std::vector<Key> made;
    for (int number = 0; number < 5000; ++number) made.push_back(Key::named(nameOf(number)));
    for (int number = 0; number < 5000; ++number) {
        ASSERT_EQ(Key::find(nameOf(number)), made[static_cast<std::size_t>(number)]);
        ASSERT_EQ(made[static_cast<std::size_t>(number)].name(), nameOf(number));
    }
}

TEST(KeyTest, NoKeyHasNoName) {
    EXPECT_TRUE(Key().name().empty());
    EXPECT_TRUE(Key(65535).name().empty());
}

TEST(KeyTest, AnEmptyOrDottedNameIsRefused) {
    for (const char* name : {"", ".", "a.b", "a.", ".a"})
        EXPECT_THROW(static_cast<void>(Key::named(name)), InvalidArgumentException) << name;
    EXPECT_FALSE(Key::find(""));
}

TEST(KeyTest, KeysAreNamedFromSeveralThreadsAtOnce) {
    std::vector<std::vector<Key>> found(4);
    {
        std::vector<std::jthread> threads;
        for (auto& mine : found)
            threads.emplace_back([&mine] {
                for (int number = 0; number < 200; ++number)
                    mine.push_back(Key::named("keyTestThread" + std::to_string(number)));
            });
    }
    for (const auto& each : found) EXPECT_EQ(each, found[0]);
    EXPECT_EQ(std::unordered_set<Key>(found[0].begin(), found[0].end()).size(), 200u);
    EXPECT_EQ(found[0][123].name(), "keyTestThread123");
}

TEST(KeySetTest, AKeyOfTheLibraryIsInTheSetOrNot) {
    KeySet set;
    EXPECT_TRUE(set.empty());
    for (std::uint16_t number = 1; number <= 126; ++number) {
        EXPECT_TRUE(KeySet::isExact(Key(number)));
        EXPECT_FALSE(set.mayContain(Key(number)));
        set.insert(Key(number));
        EXPECT_TRUE(set.mayContain(Key(number)));
    }
    EXPECT_FALSE(set.mayContain(Key(127)));
    for (std::uint16_t number = 1; number <= 126; ++number) set.remove(Key(number));
    EXPECT_TRUE(set.empty());
}

TEST(KeySetTest, OfTheOthersOnlyAbsenceIsCertain) {
    KeySet set;
    EXPECT_FALSE(KeySet::isExact(Key(127)));
    EXPECT_FALSE(set.mayContain(Key(900)));
    set.insert(Key(127));
    EXPECT_TRUE(set.mayContain(Key(900))) << "perhaps";
    EXPECT_FALSE(set.mayContain(keys::balance));
}

} // namespace
} // namespace estatebook::platform
