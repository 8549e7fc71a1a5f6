// SPDX-License-Identifier: MIT

// Books of earlier programs: read as they are, and brought up to date when they are opened for writing. What they held they hold,
// and a copy of them as they were is kept.

#include "platform/persistence/store/sqlite/BookCopies.hpp"
#include "support/EarlierModel.hpp"
#include "support/HeldClock.hpp"
#include "support/SteppedLayout.hpp"
#include "support/StoreDescription.hpp"

#include "tags/TKTagNames.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace estatebook::platform {
namespace {

using test::bookModel;
using test::EarlierModel;
using test::entityNamed;
using test::newChanges;
using test::RowOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

namespace files = std::filesystem;

std::string bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class BookMigrationTest : public testing::Test {
protected:
    using Access = SQLiteStore::Access;

    static SQLiteStore::Options options(Access access) {
        return {.access = access,
                .classes = {TKTagNames::archivedClass()},
                .holder = {Date{0}, "Ada Field", "estatebook", "check"},
                .patience = {}};
    }
    StoreResult<Ref<SQLiteStore>> tryOpen(Access access) {
        return SQLiteStore::open(path, bookModel(), options(access));
    }
    Ref<SQLiteStore> open(Access access) {
        auto opened = tryOpen(access);
        if (!opened) throw std::runtime_error(opened.error().message);
        return *std::move(opened);
    }
    /// A book that a program of the model wrote: a property with two tags, changed and given an identifier, and a setting.
    void makeEarlier(const Ref<ManagedObjectModel>& model) {
        const RowShapes shapes(*model);
        const auto rowOf = [&](std::string_view entity, RowKey key, std::string_view name) {
            const RowShape& shape = shapes.of(*model->entityNamed(entity));
            Row row = shape.emptyRow(key);
            row.values[shape.attribute(keys::name).value()] = String::make(name);
            return row;
        };
        const auto store = *SQLiteStore::create(path, model, options(Access::Write));
        StoreChanges changes = newChanges();
        const EntityDescription* property = model->entityNamed("Property");
        changes.insertions = {rowOf("Property", 1, "Elm 41"), rowOf("AccountTag", 2, "old"),
                              rowOf("AccountTag", 3, "new")};
        const std::size_t owner = shapes.of(*model->entityNamed("AccountTag")).link(keys::owner).value();
        changes.insertions[1].links[owner] = {1, 0};
        changes.insertions[2].links[owner] = {1, 1};
        if (model->entityNamed("State")) changes.insertions.push_back(rowOf("State", 4, "CurrencyCode"));
        changes.identifiers = {{1, property, "elm"}};
        changes.metadata = {{"window", "wide"}};
        ASSERT_TRUE(store->save(changes)->landed());
        changes = newChanges();
        changes.updates = {{1, property, 1, {{0, String::make("Oak 41")}}, {}}};
        ASSERT_TRUE(store->save(changes)->landed());
        former = test::contentAs(*model, *store);
    }
    /// Does to the file what no program of ours would.
    void meddle(const std::string& sql) {
        sqlite3* database = nullptr;
        ASSERT_EQ(SQLITE_OK, sqlite3_open(path.c_str(), &database));
        char* message = nullptr;
        EXPECT_EQ(SQLITE_OK, sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &message)) << message;
        sqlite3_close(database);
    }
    [[nodiscard]] std::vector<std::string> namesIn(const std::string& place) const {
        std::vector<std::string> names;
        if (files::exists(place))
            for (const auto& each : files::directory_iterator(place))
                names.push_back(each.path().filename().string());
        return names;
    }
    /// Refused for writing and for reading; it stays as it is, and no copy is left.
    void expectRefused(StoreErrorCode code, std::string_view reason) {
        const std::string before = bytesOf(path);
        for (const Access access : {Access::Write, Access::Read}) {
            const auto store = tryOpen(access);
            ASSERT_FALSE(store);
            EXPECT_EQ(store.error().code, code) << store.error().message;
            EXPECT_THAT(store.error().message, HasSubstr(std::string(reason)));
            EXPECT_THAT(store.error().message, HasSubstr(path));
            EXPECT_EQ(bytesOf(path), before);
            EXPECT_FALSE(files::exists(copies));
            EXPECT_FALSE(files::exists(path + ".new"));
        }
    }
    static Ref<ManagedObjectModel> withoutSublease() {
        static const auto model = EarlierModel{.withoutAttributes = {"TKProperty.sublease"}}.make();
        return model;
    }
    static Ref<ManagedObjectModel> withoutSettings() {
        static const auto model = EarlierModel{.withoutEntities = {"State"}}.make();
        return model;
    }

