// SPDX-License-Identifier: MIT

// A program that is killed while it saves, again and again: what it had acknowledged is there, every save is whole or absent, and
// the book is sound.

#include "support/StoreKinds.hpp"

#include <gtest/gtest.h>

#include <csignal>
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

TEST(StoreKillTest, WhatWasAcknowledgedIsThereHoweverTheWriterEnds) {
    const test::TestFolder folder;
    const std::string path = folder.file("book.estatebook");
    ASSERT_TRUE(SQLiteStore::create(path, test::bookModel(), {}));
    constexpr std::uint64_t Seed = 4;
    std::mt19937_64 random(Seed);
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE("seed " + std::to_string(Seed) + ", round " + std::to_string(round));
        int acknowledgements[2];
        ASSERT_EQ(0, pipe(acknowledgements));
        const pid_t child = fork();
        if (child == 0) saveForEver(path, acknowledgements[1]);
        close(acknowledgements[1]);
        RowKey acknowledged = NoRow;
        RowKey key = NoRow;
        for (auto wanted = 1 + random() % 4; wanted > 0; --wanted)
            if (read(acknowledgements[0], &key, sizeof key) == sizeof key) acknowledged = key;
        for (auto idle = random() % 300'000; idle > 0; --idle) static_cast<void>(random());
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(child, waitpid(child, &status, 0));
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended by itself";
        while (read(acknowledgements[0], &key, sizeof key) == sizeof key) acknowledged = key;
        close(acknowledgements[0]);

        const auto store = SQLiteStore::open(path, test::bookModel(), {});
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
}

} // namespace
} // namespace estatebook::platform
