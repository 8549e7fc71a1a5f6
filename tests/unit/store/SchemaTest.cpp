// SPDX-License-Identifier: MIT

// The entities of a book, written down a second time as plain tables and held against the loaded model, the classes
// behind it and what these declare.

#include "model/Advertisement.hpp"
#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/values/Exception.hpp"
#include "statement/TKLedgerTransaction.hpp"
#include "store/TKNotable.hpp"
#include "support/Book.hpp"
#include "support/DeclaredDependencies.hpp"
#include "tags/TKTag.hpp"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::text;

enum class Type { String, Date, Decimal, Number, TagNames, Archived };
enum class To { One, Many, ManyOrdered };

struct AttributeRow {
    std::string name;
    Type type;
};
struct RelationshipRow {
    std::string name;
    To kind;
    std::string target;
    /// Empty where nobody names it.
    std::string inverse;
};
struct EntityRow {
    std::string entity;
    std::string className;
    std::string parent;
    std::vector<AttributeRow> attributes;
    std::vector<RelationshipRow> relationships;
};

const std::vector<EntityRow>& schema() {
    static const std::vector<EntityRow> rows{
        {"Account",
         "TKAccount",
         "",
         {{"name", Type::String},
          {"addressBookID", Type::String},
          {"tagNames", Type::TagNames},
          {"currentDate", Type::Date}},
         {{"tags", To::ManyOrdered, "AccountTag", ""}}},
        {"Property",
         "TKProperty",
         "Account",
         {{"rentalAmount", Type::Decimal},
          {"bondAmount", Type::Decimal},
          {"rentalPeriod", Type::Number},
          {"rentalBillingCycle", Type::Number},
          {"available", Type::Number},
          {"sublease", Type::String}},
         {{"advertisement", To::One, "Advertisement", ""},
          {"transactions", To::Many, "PropertyTransaction", "property"},
          {"tenures", To::Many, "Tenure", "property"},
          {"notes", To::Many, "PropertyNote", "property"}}},
        {"Tenant",
         "TKTenant",
         "Account",
         {},
         {{"tenures", To::Many, "Tenure", "tenant"}, {"notes", To::Many, "TenantNote", "tenant"}}},
        {"Tenure",
         "TKTenure",
         "",
         {{"startDate", Type::Date},
          {"endDate", Type::Date},
          {"rentalAmount", Type::Decimal},
          {"bondAmount", Type::Decimal},
          {"rentalPeriod", Type::Number},
          {"rentalBillingCycle", Type::Number},
          {"advancePeriod", Type::Number},
          {"advanceBillingCycle", Type::Number},
          {"chargeBehaviour", Type::Number},
          {"chargeFullDuration", Type::Number},
          {"lastBalancedDate", Type::Date},
          {"currentDate", Type::Date},
          {"periods", Type::Archived}},
         {{"property", To::One, "Property", "tenures"},
          {"tenant", To::One, "Tenant", "tenures"},
          {"transactions", To::Many, "TenureTransaction", "tenure"},
          {"notes", To::Many, "TenureNote", "tenure"}}},
        {"Transaction",
         "TKTransaction",
         "",
         {{"amount", Type::Decimal},
          {"what", Type::String},
          {"when", Type::Date},
          {"processedOn", Type::Date},
          {"receipt", Type::String},
          {"adjustment", Type::Number},
          {"tagNames", Type::TagNames}},
         {{"tags", To::ManyOrdered, "TransactionTag", ""}}},
        {"PropertyTransaction",
         "TKPropertyTransaction",
         "Transaction",
         {},
         {{"property", To::One, "Property", "transactions"}}},
        {"TenureTransaction",
         "TKTenureTransaction",
         "Transaction",
         {},
         {{"tenure", To::One, "Tenure", "transactions"}}},
        {"Note",
         "TKNote",
         "",
         {{"subject", Type::String},
          {"content", Type::Archived},
          {"createdDate", Type::Date},
          {"createdBy", Type::String},
          {"tagNames", Type::TagNames}},
         {{"tags", To::ManyOrdered, "NoteTag", ""}}},
        {"PropertyNote", "TKPropertyNote", "Note", {}, {{"property", To::One, "Property", "notes"}}},
        {"TenantNote", "TKTenantNote", "Note", {}, {{"tenant", To::One, "Tenant", "notes"}}},
        {"TenureNote", "TKTenureNote", "Note", {}, {{"tenure", To::One, "Tenure", "notes"}}},
        {"AccountTag", "TKTag", "", {{"name", Type::String}}, {{"", To::One, "Account", "tags"}}},
        {"TransactionTag", "TKTag", "", {{"name", Type::String}}, {{"", To::One, "Transaction", "tags"}}},
        {"NoteTag", "TKTag", "", {{"name", Type::String}}, {{"", To::One, "Note", "tags"}}},
        {"State", "TKState", "", {{"name", Type::String}, {"value", Type::Archived}}, {}},
        {"Advertisement", "Advertisement", "", {}, {{"", To::One, "Property", "advertisement"}}},
    };
    return rows;
}