    test::TestFolder folder;
    const std::string path = folder.file("book.estatebook");
    const std::string copies = folder.file("book.copies");
    std::string former;
};

// Samples of each layout

struct Sample {
    std::string layout;
    std::string name;

    [[nodiscard]] std::string file(std::string_view suffix) const {
        return std::string(ESTATEBOOK_SAMPLE_BOOKS) + "/" + layout + "/" + name + std::string(suffix);
    }
    friend void PrintTo(const Sample& sample, std::ostream* stream) {
        *stream << sample.layout << '/' << sample.name;
    }
};

std::vector<Sample> samples() {
    std::vector<Sample> samples;
    for (const auto& layout : files::directory_iterator(ESTATEBOOK_SAMPLE_BOOKS))
        if (layout.is_directory())
            for (const auto& each : files::directory_iterator(layout))
                if (each.path().extension() == ".estatebook")
                    samples.push_back({layout.path().filename(), each.path().stem()});
    std::ranges::sort(samples, {}, [](const Sample& each) { return each.layout + each.name; });
    return samples;
}

/// Whose samples today's program wrote. When the model grows, that is a layout of the past, too.
constexpr std::string_view OfToday = "layout-2";

class SampleBookTest : public BookMigrationTest, public testing::WithParamInterface<Sample> {
protected:
    SampleBookTest() {
        files::copy_file(GetParam().file(".estatebook"), path);
        if (files::exists(GetParam().file(".estatebook-journal")))
            files::copy_file(GetParam().file(".estatebook-journal"), path + "-journal");
    }
    /// What the program that wrote the book told of it; none for a sample that has an export instead.
    [[nodiscard]] static std::optional<std::string> told() {
        const std::string file = GetParam().file(".txt");
        return files::exists(file) ? std::optional(bytesOf(file)) : std::nullopt;
    }
};

INSTANTIATE_TEST_SUITE_P(Layouts, SampleBookTest, testing::ValuesIn(samples()), [](const auto& sample) {
    std::string name = sample.param.layout + sample.param.name;
    std::erase(name, '-');
    return name;
});

TEST_P(SampleBookTest, IsReadAsItIs) {
    const bool isCutShort = files::exists(path + "-journal");
    const std::string before = bytesOf(path);
    {
        const auto store = open(Access::Read);
        EXPECT_THAT(*store->check(), IsEmpty());
        EXPECT_FALSE(store->migration());
        EXPECT_FALSE(store->capabilities().isWritable);
        const auto text = told();
        EXPECT_EQ(test::description(*store), text.value_or(test::description(*store)));
    }
    EXPECT_EQ(bytesOf(path) == before, !isCutShort) << "only what was cut short is taken back";
    EXPECT_THAT(namesIn(copies), IsEmpty());
}

TEST_P(SampleBookTest, HoldsWhatItHeldWhenItIsUpToDate) {
    const std::string content = test::contentAs(*bookModel(), *open(Access::Read));
    const bool isEarlier = GetParam().layout != OfToday;
    {
        const auto store = open(Access::Write);
        EXPECT_EQ(store->migration().has_value(), isEarlier);
        EXPECT_EQ(test::contentAs(*bookModel(), *store), content);
        EXPECT_THAT(*store->check(), IsEmpty());
        const auto text = told();
        EXPECT_EQ(test::description(*store), text.value_or(test::description(*store)));
        StoreChanges changes = newChanges();
        changes.insertions = {RowOf("Tenant", *store->lastKey() + 1)};
        EXPECT_TRUE(store->save(changes)->landed());
        EXPECT_THAT(*store->check(), IsEmpty());
    }
    EXPECT_FALSE(open(Access::Write)->migration());
    EXPECT_THAT(namesIn(copies), testing::SizeIs(isEarlier ? 1 : 0));
}

