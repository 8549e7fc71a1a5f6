// SPDX-License-Identifier: MIT

// A book file: what is refused, what is found out, and who may use it at the same time. What it answers as a store is
// told by StoreConformanceTest.

#include "support/MemoryDisk.hpp"
#include "support/StoreKinds.hpp"

#include "platform/persistence/store/StoreReading.hpp"
#include "platform/persistence/store/WriterLock.hpp"
#include "tags/TKTagNames.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sqlite3.h>

namespace estatebook::platform {
namespace {

using test::bookModel;
using test::entityNamed;
using test::newChanges;
using test::RowOf;
using test::UpdateOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class SQLiteStoreTest : public testing::Test {
protected:
    using Access = SQLiteStore::Access;

    static SQLiteStore::Options options(Access access) {
        return {.access = access, .holder = {Date{0}, "Ada Field", "estatebook", ""}, .patience = {}};
    }
    StoreResult<Ref<SQLiteStore>> tryOpen(Access access = Access::Write) {
        return SQLiteStore::open(path_, bookModel(), options(access));
    }
    Ref<SQLiteStore> open(Access access = Access::Write) {
        auto store = tryOpen(access);
        if (!store) throw std::runtime_error(store.error().message);
        return *store;
    }
    /// A book with two tenants, the first with two tags, and a setting.
    void makeBook() {
        const auto store = *SQLiteStore::create(path_, bookModel(), options(Access::Write));
        StoreChanges changes = newChanges();
        changes.insertions = {
            RowOf("Tenant", 1).with(keys::name, String::make("Grace")),
            RowOf("Tenant", 2).with(keys::name, String::make("Mary")),
            RowOf("AccountTag", 3).with(keys::name, String::make("new")).to(keys::owner, 1, 0),
            RowOf("AccountTag", 4).with(keys::name, String::make("old")).to(keys::owner, 1, 1),
            RowOf("State", 5).with(keys::value, String::make("NZD"))};
        changes.identifiers = {{1, &entityNamed("Tenant"), "t1"}};
        changes.metadata = {{"copied", "today"}};
        ASSERT_TRUE(store->save(changes)->landed());
        changes = newChanges();
        changes.updates = {UpdateOf("Tenant", 2, 1).with(keys::addressBookID, String::make("7"))};
        ASSERT_TRUE(store->save(changes)->landed());
    }

    /// Does to the file what no program of ours would.
    void meddle(const std::string& sql) {
        sqlite3* database = nullptr;
        ASSERT_EQ(SQLITE_OK, sqlite3_open(path_.c_str(), &database));
        char* message = nullptr;
        EXPECT_EQ(SQLITE_OK, sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &message)) << message;
        sqlite3_close(database);
    }
    std::string bytes() const {
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void write(const std::string& bytes) { std::ofstream(path_, std::ios::binary) << bytes; }
    std::vector<std::string> filesInFolder() const {
        std::vector<std::string> names;
        for (const auto& each : std::filesystem::directory_iterator(folder_.file("")))
            names.push_back(each.path().filename());
        return names;
    }

    /// Refused for writing and for reading, and left as it is.
    void expectRefused(StoreErrorCode code, std::string_view reason) {
        const std::string before = bytes();
        for (const Access access : {Access::Write, Access::Read}) {
            const auto store = tryOpen(access);
            ASSERT_FALSE(store);
            EXPECT_EQ(code, store.error().code);
            EXPECT_THAT(store.error().message, HasSubstr(path_));
            EXPECT_THAT(store.error().message, HasSubstr(std::string(reason)));
            EXPECT_EQ(before, bytes());
        }
    }
    std::vector<std::string> check() { return *open(Access::Read)->check(); }

    test::TestFolder folder_;
    const std::string path_ = folder_.file("book.estatebook");
};

// Making

TEST_F(SQLiteStoreTest, ANewBookIsOneFileBesideItsLock) {
    makeBook();
    EXPECT_THAT(filesInFolder(), testing::IsSupersetOf({"book.estatebook", "book.estatebook.lock"}));
    EXPECT_THAT(filesInFolder(),
                testing::IsSubsetOf({"book.estatebook", "book.estatebook.lock", "book.estatebook-journal"}));
    EXPECT_THAT(check(), IsEmpty());
}

TEST_F(SQLiteStoreTest, NothingIsReplacedByANewBook) {
    write("a letter");
    const auto store = SQLiteStore::create(path_, bookModel(), {});
    ASSERT_FALSE(store);
    EXPECT_EQ(StoreErrorCode::Exists, store.error().code);
    EXPECT_EQ("a letter", bytes());
    EXPECT_THAT(filesInFolder(), ElementsAre("book.estatebook"));
}

TEST_F(SQLiteStoreTest, WhatAnInterruptedMakingLeftIsInNobodysWay) {
    std::ofstream(path_ + ".new") << "half a book";
    std::ofstream(path_ + ".new-journal") << "half a journal";
    makeBook();
    EXPECT_THAT(check(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(path_ + ".new"));
}

TEST_F(SQLiteStoreTest, ABookNeedsAFolder) {
    const auto store = SQLiteStore::create(folder_.file("nowhere/book.estatebook"), bookModel(), {});
    ASSERT_FALSE(store);
    EXPECT_EQ(StoreErrorCode::Missing, store.error().code);
}

TEST_F(SQLiteStoreTest, ABookIsOneWhateverNameLeadsToIt) {
    makeBook();
    const std::string link = folder_.file("link.estatebook");
    std::filesystem::create_symlink(path_, link);
    const auto store = open();
    EXPECT_EQ(std::filesystem::canonical(path_).string(), store->location());
    EXPECT_EQ(StoreErrorCode::Locked, SQLiteStore::open(link, bookModel(), {}).error().code);
}

// Refused

TEST_F(SQLiteStoreTest, AMissingBookIsRefused) {
    expectRefused(StoreErrorCode::Missing, "no such file");
    EXPECT_THAT(filesInFolder(), IsEmpty());
}

TEST_F(SQLiteStoreTest, AFolderIsRefused) {
    std::filesystem::create_directory(path_);
    EXPECT_EQ(StoreErrorCode::Foreign, tryOpen().error().code);
}

TEST_F(SQLiteStoreTest, ForeignFilesAreRefused) {
    for (const std::string& content : {std::string(), std::string("a letter"), std::string(5000, 'x')}) {
        write(content);
        expectRefused(StoreErrorCode::Foreign, content.size() > 100 ? "no book" : "too short");
    }
    EXPECT_THAT(filesInFolder(), ElementsAre("book.estatebook"));
}

TEST_F(SQLiteStoreTest, ForeignDataBasesAreRefusedWithTheirJournal) {
    meddle("CREATE TABLE songs(title)");
    std::ofstream(path_ + "-journal") << "kept by somebody";
    expectRefused(StoreErrorCode::Foreign, "no book");
    EXPECT_EQ(16u, std::filesystem::file_size(path_ + "-journal"));
}

TEST_F(SQLiteStoreTest, ANewerBookIsRefused) {
    makeBook();
    meddle("PRAGMA user_version=3");
    expectRefused(StoreErrorCode::Newer, "layout 3");
}

TEST_F(SQLiteStoreTest, ABookWithoutALayoutIsRefused) {
    makeBook();
    meddle("PRAGMA user_version=0");
    expectRefused(StoreErrorCode::Damaged, "layout");
}

TEST_F(SQLiteStoreTest, ABookInAnotherJournalModeIsRefused) {
    makeBook();
    meddle("PRAGMA journal_mode=WAL");
    expectRefused(StoreErrorCode::Damaged, "journal mode");
}

TEST_F(SQLiteStoreTest, WhateverIsAddedToTheSchemaIsRefused) {
    for (const std::string sql :
         {"CREATE TRIGGER t AFTER INSERT ON Tenure BEGIN DELETE FROM Tenure; END",
          "CREATE VIEW v AS SELECT 1", "CREATE TABLE songs(title)", "CREATE INDEX i ON Tenure(startDate)",
          "ALTER TABLE Tenure ADD COLUMN secret", "DROP INDEX \"Tenure.property\"", "ANALYZE",
          "DROP INDEX \"State.name\"; CREATE UNIQUE INDEX \"State.name\" ON State(name)"}) {
        SCOPED_TRACE(sql);
        std::filesystem::remove(path_);
        makeBook();
        meddle(sql);
        expectRefused(StoreErrorCode::Damaged, "tables");
    }
}

TEST_F(SQLiteStoreTest, OtherEntitiesAreRefused) {
    makeBook();
    meddle("DELETE FROM book_entity WHERE number = 3");
    expectRefused(StoreErrorCode::Damaged, "entities");
}

TEST_F(SQLiteStoreTest, ATruncatedBookIsRefused) {
    makeBook();
    const std::string whole = bytes();
    for (const std::size_t size : {whole.size() - 1, whole.size() - 4096, whole.size() / 2, std::size_t{4096},
                                   std::size_t{4000}, std::size_t{100}}) {
        SCOPED_TRACE(size);
        write(whole.substr(0, size));
        expectRefused(StoreErrorCode::Damaged, "");
    }
}

TEST_F(SQLiteStoreTest, ABookWithSomethingBehindItIsRefused) {
    makeBook();
    write(bytes() + std::string(4096, 'x'));
    expectRefused(StoreErrorCode::Damaged, "its pages");
}

// Found out

TEST_F(SQLiteStoreTest, AChangedRowIsFoundOutWhenItIsRead) {
    makeBook();
    meddle("UPDATE Account SET name = 'Grave' WHERE _key = 1");
    const auto store = open();
    const auto fetched = store->fetchRows(entityNamed("Tenant"), {}, [](const Row&) {});
    ASSERT_FALSE(fetched);
    EXPECT_EQ(StoreErrorCode::Damaged, fetched.error().code);
    EXPECT_THAT(fetched.error().message, HasSubstr("\"Account\" (1)"));
    const RowKey sound = 2;
    EXPECT_EQ(1u, store->rows(entityNamed("Tenant"), {&sound, 1})->size());
    StoreChanges changes = newChanges();
    changes.updates = {UpdateOf("Tenant", 1, 1).with(keys::name, String::make("Joan"))};
    EXPECT_EQ(StoreErrorCode::Damaged, store->save(changes).error().code);
    EXPECT_THAT(*store->check(), ElementsAre(HasSubstr("does not agree with its digest")));
}

TEST_F(SQLiteStoreTest, ARowThatIsGoneIsFoundOutByTheCheck) {
    makeBook();
    meddle("DELETE FROM Account WHERE _key = 2");
    EXPECT_THAT(check(), UnorderedElementsAre(HasSubstr("has 1 rows in place of 2"), HasSubstr("add up")));
}

TEST_F(SQLiteStoreTest, RowsBesideTheRowsHaveDigestsToo) {
    for (const std::string sql :
         {"UPDATE book_journal SET current = '8'", "UPDATE book_commit SET author = 'Eve' WHERE number = 1",
          "UPDATE book_metadata SET value = 'never'", "UPDATE book_identifier SET identifier = 't2'"}) {
        SCOPED_TRACE(sql);
        std::filesystem::remove(path_);
        makeBook();
        meddle(sql);
        EXPECT_THAT(check(), ElementsAre(HasSubstr("does not agree with its digest")));
    }
}

TEST_F(SQLiteStoreTest, KeysThatNobodyGaveAndIdentifiersOfNoRowAreFoundOutByTheCheck) {
    makeBook();
    meddle("UPDATE Account SET _key = 4000 WHERE _key = 2");
    EXPECT_THAT(check(), testing::Contains("The row 4000 of Account has a key beyond the last one given, 5"));
    std::filesystem::remove(path_);
    makeBook();
    meddle("UPDATE book_identifier SET key = 500");
    EXPECT_THAT(check(), UnorderedElementsAre(HasSubstr("does not agree with its digest"),
                                              "An identifier is that of the row 500, which is not there"));
}

TEST_F(SQLiteStoreTest, ACountThatNoTableHasIsNotCountedOn) {
    for (const char* count : {"-1", "9223372036854775807", "-9223372036854775808"}) {
        SCOPED_TRACE(count);
        std::filesystem::remove(path_);
        makeBook();
        meddle(std::string("UPDATE book_sum SET rows = ") + count);
        StoreChanges changes = newChanges();
        changes.metadata = {{"copied", "never"}};
        const auto saved = open()->save(changes);
        ASSERT_FALSE(saved);
        EXPECT_EQ(StoreErrorCode::Damaged, saved.error().code);
        EXPECT_THAT(check(), testing::Contains(HasSubstr("rows in place of")));
    }
}

TEST_F(SQLiteStoreTest, GapsAmongOrderedMembersAreFoundOutByTheCheck) {
    makeBook();
    {
        const auto store = open();
        StoreChanges changes = newChanges();
        changes.updates = {UpdateOf("AccountTag", 4, 1).to(keys::owner, 1, 2)};
        ASSERT_TRUE(store->save(changes)->landed());
    }
    EXPECT_THAT(check(), ElementsAre(HasSubstr("members of 1 in AccountTag")));
}

// Nothing is believed: every byte of a small book is turned over, and no other data ever comes out.
TEST_F(SQLiteStoreTest, DamageOfAnyByteNeverGivesOtherValues) {
    makeBook();
    const std::string whole = bytes();
    std::size_t missed = 0;
    for (std::size_t place = 0; place < whole.size(); place += 401) {
        std::string damaged = whole;
        damaged[place] = static_cast<char>(damaged[place] ^ (1 << (place % 8)));
        write(damaged);
        const auto store = tryOpen(Access::Read);
        if (!store) continue;
        std::string names;
        const auto count = (*store)->fetchRows(entityNamed("Account"), {}, [&](const Row& row) {
            const auto name = row.values.front().string();
            names += name ? name->string() + " " : "? ";
        });
        if (!count) continue;
        const auto findings = (*store)->check();
        missed += (names != "Grace Mary ") && findings && findings->empty();
        EXPECT_TRUE(*count != 2 || names == "Grace Mary ") << place << " " << names;
    }
    EXPECT_EQ(0u, missed);
}

// Looking up

TEST_F(SQLiteStoreTest, WhatIsLookedUpByNameIsFoundWithoutReadingAll) {
    constexpr RowKey Count = 10'000;
    const std::string path = "/book.estatebook";
    test::MemoryDisk disk;
    {
        const auto store = *SQLiteStore::create(path, bookModel(), {.fileSystem = &disk});
        StoreChanges changes = newChanges();
        for (RowKey key = 1; key <= Count; ++key)
            changes.insertions.push_back(
                RowOf("State", key).with(keys::name, String::make("Setting " + std::to_string(key / 2))));
        ASSERT_TRUE(store->save(changes)->landed());
    }
    const auto store = *SQLiteStore::open(path, bookModel(), {.access = Access::Read, .fileSystem = &disk});
    std::size_t reads = 0;
    disk.fault = [&](test::MemoryDisk::Call call) {
        reads += call == test::MemoryDisk::Call::Read ? 1 : 0;
        return test::MemoryDisk::Fault::None;
    };
    const auto keysNamed = [&](std::string_view name) {
        return *store->fetchKeys(entityNamed("State"),
                                 Predicate::predicateWithFormat("name = %@", String::make(name)));
    };
    EXPECT_THAT(keysNamed("Setting 1234"), ElementsAre(2468, 2469));
    EXPECT_THAT(keysNamed("setting 1234"), IsEmpty());
    EXPECT_LT(reads, 20u);
    EXPECT_EQ(store->fetchKeys(entityNamed("State"))->size(), std::size_t{Count});
    EXPECT_GT(reads, 50u) << "all of them lie on many pages";
    disk.fault = nullptr;
}

// The index is covered by no digest: what it leads to is looked at, what it leaves out the check tells.
TEST_F(SQLiteStoreTest, AnIndexThatDoesNotAgreeGivesNoWrongRows) {
    const auto make = [&](std::string_view meddling) {
        std::filesystem::remove(path_);
        const auto store = *SQLiteStore::create(path_, bookModel(), options(Access::Write));
        StoreChanges changes = newChanges();
        for (RowKey key = 1; key <= 3; ++key)
            changes.insertions.push_back(
                RowOf("State", key).with(keys::name, String::make("Setting " + std::to_string(key))));
        ASSERT_TRUE(store->save(changes)->landed());
        // It stands in the table, where the rows are sound no more, in the index, and maybe where nothing is read.
        const std::string whole = bytes();
        for (std::size_t place = whole.find("Setting 2");; place = whole.find("Setting 2", place + 1)) {
            ASSERT_NE(place, std::string::npos);
            write(std::string(whole).replace(place, meddling.size(), meddling));
            const auto rows = open(Access::Read)->fetchRows(entityNamed("State"), {}, [](const Row&) {});
            if (rows && !check().empty()) break;
        }
    };
    const auto found = [&](std::string_view name) {
        return open(Access::Read)
            ->fetchKeys(entityNamed("State"),
                        Predicate::predicateWithFormat("name = %@", String::make(name)));
    };
    make("Setting 3");
    ASSERT_FALSE(found("Setting 3")) << "it leads to the second row, too";
    EXPECT_EQ(StoreErrorCode::Damaged, found("Setting 3").error().code);
    make("Setting X");
    ASSERT_TRUE(found("Setting 2"));
    EXPECT_THAT(*found("Setting 2"), IsEmpty()) << "what is left out only the check tells";
    EXPECT_THAT(check(), testing::Not(IsEmpty()));
}

// Several at once

TEST_F(SQLiteStoreTest, TheSecondWriterIsToldOfTheFirst) {
    makeBook();
    auto first = open();
    const auto second = tryOpen();
    ASSERT_FALSE(second);
    EXPECT_EQ(StoreErrorCode::Locked, second.error().code);
    EXPECT_THAT(second.error().message, HasSubstr("Ada Field with estatebook since 2001-01-01"));
    first = nullptr;
    EXPECT_TRUE(tryOpen());
}

TEST_F(SQLiteStoreTest, ReadersMayReadWhileAWriterHasTheBook) {
    makeBook();
    const auto writer = open();
    StoreChanges changes = newChanges();
    changes.insertions = {RowOf("Tenant", 6)};
    {
        const auto reader = open(Access::Read);
        const auto other = open(Access::Read);
        EXPECT_FALSE(reader->capabilities().isWritable);
        EXPECT_EQ(5, *reader->lastKey());
        const auto outcome = writer->save(changes);
        ASSERT_FALSE(outcome);
        EXPECT_EQ(StoreErrorCode::Busy, outcome.error().code);
        EXPECT_EQ(5, *reader->lastKey());
        EXPECT_EQ(5, *other->lastKey());
        EXPECT_FALSE(*writer->hasLanded(changes.token));
    }
    EXPECT_TRUE(writer->save(changes)->landed());
    EXPECT_EQ(6, *open(Access::Read)->lastKey());
}

TEST_F(SQLiteStoreTest, WhoReadsMuchKeepsTheLockInBetween) {
    makeBook();
    const auto store = open();
    sqlite3* other = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(path_.c_str(), &other));
    const auto isLocked = [&] {
        const int code = sqlite3_exec(other, "BEGIN EXCLUSIVE; ROLLBACK", nullptr, nullptr, nullptr);
        return code == SQLITE_BUSY;
    };
    const auto read = [&] { return store->rows(entityNamed("Tenant"), std::vector<RowKey>{2})->size(); };
    {
        const StoreReading reading(store);
        EXPECT_FALSE(isLocked()) << "before anything is read";
        EXPECT_EQ(1U, read());
        EXPECT_TRUE(isLocked());
        {
            const StoreReading inner(store);
            EXPECT_EQ(1U, read());
        }
        EXPECT_TRUE(isLocked());
        StoreChanges changes = newChanges();
        changes.updates = {UpdateOf("Tenant", 2, 2).with(keys::name, String::make("Ruth"))};
        EXPECT_TRUE(store->save(changes)->landed());
        EXPECT_FALSE(isLocked()) << "a save ends it";
        EXPECT_EQ(1U, read());
        EXPECT_FALSE(isLocked());
    }
    {
        const StoreReading reading(store);
        EXPECT_EQ(1U, read());
        EXPECT_TRUE(isLocked()) << "it can be begun again";
    }
    EXPECT_FALSE(isLocked());
    sqlite3_close(other);
}

TEST_F(SQLiteStoreTest, ReadersDoNotSave) {
    makeBook();
    const auto reader = open(Access::Read);
    const auto outcome = reader->save(newChanges());
    ASSERT_FALSE(outcome);
    EXPECT_EQ(StoreErrorCode::ReadOnly, outcome.error().code);
}

TEST_F(SQLiteStoreTest, AReaderDoesNotTakeTheWritersLocksAway) {
    makeBook();
    const auto writer = open();
    static_cast<void>(open(Access::Read)->check());
    EXPECT_EQ(StoreErrorCode::Locked, tryOpen().error().code);
    StoreChanges changes = newChanges();
    EXPECT_TRUE(writer->save(changes)->landed());
}

TEST_F(SQLiteStoreTest, ABookThatIsTakenAwayIsNotWritten) {
    makeBook();
    const auto store = open();
    std::filesystem::rename(path_, folder_.file("elsewhere"));
    const auto outcome = store->save(newChanges());
    ASSERT_FALSE(outcome);
    EXPECT_EQ(StoreErrorCode::Moved, outcome.error().code);
    std::filesystem::rename(folder_.file("elsewhere"), path_);
    EXPECT_TRUE(store->save(newChanges())->landed());
}

// Objects

class Unarchived final : public Object {
public:
    Unarchived() : Object(Counting::Shared) {}
};

TEST_F(SQLiteStoreTest, ObjectsThatNoArchiveHoldsAreRefused) {
    makeBook();
    const auto store = open();
    StoreChanges changes = newChanges();
    changes.insertions = {RowOf("State", 6).with(keys::value, makeRef<Unarchived>())};
    const auto outcome = store->save(changes);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(StoreErrorCode::InvalidChange, outcome.error().code);
    EXPECT_EQ(5, *store->lastKey());
}

TEST_F(SQLiteStoreTest, ClassesThatAreHandedOverAreArchived) {
    makeBook();
    const auto names = TKTagNames::initWithEditableString("Rent, Repairs");
    const RowKey key = 6;
    {
        SQLiteStore::Options withTags = options(Access::Write);
        withTags.classes = {TKTagNames::archivedClass()};
        const auto store = *SQLiteStore::open(path_, bookModel(), withTags);
        StoreChanges changes = newChanges();
        changes.insertions = {RowOf("State", key).with(keys::value, names)};
        ASSERT_TRUE(store->save(changes)->landed());
        const auto found = store->rows(entityNamed("State"), {&key, 1})->front().values[1].as<TKTagNames>();
        ASSERT_TRUE(found);
        EXPECT_TRUE(found->items()->isEqual(*names->items()));
        EXPECT_THAT(*store->check(), IsEmpty());
    }
    const auto without = open()->rows(entityNamed("State"), {&key, 1});
    ASSERT_FALSE(without);
    EXPECT_EQ(StoreErrorCode::Damaged, without.error().code);
}

TEST_F(SQLiteStoreTest, ErrorsBecomeErrorsOfTheirCode) {
    const auto error = tryOpen().error().asError();
    EXPECT_EQ("Persistence", error->domain());
    EXPECT_EQ(134101, error->code());
    EXPECT_THAT(error->localizedDescription(), HasSubstr(path_));
}

} // namespace
} // namespace estatebook::platform
