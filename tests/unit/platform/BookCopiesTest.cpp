// SPDX-License-Identifier: MIT

// Copies of book files: complete and checked, or not there; kept for a while; and what is saved of a damaged book.

#include "platform/persistence/store/sqlite/BookCopies.hpp"
#include "model/Keys.hpp"
#include "platform/calendar/Calendar.hpp"
#include "support/HeldClock.hpp"
#include "support/StoreDescription.hpp"
#include "support/StoreKinds.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace estatebook::platform {
namespace {

using estatebook::test::bookModel;
using estatebook::test::newChanges;
using estatebook::test::RowOf;
using estatebook::testkit::HeldClock;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

Ref<String> text(std::string_view characters) {
    return String::make(characters);
}

std::string bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void overwrite(const std::string& path, std::size_t place, std::string_view bytes) {
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(place));
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

class BookCopiesTest : public testing::Test {
protected:
    test::TestFolder folder;
    std::string path = folder.file("book.estatebook");
    SQLiteStore::Options options{.holder = {Date{800000000}, "Ada", "estatebook", "check"}};

    Ref<SQLiteStore> makeBook() { return *SQLiteStore::create(path, bookModel(), options); }
    Ref<SQLiteStore> openBook(const std::string& name) {
        auto opened = SQLiteStore::open(name, bookModel(), {.access = SQLiteStore::Access::Read});
        if (!opened) throw std::runtime_error(opened.error().message);
        return *std::move(opened);
    }
    /// Properties with three tags each.
    static void fill(SQLiteStore& store, RowKey count) {
        auto changes = newChanges();
        const RowKey first = *store.lastKey() + 1;
        for (RowKey key = first; key < first + 4 * count; key += 4) {
            changes.insertions.push_back(
                RowOf("Property", key).with(keys::name, text("Elm " + std::to_string(key))));
            for (RowKey tag = 1; tag <= 3; ++tag)
                changes.insertions.push_back(RowOf("AccountTag", key + tag)
                                                 .with(keys::name, text("tag"))
                                                 .to(keys::owner, key, tag - 1));
            changes.identifiers.push_back({key, &test::entityNamed("Property"), "p" + std::to_string(key)});
        }
        ASSERT_TRUE(store.save(changes));
    }
    [[nodiscard]] static std::vector<std::string> namesIn(const std::string& place) {
        std::vector<std::string> names;
        if (std::filesystem::exists(place))
            for (const auto& each : std::filesystem::directory_iterator(place))
                names.push_back(each.path().filename().string());
        return names;
    }
    [[nodiscard]] std::size_t count(const std::string& name, std::string_view entity) {
        return openBook(name)->fetchKeys(test::entityNamed(entity))->size();
    }
};

TEST_F(BookCopiesTest, ACopyHoldsWhatTheBookHolds) {
    fill(*makeBook(), 5);
    const std::string before = bytesOf(path);
    const auto copy = copyBook(path, folder.file("copy.estatebook"), bookModel(), options);
    ASSERT_TRUE(copy) << copy.error().message;
    EXPECT_EQ(bytesOf(path), before) << "the book is left as it is";
    EXPECT_EQ(test::description(*openBook(*copy)), test::description(*openBook(path)));
    EXPECT_THAT(*openBook(*copy)->check(), IsEmpty());
    EXPECT_THAT(namesIn(std::filesystem::path(path).parent_path().string()),
                UnorderedElementsAre("book.estatebook", "book.estatebook.lock", "book.estatebook-journal",
                                     "copy.estatebook"));
}

TEST_F(BookCopiesTest, ABookThatIsBeingWrittenIsCopiedAsItsLastSaveLeftIt) {
    const auto book = makeBook();
    fill(*book, 2);
    const auto copy = copyBook(path, folder.file("copy.estatebook"), bookModel(), options);
    ASSERT_TRUE(copy) << copy.error().message;
    fill(*book, 1);
    EXPECT_EQ(count(*copy, "Property"), 2u);
    EXPECT_EQ(count(path, "Property"), 3u) << "and the writer goes on";
    EXPECT_THAT(*book->check(), IsEmpty());
}

TEST_F(BookCopiesTest, ACopyMayBeReadByThoseWhoMayReadTheBook) {
    makeBook();
    const std::pair<unsigned, unsigned> cases[] = {{0600, 0600}, {0640, 0640}, {0444, 0644}};
    for (const auto& [rights, expected] : cases) {
        std::filesystem::permissions(path, std::filesystem::perms(rights));
        const std::string copy = folder.file(std::to_string(rights));
        ASSERT_TRUE(copyBook(path, copy, bookModel(), options));
        EXPECT_EQ(std::filesystem::status(copy).permissions(), std::filesystem::perms(expected))
            << "it can be written by whoever made it";
    }
}

TEST_F(BookCopiesTest, NothingIsReplacedByACopy) {
    makeBook();
    std::ofstream(folder.file("other")) << "precious";
    const auto copy = copyBook(path, folder.file("other"), bookModel(), options);
    ASSERT_FALSE(copy);
    EXPECT_EQ(copy.error().code, StoreErrorCode::Exists);
    EXPECT_THAT(copy.error().message, HasSubstr(folder.file("other")));
    EXPECT_EQ(bytesOf(folder.file("other")), "precious");
}

TEST_F(BookCopiesTest, WhatIsNoBookIsNotCopied) {
    std::ofstream(folder.file("other")) << std::string(4096, 'x');
    const auto copy = copyBook(folder.file("other"), folder.file("copy.estatebook"), bookModel(), options);
    ASSERT_FALSE(copy);
    EXPECT_EQ(copy.error().code, StoreErrorCode::Foreign);
    EXPECT_FALSE(copyBook(folder.file("none"), folder.file("copy.estatebook"), bookModel(), options));
    EXPECT_THAT(namesIn(std::filesystem::path(path).parent_path().string()), ElementsAre("other"));
}

TEST_F(BookCopiesTest, ADamagedBookIsNotCopiedAndNoGoodCopyGoesForIt) {
    fill(*makeBook(), 50);
    HeldClock clock{Date{800000000}};
    BookCopies copies(path, bookModel(), options);
    ASSERT_TRUE(copies.makeForToday());
    const auto kept = namesIn(copies.folder());
    const std::string bytes = bytesOf(path);
    overwrite(path, bytes.rfind("Elm 41"), "Oak");
    clock.set(Date{800000000 + 86400});
    const auto made = copies.makeForToday();
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error().code, StoreErrorCode::Damaged);
    EXPECT_THAT(made.error().message, HasSubstr("digest"));
    EXPECT_EQ(namesIn(copies.folder()), kept);
}