// What an earlier model knew

TEST_F(BookMigrationTest, AnAttributeThatWasAddedHasNoValue) {
    makeEarlier(withoutSublease());
    const auto store = open(Access::Write);
    ASSERT_TRUE(store->migration());
    EXPECT_EQ(store->migration()->fromLayout, 2u);
    EXPECT_EQ(test::contentAs(*withoutSublease(), *store), former);
    EXPECT_THAT(*store->check(), IsEmpty());
    const RowKey key = 1;
    const auto rows = *store->rows(entityNamed("Property"), {&key, 1});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].version, 2);
    EXPECT_TRUE(rows[0].values[*test::shapeOf(entityNamed("Property")).attribute(keys::sublease)].isAbsent());
}

TEST_F(BookMigrationTest, AnEntityThatWasAddedHasNoRowsAndNumbersOfOthersFollow) {
    makeEarlier(EarlierModel{.withoutEntities = {"State", "TenantNote"}, .shuffledBy = 7}.make());
    const auto store = open(Access::Write);
    EXPECT_EQ(test::contentAs(*bookModel(), *store), former);
    EXPECT_THAT(*store->check(), IsEmpty());
    EXPECT_THAT(*store->fetchKeys(entityNamed("State")), IsEmpty());
    StoreChanges changes = newChanges();
    changes.insertions = {RowOf("State", 4), RowOf("TenantNote", 5)};
    EXPECT_TRUE(store->save(changes)->landed());
    EXPECT_THAT(*store->check(), IsEmpty());
}

TEST_F(BookMigrationTest, AnIndexThatIsMissingIsMade) {
    makeEarlier(EarlierModel{.hasIndexes = false}.make());
    const auto store = open(Access::Write);
    EXPECT_TRUE(store->migration());
    EXPECT_EQ(test::contentAs(*bookModel(), *store), former);
    EXPECT_THAT(*store->check(), IsEmpty());
    EXPECT_THAT(*store->fetchKeys(entityNamed("State"),
                                  Predicate::predicateWithFormat("name = %@", String::make("CurrencyCode"))),
                ElementsAre(4));
}

TEST_F(BookMigrationTest, ABookOfANewerModelIsRefused) {
    makeEarlier(bookModel());
    for (const auto& [model, word] : {std::pair(withoutSublease(), "sublease"), {withoutSettings(), "State"}})
        for (const Access access : {Access::Write, Access::Read}) {
            const auto store = SQLiteStore::open(path, model, options(access));
            ASSERT_FALSE(store);
            EXPECT_EQ(store.error().code, StoreErrorCode::Newer) << store.error().message;
            EXPECT_THAT(store.error().message, HasSubstr(word));
        }
    EXPECT_THAT(namesIn(copies), IsEmpty());
}

// What is done to the files

TEST_F(BookMigrationTest, TheBookIsKeptAsItWas) {
    const testkit::HeldClock clock{Date{800000000}};
    makeEarlier(withoutSublease());
    const auto store = open(Access::Write);
    ASSERT_TRUE(store->migration());
    const std::string copy = store->migration()->copy;
    EXPECT_THAT(namesIn(copies), ElementsAre(files::path(copy).filename().string()));
    EXPECT_THAT(copy, testing::EndsWith(" before migration.estatebook"));
    const auto kept = SQLiteStore::open(copy, withoutSublease(), options(Access::Read));
    ASSERT_TRUE(kept) << kept.error().message;
    EXPECT_EQ(test::contentAs(*withoutSublease(), **kept), former);
    EXPECT_THAT(*(*kept)->check(), IsEmpty());
    EXPECT_THAT(namesIn(folder.file("")), testing::IsSubsetOf({"book.estatebook", "book.estatebook.lock",
                                                               "book.estatebook-journal", "book.copies"}));
}

TEST_F(BookMigrationTest, NobodyMayReadItWhoMightNotBefore) {
    for (const auto rights : {files::perms(0600), files::perms(0640), files::perms(0666)}) {
        files::remove(path);
        makeEarlier(withoutSublease());
        files::permissions(path, rights);
        const auto store = open(Access::Write);
        ASSERT_TRUE(store->migration());
        EXPECT_EQ(files::status(path).permissions(), rights);
        EXPECT_EQ(files::status(store->migration()->copy).permissions(), rights);
    }
}

