// SPDX-License-Identifier: MIT

// A book among files, folders and other people: what may not be written, what was put in its place, what is left beside it, and a
// disk without room.

#include "support/MemoryDisk.hpp"
#include "support/StoreKinds.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <grp.h>
#include <iterator>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace estatebook::platform {
namespace {

namespace files = std::filesystem;
using test::bookModel;
using test::newChanges;
using test::RowOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Access = SQLiteStore::Access;

StoreResult<Ref<SQLiteStore>> open(const std::string& path, Access access = Access::Write) {
    return SQLiteStore::open(path, bookModel(), {.access = access, .patience = {}});
}

StoreChanges tenantsUpTo(RowKey key) {
    StoreChanges changes = newChanges();
    changes.insertions = {RowOf("Tenant", key).with(keys::name, String::make("Grace"))};
    return changes;
}

void makeBook(const std::string& path) {
    const auto store = SQLiteStore::create(path, bookModel(), {});
    ASSERT_TRUE(store) << store.error().message;
    ASSERT_TRUE((*store)->save(tenantsUpTo(1))->landed());
}

std::string bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// What the work gives when somebody does it to whom the files do not belong, and who is not above all rights.
std::string asStranger(const std::function<std::string()>& work) {
    static_cast<void>(bookModel());
    std::array<int, 2> answers{};
    if (pipe(answers.data()) != 0) return "no pipe";
    const pid_t child = fork();
    if (child < 0) return "no child";
    if (child == 0) {
        constexpr unsigned Nobody = 65534;
        const bool isRoot = geteuid() == 0;
        const bool isStranger =
            !isRoot || (setgroups(0, nullptr) == 0 && setgid(Nobody) == 0 && setuid(Nobody) == 0);
        const std::string answer = isStranger ? work() : "nobody is a stranger here";
        _exit(write(answers[1], answer.data(), answer.size()) == std::ssize(answer) ? 0 : 1);
    }
    close(answers[1]);
    std::string answer;
    std::array<char, 512> part{};
    for (ssize_t count = 0; (count = read(answers[0], part.data(), part.size())) > 0;)
        answer.append(part.data(), static_cast<std::size_t>(count));
    close(answers[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? answer : "the stranger died";
}

class BookAccessTest : public testing::Test {
protected:
    BookAccessTest() {
        makeBook(path_);
        files::remove(path_ + "-journal");
    }
    // So that the folder can be taken away.
    ~BookAccessTest() override { chmod(folder_.file("").c_str(), 0700); }

    void setModes(mode_t ofFolder, mode_t ofBook, mode_t ofLock) {
        ASSERT_EQ(0, chmod(path_.c_str(), ofBook));
        ASSERT_EQ(0, chmod((path_ + ".lock").c_str(), ofLock));
        ASSERT_EQ(0, chmod(folder_.file("").c_str(), ofFolder));
    }
    /// Reading goes well, and writing is refused with one line.
    void expectOnlyReading() {
        EXPECT_EQ("1 []", asStranger([&] {
                      const auto store = open(path_, Access::Read);
                      if (!store) return store.error().message;
                      const auto findings = *(*store)->check();
                      return std::to_string(*(*store)->lastKey()) + " " +
                             (findings.empty() ? "[]" : findings.front());
                  }));
        const std::string refusal = asStranger([&] {
            const auto store = open(path_);
            if (store) return std::string("it may be written");
            return (store.error().code == StoreErrorCode::ReadOnly ? "ReadOnly: " : "another error: ") +
                   store.error().message;
        });
        EXPECT_THAT(refusal, StartsWith("ReadOnly: "));
        EXPECT_THAT(refusal, HasSubstr(path_));
        EXPECT_THAT(refusal, Not(HasSubstr("\n")));
    }

    test::TestFolder folder_;
    const std::string path_ = folder_.file("book.estatebook");
};

// Rights

TEST_F(BookAccessTest, ABookThatMayNotBeWrittenMayBeRead) {
    setModes(0777, 0444, 0666);
    expectOnlyReading();
}

TEST_F(BookAccessTest, ABookInAFolderThatMayNotBeWrittenMayBeRead) {
    setModes(0555, 0666, 0666);
    expectOnlyReading();
}

TEST_F(BookAccessTest, ABookWhoseLockIsSomebodyElsesMayBeRead) {
    setModes(0777, 0666, 0444);
    expectOnlyReading();
}

TEST_F(BookAccessTest, ABookThatMayNotBeReadIsRefused) {
    setModes(0777, 0000, 0666);
    EXPECT_THAT(asStranger([&] { return open(path_, Access::Read).error().message; }), HasSubstr(path_));
}

TEST_F(BookAccessTest, NoBookIsMadeInAFolderThatMayNotBeWritten) {
    setModes(0555, 0666, 0666);
    const std::string other = folder_.file("other.estatebook");
    EXPECT_EQ("ReadOnly", asStranger([&] {
                  const auto store = SQLiteStore::create(other, bookModel(), {});
                  if (store) return std::string("made");
                  return store.error().code == StoreErrorCode::ReadOnly ? "ReadOnly" : store.error().message;
              }));
    EXPECT_FALSE(files::exists(other));
}

// Links

TEST_F(BookAccessTest, ALinkThatLeadsNowhereIsNoBookAndNoPlaceForOne) {
    const std::string link = folder_.file("link.estatebook");
    files::create_symlink(folder_.file("nowhere"), link);
    EXPECT_EQ(StoreErrorCode::Missing, open(link).error().code);
    EXPECT_EQ(StoreErrorCode::Exists, SQLiteStore::create(link, bookModel(), {}).error().code);
    EXPECT_FALSE(files::exists(folder_.file("nowhere")));
}

TEST_F(BookAccessTest, ABookIsWrittenThroughALinkWhereItIs) {
    const std::string link = folder_.file("link.estatebook");
    files::create_symlink(path_, link);
    ASSERT_TRUE((*open(link))->save(tenantsUpTo(2))->landed());
    EXPECT_TRUE(files::is_symlink(link));
    EXPECT_EQ(2, *(*open(path_))->lastKey());
}

// Taken away, or replaced, while it is open

TEST_F(BookAccessTest, ABookThatIsDeletedIsNotWrittenAndCanStillBeRead) {
    const auto store = *open(path_);
    const auto reader = *open(path_, Access::Read);
    files::remove(path_);
    const auto outcome = store->save(tenantsUpTo(2));
    ASSERT_FALSE(outcome);
    EXPECT_EQ(StoreErrorCode::Moved, outcome.error().code);
    EXPECT_EQ(1, *store->lastKey());
    EXPECT_THAT(*reader->check(), IsEmpty());
    EXPECT_FALSE(files::exists(path_));
}

TEST_F(BookAccessTest, WhatWasPutInABooksPlaceIsLeftAlone) {
    const std::string other = folder_.file("other.estatebook");
    makeBook(other);
    const auto store = *open(path_);
    files::rename(other, path_);
    const std::string before = bytesOf(path_);
    const auto outcome = store->save(tenantsUpTo(2));
    ASSERT_FALSE(outcome);
    EXPECT_EQ(StoreErrorCode::Moved, outcome.error().code);
    EXPECT_EQ(before, bytesOf(path_));
    EXPECT_EQ(1, *store->lastKey());
}

TEST(BookOnADiskTest, AnotherBookIsNotTakenForTheOneThatFailed) {
    const std::string path = "/book.estatebook";
    test::MemoryDisk disk;
    test::DiskContent others;
    {
        test::MemoryDisk elsewhere;
        ASSERT_TRUE(SQLiteStore::create(path, bookModel(), {.fileSystem = &elsewhere}));
        others = elsewhere.content();
    }
    const auto store = *SQLiteStore::create(path, bookModel(), {.fileSystem = &disk});
    const std::string identifier(store->identifier());
    // The commit fails, and as soon as the file is looked at again it is another one.
    bool isReplaced = false;
    bool hasFailed = false;
    disk.fault = [&](test::MemoryDisk::Call call) {
        using Call = test::MemoryDisk::Call;
        if (hasFailed && !isReplaced && call == Call::Open) {
            isReplaced = true;
            disk.load(others);
        }
        hasFailed = hasFailed || call == Call::Sync;
        return hasFailed && !isReplaced && call != Call::Open ? test::MemoryDisk::Fault::Fails
                                                              : test::MemoryDisk::Fault::None;
    };
    const StoreChanges changes = tenantsUpTo(1);
    const auto outcome = store->save(changes);
    ASSERT_TRUE(isReplaced);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(StoreErrorCode::OutcomeUnknown, outcome.error().code) << outcome.error().message;
    EXPECT_EQ(StoreErrorCode::Moved, store->hasLanded(changes.token).error().code);
    EXPECT_EQ(StoreErrorCode::Moved, store->save(changes).error().code);
    EXPECT_EQ(identifier, store->identifier());
}

// What is left beside a book

TEST_F(BookAccessTest, ANewBookDoesNotTakeBackTheSaveOfOneThatIsGone) {
    // The journal of a save that never ended, of a book that was deleted without it.
    test::MemoryDisk disk;
    std::string journal;
    {
        const auto store = *SQLiteStore::create("/book.estatebook", bookModel(), {.fileSystem = &disk});
        disk.fault = [&](test::MemoryDisk::Call call) {
            const auto now = disk.content()["/book.estatebook-journal"];
            if (call == test::MemoryDisk::Call::Truncate && !now.empty()) journal = now;
            return test::MemoryDisk::Fault::None;
        };
        ASSERT_TRUE(store->save(tenantsUpTo(1))->landed());
    }
    ASSERT_FALSE(journal.empty());
    const std::string path = folder_.file("new.estatebook");
    std::ofstream(path + "-journal", std::ios::binary) << journal;
    const auto store = SQLiteStore::create(path, bookModel(), {});
    ASSERT_FALSE(store);
    EXPECT_EQ(StoreErrorCode::Exists, store.error().code);
    EXPECT_THAT(store.error().message, HasSubstr("-journal"));
    EXPECT_EQ(journal, bytesOf(path + "-journal"));
    EXPECT_FALSE(files::exists(path));
}

// A small disk

TEST(BookOnADiskTest, ADiskMayBecomeFullAtAnyByte) {
    const std::string path = "/book.estatebook";
    std::size_t saved = 0;
    std::size_t refused = 0;
    for (std::size_t capacity = 0; capacity < 420'000; capacity += 3'001) {
        SCOPED_TRACE(capacity);
        test::MemoryDisk disk;
        disk.capacity = capacity;
        auto store = SQLiteStore::create(path, bookModel(), {.fileSystem = &disk});
        if (!store) {
            ++refused;
            EXPECT_EQ(StoreErrorCode::Full, store.error().code) << store.error().message;
            EXPECT_THAT(disk.content(), IsEmpty());
            continue;
        }
        RowKey last = NoRow;
        StoreChanges changes;
        for (;;) {
            changes = newChanges();
            changes.insertions = {
                RowOf("Tenant", last + 1).with(keys::name, String::make(std::string(20'000, 'n')))};
            const auto outcome = (*store)->save(changes);
            if (!outcome) {
                EXPECT_EQ(StoreErrorCode::Full, outcome.error().code) << outcome.error().message;
                break;
            }
            ++last;
            ++saved;
        }
        EXPECT_EQ(last, *(*store)->lastKey());
        EXPECT_THAT(*(*store)->check(), IsEmpty());
        store = SQLiteStore::open(path, bookModel(), {.access = Access::Read, .fileSystem = &disk});
        ASSERT_TRUE(store) << store.error().message;
        EXPECT_EQ(last, *(*store)->lastKey());
        disk.capacity = SIZE_MAX;
        store = StoreResult<Ref<SQLiteStore>>(StoreError{});
        store = SQLiteStore::open(path, bookModel(), {.fileSystem = &disk});
        EXPECT_TRUE((*store)->save(changes)->landed());
    }
    EXPECT_GT(saved, 100u);
    EXPECT_GT(refused, 10u);
}

} // namespace
} // namespace estatebook::platform
