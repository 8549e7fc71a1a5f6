// SPDX-License-Identifier: MIT

// Several programs that write and read one book as fast as they can. Each save of each of them is there, and whoever reads sees
// whole saves only.

#include "support/StoreKinds.hpp"

#include <gtest/gtest.h>

#include <array>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

namespace estatebook::platform {
namespace {

constexpr int Writers = 3;
constexpr int SavesOfEach = 15;

/// Opens the book whenever it is free, saves two rows and lets it go. Gives what went wrong.
int writeOften(const std::string& path) {
    for (int saved = 0; saved < SavesOfEach;) {
        const auto store = SQLiteStore::open(path, test::bookModel(), {});
        if (!store) {
            if (store.error().code != StoreErrorCode::Locked) return 2;
            sched_yield();
            continue;
        }
        const RowKey last = *(*store)->lastKey();
        StoreChanges changes = test::newChanges();
        changes.insertions = {test::RowOf("Tenant", last + 1).with(keys::name, String::make("Ada")),
                              test::RowOf("AccountTag", last + 2).to(keys::owner, last + 1, 0)};
        const auto outcome = (*store)->save(changes);
        if (!outcome || !outcome->landed()) return 3;
        ++saved;
    }
    return 0;
}

TEST(StoreRivalsTest, EveryoneGetsHisTurnAndNothingIsLost) {
    const test::TestFolder folder;
    const std::string path = folder.file("book.estatebook");
    ASSERT_TRUE(SQLiteStore::create(path, test::bookModel(), {}));
    std::array<pid_t, Writers> children{};
    for (pid_t& child : children) {
        child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) _exit(writeOften(path));
    }
    const auto wanted = static_cast<std::size_t>(Writers * SavesOfEach);
    std::size_t seen = 0;
    for (std::size_t running = children.size(); running > 0;) {
        const auto reader = SQLiteStore::open(path, test::bookModel(), {.access = SQLiteStore::Access::Read});
        ASSERT_TRUE(reader) << reader.error().message;
        const auto tenants = (*reader)->fetchKeys(test::entityNamed("Tenant"))->size();
        EXPECT_EQ(tenants, (*reader)->fetchKeys(test::entityNamed("AccountTag"))->size());
        EXPECT_EQ(tenants, (*reader)->commits()->size());
        EXPECT_GE(tenants, seen);
        seen = tenants;
        int status = 0;
        if (waitpid(-1, &status, WNOHANG) <= 0) continue;
        --running;
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(0, WEXITSTATUS(status));
    }
    const auto store = SQLiteStore::open(path, test::bookModel(), {});
    ASSERT_TRUE(store) << store.error().message;
    EXPECT_EQ(wanted, (*store)->commits()->size());
    EXPECT_EQ(std::vector<std::string>(), *(*store)->check());
}

} // namespace
} // namespace estatebook::platform