TEST_F(BookMigrationTest, WhoeverReadsChangesNothing) {
    makeEarlier(withoutSublease());
    const std::string before = bytesOf(path);
    const auto store = open(Access::Read);
    EXPECT_FALSE(store->migration());
    EXPECT_EQ(test::contentAs(*withoutSublease(), *store), former);
    EXPECT_THAT(*store->check(), IsEmpty());
    EXPECT_EQ(store->location(), files::canonical(path).string());
    EXPECT_EQ(store->save(newChanges()).error().code, StoreErrorCode::ReadOnly);
    EXPECT_EQ(bytesOf(path), before);
    EXPECT_THAT(namesIn(copies), IsEmpty());
}

TEST_F(BookMigrationTest, ReadersKeepWhatTheyReadWhileItIsBroughtUpToDate) {
    makeEarlier(withoutSublease());
    const auto former1 = *SQLiteStore::open(path, withoutSublease(), options(Access::Read));
    const auto reader = open(Access::Read);
    const auto writer = open(Access::Write);
    StoreChanges changes = newChanges();
    changes.insertions = {RowOf("Tenant", *writer->lastKey() + 1)};
    EXPECT_TRUE(writer->save(changes)->landed());
    EXPECT_EQ(test::contentAs(*withoutSublease(), *reader), former);
    EXPECT_EQ(test::contentAs(*withoutSublease(), *former1), former);
    EXPECT_THAT(*writer->check(), IsEmpty());
    EXPECT_EQ(*open(Access::Read)->lastKey(), *writer->lastKey());
}

TEST_F(BookMigrationTest, ABookThatSomebodyWritesIsNotBroughtUpToDate) {
    makeEarlier(withoutSublease());
    const std::string before = bytesOf(path);
    const auto writer = *SQLiteStore::open(path, withoutSublease(), options(Access::Write));
    const auto second = tryOpen(Access::Write);
    ASSERT_FALSE(second);
    EXPECT_EQ(second.error().code, StoreErrorCode::Locked);
    EXPECT_EQ(bytesOf(path), before);
    EXPECT_THAT(namesIn(copies), IsEmpty());
}

TEST_F(BookMigrationTest, ALinkLeadsToTheBookAndStays) {
    makeEarlier(withoutSublease());
    const std::string link = folder.file("link.estatebook");
    files::create_symlink(path, link);
    const auto store = *SQLiteStore::open(link, bookModel(), options(Access::Write));
    EXPECT_TRUE(store->migration());
    EXPECT_TRUE(files::is_symlink(link));
    EXPECT_EQ(namesIn(copies).size(), 1u) << "beside the book";
    EXPECT_EQ(test::contentAs(*withoutSublease(), *store), former);
}

TEST_F(BookMigrationTest, WhereNoCopyCanBeKeptNothingIsDone) {
    makeEarlier(withoutSublease());
    const std::string before = bytesOf(path);
    std::ofstream(copies) << "in the way";
    EXPECT_FALSE(tryOpen(Access::Write));
    EXPECT_EQ(bytesOf(path), before);
    EXPECT_EQ(test::contentAs(*withoutSublease(), *open(Access::Read)), former);
    files::remove(copies);
    EXPECT_TRUE(open(Access::Write)->migration());
}

TEST_F(BookMigrationTest, WhatAnInterruptedMigrationLeftIsInNobodysWay) {
    makeEarlier(withoutSublease());
    std::ofstream(path + ".new") << "half a book";
    std::ofstream(path + ".new-journal") << "half a journal";
    EXPECT_EQ(test::contentAs(*withoutSublease(), *open(Access::Write)), former);
    EXPECT_FALSE(files::exists(path + ".new"));
    EXPECT_FALSE(files::exists(path + ".new-journal"));
}

// Damaged ones

