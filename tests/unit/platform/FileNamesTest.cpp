// SPDX-License-Identifier: MIT
#include "platform/system/FileNames.hpp"

#include "support/TestFolder.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace estatebook::platform {
namespace {

class FileNamesTest : public testing::Test {
protected:
    static void write(const std::string& path, const std::string& text) { std::ofstream(path) << text; }
    static std::string content(const std::string& path) {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    test::TestFolder folder;
    const std::string draft = folder.file("draft");
    const std::string name = folder.file("name");
};

TEST_F(FileNamesTest, AFreeNameIsGiven) {
    write(draft, "new");
    EXPECT_FALSE(renameToFree(draft, name));
    EXPECT_EQ(content(name), "new");
    EXPECT_FALSE(std::filesystem::exists(draft));
}

TEST_F(FileNamesTest, ATakenNameIsNot) {
    write(draft, "new");
    write(name, "old");
    EXPECT_EQ(renameToFree(draft, name), std::errc::file_exists);
    EXPECT_EQ(content(name), "old");
    std::filesystem::remove(name);
    std::filesystem::create_symlink("nowhere", name);
    EXPECT_EQ(renameToFree(draft, name), std::errc::file_exists);
    EXPECT_TRUE(std::filesystem::is_symlink(name));
    EXPECT_EQ(content(draft), "new");
}

TEST_F(FileNamesTest, AFileTakesThePlaceOfAnother) {
    write(draft, "new");
    write(name, "old");
    EXPECT_FALSE(renameOver(draft, name));
    EXPECT_EQ(content(name), "new");
    EXPECT_FALSE(std::filesystem::exists(draft));
    EXPECT_EQ(renameOver(draft, name), std::errc::no_such_file_or_directory);
    EXPECT_EQ(content(name), "new");
}

TEST_F(FileNamesTest, WhatIsNotThereCannotBeKept) {
    write(name, "new");
    EXPECT_FALSE(syncFile(name));
    EXPECT_FALSE(syncFolderOf(name));
    EXPECT_FALSE(syncFolderOf("in this folder"));
    EXPECT_EQ(syncFile(draft), std::errc::no_such_file_or_directory);
    EXPECT_EQ(syncFolderOf(folder.file("none/name")), std::errc::no_such_file_or_directory);
}

} // namespace
} // namespace estatebook::platform
