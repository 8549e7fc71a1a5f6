// SPDX-License-Identifier: MIT

// What a store is: every kind of store passes all of this.

#include "support/StoreKinds.hpp"

#include "platform/values/Array.hpp"
#include "platform/values/AttributedString.hpp"
#include "platform/values/Exception.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <numeric>

namespace estatebook::platform {
namespace {

using test::deletionOf;
using test::entityNamed;
using test::newChanges;
using test::RowOf;
using test::shapeOf;
using test::UpdateOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class StoreConformanceTest : public testing::TestWithParam<test::StoreKind> {
protected:
    Store& store() { return place_->store(); }
    void reopen() { place_->reopen(); }

    void land(const StoreChanges& changes) {
        const auto outcome = store().save(changes);
        ASSERT_TRUE(outcome) << outcome.error().message;
        ASSERT_TRUE(outcome->landed());
    }
    void insert(std::vector<Row> rows) {
        StoreChanges changes = newChanges();
        changes.insertions = std::move(rows);
        land(changes);
    }
    void update(std::vector<RowUpdate> updates) {
        StoreChanges changes = newChanges();
        changes.updates = std::move(updates);
        land(changes);
    }
    /// The changes are refused and leave no trace.
    void expectRefused(const StoreChanges& changes, std::string_view reason) {
        const RowKey lastKey = *store().lastKey();
        const std::size_t commits = store().commits()->size();
        const auto outcome = store().save(changes);
        ASSERT_FALSE(outcome);
        EXPECT_EQ(StoreErrorCode::InvalidChange, outcome.error().code);
        EXPECT_THAT(outcome.error().message, HasSubstr(std::string(reason)));
        EXPECT_FALSE(*store().hasLanded(changes.token));
        reopen();
        EXPECT_EQ(lastKey, *store().lastKey());
        EXPECT_EQ(commits, store().commits()->size());
    }

    std::optional<Row> row(std::string_view entity, RowKey key) {
        const auto rows = store().rows(entityNamed(entity), {&key, 1});
        return rows && !rows->empty() ? std::optional(rows->front()) : std::nullopt;
    }
    Value value(std::string_view entity, RowKey key, Key attribute) {
        const auto found = row(entity, key);
        return found ? found->values[*shapeOf(*found->entity).attribute(attribute)] : Value();
    }
    std::vector<RowKey> keysOf(std::string_view entity, const std::optional<Predicate>& predicate = {}) {
        const auto keys = store().fetchKeys(entityNamed(entity), predicate);
        return keys ? *keys : std::vector<RowKey>{-1};
    }
    std::vector<RowKey> membersOf(std::string_view entity, Key toMany, RowKey owner) {
        return store().members(*entityNamed(entity).relationship(toMany), {&owner, 1})->front();
    }

private:
    std::unique_ptr<test::StorePlace> place_ = GetParam().place();
};

Predicate where(std::string_view attribute, Value value) {
    return Predicate::predicateWithFormat(std::string(attribute) + " = %@", std::move(value));
}

Ref<String> text(std::string_view text) {
    return String::make(text);
}

// What a store tells of itself

TEST_P(StoreConformanceTest, TellsItsTypeAndKeepsItsIdentifier) {
    EXPECT_EQ(GetParam().name, store().type());
    const std::string identifier(store().identifier());
    EXPECT_EQ(32u, identifier.size());
    reopen();
    EXPECT_EQ(identifier, store().identifier());
    EXPECT_NE(identifier, GetParam().place()->store().identifier());
    EXPECT_GE(store().capabilities().batchSize, 64u);
    EXPECT_TRUE(store().capabilities().isWritable);
}

TEST_P(StoreConformanceTest, BeginsEmpty) {
    EXPECT_EQ(NoRow, *store().lastKey());
    EXPECT_THAT(keysOf("Account"), IsEmpty());
    EXPECT_THAT(*store().commits(), IsEmpty());
    EXPECT_THAT(*store().metadata(), IsEmpty());
    EXPECT_THAT(membersOf("Property", keys::tenures, 7), IsEmpty());
}

// Values

TEST_P(StoreConformanceTest, KeepsTextsToTheByte) {
    const std::string odd("na\xc3\xafve \0 \xf0\x9f\x8f\xa0", 13);
    insert({RowOf("Tenant", 1).with(keys::name, text(odd)), RowOf("Tenant", 2).with(keys::name, text("")),
            RowOf("Tenant", 3)});
    reopen();
    EXPECT_EQ(odd, value("Tenant", 1, keys::name).string()->view());
    EXPECT_EQ("", value("Tenant", 2, keys::name).string()->view());
    EXPECT_TRUE(value("Tenant", 3, keys::name).isAbsent());
}

TEST_P(StoreConformanceTest, KeepsTheBitsOfDates) {
    const double instants[] = {0.0,
                               -0.0,
                               800000000,
                               0.1,
                               -63114076800.123,
                               std::numeric_limits<double>::max(),
                               std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::denorm_min(),
                               std::bit_cast<double>(0x7ff8'0000'0000'0123u)};
    std::vector<Row> rows;
    for (const double instant : instants)
        rows.push_back(
            RowOf("Tenure", static_cast<RowKey>(rows.size()) + 1).with(keys::startDate, Date{instant}));
    insert(rows);
    reopen();
    for (std::size_t index = 0; index < rows.size(); ++index)
        EXPECT_TRUE(value("Tenure", rows[index].key, keys::startDate).isIdentical(Date{instants[index]}))
            << instants[index];
}

TEST_P(StoreConformanceTest, KeepsAllDigitsOfDecimals) {
    const Decimal decimals[] = {Decimal(),
                                Decimal(1000),
                                Decimal::parse("-535.71"),
                                Decimal::parse("99999999999999999999999999999999999999"),
                                Decimal::parse("1e127"),
                                Decimal::parse("-1e-128"),
                                Decimal::notANumber()};
    std::vector<Row> rows;
    for (const Decimal& decimal : decimals)
        rows.push_back(
            RowOf("Tenure", static_cast<RowKey>(rows.size()) + 1).with(keys::rentalAmount, decimal));
    insert(rows);
    reopen();
    for (std::size_t index = 0; index < rows.size(); ++index)
        EXPECT_TRUE(value("Tenure", rows[index].key, keys::rentalAmount).isIdentical(decimals[index]))
            << decimals[index];
}

TEST_P(StoreConformanceTest, KeepsTheKindOfNumbers) {
    const Value numbers[] = {true,
                             false,
                             std::int64_t{1},
                             std::numeric_limits<std::int64_t>::min(),
                             std::uint64_t{1},
                             std::numeric_limits<std::uint64_t>::max(),
                             1.0f,
                             std::bit_cast<float>(0x7fc0'1234u),
                             1.0,
                             0.1,
                             -0.0,
                             std::bit_cast<double>(0x7ff8'0000'0000'0123u),
                             Decimal::parse("1.5"),
                             Decimal::notANumber()};
    std::vector<Row> rows;
    for (const Value& number : numbers)
        rows.push_back(
            RowOf("Tenure", static_cast<RowKey>(rows.size()) + 1).with(keys::chargeBehaviour, number));
    insert(rows);
    reopen();
    for (std::size_t index = 0; index < rows.size(); ++index)
        EXPECT_TRUE(value("Tenure", rows[index].key, keys::chargeBehaviour).isIdentical(numbers[index]))
            << numbers[index].description();
}

TEST_P(StoreConformanceTest, KeepsObjectsWhole) {
    const Value values[] = {text("NZD"),
                            Decimal(5),
                            Date{1},
                            NullObject{},
                            Array::make({text("a"), std::int64_t{2}}),
                            AttributedString::make(text("Roof"))};
    std::vector<Row> rows;
    for (const Value& each : values)
        rows.push_back(RowOf("State", static_cast<RowKey>(rows.size()) + 1).with(keys::value, each));
    insert(rows);
    reopen();
    for (std::size_t index = 0; index < rows.size(); ++index)
        EXPECT_EQ(values[index], value("State", rows[index].key, keys::value)) << values[index].description();
}

TEST_P(StoreConformanceTest, NeverKeepsTransientAttributes) {
    insert({RowOf("Tenure", 1).with(keys::currentDate, Date{5}).with(keys::endDate, Date{6})});
    EXPECT_TRUE(value("Tenure", 1, keys::currentDate).isAbsent());
    EXPECT_EQ(Value(Date{6}), value("Tenure", 1, keys::endDate));
}

// Fetching

TEST_P(StoreConformanceTest, FetchesSubentitiesInTheOrderOfCreation) {
    insert({RowOf("Tenant", 1), RowOf("Property", 2), RowOf("State", 3), RowOf("Tenant", 7)});
    insert({RowOf("Property", 8)});
    reopen();
    EXPECT_THAT(keysOf("Account"), ElementsAre(1, 2, 7, 8));
    EXPECT_THAT(keysOf("Property"), ElementsAre(2, 8));
    EXPECT_THAT(keysOf("Tenure"), IsEmpty());
    EXPECT_EQ(8, *store().lastKey());
    EXPECT_EQ("Tenant", row("Account", 7)->entity->name());
}

TEST_P(StoreConformanceTest, FetchesByEqualityOfValues) {
    insert(
        {RowOf("Tenant", 1).with(keys::name, text("Zo\xc3\xab")),
         RowOf("Property", 2).with(keys::name, text("Zo\xc3\xab")).with(keys::rentalAmount, Decimal(20)),
         RowOf("Tenant", 3).with(keys::name, text("zo\xc3\xab")),
         RowOf("Tenant", 4).with(keys::name, text("Zoe\xcc\x88")),
         RowOf("Property", 5).with(keys::available, true),
         RowOf("Property", 6).with(keys::available, std::uint64_t{1}).with(keys::rentalAmount, Decimal(2))});
    EXPECT_THAT(keysOf("Account", where("name", text("Zo\xc3\xab"))), ElementsAre(1, 2));
    EXPECT_THAT(keysOf("Tenant", where("name", text("Zo\xc3\xab"))), ElementsAre(1));
    EXPECT_THAT(keysOf("Account", where("name", Value())), ElementsAre(5, 6));
    EXPECT_THAT(keysOf("Account", where("name", std::int64_t{1})), IsEmpty());
    EXPECT_THAT(keysOf("Property", where("available", std::int64_t{1})), ElementsAre(5, 6));
    EXPECT_THAT(keysOf("Property", where("rentalAmount", 20.0)), ElementsAre(2));
    EXPECT_THAT(keysOf("Property", where("rentalAmount", Decimal(2))), ElementsAre(6));
}

TEST_P(StoreConformanceTest, FetchesDatesByEquality) {
    insert({RowOf("Tenure", 1).with(keys::startDate, Date{0.0}),
            RowOf("Tenure", 2).with(keys::startDate, Date{-0.0}),
            RowOf("Tenure", 3).with(keys::startDate, Date{std::nan("")})});
    EXPECT_THAT(keysOf("Tenure", where("startDate", Date{0.0})), ElementsAre(1, 2));
    EXPECT_THAT(keysOf("Tenure", where("startDate", Date{std::nan("")})), IsEmpty());
}

TEST_P(StoreConformanceTest, FetchesObjectsByEquality) {
    insert(
        {RowOf("State", 1).with(keys::value, text("NZD")), RowOf("State", 2).with(keys::value, text("EUR"))});
    EXPECT_THAT(keysOf("State", where("value", text("EUR"))), ElementsAre(2));
}

TEST_P(StoreConformanceTest, CannotFetchByWhatIsNotStored) {
    for (const std::string_view attribute : {"currentDate", "property", "totalCost", "nobodysKey"}) {
        const auto fetched = store().fetchKeys(entityNamed("Tenure"), where(attribute, Value()));
        ASSERT_FALSE(fetched) << attribute;
        EXPECT_EQ(StoreErrorCode::Unsupported, fetched.error().code);
        EXPECT_THAT(fetched.error().message, HasSubstr(std::string(attribute)));
    }
}

TEST_P(StoreConformanceTest, FetchesRowsAtOnce) {
    insert({RowOf("Tenant", 1).with(keys::name, text("a")), RowOf("Tenant", 2).with(keys::name, text("b"))});
    std::string names;
    const auto count = store().fetchRows(entityNamed("Account"), std::nullopt, [&](const Row& row) {
        names += row.values[*shapeOf(*row.entity).attribute(keys::name)].string()->view();
    });
    EXPECT_EQ(2u, *count);
    EXPECT_EQ("ab", names);
    EXPECT_EQ(1u, *store().fetchRows(entityNamed("Tenant"), where("name", text("b")), [](const Row&) {}));
}

TEST_P(StoreConformanceTest, WhatAVisitorRaisesLeavesTheStoreFine) {
    insert({RowOf("Tenant", 1), RowOf("Tenant", 2)});
    EXPECT_THROW(
        static_cast<void>(store().fetchRows(entityNamed("Tenant"), std::nullopt,
                                            [](const Row&) { throw InvalidArgumentException("enough"); })),
        InvalidArgumentException);
    EXPECT_THAT(keysOf("Tenant"), ElementsAre(1, 2));
    insert({RowOf("Tenant", 3)});
}

// Batches

TEST_P(StoreConformanceTest, ReadsRowsInTheOrderOfTheirKeys) {
    std::vector<Row> rows;
    for (RowKey key = 1; key <= 300; ++key)
        if (key % 7 != 0) rows.push_back(RowOf("TenureTransaction", key).with(keys::amount, Decimal(key)));
    insert(rows);
    std::vector<RowKey> asked(300);
    std::iota(asked.begin(), asked.end(), 1);
    const auto dense = store().rows(entityNamed("Transaction"), asked);
    ASSERT_EQ(rows.size(), dense->size());
    for (std::size_t index = 0; index < rows.size(); ++index) {
        EXPECT_EQ(rows[index].key, (*dense)[index].key);
        EXPECT_EQ(rows[index].values.front(), (*dense)[index].values.front());
    }
    const RowKey sparse[] = {299, 7, 2, 2, 1000, 150, -3};
    std::vector<RowKey> found;
    static_cast<void>(store().visitRows(entityNamed("Transaction"), sparse,
                                        [&](const Row& row) { found.push_back(row.key); }));
    EXPECT_THAT(found, ElementsAre(299, 2, 2, 150));
    EXPECT_THAT(*store().rows(entityNamed("Transaction"), {}), IsEmpty());
}

// Relationships

TEST_P(StoreConformanceTest, KeepsLinksAndFindsMembers) {
    insert({RowOf("Property", 1), RowOf("Property", 2), RowOf("Tenure", 3).to(keys::property, 2),
            RowOf("Tenure", 4).to(keys::property, 1), RowOf("Tenure", 5).to(keys::property, 2),
            RowOf("Tenure", 6)});
    reopen();
    EXPECT_EQ((RowLink{2, 0}), row("Tenure", 5)->links[*shapeOf(entityNamed("Tenure")).link(keys::property)]);
    const RowKey owners[] = {2, 9, 1, 2};
    EXPECT_THAT(*store().members(*entityNamed("Property").relationship(keys::tenures), owners),
                ElementsAre(ElementsAre(3, 5), IsEmpty(), ElementsAre(4), ElementsAre(3, 5)));
    update(
        {UpdateOf("Tenure", 3, 1).to(keys::property, 1), UpdateOf("Tenure", 5, 1).to(keys::property, NoRow)});
    EXPECT_THAT(membersOf("Property", keys::tenures, 1), ElementsAre(3, 4));
    EXPECT_THAT(membersOf("Property", keys::tenures, 2), IsEmpty());
}

TEST_P(StoreConformanceTest, KeepsTheOrderOfOrderedMembers) {
    insert({RowOf("Tenant", 1), RowOf("AccountTag", 2).to(keys::owner, 1, 1),
            RowOf("AccountTag", 3).to(keys::owner, 1, 2), RowOf("AccountTag", 4).to(keys::owner, 1, 0)});
    reopen();
    EXPECT_THAT(membersOf("Account", keys::tags, 1), ElementsAre(4, 2, 3));
    EXPECT_THAT(membersOf("Tenant", keys::tags, 1), ElementsAre(4, 2, 3));
    update({UpdateOf("AccountTag", 2, 1).to(keys::owner, 1, 0),
            UpdateOf("AccountTag", 4, 1).to(keys::owner, 1, 1)});
    EXPECT_THAT(membersOf("Account", keys::tags, 1), ElementsAre(2, 4, 3));
}

TEST_P(StoreConformanceTest, TellsMembersOfSiblingEntitiesApart) {
    insert({RowOf("Property", 1), RowOf("Tenant", 2), RowOf("PropertyNote", 3).to(keys::property, 1),
            RowOf("TenantNote", 4).to(keys::tenant, 2),
            RowOf("PropertyTransaction", 5).to(keys::property, 1)});
    EXPECT_THAT(membersOf("Property", keys::notes, 1), ElementsAre(3));
    EXPECT_THAT(membersOf("Tenant", keys::notes, 2), ElementsAre(4));
    EXPECT_THAT(membersOf("Property", keys::transactions, 1), ElementsAre(5));
}

TEST_P(StoreConformanceTest, RowsMayLeadToOneAnotherAndToLaterOnes) {
    insert(
        {RowOf("Property", 1).to(keys::advertisement, 2), RowOf("Advertisement", 2).to(keys::property, 1)});
    EXPECT_EQ(1, row("Advertisement", 2)->links.front().target);
}

TEST_P(StoreConformanceTest, SumsOverMembers) {
    insert({RowOf("Tenure", 1), RowOf("Tenure", 2),
            RowOf("TenureTransaction", 3).with(keys::amount, Decimal::parse("0.1")).to(keys::tenure, 1),
            RowOf("TenureTransaction", 4).with(keys::amount, Decimal::parse("0.2")).to(keys::tenure, 1),
            RowOf("TenureTransaction", 5).to(keys::tenure, 1),
            RowOf("TenureTransaction", 6).with(keys::amount, Decimal(1000)).to(keys::tenure, 2),
            RowOf("TenureTransaction", 7)
                .with(keys::amount, Decimal(-5))
                .with(keys::adjustment, true)
                .to(keys::tenure, 1)});
    const auto& transactions = *entityNamed("Tenure").relationship(keys::transactions);
    EXPECT_EQ(Decimal::parse("-4.7"), *store().sum(transactions, 1, keys::amount));
    const RowKey exceptions[] = {3, 7};
    EXPECT_EQ(Decimal::parse("0.2"), *store().sum(transactions, 1, keys::amount, exceptions));
    EXPECT_EQ(Decimal(1), *store().sum(transactions, 1, keys::adjustment));
    EXPECT_EQ(Decimal(), *store().sum(transactions, 99, keys::amount));
    for (const Key key : {keys::what, keys::when, keys::tagNames, keys::tenure})
        EXPECT_EQ(StoreErrorCode::Unsupported, store().sum(transactions, 1, key).error().code);
}

TEST_P(StoreConformanceTest, SumsRaiseAsAddingDoes) {
    insert({RowOf("Tenure", 1),
            RowOf("TenureTransaction", 2).with(keys::amount, Decimal::notANumber()).to(keys::tenure, 1)});
    EXPECT_THROW(static_cast<void>(
                     store().sum(*entityNamed("Tenure").relationship(keys::transactions), 1, keys::amount)),
                 OverflowException);
    insert({RowOf("Tenant", 3)});
}

// Saving

TEST_P(StoreConformanceTest, UpdatesOnlyWhatChanged) {
    insert({RowOf("Tenant", 1).with(keys::name, text("Ada")).with(keys::addressBookID, text("7"))});
    EXPECT_EQ(1, row("Tenant", 1)->version);
    update({UpdateOf("Tenant", 1, 1).with(keys::name, text("Ada Field"))});
    reopen();
    EXPECT_EQ(2, row("Tenant", 1)->version);
    EXPECT_EQ(Value(text("Ada Field")), value("Tenant", 1, keys::name));
    EXPECT_EQ(Value(text("7")), value("Tenant", 1, keys::addressBookID));
    update({UpdateOf("Tenant", 1, 2).with(keys::name, Value())});
    EXPECT_TRUE(value("Tenant", 1, keys::name).isAbsent());
}

TEST_P(StoreConformanceTest, NeverGivesAKeyAgain) {
    insert({RowOf("Tenant", 1), RowOf("Tenant", 2)});
    StoreChanges deletion = newChanges();
    deletion.deletions = {deletionOf("Tenant", 2, 1)};
    land(deletion);
    reopen();
    EXPECT_THAT(keysOf("Tenant"), ElementsAre(1));
    EXPECT_FALSE(row("Tenant", 2));
    EXPECT_EQ(2, *store().lastKey());
    StoreChanges again = newChanges();
    again.insertions = {RowOf("Property", 2)};
    expectRefused(again, "the Property 2");
}

TEST_P(StoreConformanceTest, TakesNoTextThatIsNotUtf8) {
    insert({RowOf("Tenant", 1)});
    const std::string bad = "Zo\xeb";
    StoreChanges changes = newChanges();
    changes.insertions = {RowOf("Tenant", 2).with(keys::name, text(bad))};
    expectRefused(changes, "the Tenant 2 has a value that \"name\" cannot hold");
    changes = newChanges();
    changes.updates = {UpdateOf("Tenant", 1, 1).with(keys::name, text(bad))};
    expectRefused(changes, "the Tenant 1 has a value that \"name\" cannot hold");
    changes = newChanges();
    changes.identifiers = {{1, &entityNamed("Tenant"), bad}};
    expectRefused(changes, "The identifier of the Tenant 1 is not UTF-8");
    for (const MetadataChange& metadata : {MetadataChange{bad, "b"}, MetadataChange{"a", bad}}) {
        changes = newChanges();
        changes.metadata = {metadata};
        expectRefused(changes, "not UTF-8");
    }
    for (std::string CommitOrigin::*part :
         {&CommitOrigin::author, &CommitOrigin::program, &CommitOrigin::command}) {
        changes = newChanges();
        changes.origin.*part = bad;
        expectRefused(changes, "no UTF-8");
    }
    EXPECT_TRUE(value("Tenant", 1, keys::name).isAbsent());
}

TEST_P(StoreConformanceTest, SavesRowsThatAreMadeWhenTheyAreAskedFor) {
    insert({RowOf("Tenant", 1)});
    const std::vector<Row> rows{RowOf("Property", 3).with(keys::name, text("Elm")),
                                RowOf("Tenure", 4).to(keys::property, 3).to(keys::tenant, 1),
                                RowOf("Tenant", 7).with(keys::name, text("Ada"))};
    StoreChanges changes = newChanges();
    changes.insertions = InsertedRows(rows.size(), [&](std::size_t place, Row& row) { row = rows[place]; });
    changes.updates = {UpdateOf("Tenant", 1, 1).with(keys::name, text("Grace"))};
    land(changes);
    EXPECT_EQ(value("Property", 3, keys::name), Value(text("Elm")));
    EXPECT_EQ(value("Tenant", 7, keys::name), Value(text("Ada")));
    EXPECT_THAT(keysOf("Tenure"), ElementsAre(4));
    EXPECT_EQ(*store().lastKey(), 7);
    EXPECT_EQ(store().commits()->back().firstKey, 3);
    EXPECT_EQ(store().commits()->back().lastKey, 7);
}

TEST_P(StoreConformanceTest, TellsConflictsAndChangesNothing) {
    insert({RowOf("Tenant", 1).with(keys::name, text("Ada")), RowOf("Tenant", 2), RowOf("Tenant", 3)});
    update({UpdateOf("Tenant", 1, 1).with(keys::name, text("Grace"))});
    StoreChanges changes = newChanges();
    changes.insertions = {RowOf("Tenant", 4)};
    changes.updates = {UpdateOf("Tenant", 1, 1).with(keys::name, text("Mary")),
                       UpdateOf("Tenant", 2, 1).with(keys::name, text("Joan")), UpdateOf("Tenant", 77, 1)};
    changes.deletions = {deletionOf("Tenant", 3, 5)};
    const auto outcome = store().save(changes);
    ASSERT_TRUE(outcome) << outcome.error().message;
    ASSERT_EQ(3u, outcome->conflicts.size());
    EXPECT_EQ(1, outcome->conflicts[0].key);
    EXPECT_EQ(1, outcome->conflicts[0].expectedVersion);
    EXPECT_EQ(2, outcome->conflicts[0].stored->version);
    EXPECT_EQ(Value(text("Grace")),
              outcome->conflicts[0].stored->values[*shapeOf(entityNamed("Tenant")).attribute(keys::name)]);
    EXPECT_EQ(77, outcome->conflicts[1].key);
    EXPECT_FALSE(outcome->conflicts[1].stored);
    EXPECT_EQ(3, outcome->conflicts[2].key);
    EXPECT_FALSE(*store().hasLanded(changes.token));
    reopen();
    EXPECT_EQ(3, *store().lastKey());
    EXPECT_TRUE(value("Tenant", 2, keys::name).isAbsent());
    EXPECT_THAT(keysOf("Tenant"), ElementsAre(1, 2, 3));
}

TEST_P(StoreConformanceTest, ARowOfAnotherEntityIsAConflict) {
    insert({RowOf("Tenant", 1)});
    StoreChanges changes = newChanges();
    changes.updates = {UpdateOf("Property", 1, 1).with(keys::sublease, text("left"))};
    EXPECT_EQ(1u, store().save(changes)->conflicts.size());
}

TEST_P(StoreConformanceTest, KnowsItsTokens) {
    StoreChanges changes = newChanges();
    EXPECT_FALSE(*store().hasLanded(changes.token));
    changes.insertions = {RowOf("Tenant", 1)};
    land(changes);
    EXPECT_TRUE(*store().hasLanded(changes.token));
    reopen();
    EXPECT_TRUE(*store().hasLanded(changes.token));
    changes.insertions = {RowOf("Tenant", 2)};
    const auto again = store().save(changes);
    ASSERT_FALSE(again);
    EXPECT_EQ(StoreErrorCode::InvalidChange, again.error().code);
    EXPECT_EQ(1, *store().lastKey());
}

TEST_P(StoreConformanceTest, RefusesLinksThatLeadNowhere) {
    insert({RowOf("Property", 1), RowOf("Tenant", 2)});
    StoreChanges changes = newChanges();
    changes.insertions = {RowOf("Tenure", 3).to(keys::property, 9)};
    expectRefused(changes, "not there");
    StoreChanges wrongTable = newChanges();
    wrongTable.insertions = {RowOf("Tenure", 3), RowOf("TenureNote", 4).to(keys::tenure, 1)};
    expectRefused(wrongTable, "not there");
}

TEST_P(StoreConformanceTest, RefusesToDeleteWhatOthersLeadTo) {
    insert({RowOf("Property", 1), RowOf("Tenure", 2).to(keys::property, 1)});
    StoreChanges changes = newChanges();
    changes.deletions = {deletionOf("Property", 1, 1)};
    expectRefused(changes, "not there");
    EXPECT_THAT(keysOf("Property"), ElementsAre(1));
    StoreChanges both = newChanges();
    both.deletions = {deletionOf("Property", 1, 1), deletionOf("Tenure", 2, 1)};
    land(both);
    EXPECT_THAT(keysOf("Property"), IsEmpty());
}

TEST_P(StoreConformanceTest, ADeletedOwnerMayBeLeftInTheSameSave) {
    insert({RowOf("Property", 1), RowOf("Tenure", 2).to(keys::property, 1)});
    StoreChanges changes = newChanges();
    changes.insertions = {RowOf("Property", 3)};
    changes.updates = {UpdateOf("Tenure", 2, 1).to(keys::property, 3)};
    changes.deletions = {deletionOf("Property", 1, 1)};
    land(changes);
    EXPECT_THAT(membersOf("Property", keys::tenures, 3), ElementsAre(2));
}

TEST_P(StoreConformanceTest, RefusesWhatTheModelCannotHold) {
    insert({RowOf("Tenant", 1)});
    const auto refuse = [&](auto&& fill) {
        StoreChanges changes = newChanges();
        fill(changes);
        expectRefused(changes, "");
    };
    refuse(
        [](auto& changes) { changes.insertions = {RowOf("Tenant", 2).with(keys::name, std::int64_t{5})}; });
    refuse([](auto& changes) { changes.insertions = {RowOf("Tenure", 2).with(keys::rentalAmount, 0.5)}; });
    refuse([](auto& changes) {
        changes.insertions = {RowOf("Tenure", 2).with(keys::startDate, text("today"))};
    });
    refuse(
        [](auto& changes) { changes.insertions = {RowOf("Tenure", 2).with(keys::startDate, NullObject{})}; });
    refuse([](auto& changes) { changes.insertions = {RowOf("Account", 2)}; });
    refuse([](auto& changes) { changes.insertions = {RowOf("Tenant", 3), RowOf("Tenant", 2)}; });
    refuse([](auto& changes) { changes.insertions = {RowOf("Tenant", 2), RowOf("Tenant", 2)}; });
    refuse([](auto& changes) { changes.insertions = {RowOf("Tenant", -1)}; });
    refuse([](auto& changes) { changes.insertions = {RowOf("Tenure", 2).to(keys::tenant, 1, 4)}; });
    refuse([](auto& changes) { changes.insertions = {RowOf("AccountTag", 2).to(keys::owner, 1, -1)}; });
    refuse([](auto& changes) { changes.insertions = {Row{.key = 2, .entity = &entityNamed("Tenant")}}; });
    refuse([](auto& changes) { changes.insertions = {Row{.key = 2}}; });
    refuse(
        [](auto& changes) { changes.updates = {UpdateOf("Tenant", 1, 1).with(keys::currentDate, Date{})}; });
    refuse([](auto& changes) { changes.updates = {UpdateOf("Tenant", 1, 1).with(keys::name, Decimal())}; });
    refuse([](auto& changes) {
        changes.updates = {
            RowUpdate{.key = 1, .entity = &entityNamed("Tenant"), .version = 1, .values = {{99, {}}}}};
    });
    refuse([](auto& changes) {
        changes.updates = {UpdateOf("Tenant", 1, 1)};
        changes.deletions = {deletionOf("Tenant", 1, 1)};
    });
    refuse([](auto& changes) { changes.identifiers = {{8, &entityNamed("Tenant"), "t8"}}; });
}

// Beside the rows

TEST_P(StoreConformanceTest, KeepsIdentifiersBesideRows) {
    StoreChanges changes = newChanges();
    changes.insertions = {RowOf("Tenant", 1), RowOf("Tenant", 2), RowOf("Property", 3)};
    changes.identifiers = {{1, &entityNamed("Tenant"), "ada"}, {3, &entityNamed("Property"), "flat 2"}};
    land(changes);
    reopen();
    const RowKey keys[] = {3, 2, 1, 99};
    EXPECT_THAT(*store().identifiers(keys), ElementsAre(std::optional<std::string>("flat 2"), std::nullopt,
                                                        std::optional<std::string>("ada"), std::nullopt));
    StoreChanges later = newChanges();
    later.identifiers = {{1, &entityNamed("Tenant"), "ada field"}};
    later.deletions = {deletionOf("Property", 3, 1)};
    land(later);
    StoreChanges last = newChanges();
    last.identifiers = {{1, &entityNamed("Tenant"), std::nullopt}};
    EXPECT_THAT(
        *store().identifiers(keys),
        ElementsAre(std::nullopt, std::nullopt, std::optional<std::string>("ada field"), std::nullopt));
    land(last);
    EXPECT_EQ(std::nullopt, store().identifiers(keys)->at(2));
    EXPECT_EQ(1, row("Tenant", 1)->version);
}

TEST_P(StoreConformanceTest, KeepsMetadata) {
    StoreChanges changes = newChanges();
    changes.metadata = {{"copied", "yesterday"}, {"layout", "7"}, {"empty", ""}};
    land(changes);
    StoreChanges later = newChanges();
    later.metadata = {{"copied", "today"}, {"layout", std::nullopt}, {"unknown", std::nullopt}};
    land(later);
    reopen();
    EXPECT_EQ((Store::Metadata{{"copied", "today"}, {"empty", ""}}), *store().metadata());
}

TEST_P(StoreConformanceTest, TellsItsCommits) {
    StoreChanges first = newChanges();
    first.insertions = {RowOf("Tenant", 1), RowOf("Tenant", 5)};
    land(first);
    StoreChanges second = newChanges();
    second.origin = {Date{-0.25}, "", "cron", ""};
    second.updates = {UpdateOf("Tenant", 5, 1).with(keys::name, text("Ada"))};
    land(second);
    reopen();
    const auto commits = store().commits();
    ASSERT_EQ(2u, commits->size());
    EXPECT_EQ(1, commits->at(0).number);
    EXPECT_EQ(first.token, commits->at(0).token);
    EXPECT_EQ(Date{800000000.5}, commits->at(0).origin.when);
    EXPECT_EQ("Ada Field", commits->at(0).origin.author);
    EXPECT_EQ("estatebook", commits->at(0).origin.program);
    EXPECT_EQ("import", commits->at(0).origin.command);
    EXPECT_EQ(1, commits->at(0).firstKey);
    EXPECT_EQ(5, commits->at(0).lastKey);
    EXPECT_EQ(2, commits->at(1).number);
    EXPECT_EQ(Date{-0.25}, commits->at(1).origin.when);
    EXPECT_EQ("cron", commits->at(1).origin.program);
    EXPECT_GT(commits->at(1).firstKey, commits->at(1).lastKey);
}

std::vector<std::string> described(const std::vector<JournalEntry>& entries) {
    std::vector<std::string> lines;
    for (const JournalEntry& each : entries)
        lines.push_back(std::to_string(each.commit) + "iud"[static_cast<int>(each.kind) - 1] + " " +
                        (each.entity ? std::string(each.entity->name()) : "?") + std::to_string(each.key) +
                        " " + each.property + ": " + each.former.description() + " > " +
                        each.current.description());
    return lines;
}

TEST_P(StoreConformanceTest, KeepsAJournal) {
    insert({RowOf("Tenant", 1).with(keys::name, text("Ada")), RowOf("Tenant", 2),
            RowOf("AccountTag", 3).with(keys::name, text("new")).to(keys::owner, 1, 0)});
    StoreChanges changes = newChanges();
    changes.updates = {
        UpdateOf("AccountTag", 3, 1).to(keys::owner, 2, 4),
        UpdateOf("Tenant", 1, 1).with(keys::name, text("Grace")).with(keys::addressBookID, text("7"))};
    land(changes);
    StoreChanges end = newChanges();
    end.deletions = {deletionOf("AccountTag", 3, 2), deletionOf("Tenant", 2, 1)};
    land(end);
    reopen();
    EXPECT_THAT(described(*store().journalOfRow(entityNamed("Account"), 1)),
                ElementsAre("1i Tenant1 : (null) > (null)", "2u Tenant1 name: Ada > Grace",
                            "2u Tenant1 addressBookID: (null) > 7"));
    EXPECT_THAT(described(*store().journalOfRow(entityNamed("AccountTag"), 3)),
                ElementsAre("1i ?3 : (null) > (null)", "2u AccountTag3 owner: 1 > 2",
                            "2u AccountTag3 owner.place: 0 > 4", "3d AccountTag3 name: new > (null)",
                            "3d AccountTag3 owner: 2 > (null)", "3d AccountTag3 owner.place: 4 > (null)"));
    EXPECT_THAT(described(*store().journalOfCommit(2)),
                ElementsAre("2u Tenant1 name: Ada > Grace", "2u Tenant1 addressBookID: (null) > 7",
                            "2u AccountTag3 owner: 1 > 2", "2u AccountTag3 owner.place: 0 > 4"));
    EXPECT_THAT(described(*store().journalOfCommit(3)),
                ElementsAre("3d Tenant2 : (null) > (null)", "3d AccountTag3 name: new > (null)",
                            "3d AccountTag3 owner: 2 > (null)", "3d AccountTag3 owner.place: 4 > (null)"));
    EXPECT_THAT(*store().journalOfCommit(1), IsEmpty());
    EXPECT_THAT(*store().journalOfRow(entityNamed("Tenure"), 90), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Kinds, StoreConformanceTest, testing::ValuesIn(test::storeKinds()),
                         [](const auto& info) { return info.param.name; });

} // namespace
} // namespace estatebook::platform
