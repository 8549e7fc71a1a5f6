// SPDX-License-Identifier: MIT

// Files that are written whole or not at all.

#include "estatebook/WholeFile.hpp"

#include "estatebook/Failure.hpp"

#include "support/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

namespace estatebook {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class WholeFileTest : public testing::Test {
protected:
    [[nodiscard]] std::string path(std::string_view name) const { return folder / name; }
    [[nodiscard]] std::string contentOf(std::string_view name) const {
        std::ifstream stream(folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(folder / ""))
            found.push_back(entry.path().filename());
        std::ranges::sort(found);
        return found;
    }
    static std::string refusalOf(const std::string& path) {
        try {
            writeWholeFile(path, "new");
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "not refused";
    }

    testkit::TemporaryFolder folder;
};

TEST_F(WholeFileTest, ANewFileHoldsTheContentAndNothingElseIsLeft) {
    const std::string content(3'000'000, '\0');
    writeWholeFile(path("a.pdf"), content);
    EXPECT_EQ(contentOf("a.pdf"), content);
    EXPECT_THAT(names(), ElementsAre("a.pdf"));
}

TEST_F(WholeFileTest, ANewFileForItsOwnerAloneIsReadByNobodyElse) {
    using std::filesystem::perms;
    writeWholeFile(path("a.json"), "new", Readers::OwnerAlone);
    EXPECT_EQ(contentOf("a.json"), "new");
    EXPECT_EQ(std::filesystem::status(path("a.json")).permissions(), perms::owner_read | perms::owner_write);
}

TEST_F(WholeFileTest, AFileThatIsThereIsReplacedAndKeepsItsPermissions) {
    testkit::writeFile(path("a.pdf"), "something longer");
    const auto permissions = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
    std::filesystem::permissions(path("a.pdf"), permissions);
    writeWholeFile(path("a.pdf"), "new");
    EXPECT_EQ(contentOf("a.pdf"), "new");
    EXPECT_EQ(std::filesystem::status(path("a.pdf")).permissions(), permissions);
    EXPECT_THAT(names(), ElementsAre("a.pdf"));
}

TEST_F(WholeFileTest, ALinkStaysAndWhatItLeadsToIsReplaced) {
    testkit::writeFile(path("a.pdf"), "old");
    std::filesystem::create_symlink("a.pdf", path("link"));
    writeWholeFile(path("link"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
    EXPECT_EQ(contentOf("a.pdf"), "new");
}

TEST_F(WholeFileTest, AFileThatStoodInTheWayOfADraftStays) {
    for (int number = 0; number < 3; ++number)
        testkit::writeFile(path("a.pdf.new-" + std::to_string(getpid()) + "-" + std::to_string(number)), "x");
    writeWholeFile(path("a.pdf"), "new");
    EXPECT_EQ(contentOf("a.pdf"), "new");
    EXPECT_EQ(names().size(), 4u);
}

TEST_F(WholeFileTest, WhatIsNoPlainFileIsRefused) {
    EXPECT_THAT(refusalOf(path("")), HasSubstr("no plain file"));
    EXPECT_THAT(refusalOf("/dev/null"), HasSubstr("no plain file"));
    EXPECT_THAT(refusalOf(path("none/a.pdf")), HasSubstr("no such folder"));
    EXPECT_THAT(refusalOf(""), HasSubstr("is empty"));
    EXPECT_EQ(names().size(), 0u);
}

TEST_F(WholeFileTest, ABookFileIsNeverReplaced) {
    const std::string start("SQLite format 3\0 and more", 25);
    testkit::writeFile(path("a.pdf"), start);
    EXPECT_THAT(refusalOf(path("a.pdf")), HasSubstr("is a book file"));
    EXPECT_EQ(contentOf("a.pdf"), start);
    EXPECT_THAT(refusalOf(path("new.estatebook")), HasSubstr("is a book file"));
}

TEST_F(WholeFileTest, WhereNothingCanBeWrittenWhatWasThereStays) {
    // A name that is as long as names may be has no room for a draft beside it.
    const std::string name(255, 'n');
    testkit::writeFile(path(name), "old");
    EXPECT_THAT(refusalOf(path(name)), HasSubstr("it cannot be written"));
    EXPECT_EQ(contentOf(name), "old");
    EXPECT_EQ(names().size(), 1u);
}

} // namespace
} // namespace estatebook