/// The rows of an entity and of those it inherits from, the root's first.
template <class Row>
std::vector<Row> withInheritedRows(const EntityRow& entity, std::vector<Row> EntityRow::*member) {
    std::vector<Row> all;
    for (const EntityRow& each : schema())
        if (each.entity == entity.parent) all = each.*member;
    all.insert(all.end(), (entity.*member).begin(), (entity.*member).end());
    return all;
}

bool isOfType(AttributeType loaded, Type expected) {
    switch (expected) {
    case Type::String:
        return loaded == AttributeType::String;
    case Type::Date:
        return loaded == AttributeType::Date;
    case Type::Decimal:
        return loaded == AttributeType::Decimal;
    case Type::Number:
        return loaded == AttributeType::Number;
    case Type::TagNames:
        return loaded == AttributeType::Object;
    case Type::Archived:
        return loaded == AttributeType::Object || loaded == AttributeType::Any;
    }
    return false;
}

bool isOfKind(PropertyKind loaded, To expected) {
    switch (expected) {
    case To::One:
        return loaded == PropertyKind::ToOne;
    case To::Many:
        return loaded == PropertyKind::ToMany;
    case To::ManyOrdered:
        return loaded == PropertyKind::OrderedToMany;
    }
    return false;
}

const std::vector<std::string> NeverMade = {"Account", "Transaction", "Note"};
bool isNeverMade(const std::string& entity) {
    for (const std::string& each : NeverMade)
        if (each == entity) return true;
    return false;
}

class SchemaTest : public testing::Test {
protected:
    const ManagedObjectModel& model() const {
        return *book->persistentStoreCoordinator()->managedObjectModel();
    }
    const Book book;
};

TEST_F(SchemaTest, TheModelHasTheseEntitiesAndNoOthers) {
    std::set<std::string> expected;
    for (const EntityRow& row : schema()) expected.insert(row.entity);
    std::set<std::string> loaded;
    for (const auto& entity : model().entities()) loaded.emplace(entity->name());
    EXPECT_EQ(loaded, expected);
}

TEST_F(SchemaTest, EachEntityHasItsClassAndParent) {
    for (const EntityRow& row : schema()) {
        const EntityDescription* entity = model().entityNamed(row.entity);
        ASSERT_TRUE(entity) << row.entity;
        EXPECT_EQ(entity->managedObjectClassName(), row.className) << row.entity;
        EXPECT_EQ(entity->superentity() ? std::string(entity->superentity()->name()) : "", row.parent)
            << row.entity;
    }
}

TEST_F(SchemaTest, EachEntityHasTheseAttributesAndNoOthers) {
    for (const EntityRow& row : schema()) {
        const auto expected = withInheritedRows(row, &EntityRow::attributes);
        const auto loaded = model().entityNamed(row.entity)->attributes();
        EXPECT_EQ(loaded.size(), expected.size()) << row.entity;
        for (const AttributeRow& attribute : expected) {
            bool isThere = false;
            for (const AttributeDescription& each : loaded)
                isThere =
                    isThere || (each.name.name() == attribute.name && isOfType(each.type, attribute.type));
            EXPECT_TRUE(isThere) << row.entity << "." << attribute.name;
        }
    }
}

TEST_F(SchemaTest, EachEntityHasTheseRelationshipsAndNoOthers) {
    for (const EntityRow& row : schema()) {
        const auto expected = withInheritedRows(row, &EntityRow::relationships);
        const auto loaded = model().entityNamed(row.entity)->relationships();
        EXPECT_EQ(loaded.size(), expected.size()) << row.entity;
        for (const RelationshipRow& relationship : expected) {
            bool isThere = false;
            for (const RelationshipDescription& each : loaded)
                isThere =
                    isThere ||
                    ((relationship.name.empty() || each.name.name() == relationship.name) &&
                     isOfKind(each.kind, relationship.kind) && each.destination == relationship.target &&
                     (relationship.inverse.empty() || each.inverse.name() == relationship.inverse));
            EXPECT_TRUE(isThere) << row.entity << "." << relationship.name;
        }
    }
}

