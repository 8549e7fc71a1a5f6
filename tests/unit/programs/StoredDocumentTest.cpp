// SPDX-License-Identifier: MIT

// What of a store stands in a document, and what is named instead.

#include "estatebook/book/StoredDocument.hpp"

#include "estatebook/BookObjects.hpp"
#include "estatebook/book/NewBook.hpp"
#include "estatebook/commands/Commands.hpp"
#include "estatebook/document/BookWriter.hpp"

#include "model/Advertisement.hpp"
#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/store/Store.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/AttributedString.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKPropertyNote.hpp"
#include "store/TKPropertyTransaction.hpp"
#include "store/TKState.hpp"
#include "store/TKTenureTransaction.hpp"
#include "support/Book.hpp"
#include "support/TemporaryFolder.hpp"
#include "tags/TKTagNames.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace estatebook {
namespace {

using bookkit::onDay;
using document::SettingValue;
using platform::Array;
using platform::AttributedString;
using platform::Date;
using platform::Decimal;
using platform::Dictionary;
using platform::NullObject;
using platform::Number;
using platform::Ref;
using platform::String;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

Ref<String> text(std::string_view characters) {
    return String::make(characters);
}

class StoredDocumentTest : public testing::Test {
protected:
    StoredDocument stored() {
        Ref<platform::Error> error;
        EXPECT_TRUE(book->save(&error)) << error->localizedDescription();
        auto document = StoredDocument::of(*store);
        EXPECT_TRUE(document);
        for (const auto& each : document->leftOut) leftOut.push_back(each.path + ": " + each.reason);
        return *document;
    }
    void set(std::string_view name, const Value& value) {
        const auto state = book->insertNewObject<TKState>("State");
        state->setName(text(name));
        state->setValue(value);
    }
    /// A row that no object would be saved as.
    class RowOf {
    public:
        RowOf(const platform::Store& store, std::string_view entity, platform::RowKey key)
            : shape_(store.shapes().of(*store.model().entityNamed(entity))), row_(shape_.emptyRow(key)) {}
        RowOf& with(platform::Key attribute, const Value& value) {
            row_.values[shape_.attribute(attribute).value()] = value;
            return *this;
        }
        RowOf& to(platform::Key link, platform::RowKey target, std::int64_t place) {
            row_.links[shape_.link(link).value()] = {target, place};
            return *this;
        }
        operator platform::Row() const { return row_; }

    private:
        const platform::RowShape& shape_;
        platform::Row row_;
    };
    RowOf row(std::string_view entity, platform::RowKey key) { return {*store, entity, key}; }
    void saveRows(std::vector<platform::Row> rows) {
        platform::StoreChanges changes{.token = platform::CommitToken::random(), .origin = {}};
        changes.insertions = std::move(rows);
        const auto outcome = store->save(changes);
        ASSERT_TRUE(outcome) << outcome.error().message;
    }
    template <class T>
    Ref<T> add(std::string_view entity) {
        return book->insertNewObject<T>(entity);
    }

