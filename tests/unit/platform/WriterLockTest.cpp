// SPDX-License-Identifier: MIT

// One program writes a book at a time, and whoever is refused learns who does.

#include "platform/persistence/store/WriterLock.hpp"
#include "support/TestFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>

namespace estatebook::platform {
namespace {

using testing::HasSubstr;

const CommitOrigin Ada{Date{800000000}, "Ada Field", "estatebook", "pay"};

class WriterLockTest : public testing::Test {
protected:
    test::TestFolder folder_;
    const std::string book_ = folder_.file("book.estatebook");
};

TEST_F(WriterLockTest, TheSecondIsToldWhoHasItAndSinceWhen) {
    const auto lock = WriterLock::take(book_, Ada);
    ASSERT_TRUE(lock) << lock.error().message;
    const auto second = WriterLock::take(book_, {});
    ASSERT_FALSE(second);
    EXPECT_EQ(StoreErrorCode::Locked, second.error().code);
    EXPECT_EQ(book_, second.error().path);
    EXPECT_EQ(book_ +
                  ": it cannot be opened for writing: it is held by Ada Field with estatebook pay since " +
                  Ada.when.description() + ". Close it there first.",
              second.error().message);
    ASSERT_TRUE(second.error().holder);
    EXPECT_EQ("Ada Field", second.error().holder->author);
    EXPECT_EQ("estatebook pay", second.error().holder->program);
    EXPECT_EQ(Ada.when, second.error().holder->since);
}

TEST_F(WriterLockTest, TheHolderIsReadFromTheEnd) {
    const auto lock = WriterLock::take(book_, {Ada.when, "Ada with Grace since May", "", ""});
    const auto second = WriterLock::take(book_, {});
    ASSERT_TRUE(second.error().holder);
    EXPECT_EQ("Ada with Grace since May", second.error().holder->author);
    EXPECT_EQ("", second.error().holder->program);
}

TEST_F(WriterLockTest, WhatTellsNoHolderIsToldAsItIs) {
    const auto lock = WriterLock::take(book_, Ada);
    for (const char* line :
         {"", "Grace", "Grace since yesterday", "Grace with pen since 2026-05-08 22:13:20",
          "Grace with pen since 2026-02-30 22:13:20 +0000", "Grace with pen since 2026-05-08 24:00:00 +0000",
          "Grace with pen since 2026-05-08 22:13:2x +0000", "Grace with pen since 2026-05-08T22:13:20 +0000",
          "Grace since 2026-05-08 22:13:20 +0000", " since ", " with  since "}) {
        std::ofstream(book_ + ".lock") << line << '\n';
        const auto second = WriterLock::take(book_, {});
        ASSERT_FALSE(second);
        EXPECT_FALSE(second.error().holder) << line;
        EXPECT_THAT(second.error().message, HasSubstr(*line ? line : "another program"));
    }
}

TEST_F(WriterLockTest, IsGivenBackAtItsEnd) {
    static_cast<void>(WriterLock::take(book_, Ada));
    std::optional<WriterLock> held(*WriterLock::take(book_, Ada));
    EXPECT_FALSE(WriterLock::take(book_, Ada));
    held.reset();
    EXPECT_TRUE(WriterLock::take(book_, Ada));
}

TEST_F(WriterLockTest, OtherBooksAreNotConcerned) {
    const auto lock = WriterLock::take(book_, Ada);
    EXPECT_TRUE(WriterLock::take(folder_.file("other.estatebook"), Ada));
}

TEST_F(WriterLockTest, AFileThatIsLeftOverMeansNothing) {
    std::ofstream(book_ + ".lock") << "Grace since yesterday";
    EXPECT_TRUE(WriterLock::take(book_, Ada));
}

TEST_F(WriterLockTest, AHolderWithoutANameIsStillAHolder) {
    const auto lock = WriterLock::take(book_, {});
    EXPECT_THAT(WriterLock::take(book_, {}).error().message,
                HasSubstr("held by somebody with a program since"));
    const auto second = WriterLock::take(book_, {});
    ASSERT_TRUE(second.error().holder);
    EXPECT_EQ("", second.error().holder->author);
    EXPECT_EQ("", second.error().holder->program);
}

TEST_F(WriterLockTest, AHoldersNameStaysOnOneLine) {
    const auto lock = WriterLock::take(book_, {Date{}, "Ada\nField", "estate\tbook", ""});
    EXPECT_THAT(WriterLock::take(book_, {}).error().message, HasSubstr("Ada Field with estate book since"));
}

TEST_F(WriterLockTest, NeedsAFolder) {
    const auto lock = WriterLock::take(folder_.file("nowhere/book.estatebook"), Ada);
    ASSERT_FALSE(lock);
    EXPECT_EQ(StoreErrorCode::Unreadable, lock.error().code);
    EXPECT_THAT(lock.error().message, HasSubstr("nowhere/book.estatebook.lock"));
}

TEST_F(WriterLockTest, FollowsNoLink) {
    std::filesystem::create_symlink(folder_.file("elsewhere"), book_ + ".lock");
    EXPECT_FALSE(WriterLock::take(book_, Ada));
    EXPECT_FALSE(std::filesystem::exists(folder_.file("elsewhere")));
}

TEST_F(WriterLockTest, EndsWithItsProgramHoweverThatEnds) {
    int ready[2];
    ASSERT_EQ(0, pipe(ready));
    const pid_t child = fork();
    if (child == 0) {
        const auto lock = WriterLock::take(book_, Ada);
        const char answer = lock ? 'y' : 'n';
        if (write(ready[1], &answer, 1) == 1) pause();
        _exit(0);
    }
    char answer = 0;
    ASSERT_EQ(1, read(ready[0], &answer, 1));
    EXPECT_EQ('y', answer);
    EXPECT_FALSE(WriterLock::take(book_, Ada));
    kill(child, SIGKILL);
    ASSERT_EQ(child, waitpid(child, nullptr, 0));
    EXPECT_TRUE(WriterLock::take(book_, Ada));
    close(ready[0]);
    close(ready[1]);
}

} // namespace
} // namespace estatebook::platform
