// SPDX-License-Identifier: MIT
#include "estatebook/watch/FileWatcher.hpp"

#include "support/TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace estatebook {
namespace {

using platform::RunLoop;
using testkit::writeFile;

class FileWatcherTest : public testing::Test {
protected:
    FileWatcherTest() { writeFile(file, "first"); }

    /// How often the watcher tells of what was done since it was asked last.
    int timesTold() {
        told = 0;
        while (loop.turn()) {
        }
        return told;
    }

    const testkit::TemporaryFolder folder;
    const std::filesystem::path file = folder / "book.json";
    RunLoop loop;
    int told = 0;
};

TEST_F(FileWatcherTest, AFileWrittenInPlaceIsToldOfOnceWhenItIsClosed) {
    const FileWatcher watcher(loop, file, [&] { ++told; });
    EXPECT_EQ(watcher.fault(), "");
    EXPECT_EQ(timesTold(), 0);
    {
        std::ofstream out(file);
        out << "sec" << std::flush;
        EXPECT_EQ(timesTold(), 0) << "it is still being written";
        out << "ond";
    }
    EXPECT_EQ(timesTold(), 1);
    EXPECT_EQ(timesTold(), 0);
}

TEST_F(FileWatcherTest, AFileThatIsKeptOpenIsToldOfWithEachWriteAndNotWhenItIsClosed) {
    const FileWatcher watcher(
        loop, file, [&] { ++told; }, [] { return true; });
    std::ofstream out(file, std::ios::in | std::ios::out);
    EXPECT_EQ(timesTold(), 0);
    for (int round = 0; round < 2; ++round) {
        out << "more" << std::flush;
        EXPECT_EQ(timesTold(), 1);
    }
    out.close();
    EXPECT_EQ(timesTold(), 0);
    std::filesystem::remove(file);
    EXPECT_EQ(timesTold(), 1);
}

TEST_F(FileWatcherTest, AnotherFilePutInItsPlaceIsToldOfAndFollowed) {
    const FileWatcher watcher(loop, file, [&] { ++told; });
    for (int round = 0; round < 3; ++round) {
        writeFile(folder / "new", "second");
        EXPECT_EQ(timesTold(), 0);
        std::filesystem::rename(folder / "new", file);
        EXPECT_EQ(timesTold(), 1);
    }
    writeFile(file, "third");
    EXPECT_EQ(timesTold(), 1);
}

TEST_F(FileWatcherTest, ManyChangesAreToldOnce) {
    const FileWatcher watcher(loop, file, [&] { ++told; });
    for (int round = 0; round < 1000; ++round) {
        std::filesystem::rename(file, folder / "other");
        std::filesystem::rename(folder / "other", file);
    }
    EXPECT_EQ(timesTold(), 1);
}

TEST_F(FileWatcherTest, AFileThatGoesAndComesIsToldOfTwice) {
    const FileWatcher watcher(loop, file, [&] { ++told; });
    std::filesystem::remove(file);
    EXPECT_EQ(timesTold(), 1);
    writeFile(file, "again");
    EXPECT_EQ(timesTold(), 1);
    std::filesystem::rename(file, folder / "elsewhere");
    EXPECT_EQ(timesTold(), 1);
}

TEST_F(FileWatcherTest, OtherFilesOfTheFolderAreOfNoAccount) {
    const FileWatcher watcher(loop, file, [&] { ++told; });
    writeFile(folder / "book.json.bak", "other");
    writeFile(folder / "book", "other");
    std::filesystem::remove(folder / "book");
    EXPECT_EQ(timesTold(), 0);
}

TEST_F(FileWatcherTest, ALinkIsFollowedToWhereItLeads) {
    std::filesystem::create_directory(folder / "far");
    writeFile(folder / "far" / "target", "first");
    std::filesystem::create_symlink(folder / "far" / "target", folder / "link");
    const FileWatcher watcher(loop, folder / "link", [&] { ++told; });
    writeFile(folder / "far" / "target", "second");
    EXPECT_EQ(timesTold(), 1) << "the target is written";

    std::filesystem::create_symlink(file, folder / "new");
    std::filesystem::rename(folder / "new", folder / "link");
    EXPECT_EQ(timesTold(), 1) << "the link leads elsewhere";
    writeFile(file, "third");
    EXPECT_EQ(timesTold(), 1);
    writeFile(folder / "far" / "target", "fourth");
    EXPECT_EQ(timesTold(), 0);
}

TEST_F(FileWatcherTest, AFolderThatGoesIsToldOf) {
    std::filesystem::create_directory(folder / "sub");
    writeFile(folder / "sub" / "book.json", "first");
    const FileWatcher watcher(loop, folder / "sub" / "book.json", [&] { ++told; });
    std::filesystem::remove_all(folder / "sub");
    EXPECT_EQ(timesTold(), 1);
    EXPECT_NE(watcher.fault(), "");
}

TEST_F(FileWatcherTest, AFileOfNoFolderIsNotWatched) {
    const FileWatcher watcher(loop, folder / "nowhere" / "book.json", [&] { ++told; });
    EXPECT_EQ(watcher.fault(), "No such file or directory");
    EXPECT_EQ(timesTold(), 0);
}

TEST_F(FileWatcherTest, AWatcherThatWentLeavesTheLoopAlone) {
    {
        const FileWatcher watcher(loop, file, [&] { ++told; });
    }
    writeFile(file, "second");
    EXPECT_EQ(timesTold(), 0);
    EXPECT_TRUE(loop.isEmpty());
}

} // namespace
} // namespace estatebook