TEST_F(BookMigrationTest, DamageIsToldBeforeAnythingIsMade) {
    const std::pair<const char*, const char*> cases[] = {
        {"UPDATE Account SET name = 'Eve'", "does not agree with its digest"},
        {"UPDATE book_journal SET current = 'Eve'", "does not agree with its digest"},
        {"UPDATE book_entity SET name = 'Castle' WHERE number = 1", "does not agree with its digest"},
        {"DELETE FROM AccountTag WHERE _key = 3", "do not add up"},
        {"DELETE FROM book_identifier", "do not add up"},
        {"DELETE FROM book_sum WHERE name = 'Tenure'", "has no sum"},
        {"DELETE FROM Account", "not sound"},
        {"DELETE FROM book_header", "header"},
        {"CREATE TABLE songs(title)", "tables"},
        {"CREATE TRIGGER Account AFTER INSERT ON Tenure BEGIN DELETE FROM Tenure; END", "tables"},
        {"DROP INDEX \"Tenure.property\"", "tables"},
        {"DROP TABLE Tenure", "tables"},
        {"ALTER TABLE Account ADD COLUMN secret", "tables"},
        {"DELETE FROM book_entity WHERE number = 2", "entities"},
        {"DELETE FROM book_entity WHERE number > 14", "tables"},
        {"PRAGMA user_version=0", "layout"},
    };
    for (const auto& [sql, reason] : cases) {
        SCOPED_TRACE(sql);
        files::remove(path);
        makeEarlier(withoutSublease());
        meddle(sql);
        expectRefused(StoreErrorCode::Damaged, reason);
    }
}

TEST_F(BookMigrationTest, AColumnOfAnotherNameIsTakenForANewerOne) {
    makeEarlier(withoutSublease());
    meddle("ALTER TABLE Account RENAME COLUMN name TO title");
    expectRefused(StoreErrorCode::Newer, "\"title\" in \"Account\"");
}

// Rows that stood otherwise

class SteppedLayoutTest : public BookMigrationTest {
protected:
    static SQLiteStore::Options stepped(Access access) {
        SQLiteStore::Options all = options(access);
        all.layoutSteps = &test::SteppedLayout::steps();
        return all;
    }
    StoreResult<Ref<SQLiteStore>> tryOpenStepped(Access access) {
        return SQLiteStore::open(path, test::SteppedLayout::today(), stepped(access));
    }
    /// A property, two tenants and a payment, with some changes and what is kept beside them.
    void makeFormer() {
        const auto model = test::SteppedLayout::former();
        const RowShapes shapes(*model);
        const auto rowOf = [&](std::string_view entity, RowKey key, Key property, Value value) {
            const RowShape& shape = shapes.of(*model->entityNamed(entity));
            Row row = shape.emptyRow(key);
            row.values[shape.attribute(property).value()] = std::move(value);
            return row;
        };
        const auto placeOf = [&](std::string_view entity, Key property) {
            return shapes.of(*model->entityNamed(entity)).attribute(property).value();
        };
        {
            const auto store = *SQLiteStore::create(path, model, options(Access::Write));
            StoreChanges changes = newChanges();
            changes.insertions = {rowOf("Property", 1, keys::name, String::make("Elm 41")),
                                  rowOf("Tenant", 2, keys::name, String::make("Ada #7")),
                                  rowOf("Tenant", 3, keys::name, String::make("Grace")),
                                  rowOf("PropertyTransaction", 4, keys::amount, Decimal(123456))};
            changes.identifiers = {{2, model->entityNamed("Tenant"), "ada"}};
            changes.metadata = {{"window", "wide"}, {"zone", "Paris"}};
            ASSERT_TRUE(store->save(changes)->landed());
            changes = newChanges();
            changes.updates = {{1,
                                model->entityNamed("Property"),
                                1,
                                {{placeOf("Property", keys::sublease), String::make("left")}},
                                {}},
                               {2,
                                model->entityNamed("Tenant"),
                                1,
                                {{placeOf("Tenant", keys::name), String::make("Ada Field #8")}},
                                {}},
                               {4,
                                model->entityNamed("PropertyTransaction"),
                                1,
                                {{placeOf("PropertyTransaction", keys::amount), Decimal(-50)}},
                                {}}};
            ASSERT_TRUE(store->save(changes)->landed());
            former = test::contentAs(*model, *store);
        }
        test::SteppedLayout::age(path);
    }
    static Value valueIn(const Store& store, std::string_view entity, RowKey key, Key property) {
        const EntityDescription& described = *store.model().entityNamed(entity);
        const auto rows = *store.rows(described, {&key, 1});
        return rows.at(0).values[store.shapes().of(described).attribute(property).value()];
    }
    static void expectBrought(const SQLiteStore& store) {
        EXPECT_THAT(*store.check(), IsEmpty());
        EXPECT_EQ(valueIn(store, "Property", 1, keys::name), Value(String::make("Elm 41, sublet left")));
        EXPECT_EQ(valueIn(store, "Tenant", 2, keys::name), Value(String::make("Ada Field")));
        EXPECT_EQ(valueIn(store, "Tenant", 2, keys::addressBookID), Value(String::make("8")));
        EXPECT_EQ(valueIn(store, "Tenant", 3, keys::name), Value(String::make("Grace")));
        EXPECT_TRUE(valueIn(store, "Tenant", 3, keys::addressBookID).isAbsent());
        EXPECT_EQ(valueIn(store, "PropertyTransaction", 4, keys::amount), Value(Decimal::parse("-0.5")));
        EXPECT_THAT(*store.metadata(), ElementsAre(testing::Pair("zone", "Paris")));
        const RowKey ada = 2;
        EXPECT_THAT(*store.identifiers({&ada, 1}), ElementsAre("ada"));
        const auto entries = *store.journalOfCommit(2);
        ASSERT_EQ(entries.size(), 2u) << "that of the sublease is gone with it";
        EXPECT_EQ(entries[0].former, Value(String::make("Ada")));
        EXPECT_EQ(entries[0].current, Value(String::make("Ada Field")));
        EXPECT_EQ(entries[1].former, Value(Decimal::parse("1234.56")));
        EXPECT_EQ(entries[1].current, Value(Decimal::parse("-0.5")));
        const RowKey key = 4;
        EXPECT_EQ(store.rows(*store.model().entityNamed("Transaction"), {&key, 1})->at(0).version, 2);
    }
};