TEST_F(BookCopiesTest, WhereNoCopyIsMadeNoFolderIsLeft) {
    fill(*makeBook(), 50);
    const std::string bytes = bytesOf(path);
    overwrite(path, bytes.rfind("Elm 41"), "Oak");
    BookCopies copies(path, bookModel(), options);
    EXPECT_FALSE(copies.makeForToday());
    EXPECT_FALSE(copies.makeBefore(BookCopies::Occasion::Import));
    EXPECT_FALSE(std::filesystem::exists(copies.folder()));
    // It may lead to another disk.
    std::filesystem::create_directory(folder.file("elsewhere"));
    std::filesystem::create_directory_symlink(folder.file("elsewhere"), copies.folder());
    EXPECT_FALSE(copies.makeForToday());
    EXPECT_TRUE(std::filesystem::is_symlink(copies.folder())) << "what others made stays";
}

TEST_F(BookCopiesTest, ADayHasOneCopyInItsFolder) {
    const auto book = makeBook();
    fill(*book, 1);
    const HeldClock clock{Date{800000000}};
    BookCopies copies(path, bookModel(), options);
    const auto first = copies.makeForToday();
    ASSERT_TRUE(first) << first.error().message;
    ASSERT_TRUE(*first);
    EXPECT_EQ(std::filesystem::path(**first).parent_path(), copies.folder());
    fill(*book, 1);
    const auto second = copies.makeForToday();
    ASSERT_TRUE(second);
    EXPECT_FALSE(*second) << "the day has one";
    EXPECT_EQ(count(**first, "Property"), 1u);
}

TEST_F(BookCopiesTest, CopiesBeforeSomethingAreTheirOwnAndStay) {
    makeBook();
    const HeldClock clock{Date{800000000}};
    BookCopies copies(path, bookModel(), options);
    for (const auto occasion :
         {BookCopies::Occasion::Import, BookCopies::Occasion::Import, BookCopies::Occasion::Migration})
        ASSERT_TRUE(copies.makeBefore(occasion));
    ASSERT_TRUE(copies.makeForToday());
    const auto names = namesIn(copies.folder());
    EXPECT_THAT(names, SizeIs(4));
    const auto ends = [&](std::string_view end) {
        return std::ranges::count_if(names, [&](const auto& name) { return name.ends_with(end); });
    };
    EXPECT_EQ(ends(" before import.estatebook"), 1);
    EXPECT_EQ(ends(" before import 2.estatebook"), 1);
    EXPECT_EQ(ends(" before migration.estatebook"), 1);
}