TEST_F(SchemaTest, EveryInverseLeadsBack) {
    for (const auto& entity : model().entities())
        for (const RelationshipDescription& each : entity->relationships()) {
            const EntityDescription* target = model().entityNamed(each.destination);
            ASSERT_TRUE(target);
            const RelationshipDescription* inverse = target->relationship(each.inverse);
            ASSERT_TRUE(inverse) << entity->name() << "." << each.name.name();
            EXPECT_EQ(inverse->inverse, each.name);
            EXPECT_TRUE(entity->isKindOfEntity(*model().entityNamed(inverse->destination)));
        }
}

TEST_F(SchemaTest, WhatIsRecomputedOnEachFetchNeedNotBeSaved) {
    for (const auto& entity : model().entities())
        for (const AttributeDescription& each : entity->attributes()) {
            const auto name = each.name.name();
            const bool isRecomputed = name == "tagNames" || name == "currentDate" || name == "periods";
            EXPECT_EQ(each.isTransient, isRecomputed) << entity->name() << "." << name;
        }
}

TEST_F(SchemaTest, AnObjectOfEachEntityIsOfItsClass) {
    for (const EntityRow& row : schema()) {
        if (isNeverMade(row.entity)) continue;
        const auto object = book.insert<ManagedObject>(row.entity);
        EXPECT_EQ(object->entity().name(), row.entity);
        EXPECT_EQ(object->runtimeClassName(), row.className);
        EXPECT_EQ(object->managedObjectContext(), &book.context());
    }
    EXPECT_TRUE(refCast<TKProperty>(book.insert<TKAccount>("Property")));
    EXPECT_TRUE(refCast<TKTenant>(book.insert<TKAccount>("Tenant")));
    EXPECT_TRUE(refCast<TKPropertyTransaction>(book.insert<TKTransaction>("PropertyTransaction")));
    EXPECT_TRUE(refCast<TKTenureTransaction>(book.insert<TKTransaction>("TenureTransaction")));
    EXPECT_TRUE(refCast<TKPropertyNote>(book.insert<TKNote>("PropertyNote")));
    EXPECT_TRUE(refCast<TKTenantNote>(book.insert<TKNote>("TenantNote")));
    EXPECT_TRUE(refCast<TKTenureNote>(book.insert<TKNote>("TenureNote")));
    for (const char* tag : {"AccountTag", "TransactionTag", "NoteTag"})
        EXPECT_TRUE(refCast<TKTag>(book.insert<ManagedObject>(tag))) << tag;
}

TEST_F(SchemaTest, ParentEntitiesAreNeverMadeByThemselves) {
    for (const std::string& entity : NeverMade)
        EXPECT_THROW((void)book.insert<ManagedObject>(entity), InternalInconsistencyException) << entity;
    EXPECT_EQ(book->objectCount(), 0u);
}

TEST_F(SchemaTest, AnUnknownEntityCannotBeInserted) {
    EXPECT_THROW((void)book.insert<ManagedObject>("Lease"), InternalInconsistencyException);
    EXPECT_THROW((void)book.insert<ManagedObject>("tenure"), InternalInconsistencyException)
        << "letter case matters";
}

TEST_F(SchemaTest, FetchingAParentEntityFindsTheObjectsOfItsChildren) {
    const auto flat = book.property("Flat 2");
    const auto smith = book.tenant("A. Smith");
    EXPECT_EQ(book->fetchAll<TKAccount>("Account"), (std::vector<Ref<TKAccount>>{flat, smith}));
    EXPECT_EQ(book->fetchAll<TKAccount>("Tenant"), std::vector<Ref<TKAccount>>{smith});
}