TEST_F(SteppedLayoutTest, RowsAreWhatTheStepMakesOfThem) {
    makeFormer();
    {
        const auto opened = tryOpenStepped(Access::Write);
        ASSERT_TRUE(opened) << opened.error().message;
        ASSERT_TRUE((*opened)->migration());
        EXPECT_EQ((*opened)->migration()->fromLayout, 1u);
        expectBrought(**opened);
        StoreChanges changes = newChanges();
        changes.insertions = {RowOf("Advertisement", 5)};
        changes.insertions[0].entity = test::SteppedLayout::today()->entityNamed("Advertisement");
        EXPECT_TRUE((*opened)->save(changes)->landed());
    }
    const auto again = tryOpenStepped(Access::Write);
    ASSERT_TRUE(again) << again.error().message;
    EXPECT_FALSE((*again)->migration()) << "no step is made twice";
    expectBrought(**again);
}

TEST_F(SteppedLayoutTest, TheBookIsKeptAsTheFormerProgramWroteIt) {
    makeFormer();
    const auto opened = tryOpenStepped(Access::Write);
    ASSERT_TRUE(opened) << opened.error().message;
    const auto kept =
        SQLiteStore::open((*opened)->migration()->copy, test::SteppedLayout::former(), options(Access::Read));
    ASSERT_TRUE(kept) << kept.error().message;
    EXPECT_EQ(test::contentAs(*test::SteppedLayout::former(), **kept), former);
}

TEST_F(SteppedLayoutTest, WhoeverReadsOrSalvagesSeesTheSame) {
    makeFormer();
    const std::string before = bytesOf(path);
    expectBrought(**tryOpenStepped(Access::Read));
    EXPECT_EQ(bytesOf(path), before);
    const std::string to = folder.file("saved.estatebook");
    const auto saved = salvageBook(path, to, test::SteppedLayout::today(), stepped(Access::Write));
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_THAT(saved->lost, IsEmpty()) << "what is dropped on purpose is not lost";
    expectBrought(**SQLiteStore::open(to, test::SteppedLayout::today(), stepped(Access::Read)));
}