TEST_F(BookCopiesTest, OlderDaysGoWhenANewDayHasItsCopy) {
    makeBook();
    BookCopies copies(path, bookModel(), options);
    constexpr int Days = 30;
    for (int day = 0; day < Days; ++day) {
        const HeldClock clock{Date{800000000.0 + 86400 * day}};
        ASSERT_TRUE(copies.makeForToday());
    }
    std::ofstream(copies.folder() + "/book 2026.estatebook") << "somebody's own";
    const HeldClock clock{Date{800000000.0 + 86400 * Days}};
    ASSERT_TRUE(copies.makeForToday());
    // Ten days, the last days of the weeks before them, and what is none of ours.
    const auto names = namesIn(copies.folder());
    EXPECT_GE(names.size(), BookCopies::KeptDays + 3);
    EXPECT_LE(names.size(), BookCopies::KeptDays + 5);
    EXPECT_THAT(names, testing::Contains("book 2026.estatebook"));
}

TEST(BookCopiesDaysTest, TenDaysAndTheLastDayOfEachOfEightWeeksStay) {
    // Monday 5 January 2026 and the hundred days from then on.
    const CivilDay monday = CivilDay::fromYearMonthDay(2026, 1, 5);
    std::vector<CivilDay> days;
    for (int day = 0; day < 100; ++day) days.push_back(monday + day);
    const auto gone = BookCopies::daysToLetGo(days);
    std::vector<std::int64_t> kept;
    for (const CivilDay day : days)
        if (std::ranges::find(gone, day) == gone.end()) kept.push_back(day - monday);
    // Day 99 is a Tuesday, its week the first of eight; Sundays end the others.
    EXPECT_THAT(kept, ElementsAre(55, 62, 69, 76, 83, 90, 91, 92, 93, 94, 95, 96, 97, 98, 99));
    EXPECT_THAT(BookCopies::daysToLetGo(std::span(days).first(10)), IsEmpty());
    EXPECT_THAT(BookCopies::daysToLetGo({}), IsEmpty());
}

// Salvage

class SalvageTest : public BookCopiesTest {
protected:
    StoreResult<Salvage> salvage() {
        return salvageBook(path, folder.file("saved.estatebook"), bookModel(), options);
    }
};

TEST_F(SalvageTest, OfASoundBookEverythingComesAlong) {
    const auto book = makeBook();
    fill(*book, 5);
    const auto saved = salvage();
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_THAT(saved->lost, IsEmpty());
    EXPECT_EQ(saved->rows, 20u);
    const auto copy = openBook(saved->path);
    EXPECT_THAT(*copy->check(), IsEmpty());
    EXPECT_THAT(*copy->identifiers(std::vector<RowKey>{1, 5}), ElementsAre("p1", "p5"));
    EXPECT_EQ(*copy->lastKey(), *book->lastKey());
    EXPECT_THAT(*copy->commits(), SizeIs(2)) << "the save of the rows, and that of the salvage";
    EXPECT_EQ(copy->commits()->back().origin.author, "Ada");
    EXPECT_NE(copy->identifier(), book->identifier());
}

TEST_F(SalvageTest, ARowThatDoesNotAgreeIsNamedAndLeadsNowhere) {
    fill(*makeBook(), 50);
    const std::string before = bytesOf(path);
    overwrite(path, before.rfind("Elm 41"), "Oak");
    const std::string damaged = bytesOf(path);
    const auto saved = salvage();
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_EQ(bytesOf(path), damaged) << "nothing is repaired in place";
    EXPECT_EQ(saved->rows, 199u);
    EXPECT_THAT(saved->lost, testing::Contains(HasSubstr("the row 41 of Account is not sound")));
    EXPECT_THAT(saved->lost, testing::Contains(HasSubstr("1 of its 50 rows are lost")));
    EXPECT_THAT(saved->lost, testing::Contains(HasSubstr("The \"owner\" of the row 42 of AccountTag")));
    EXPECT_THAT(saved->lost, testing::Contains(HasSubstr("The identifier \"p41\"")));
    EXPECT_THAT(*openBook(saved->path)->check(), IsEmpty());
}