TEST_F(SchemaTest, AnAttributeOrToOneRelationshipThatWasNeverSetReadsAsAbsent) {
    for (const EntityRow& row : schema()) {
        if (isNeverMade(row.entity)) continue;
        // Without a context nothing awakes and sets anything.
        const auto object = ManagedObject::initWithEntityInsertIntoManagedObjectContext(
            *EntityDescription::entityForNameInManagedObjectContext(row.entity, book.context()), nullptr);
        for (const AttributeDescription& each : object->entity().attributes()) {
            EXPECT_TRUE(object->valueForKey(each.name).isAbsent()) << row.entity << "." << each.name.name();
            EXPECT_TRUE(object->primitiveValueForKey(each.name).isAbsent())
                << row.entity << "." << each.name.name();
        }
        for (const RelationshipDescription& each : object->entity().relationships()) {
            const Value value = object->valueForKey(each.name);
            if (each.kind == PropertyKind::ToOne)
                EXPECT_TRUE(value.isAbsent()) << row.entity << "." << each.name.name();
            else
                EXPECT_TRUE(value.as<DistinctValues>() && value.as<DistinctValues>()->empty())
                    << row.entity << "." << each.name.name();
        }
    }
}

TEST_F(SchemaTest, EveryAttributeTakesAndGivesBackAValueOfItsType) {
    const auto sample = [](const AttributeDescription& attribute) {
        switch (attribute.type) {
        case AttributeType::String:
            return Value(text("text"));
        case AttributeType::Date:
            return Value(Date{86400.5});
        case AttributeType::Decimal:
            return Value(Decimal::parse("-535.71"));
        case AttributeType::Number:
            return Value(30u);
        case AttributeType::Any:
            return Value(text("anything"));
        case AttributeType::Object:
            break;
        }
        if (attribute.name.name() == "tagNames")
            return Value(TKTagNames::initWithEditableString("Rent, Repairs"));
        return Value(Array::make({}));
    };
    for (const EntityRow& row : schema()) {
        if (isNeverMade(row.entity)) continue;
        const auto object = book.insert<ManagedObject>(row.entity);
        for (const AttributeDescription& each : object->entity().attributes()) {
            const Value value = sample(each);
            object->setValueForKey(value, each.name);
            EXPECT_TRUE(object->valueForKey(each.name).isIdentical(value))
                << row.entity << "." << each.name.name();
            object->setValueForKey(Value(), each.name);
            EXPECT_TRUE(object->valueForKey(each.name).isAbsent()) << row.entity << "." << each.name.name();
        }
    }
}

TEST_F(SchemaTest, ANumberKeepsItsKind) {
    const auto tenure = book.tenure();
    for (const Number& number :
         {Number(true), Number(-7), Number(7u), Number(1.5F), Number(2.5), Number(Decimal(3))}) {
        tenure->setRentalPeriod(number);
        ASSERT_TRUE(tenure->rentalPeriod());
        EXPECT_EQ(tenure->rentalPeriod()->kind(), number.kind());
        EXPECT_EQ(*tenure->rentalPeriod(), number);
    }
}

TEST_F(SchemaTest, AnAttributeRefusesAValueOfAnotherKindAndStays) {
    const auto tenure = book.tenure();
    tenure->setRentalAmount(Decimal(1000));
    EXPECT_THROW(tenure->setValueForKey(Value(text("much")), keys::rentalAmount), InvalidArgumentException);
    EXPECT_EQ(tenure->rentalAmount(), Decimal(1000));
}

TEST_F(SchemaTest, LinkingEitherSideLinksTheOther) {
    const auto flat = book.property("Flat 2");
    const auto smith = book.tenant("A. Smith");
    const auto tenure = book.tenure();
    tenure->setProperty(flat.get());
    smith->setValueForKey(Value(Set::make({Value(tenure)})), keys::tenures);
    ASSERT_EQ(flat->tenures().count(), 1u);
    EXPECT_EQ(&flat->tenures()[0], tenure.get());
    EXPECT_EQ(tenure->tenant(), smith.get());
    const auto house = book.property("House");
    tenure->setProperty(house.get());
    EXPECT_TRUE(flat->tenures().empty());
    EXPECT_EQ(house->tenures().count(), 1u);
    const auto advertisement = book.insert<Advertisement>("Advertisement");
    flat->setAdvertisement(advertisement.get());
    EXPECT_EQ(advertisement->property(), flat.get());
}

// Protocols

template <class Protocol>
std::set<std::string> adoptersOf(const Book& book) {
    std::set<std::string> adopters;
    for (const EntityRow& row : schema()) {
        if (isNeverMade(row.entity)) continue;
        const auto object = book.insert<ManagedObject>(row.entity);
        if (dynamic_cast<Protocol*>(object.get())) adopters.insert(row.entity);
    }
    return adopters;
}