TEST_F(SteppedLayoutTest, WithoutItsStepTheBookIsRefused) {
    makeFormer();
    const std::string before = bytesOf(path);
    const auto opened = SQLiteStore::open(path, test::SteppedLayout::today(), options(Access::Write));
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error().code, StoreErrorCode::Newer);
    EXPECT_EQ(bytesOf(path), before);
    EXPECT_FALSE(files::exists(copies));
}

TEST_F(SteppedLayoutTest, AStepThatLeavesWhatNoBookHoldsIsRefused) {
    using sqlite::Cell;
    using sqlite::SteppedRow;
    static constexpr sqlite::FormerAttribute Gone[] = {{"Account", "sublease", AttributeType::String}};
    const auto refusalOf = [&](void (*bring)(SteppedRow&)) {
        files::remove(path);
        makeFormer();
        const std::string before = bytesOf(path);
        const sqlite::LayoutStep step{.from = 1, .attributes = Gone, .bring = bring};
        const sqlite::LayoutSteps steps{{&step, 1}};
        SQLiteStore::Options all = options(Access::Write);
        all.layoutSteps = &steps;
        const auto opened = SQLiteStore::open(path, test::SteppedLayout::today(), all);
        EXPECT_EQ(bytesOf(path), before);
        EXPECT_FALSE(files::exists(copies));
        return opened ? std::string("it is taken") : opened.error().message;
    };
    EXPECT_THAT(refusalOf([](SteppedRow&) {}), HasSubstr("holds what its entity does not have"));
    EXPECT_THAT(refusalOf([](SteppedRow& row) {
                    row.take("sublease");
                    if (row.table() == "book_journal" && row.cell("property").bytes == "sublease") row.drop();
                    if (row.table() == "Account") row.set("name", Cell::blob("x"));
                }),
                HasSubstr("it holds something else where a text stands"));
    EXPECT_THAT(refusalOf([](SteppedRow& row) { row.take("sublease"); }),
                HasSubstr("it names a property that there is not"));
    EXPECT_THAT(refusalOf([](SteppedRow& row) {
                    row.take("sublease");
                    if (row.table() == "book_journal" || row.table() == "Account") row.drop();
                }),
                HasSubstr("An identifier is that of the row 2, which is not there"));
}

// Beside opening

TEST_F(BookMigrationTest, ACopyOfAnEarlierBookIsAsEarly) {
    makeEarlier(withoutSublease());
    const std::string copy = folder.file("copy.estatebook");
    const auto made = copyBook(path, copy, bookModel(), options(Access::Read));
    ASSERT_TRUE(made) << made.error().message;
    const auto store = SQLiteStore::open(copy, withoutSublease(), options(Access::Read));
    ASSERT_TRUE(store) << store.error().message;
    EXPECT_EQ(test::contentAs(*withoutSublease(), **store), former);
    meddle("UPDATE Account SET name = 'Eve'");
    EXPECT_FALSE(copyBook(path, folder.file("other.estatebook"), bookModel(), options(Access::Read)));
}

TEST_F(BookMigrationTest, WhatCanBeReadOfADamagedEarlierBookIsSaved) {
    makeEarlier(EarlierModel{
        .withoutEntities = {"TenantNote"}, .withoutAttributes = {"TKProperty.sublease"}, .shuffledBy = 3}
                    .make());
    meddle("UPDATE AccountTag SET name = 'Eve' WHERE _key = 2");
    const auto saved =
        salvageBook(path, folder.file("saved.estatebook"), bookModel(), options(Access::Write));
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_EQ(saved->rows, 3u);
    EXPECT_THAT(saved->lost, testing::Contains(HasSubstr("the row 2 of AccountTag is not sound")));
    const auto store = SQLiteStore::open(folder.file("saved.estatebook"), bookModel(), options(Access::Read));
    ASSERT_TRUE(store) << store.error().message;
    EXPECT_THAT(*(*store)->check(), IsEmpty());
    EXPECT_THAT(*(*store)->fetchKeys(entityNamed("Property")), ElementsAre(1));
    EXPECT_THAT(*(*store)->fetchKeys(entityNamed("State")), ElementsAre(4));
    EXPECT_THAT(*(*store)->commits(), testing::SizeIs(3));
}

} // namespace
} // namespace estatebook::platform
