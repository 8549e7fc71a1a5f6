// SPDX-License-Identifier: MIT

// A program that is killed while it saves, again and again: what it had acknowledged is there, every save is whole or absent, and
// the book is sound.

#include "support/Effort.hpp"
#include "support/StoreKinds.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <optional>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace estatebook::platform {
namespace {

/// Saves tenants by twos until it is killed, and tells the last key of each save that landed.
[[noreturn]] void saveForEver(const std::string& path, int acknowledgements) {
    const auto store = SQLiteStore::open(path, test::bookModel(), {});
    if (!store) _exit(1);
    for (RowKey key = *(*store)->lastKey();; key += 2) {
        StoreChanges changes = test::newChanges();
        changes.insertions = {test::RowOf("Tenant", key + 1).with(keys::name, String::make("Ada")),
                              test::RowOf("AccountTag", key + 2).to(keys::owner, key + 1, 0)};
        const auto outcome = (*store)->save(changes);
        const RowKey last = key + 2;
        if (!outcome || write(acknowledgements, &last, sizeof last) != sizeof last) _exit(1);
    }
}

/// Kills a writer of the book after some saves, and looks what it left.
class Killer {
public:
    explicit Killer(std::mt19937_64& random) : random_(random) {
        EXPECT_TRUE(SQLiteStore::create(path_, test::bookModel(), {}));
    }

    void kill() {
        int acknowledgements[2];
        ASSERT_EQ(0, pipe(acknowledgements));
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) saveForEver(path_, acknowledgements[1]);
        close(acknowledgements[1]);
        RowKey acknowledged = NoRow;
        RowKey key = NoRow;
        for (auto wanted = 1 + random_() % 4; wanted > 0; --wanted)
            if (read(acknowledgements[0], &key, sizeof key) == sizeof key) acknowledged = key;
        for (auto idle = random_() % 300'000; idle > 0; --idle) static_cast<void>(random_());
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(child, waitpid(child, &status, 0));
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended by itself";
        while (read(acknowledgements[0], &key, sizeof key) == sizeof key) acknowledged = key;
        close(acknowledgements[0]);

        const auto store = SQLiteStore::open(path_, test::bookModel(), {});
        ASSERT_TRUE(store) << store.error().message;
        const RowKey last = *(*store)->lastKey();
        EXPECT_GT(acknowledged, NoRow);
        EXPECT_GE(last, acknowledged);
        EXPECT_EQ(0, last % 2);
        EXPECT_EQ(static_cast<std::size_t>(last / 2),
                  (*store)->fetchKeys(test::entityNamed("Tenant"))->size());
        EXPECT_EQ(static_cast<std::size_t>(last / 2),
                  (*store)->fetchKeys(test::entityNamed("AccountTag"))->size());
        EXPECT_EQ(std::vector<std::string>(), *(*store)->check());
    }

private:
    std::mt19937_64& random_;
    test::TestFolder folder_;
    std::string path_ = folder_.file("book.estatebook");
};

TEST(StoreKillTest, WhatWasAcknowledgedIsThereHoweverTheWriterEnds) {
    constexpr std::uint64_t KillsOfABook = 50;
    const std::uint64_t seed = test::anySeed();
    const std::uint64_t wanted = test::effort("ESTATEBOOK_KILLS", 200, 20);
    std::mt19937_64 random(seed);
    std::optional<Killer> killer;
    std::uint64_t kills = 0;
    for (; kills < wanted && !HasFailure(); ++kills) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", kill " + std::to_string(kills));
        if (kills % KillsOfABook == 0) killer.emplace(random);
        killer->kill();
    }
    std::printf("%llu writers were killed (seed %llu)\n", static_cast<unsigned long long>(kills),
                static_cast<unsigned long long>(seed));
}

} // namespace
} // namespace estatebook::platform