    const Ref<platform::ManagedObjectContext> book = TKManagedObjectModel::inMemoryManagedObjectContext();
    const Ref<platform::Store> store = book->persistentStoreCoordinator()->addPersistentStore("InMemory", "");
    std::vector<std::string> leftOut;
};

TEST_F(StoredDocumentTest, AnEmptyStoreIsAnEmptyBook) {
    EXPECT_EQ(stored().document, document::BookDocument());
    EXPECT_THAT(leftOut, IsEmpty());
}

TEST_F(StoredDocumentTest, SettingsKeepTheirValueInWhateverBoxItIs) {
    set("text", Value(text("GBP")));
    set("flag", Value(true));
    set("signed", Value(std::int64_t{-3}));
    set("unsigned", Value(std::uint64_t{3}));
    set("greatest", Value(std::numeric_limits<std::uint64_t>::max()));
    set("decimal", Value(Decimal::parse("0.5")));
    set("whole", Value(Decimal(7)));
    set("null", Value(NullObject()));
    set("TimeZone", Value(text("Asia/Kathmandu")));
    const auto document = stored().document;
    EXPECT_EQ(document.timeZone, "Asia/Kathmandu");
    std::vector<SettingValue> values;
    for (const auto& setting : document.settings) values.push_back(setting.value);
    EXPECT_THAT(values, ElementsAre(SettingValue("GBP"), SettingValue(true), SettingValue(std::int64_t{-3}),
                                    SettingValue(std::int64_t{3}),
                                    SettingValue(Decimal::parse("18446744073709551615")),
                                    SettingValue(Decimal::parse("0.5")), SettingValue(std::int64_t{7}),
                                    SettingValue()));
    EXPECT_THAT(leftOut, IsEmpty());
}

TEST_F(StoredDocumentTest, ASettingThatSomebodyOnlyLookedForIsNone) {
    static_cast<void>(TKState::stateForKeyInManagedObjectContext(text("Logo"), *book));
    add<TKTenure>("Tenure"); // looks for what it follows
    EXPECT_THAT(stored().document.settings, IsEmpty());
    EXPECT_THAT(leftOut, IsEmpty());
}

TEST_F(StoredDocumentTest, SettingsThatNoDocumentHoldsAreNamed) {
    set("date", Value(onDay(2025, 3, 1)));
    set("double", Value(0.5));
    set("single", Value(0.5f));
    set("list/~", Value(Array::make({Value(std::int64_t{1})})));
    set("tags", Value(TKTagNames::initWithEditableString("Rent")));
    set("Mode", Value(std::int64_t{1}));
    set("Mode", Value(std::int64_t{2}));
    add<TKState>("State");
    set("TimeZone", Value(std::int64_t{1}));
    EXPECT_THAT(stored().document.settings, ElementsAre(document::Setting{"Mode", std::int64_t{1}}));
    EXPECT_THAT(leftOut,
                ElementsAre("/settings/date: a document does not hold a date",
                            "/settings/double: a document does not hold a binary number",
                            "/settings/single: a document does not hold a binary number",
                            "/settings/list~1~0: a document does not hold an object of the class Array",
                            "/settings/tags: a document does not hold an object of the class "
                            "EstateBook_Model.TKTagNames",
                            "/settings/Mode: the setting is there twice; the first one counts",
                            "row 8 of State: the setting has no name",
                            "/settings/TimeZone: a zone is named by a text"));
}

TEST_F(StoredDocumentTest, WhatBelongsToNothingIsNamed) {
    add<TKPropertyTransaction>("PropertyTransaction");
    add<TKTenureTransaction>("TenureTransaction");
    add<TKPropertyNote>("PropertyNote");
    add<platform::ManagedObject>("NoteTag")->setValueForKey(text("Damp"), keys::name);
    const auto flat = add<TKProperty>("Property");
    add<Advertisement>("Advertisement")->setProperty(flat.get());
    const auto document = stored().document;
    EXPECT_THAT(document.properties, SizeIs(1));
    EXPECT_THAT(leftOut, ElementsAre("row 1 of PropertyTransaction: it belongs to nothing",
                                     "row 2 of TenureTransaction: it belongs to nothing",
                                     "row 3 of PropertyNote: it belongs to nothing",
                                     "row 4 of NoteTag: it belongs to nothing",
                                     "row 6 of Advertisement: a document holds no advertisements"));
}

TEST_F(StoredDocumentTest, NumbersThatNoDocumentHoldsAreNamedAtTheirPlace) {
    const auto flat = add<TKProperty>("Property");
    flat->setRentalPeriod(Number(std::int64_t{-1}));
    flat->setRentalBillingCycle(Number(30.0));
    flat->setAvailable(Number(std::int64_t{1}));
    const auto letting = add<TKTenure>("Tenure");
    letting->setAdvancePeriod(Number(Decimal::parse("0.5")));
    letting->setChargeFullDuration(Number(std::int64_t{2}));
    const auto document = stored().document;
    EXPECT_EQ(document.properties.front().rentalBillingCycle, document::BillingCycle::Month);
    EXPECT_EQ(document.properties.front().available, true);
    EXPECT_THAT(leftOut,
                ElementsAre("/properties/0/rentalPeriod: a number is not a whole number of 0 or more",
                            "/tenures/0/advancePeriod: a number is not a whole number of 0 or more",
                            "/tenures/0/chargeFullDuration: a number is not true or false"));
}

TEST_F(StoredDocumentTest, TextsWithAttributesComeInPieces) {
    const auto flat = add<TKProperty>("Property");
    const auto note = add<TKPropertyNote>("PropertyNote");
    note->setProperty(flat.get());
    const auto bold = Dictionary::make({{"bold", Value(true)}});
    note->setContent(Value(AttributedString::make(text("½ day off"), {{3, 3, bold}, {7, 3, bold}})));
    const auto content = stored().document.properties.front().notes.front().content;
    ASSERT_TRUE(content);
    using document::TextPiece;
    EXPECT_THAT(content->pieces, ElementsAre(TextPiece{"½ ", {}}, TextPiece{"day", {{"bold", true}}},
                                             TextPiece{" ", {}}, TextPiece{"off", {{"bold", true}}}));
    EXPECT_THAT(leftOut, IsEmpty());
}

TEST_F(StoredDocumentTest, ContentOfOtherKindsIsNamed) {
    const auto flat = add<TKProperty>("Property");
    const auto dated = Dictionary::make({{"since", Value(onDay(2025, 3, 1))}});
    for (const Value& content :
         {Value(onDay(2025, 3, 1)), Value(AttributedString::make(text("Damp"), {{0, 4, dated}}))}) {
        const auto note = add<TKPropertyNote>("PropertyNote");
        note->setProperty(flat.get());
        note->setContent(content);
    }
    stored();
    EXPECT_THAT(
        leftOut,
        ElementsAre("/properties/0/notes/0/content: a document does not hold a date, or not with all its "
                    "attributes",
                    "/properties/0/notes/1/content: a document does not hold an object of the class "
                    "AttributedString, or not with all its attributes"));
}

TEST_F(StoredDocumentTest, TagsThatNoDocumentHoldsAreNamed) {
    saveRows({row("Tenant", 1), row("AccountTag", 2).with(keys::name, text("b")).to(keys::owner, 1, 1),
              row("AccountTag", 3).with(keys::name, text("a")).to(keys::owner, 1, 0),
              row("AccountTag", 4).to(keys::owner, 1, 2),
              row("AccountTag", 5).with(keys::name, text("a")).to(keys::owner, 1, 3)});
    EXPECT_THAT(stored().document.tenants.front().tags, ElementsAre("a", "b"));
    EXPECT_THAT(leftOut, ElementsAre("row 4 of AccountTag: the tag has no name",
                                     "/tenants/0/tags: the tag \"a\" is there twice"));
}

TEST_F(StoredDocumentTest, ALettingThatEndsBeforeItBeginsIsNamed) {
    saveRows({row("Tenure", 1).with(keys::endDate, Date{0.0}),
              row("Tenure", 2).with(keys::startDate, Date{1.0}).with(keys::endDate, Date{0.0})});
    stored();
    EXPECT_THAT(leftOut, ElementsAre("/tenures/0/endDate: there is no start date",
                                     "/tenures/1/endDate: it is before the start date"));
}

TEST_F(StoredDocumentTest, OnlyAccountsThatALettingRefersToGetAnIdentifier) {
    for (int i = 0; i < 3; ++i) add<TKProperty>("Property");
    const auto properties = book->fetchAll<TKProperty>("Property");
    book->setIdentifier(*properties[0], "property-2");
    add<TKTenure>("Tenure")->setProperty(properties[2].get());
    const auto document = stored().document;
    EXPECT_EQ(document.properties[0].id, "property-2");
    EXPECT_EQ(document.properties[1].id, std::nullopt);
    EXPECT_EQ(document.properties[2].id, "property-3");
    EXPECT_EQ(document.tenures[0].property, "property-3");
    EXPECT_THAT(leftOut, IsEmpty());
}

TEST_F(StoredDocumentTest, AnIdentifierThatIsUsedTwiceIsNamedAndTheFirstOneKeepsIt) {
    for (int i = 0; i < 2; ++i) book->setIdentifier(*add<TKTenant>("Tenant"), "smith");
    const auto document = stored().document;
    EXPECT_EQ(document.tenants[0].id, "smith");
    EXPECT_EQ(document.tenants[1].id, std::nullopt);
    EXPECT_THAT(leftOut, ElementsAre("/tenants/1/id: another tenant has the identifier \"smith\""));
}

TEST_F(StoredDocumentTest, AWholeBookIsExportedOnlyWhenADocumentCarriesIt) {
    const testkit::TemporaryFolder folder;
    const std::string path = folder / "book.estatebook";
    {
        NewBook made(path, "test");
        const auto state = made.context().insertNewObject<TKState>("State");
        state->setName(text("Logo"));
        state->setValue(Value(Array::make({})));
        made.context().insertNewObject<TKTenant>("Tenant")->setName(text("A. Smith"));
        made.finish();
    }
    const auto errorsOf = [&](const ExportOptions& options, std::ostringstream& out) {
        testing::internal::CaptureStderr();
        std::string lines;
        try {
            exportBook(options, out);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code(), ExitCode::BadData);
            lines = std::string(failure.what()) + "\n";
        }
        return testing::internal::GetCapturedStderr() + lines;
    };
    std::ostringstream refused;
    EXPECT_EQ(errorsOf({path}, refused),
              path + ": /settings/Logo: a document does not hold an object of the class Array\n" + path +
                  ": a document cannot carry this; leave it out with --partial\n");
    EXPECT_EQ(refused.str(), "");
    std::ostringstream partial;
    EXPECT_EQ(errorsOf({path, true}, partial),
              path + ": left out: /settings/Logo: a document does not hold an object of the class Array\n");
    EXPECT_EQ(partial.str(),
              "{\n  \"schema\": \"estatebook/book/1\",\n  \"tenants\": [\n    {\n      \"name\": "
              "\"A. Smith\"\n    }\n  ]\n}\n");
}

} // namespace
} // namespace estatebook
