// SPDX-License-Identifier: MIT

// Books that somebody forged who knows how they are written, so that all digests and sums agree. The check tells what no program
// of ours writes; what would be read as something else is refused when it is read.

#include "support/ForgedBook.hpp"
#include "platform/persistence/store/sqlite/BookCopies.hpp"
#include "support/StoreDescription.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace estatebook::platform {
namespace {

using test::bookModel;
using test::entityNamed;
using test::newChanges;
using test::RowOf;
using test::UpdateOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ForgedBookTest : public testing::Test {
protected:
    using Access = SQLiteStore::Access;

    ForgedBookTest() { makeBook(); }
    StoreResult<Ref<SQLiteStore>> tryOpen(Access access = Access::Read) {
        return SQLiteStore::open(path, bookModel(), {.access = access});
    }
    Ref<SQLiteStore> open(Access access = Access::Read) {
        auto opened = tryOpen(access);
        if (!opened) throw std::runtime_error(opened.error().message);
        return *std::move(opened);
    }
    /// Two tenants with a tag, a setting and a letting, saved by three saves.
    void makeBook() {
        std::filesystem::remove(path);
        const auto store = *SQLiteStore::create(path, bookModel(), {});
        StoreChanges changes = newChanges();
        changes.insertions = {
            RowOf("Tenant", 1).with(keys::name, String::make("Grace")),
            RowOf("Tenant", 2).with(keys::name, String::make("Mary")),
            RowOf("AccountTag", 3).with(keys::name, String::make("new")).to(keys::owner, 1)};
        changes.identifiers = {{1, &entityNamed("Tenant"), "t1"}};
        changes.metadata = {{"copied", "today"}};
        ASSERT_TRUE(store->save(changes)->landed());
        changes = newChanges();
        changes.insertions = {RowOf("State", 4).with(keys::name, String::make("CurrencyCode")),
                              RowOf("Tenure", 5)};
        changes.updates = {UpdateOf("Tenant", 2, 1).with(keys::addressBookID, String::make("7"))};
        ASSERT_TRUE(store->save(changes)->landed());
        changes = newChanges();
        changes.updates = {UpdateOf("Tenant", 1, 1).with(keys::addressBookID, String::make("8"))};
        ASSERT_TRUE(store->save(changes)->landed());
        ASSERT_THAT(*store->check(), IsEmpty());
    }
    void forge(const std::string& sql) { ASSERT_TRUE(test::forgeBook(path, sql)) << sql; }
    /// Of a book that is made anew.
    std::vector<std::string> findingsAfter(const std::string& sql) {
        makeBook();
        forge(sql);
        return *open()->check();
    }
    /// What can be saved of it makes a sound book.
    std::vector<std::string> lostBySalvage() {
        const std::string to = folder.file("saved.estatebook");
        std::filesystem::remove(to);
        const auto saved = salvageBook(path, to, bookModel(), {});
        if (!saved) return {saved.error().message};
        EXPECT_THAT(*(*SQLiteStore::open(to, bookModel(), {}))->check(), IsEmpty());
        return saved->lost;
    }

    test::TestFolder folder;
    const std::string path = folder.file("book.estatebook");
};

TEST_F(ForgedBookTest, WhatIsForgedAsItIsWrittenIsSound) {
    EXPECT_THAT(findingsAfter("UPDATE Account SET name = 'Ada' WHERE _key = 1"), IsEmpty())
        << "nobody can tell, but it shows that the forging is good";
    EXPECT_THAT(lostBySalvage(), IsEmpty());
}

TEST_F(ForgedBookTest, ASecondHeaderIsRefused) {
    for (const char* sql : {"INSERT INTO book_header VALUES(2, '0123456789abcdef0123456789abcdef', 0)",
                            "INSERT INTO book_header VALUES(0, '0123456789abcdef0123456789abcdef', 0)"}) {
        makeBook();
        forge(sql);
        for (const Access access : {Access::Read, Access::Write}) {
            const auto opened = tryOpen(access);
            ASSERT_FALSE(opened);
            EXPECT_EQ(opened.error().code, StoreErrorCode::Damaged);
            EXPECT_THAT(opened.error().message, HasSubstr(path + ": it has more than one header. "));
        }
        EXPECT_THAT(lostBySalvage(), IsEmpty()) << "a new book has a header of its own";
    }
}

TEST_F(ForgedBookTest, AHeaderThatIsNoneIsRefused) {
    for (const char* sql :
         {"UPDATE book_header SET number = 2", "UPDATE book_header SET identifier = 'mine'",
          "UPDATE book_header SET identifier = upper(identifier) || 'G'", "DELETE FROM book_header",
          "UPDATE book_header SET identifier = CAST(identifier AS BLOB)"}) {
        SCOPED_TRACE(sql);
        makeBook();
        forge(sql);
        const auto opened = tryOpen();
        ASSERT_FALSE(opened);
        EXPECT_EQ(opened.error().code, StoreErrorCode::Damaged);
        EXPECT_THAT(opened.error().message, HasSubstr("its header"));
    }
}

TEST_F(ForgedBookTest, AKeyInTwoTablesIsTold) {
    EXPECT_THAT(findingsAfter("UPDATE State SET _key = 2"),
                ElementsAre("The key 2 is that of a row of Account and of a row of State"));
    EXPECT_THAT(lostBySalvage(), Contains(HasSubstr("The row 2 of State")));
}

TEST_F(ForgedBookTest, AGapInTheNumbersOfSavesIsTold) {
    EXPECT_THAT(findingsAfter("UPDATE book_commit SET number = 9 WHERE number = 3; "
                              "UPDATE book_journal SET \"commit\" = 9 WHERE \"commit\" = 3"),
                ElementsAre("The save 3 is missing; the one after 2 is numbered 9"));
    EXPECT_THAT(lostBySalvage(), IsEmpty()) << "they are numbered anew";
    EXPECT_THAT(findingsAfter("UPDATE book_commit SET number = 0 WHERE number = 1"),
                Contains(HasSubstr("The table book_commit")));
    EXPECT_THAT(findingsAfter("DELETE FROM book_commit WHERE number = 1"),
                Contains("The save 1 is missing; the first one is numbered 2"));
    EXPECT_THAT(lostBySalvage(), IsEmpty());
}

TEST_F(ForgedBookTest, KeysThatSavesCannotHaveGivenAreTold) {
    EXPECT_THAT(findingsAfter("UPDATE book_commit SET first_key = 2, last_key = 5 WHERE number = 2"),
                ElementsAre("The save 2 gave the keys from 2 to 5, which do not follow those of the saves "
                            "before it, up to 3"));
    EXPECT_THAT(lostBySalvage(), Contains(HasSubstr("The save 2")));
    EXPECT_THAT(findingsAfter("UPDATE book_commit SET first_key = 9 WHERE number = 2"),
                ElementsAre(HasSubstr("The save 2 gave the keys from 9 to 5")));
    EXPECT_THAT(lostBySalvage(), Contains(HasSubstr("The save 2")));
}

TEST_F(ForgedBookTest, NoKeyIsGivenASecondTime) {
    forge("UPDATE book_commit SET first_key = 4, last_key = 3 WHERE number > 1");
    const auto store = open(Access::Write);
    EXPECT_THAT(*store->check(), Contains("The row 5 of Tenure has a key beyond the last one given, 3"));
    const auto last = store->lastKey();
    ASSERT_FALSE(last);
    EXPECT_EQ(last.error().code, StoreErrorCode::Damaged);
    StoreChanges changes = newChanges();
    changes.insertions = {RowOf("Advertisement", 4)};
    const auto saved = store->save(changes);
    ASSERT_FALSE(saved) << "there is a setting of this key";
    EXPECT_EQ(saved.error().code, StoreErrorCode::Damaged);
    EXPECT_THAT(saved.error().message, HasSubstr("beyond the last one given"));
}

TEST_F(ForgedBookTest, AnEntryOfAnUnknownSaveIsTold) {
    EXPECT_THAT(findingsAfter("UPDATE book_journal SET \"commit\" = 4 WHERE number = 2"),
                ElementsAre("The entry 2 of the journal is of the save 4, which is not there"));
    EXPECT_THAT(lostBySalvage(), ElementsAre(HasSubstr("The save 4: who made it and when")))
        << "the entry comes along";
    EXPECT_THAT(findingsAfter("UPDATE book_journal SET \"commit\" = 0 WHERE number = 1"),
                Contains(HasSubstr("The table book_journal: a row of its table \"book_journal\" (1): ")));
    EXPECT_THAT(lostBySalvage(), Contains(HasSubstr("the row 1 of book_journal")));
}

TEST_F(ForgedBookTest, EntriesOutOfOrderAreTold) {
    EXPECT_THAT(
        findingsAfter("UPDATE book_journal SET number = 8 WHERE number = 1"),
        ElementsAre(
            "The entry 8 of the journal is of the row 2 in the save 2 and stands behind that of the row "
            "1 in the save 3"));
    EXPECT_THAT(lostBySalvage(), IsEmpty());
    EXPECT_THAT(findingsAfter("UPDATE book_journal SET key = 400 WHERE number = 1"),
                ElementsAre("The entry 1 of the journal is of a row 400, and no key beyond 5 was given"));
    EXPECT_THAT(lostBySalvage(), Contains(HasSubstr("The entry 1 of the journal")));
}

TEST_F(ForgedBookTest, TextThatIsNotUtf8IsRefusedWhereItIsRead) {
    forge("UPDATE Account SET name = CAST(x'47ff' AS TEXT) WHERE _key = 1");
    const auto store = open();
    EXPECT_THAT(
        *store->check(),
        ElementsAre(
            "The table Account: a row of its table \"Account\" (1) at \"name\": it holds a text that is not "
            "UTF-8"));
    const auto fetched = store->fetchRows(entityNamed("Tenant"), {}, [](const Row&) {});
    ASSERT_FALSE(fetched);
    EXPECT_EQ(fetched.error().code, StoreErrorCode::Damaged);
    EXPECT_EQ(fetched.error().message, std::filesystem::canonical(path).string() +
                                           ": a row of its table \"Account\" (1) at \"name\": it holds a "
                                           "text that is not UTF-8. It was left as it is; "
                                           "go on with an earlier copy.");
    EXPECT_THAT(lostBySalvage(), Contains(HasSubstr("the row 1 of Account is not sound")));
}

TEST_F(ForgedBookTest, TextBesideTheRowsIsUtf8Too) {
    const std::string bad = "CAST(x'61c328' AS TEXT)";
    for (const std::string& sql :
         {"UPDATE book_metadata SET value = " + bad, "UPDATE book_metadata SET name = " + bad,
          "UPDATE book_identifier SET identifier = " + bad,
          "UPDATE book_commit SET author = " + bad + " WHERE number = 1",
          "UPDATE book_commit SET command = " + bad + " WHERE number = 1",
          "UPDATE book_journal SET current = " + bad + " WHERE number = 1",
          "UPDATE book_journal SET property = " + bad + " WHERE number = 1"}) {
        SCOPED_TRACE(sql);
        EXPECT_THAT(findingsAfter(sql), ElementsAre(HasSubstr("The table book_")));
        EXPECT_FALSE(test::contentOf(*open())) << "it is not given to anybody";
        EXPECT_THAT(lostBySalvage(), Contains(HasSubstr("is not sound")));
    }
}

TEST_F(ForgedBookTest, CellsOfAnotherTypeAreNotTakenForText) {
    for (const char* sql :
         {"UPDATE book_metadata SET value = x'61'", "UPDATE book_identifier SET identifier = x'61'",
          "UPDATE book_commit SET program = x'61' WHERE number = 1",
          "UPDATE book_commit SET last_key = 'many' WHERE number = 2",
          "UPDATE book_commit SET \"when\" = NULL WHERE number = 1",
          "UPDATE book_journal SET key = 'one' WHERE number = 1",
          "UPDATE book_journal SET property = x'61' WHERE number = 1",
          "UPDATE book_journal SET property = '' WHERE number = 1",
          "UPDATE Account SET _version = 'two' WHERE _key = 1"}) {
        SCOPED_TRACE(sql);
        EXPECT_THAT(findingsAfter(sql), Contains(HasSubstr("The table ")));
        EXPECT_FALSE(test::contentOf(*open()));
        EXPECT_THAT(lostBySalvage(), Contains(HasSubstr("is not sound")));
    }
}

TEST_F(ForgedBookTest, ANumberInAnotherFormIsRefused) {
    forge("UPDATE Account SET rentalBillingCycle = -0.0, _entity = (SELECT number FROM book_entity WHERE "
          "name = "
          "'Property') WHERE _key = 2");
    EXPECT_THAT(*open()->check(), Contains(HasSubstr("(2) at \"rentalBillingCycle\"")));
    EXPECT_FALSE(test::contentOf(*open()));
    EXPECT_THAT(lostBySalvage(), Contains(HasSubstr("the row 2 of Account is not sound")));
}

TEST_F(ForgedBookTest, WhatAnEntityDoesNotHaveIsTold) {
    EXPECT_THAT(findingsAfter("UPDATE Account SET sublease = 'yes' WHERE _key = 1"),
                ElementsAre(HasSubstr("(1): it holds \"sublease\", which no Tenant has")));
    EXPECT_THAT(findingsAfter("UPDATE AccountTag SET \"owner.place\" = 0, owner = NULL"),
                ElementsAre(HasSubstr("it has a place among members of nobody, or none")));
}

TEST_F(ForgedBookTest, ASumOfNoTableIsTold) {
    EXPECT_THAT(findingsAfter("INSERT INTO book_sum VALUES('songs', 1, 1)"),
                ElementsAre("There is a sum of \"songs\", which is no table of a book"));
}

} // namespace
} // namespace estatebook::platform