using Entities = std::set<std::string>;

TEST_F(SchemaTest, AccountsAndTenuresFollowTheCurrentDate) {
    EXPECT_EQ(adoptersOf<TKCurrentDate>(book), (Entities{"Property", "Tenant", "Tenure"}));
}

TEST_F(SchemaTest, AccountsTransactionsAndNotesAreTaggable) {
    EXPECT_EQ(adoptersOf<TKTaggable>(book),
              (Entities{"Property", "Tenant", "PropertyTransaction", "TenureTransaction", "PropertyNote",
                        "TenantNote", "TenureNote"}));
}

TEST_F(SchemaTest, PropertiesTenantsAndTenuresAreNotable) {
    EXPECT_EQ(adoptersOf<TKNotable>(book), (Entities{"Property", "Tenant", "Tenure"}));
}

TEST_F(SchemaTest, PropertiesAndTenuresAreLedgersButTenantsAreNot) {
    EXPECT_EQ(adoptersOf<TKLedger>(book), (Entities{"Property", "Tenure"}));
}

TEST_F(SchemaTest, TransactionsCanStandOnAStatement) {
    EXPECT_EQ(adoptersOf<TKLedgerTransaction>(book), (Entities{"PropertyTransaction", "TenureTransaction"}));
}

TEST_F(SchemaTest, TheMembersOfAProtocolReachTheObjectItself) {
    const auto tenure = book.tenure();
    auto& today = dynamic_cast<TKCurrentDate&>(*tenure);
    today.setCurrentDate(Date{5});
    EXPECT_EQ(tenure->currentDate(), Date{5});
    auto& ledger = dynamic_cast<TKLedger&>(*tenure);
    auto* transaction = ledger.createTransaction();
    ASSERT_EQ(ledger.transactions().count(), 1u);
    EXPECT_EQ(&ledger.transactions()[0], transaction);
    ledger.setTransactions(Set::make({}));
    EXPECT_TRUE(tenure->transactions().empty());
    auto& notable = dynamic_cast<TKNotable&>(*tenure);
    auto* note = notable.createNote();
    ASSERT_EQ(notable.notes().count(), 1u);
    EXPECT_EQ(&notable.notes()[0], note);
    notable.setNotes(nullptr);
    EXPECT_TRUE(tenure->notes().empty());
}

// Declared dependencies

/// What a class declares, asked key by key of every key the library knows.
testkit::Dependencies declaredBy(const ClassDescription& description) {
    testkit::Dependencies declared;
    for (std::uint16_t number = 1; number <= keys::value.number(); ++number) {
        const auto paths = description.keyPathsForValuesAffecting(Key(number));
        if (!paths.empty()) declared[std::string(Key(number).name())] = {paths.begin(), paths.end()};
    }
    return declared;
}

void expectExactly(const std::string& className, const ClassDescription& description) {
    EXPECT_EQ(declaredBy(description), testkit::dependenciesOf(className)) << className;
}

TEST(DeclaredDependenciesTest, OfTenuresTheseAndNoOthers) {
    expectExactly("TKTenure", TKTenure::Class);
}

TEST(DeclaredDependenciesTest, OfPropertiesTheseAndNoOthers) {
    expectExactly("TKProperty", TKProperty::Class);
}

TEST(DeclaredDependenciesTest, OfTenantsTheseAndNoOthers) {
    expectExactly("TKTenant", TKTenant::Class);
}

TEST(DeclaredDependenciesTest, OfAccountsTheseAndNoOthers) {
    expectExactly("TKAccount", TKAccount::Class);
}

TEST(DeclaredDependenciesTest, OfTransactionsTheseAndNoOthers) {
    expectExactly("TKTransaction", TKTransaction::Class);
    expectExactly("TKPropertyTransaction", TKPropertyTransaction::Class);
    expectExactly("TKTenureTransaction", TKTenureTransaction::Class);
}

TEST(DeclaredDependenciesTest, TagsAndSettingsDeclareNone) {
    expectExactly("TKTag", TKTag::Class);
    expectExactly("TKState", TKState::Class);
}

TEST(DeclaredDependenciesTest, OfANoteNoneIsDeclared) {
    for (const ClassDescription* description :
         {&TKNote::Class, &TKPropertyNote::Class, &TKTenantNote::Class, &TKTenureNote::Class})
        EXPECT_TRUE(description->rows().empty()) << description->name();
}

} // namespace
} // namespace estatebook