TEST_F(SalvageTest, BehindAPageThatCannotBeReadOthersAreReadAgain) {
    fill(*makeBook(), 3000);
    const std::size_t middle = bytesOf(path).find("Elm 6001");
    ASSERT_NE(middle, std::string::npos);
    overwrite(path, middle / 4096 * 4096, std::string(4096, '\0'));
    const auto saved = salvage();
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_GT(saved->rows, 11000u);
    EXPECT_LT(saved->rows, 12000u);
    const auto copy = openBook(saved->path);
    EXPECT_THAT(*copy->check(), IsEmpty());
    const auto rows = *copy->rows(test::entityNamed("Property"), std::vector<RowKey>{1, 6001, 11997});
    ASSERT_THAT(rows, SizeIs(2)) << "the first and the last one";
    EXPECT_EQ(rows.back().key, 11997);
}

TEST_F(SalvageTest, KeysAreNotGivenAgainAlthoughNobodyRemembersWhoHadThem) {
    {
        const auto book = makeBook();
        fill(*book, 2);
        auto changes = newChanges();
        changes.deletions.push_back(test::deletionOf("AccountTag", 8, 1));
        ASSERT_TRUE(book->save(changes));
    }
    const auto saved = salvage();
    ASSERT_TRUE(saved);
    EXPECT_EQ(*openBook(saved->path)->lastKey(), 8);
}

TEST_F(SalvageTest, MembersCloseRanksBehindALostOne) {
    fill(*makeBook(), 30);
    const std::string bytes = bytesOf(path);
    // The second tag of the first property: its name, in the table of tags.
    const std::size_t tag = bytes.rfind("tag");
    ASSERT_NE(tag, std::string::npos);
    overwrite(path, tag, "gat");
    const auto saved = salvage();
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_EQ(saved->rows, 119u);
    EXPECT_THAT(*openBook(saved->path)->check(), IsEmpty());
}

TEST_F(SalvageTest, EntriesThatAreKeptWithTheBookComeAlongOrAreNamed) {
    constexpr int Entries = 200;
    const auto nameOf = [](int entry) { return "impliedSetting.Number" + std::to_string(entry); };
    {
        const auto book = makeBook();
        fill(*book, 5);
        auto changes = newChanges();
        for (int entry = 0; entry < Entries; ++entry)
            changes.metadata.push_back(
                {nameOf(entry), "worth " + std::to_string(entry) + std::string(60, '.')});
        ASSERT_TRUE(book->save(changes));
    }
    const std::size_t page = bytesOf(path).find("worth 100.") / 4096 * 4096;
    overwrite(path, page, std::string(4096, '\0'));
    const auto saved = salvage();
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_EQ(saved->rows, 20u);
    const auto kept = *openBook(saved->path)->metadata();
    EXPECT_GT(kept.size(), 100u);
    EXPECT_LT(kept.size(), std::size_t{Entries});
    std::vector<std::string> lost;
    for (int entry = 0; entry < Entries; ++entry)
        if (!kept.contains(nameOf(entry))) lost.push_back(nameOf(entry));
    EXPECT_THAT(saved->lostEntries, testing::UnorderedElementsAreArray(lost));
    for (const std::string& name : lost)
        EXPECT_THAT(saved->lost,
                    testing::Contains("The entry \"" + name + "\", which was kept with the book, is lost"));
    EXPECT_THAT(*openBook(saved->path)->check(), IsEmpty());
}

TEST_F(SalvageTest, AnEntryThatDoesNotAgreeIsNamed) {
    {
        auto changes = newChanges();
        changes.metadata = {{"window", "wide"}, {"zone", "Paris"}};
        ASSERT_TRUE(makeBook()->save(changes));
    }
    // The name itself, where the table has it and not the index.
    overwrite(path, bytesOf(path).find("windowwide"), "widnow");
    const auto saved = salvage();
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_THAT(saved->lostEntries, ElementsAre("window"));
    EXPECT_THAT(*openBook(saved->path)->metadata(), ElementsAre(testing::Pair("zone", "Paris")));
}

TEST_F(SalvageTest, WhereNothingCanBeReadNothingIsMade) {
    fill(*makeBook(), 50);
    const std::size_t size = bytesOf(path).size();
    overwrite(path, 4096, std::string(size - 4096, '\xff'));
    const auto saved = salvage();
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error().code, StoreErrorCode::Damaged);
    EXPECT_THAT(namesIn(std::filesystem::path(path).parent_path().string()),
                UnorderedElementsAre("book.estatebook", "book.estatebook.lock", "book.estatebook-journal"));
}

TEST_F(SalvageTest, OtherFilesAreRefused) {
    std::ofstream(path) << std::string(4096, 'x');
    const auto saved = salvage();
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error().code, StoreErrorCode::Foreign);
}

} // namespace
} // namespace estatebook::platform
