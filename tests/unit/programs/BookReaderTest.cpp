// SPDX-License-Identifier: MIT
#include "estatebook/document/BookReader.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/calendar/TimeZone.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <fstream>
#include <limits>
#include <string>
#include <thread>

#include <unistd.h>

namespace estatebook::document {
namespace {

using platform::Calendar;
using platform::Date;
using platform::Decimal;
using platform::TimeZone;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const std::string Head = R"({"schema": "estatebook/book/1", "timeZone": "Europe/London")";

/// A book with these members beside its schema and zone.
std::string bookOf(const std::string& members) {
    return Head + (members.empty() ? "" : ", " + members) + "}";
}
std::string propertyOf(const std::string& members) {
    return bookOf(R"("properties": [{)" + members + "}]");
}
std::string tenureOf(const std::string& members) {
    return bookOf(R"("tenures": [{)" + members + "}]");
}

BookDocument read(const std::string& text) {
    const BookReading reading = BookReader::readText(text);
    EXPECT_TRUE(reading) << text << '\n' << (reading.error ? reading.error->text() : "");
    return reading.document.value_or(BookDocument());
}

/// The error with which a text is refused.
BookError refusalOf(const std::string& text) {
    const BookReading reading = BookReader::readText(text);
    EXPECT_FALSE(reading.document) << text;
    EXPECT_THAT(reading.warnings, IsEmpty());
    const BookError error = reading.error.value_or(BookError());
    EXPECT_EQ(error.kind, BookError::Kind::Refused);
    EXPECT_NE(error.advice, "");
    EXPECT_EQ(error.text().find('\n'), std::string::npos);
    return error;
}

/// Expects a refusal at a path for a reason.
void expectRefusal(const std::string& text, const std::string& path, const std::string& reason) {
    const BookError error = refusalOf(text);
    EXPECT_EQ(error.path, path) << text;
    EXPECT_THAT(error.message, HasSubstr(reason)) << text;
}

Date dayIn(std::string_view name, std::int64_t year, int month, int day) {
    return Calendar(TimeZone::named(name))
        .startOfCivilDay(platform::CivilDay::fromYearMonthDay(year, month, day));
}
Date dayInLondon(std::int64_t year, int month, int day) {
    return dayIn("Europe/London", year, month, day);
}

// -- What is taken in

TEST(BookReaderTest, aBookMayBeEmpty) {
    const BookDocument book = read(R"({"schema": "estatebook/book/1"})");
    EXPECT_EQ(book, BookDocument());
}

TEST(BookReaderTest, everyMemberOfAPropertyIsRead) {
    const BookDocument book = read(propertyOf(
        R"("id": "p", "name": "Elm Street", "sublease": "Unit 2", "addressBookID": "card", "rentalAmount": "1000",
           "bondAmount": "500.5", "rentalPeriod": 2, "rentalBillingCycle": "week", "available": true,
           "tags": ["House"], "transactions": [{"id": "t"}], "notes": [{"id": "n"}])"));
    Property expected;
    expected.id = "p";
    expected.name = "Elm Street";
    expected.sublease = "Unit 2";
    expected.addressBookID = "card";
    expected.rentalAmount = Decimal(1000);
    expected.bondAmount = Decimal::parse("500.5");
    expected.rentalPeriod = 2;
    expected.rentalBillingCycle = BillingCycle::Week;
    expected.available = true;
    expected.tags = {"House"};
    expected.transactions.resize(1);
    expected.transactions[0].id = "t";
    expected.notes.resize(1);
    expected.notes[0].id = "n";
    EXPECT_THAT(book.properties, ElementsAre(expected));
}

TEST(BookReaderTest, everyMemberOfATenantIsRead) {
    const BookDocument book = read(bookOf(
        R"("tenants": [{"id": "a", "name": "A. Smith", "addressBookID": "c", "tags": ["x"], "notes": [{}, {}]}])"));
    ASSERT_THAT(book.tenants, SizeIs(1));
    EXPECT_EQ(book.tenants[0].id, "a");
    EXPECT_EQ(book.tenants[0].name, "A. Smith");
    EXPECT_EQ(book.tenants[0].addressBookID, "c");
    EXPECT_THAT(book.tenants[0].tags, ElementsAre("x"));
    EXPECT_THAT(book.tenants[0].notes, SizeIs(2));
}

TEST(BookReaderTest, everyMemberOfATenureIsRead) {
    const BookDocument book = read(bookOf(
        R"("properties": [{"id": "p"}], "tenants": [{"id": "a"}],
           "tenures": [{"id": "t", "property": "p", "tenant": "a", "startDate": "2025-01-31", "endDate": "2025-12-31",
             "rentalAmount": "1000", "rentalPeriod": 1, "rentalBillingCycle": "month", "advancePeriod": 3,
             "advanceBillingCycle": "day", "chargeBehaviour": "partial", "chargeFullDuration": false,
             "bondAmount": "0", "lastBalancedDate": "2025-02-01", "transactions": [{}], "notes": [{}]}])"));
    Tenure expected;
    expected.id = "t";
    expected.property = "p";
    expected.tenant = "a";
    expected.startDate = dayInLondon(2025, 1, 31);
    expected.endDate = dayInLondon(2025, 12, 31);
    expected.rentalAmount = Decimal(1000);
    expected.rentalPeriod = 1;
    expected.rentalBillingCycle = BillingCycle::Month;
    expected.advancePeriod = 3;
    expected.advanceBillingCycle = BillingCycle::Day;
    expected.chargeBehaviour = ChargeBehaviour::Partial;
    expected.chargeFullDuration = false;
    expected.bondAmount = Decimal(0);
    expected.lastBalancedDate = dayInLondon(2025, 2, 1);
    expected.transactions.resize(1);
    expected.notes.resize(1);
    EXPECT_THAT(book.tenures, ElementsAre(expected));
}

std::string contentOf(std::string_view json) {
    return tenureOf(R"("notes": [{"content": )" + std::string(json) + "}]");
}

std::optional<RichText> readContent(std::string_view json) {
    return read(contentOf(json)).tenures.at(0).notes.at(0).content;
}

RichText richText(std::vector<TextPiece> pieces) {
    RichText text;
    text.pieces = std::move(pieces);
    return text;
}

TEST(BookReaderTest, aTextWithAttributesIsAListOfPieces) {
    EXPECT_EQ(readContent(R"(["Call ", {"text": "before noon", "attributes": {"bold": true, "size": 12,
                                "spacing": 1.5, "font": "Serif"}}, "."])"),
              richText({{"Call ", {}},
                        {"before noon",
                         {{"bold", true},
                          {"size", std::int64_t{12}},
                          {"spacing", Decimal::parse("1.5")},
                          {"font", std::string("Serif")}}},
                        {".", {}}}));
}

TEST(BookReaderTest, piecesWithoutAttributesAreOneText) {
    const RichText plain(std::string("Call me."));
    for (
        const char* json :
        {R"("Call me.")", R"(["Call me."])", R"(["Call", " me", "."])",
         R"([{"text": "Call"}, "", {"text": " me.", "attributes": {}}])",
         R"([{"text": "Call me.", "attributes": {"bold": null}}, {"text": "", "attributes": {"bold": true}}])",
         R"([{"attributes": null, "text": "Call me."}])"})
        EXPECT_EQ(readContent(json), plain) << json;
    EXPECT_EQ(readContent("[]"), RichText());
    EXPECT_EQ(readContent(R"("")"), RichText());
    EXPECT_EQ(readContent("null"), std::nullopt);
}

TEST(BookReaderTest, piecesThatAreNoneAreRefusedWithTheirPlace) {
    struct {
        const char* json;
        const char* path;
    } const cases[] = {
        {"7", "/content"},
        {R"({"text": "a"})", "/content"},
        {R"(["a", 7])", "/content/1"},
        {R"(["a", null])", "/content/1"},
        {R"(["a", ["b"]])", "/content/1"},
        {R"([{}])", "/content/0"},
        {R"([{"text": null}])", "/content/0"},
        {R"([{"attributes": {"bold": true}}])", "/content/0"},
        {R"(["a", {"text": 7}])", "/content/1/text"},
        {R"([{"text": {}}])", "/content/0/text"},
        {R"([{"text": "a", "text": "b"}])", "/content/0/text"},
        {R"([{"text": "a", "attributes": true}])", "/content/0/attributes"},
        {R"([{"text": "a", "attributes": []}])", "/content/0/attributes"},
        {R"([{"text": "a", "attributes": {"b": {}}}])", "/content/0/attributes/b"},
        {R"([{"text": "a", "attributes": {"b": []}}])", "/content/0/attributes/b"},
        {R"([{"text": "a", "attributes": {"b/c": 1, "b/c": 2}}])", "/content/0/attributes/b~1c"},
        {R"([{"text": "a", "style": 1}])", "/content/0/style"},
        {R"([{"text": "a", "attributes": {}, "style": 1}])", "/content/0/style"},
    };
    for (const auto& [json, path] : cases) {
        const BookReading reading = BookReader::readText(contentOf(json));
        ASSERT_TRUE(reading.error) << json;
        EXPECT_EQ(reading.error->path, std::string("/tenures/0/notes/0") + path) << json;
    }
}

TEST(BookReaderTest, everyMemberOfATransactionAndANoteIsRead) {
    const BookDocument book = read(tenureOf(
        R"("transactions": [{"id": "t", "amount": "-12.5", "what": "Repair", "when": "2025-06-01",
             "processedOn": "2025-06-02", "receipt": "R 1", "adjustment": true, "tags": ["Repairs", "Roof"]}],
           "notes": [{"id": "n", "subject": "Call", "content": "Line\nline", "createdDate": "2025-06-01T10:00",
             "createdBy": "me", "tags": ["Call"]}])"));
    Transaction transaction;
    transaction.id = "t";
    transaction.amount = Decimal::parse("-12.5");
    transaction.what = "Repair";
    transaction.when = dayInLondon(2025, 6, 1);
    transaction.processedOn = dayInLondon(2025, 6, 2);
    transaction.receipt = "R 1";
    transaction.adjustment = true;
    transaction.tags = {"Repairs", "Roof"};
    Note note;
    note.id = "n";
    note.subject = "Call";
    note.content = RichText("Line\nline");
    note.createdDate = Date{dayInLondon(2025, 6, 1).secondsSinceReferenceDate + 36000};
    note.createdBy = "me";
    note.tags = {"Call"};
    ASSERT_THAT(book.tenures, SizeIs(1));
    EXPECT_THAT(book.tenures[0].transactions, ElementsAre(transaction));
    EXPECT_THAT(book.tenures[0].notes, ElementsAre(note));
}

TEST(BookReaderTest, nullIsTheSameAsAbsent) {
    EXPECT_EQ(read(R"({"schema": "estatebook/book/1", "timeZone": null, "settings": null, "properties": null,
                       "tenants": null, "tenures": null})"),
              BookDocument());
    const BookDocument book = read(tenureOf(
        R"("id": null, "property": null, "tenant": null, "startDate": null, "endDate": null, "rentalAmount": null,
           "rentalPeriod": null, "rentalBillingCycle": null, "advancePeriod": null, "advanceBillingCycle": null,
           "chargeBehaviour": null, "chargeFullDuration": null, "bondAmount": null, "lastBalancedDate": null,
           "transactions": null, "notes": null)"));
    EXPECT_THAT(book.tenures, ElementsAre(Tenure()));
}

TEST(BookReaderTest, anEmptyTextIsNotAbsent) {
    const BookDocument book = read(propertyOf(R"("name": "", "sublease": "")"));
    EXPECT_EQ(book.properties[0].name, "");
    EXPECT_EQ(book.properties[0].sublease, "");
}

TEST(BookReaderTest, membersMayStandInAnyOrderAndListsKeepTheirs) {
    const BookDocument book = read(
        R"({"tenures": [{"startDate": "2025-06-01", "tenant": "b"}], "tenants": [{"id": "b"}, {"id": "a"}],
                 "timeZone": "America/New_York", "schema": "estatebook/book/1"})");
    EXPECT_EQ(book.tenants[0].id, "b");
    EXPECT_EQ(book.tenants[1].id, "a");
    EXPECT_EQ(book.tenures[0].startDate, dayIn("America/New_York", 2025, 6, 1));
}

TEST(BookReaderTest, settingsKeepTheirKindAndOrder) {
    const BookDocument book = read(bookOf(
        R"("settings": {"CurrencyCode": "GBP", "BillingMode": 1, "z": null, "b": false, "d": 0.10, "n": -3,
            "big": 9223372036854775808, "text": "1", "": "nameless"})"));
    EXPECT_THAT(
        book.settings,
        ElementsAre(Setting{"CurrencyCode", std::string("GBP")}, Setting{"BillingMode", std::int64_t{1}},
                    Setting{"z", std::monostate()}, Setting{"b", false}, Setting{"d", Decimal::parse("0.1")},
                    Setting{"n", std::int64_t{-3}}, Setting{"big", Decimal::parse("9223372036854775808")},
                    Setting{"text", std::string("1")}, Setting{"", std::string("nameless")}));
}

TEST(BookReaderTest, aWholeNumberIsWholeHoweverItIsWritten) {
    const BookDocument book = read(bookOf(R"("settings": {"a": 1.0, "b": 1e2, "c": -0, "d": -0.0})"));
    const std::vector<std::int64_t> expected{1, 100, 0, 0};
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(book.settings[i].value, SettingValue(expected[i])) << i;
}

TEST(BookReaderTest, aTimeZoneSettingAloneIsTheZone) {
    const BookDocument book =
        read(R"({"schema": "estatebook/book/1", "settings": {"TimeZone": "Asia/Tokyo", "A": 1},
                 "tenures": [{"startDate": "2025-06-01"}]})");
    EXPECT_EQ(book.timeZone, "Asia/Tokyo");
    EXPECT_THAT(book.settings, SizeIs(1));
    EXPECT_EQ(book.tenures[0].startDate, dayIn("Asia/Tokyo", 2025, 6, 1));
}

TEST(BookReaderTest, withoutAZoneDaysAreThoseOfTheDefaultZone) {
    TimeZone::setDefaultTimeZone(TimeZone::named("Asia/Tokyo"));
    const BookDocument book =
        read(R"({"schema": "estatebook/book/1", "tenures": [{"startDate": "2025-06-01"}]})");
    TimeZone::setDefaultTimeZone({});
    EXPECT_EQ(book.timeZone, std::nullopt);
    EXPECT_EQ(book.tenures[0].startDate, dayIn("Asia/Tokyo", 2025, 6, 1));
}

TEST(BookReaderTest, anAmountIsReadByItsDigits) {
    const auto amount = [](const std::string& json) {
        return read(propertyOf(R"("rentalAmount": )" + json)).properties[0].rentalAmount.value().toString();
    };
    EXPECT_EQ(amount(R"("1000")"), "1000");
    EXPECT_EQ(amount(R"("-535.7100")"), "-535.71");
    EXPECT_EQ(amount(R"("0.00")"), "0");
    EXPECT_EQ(amount(R"("-0")"), "0");
    EXPECT_EQ(amount("0.1"), "0.1");
    EXPECT_EQ(amount("1e3"), "1000");
    EXPECT_EQ(amount("1.5E-2"), "0.015");
    EXPECT_EQ(amount("18446744073709551615"), "18446744073709551615");
    EXPECT_EQ(amount("-9223372036854775808"), "-9223372036854775808");
    EXPECT_EQ(amount("12345678901234567890123456789012345678"), "12345678901234567890123456789012345678");
    EXPECT_EQ(amount("0.12345678901234567890123456789012345678"), "0.12345678901234567890123456789012345678");
    EXPECT_EQ(amount(R"("12345678901234567890123456789012345678000")"),
              "12345678901234567890123456789012345678000");
}

TEST(BookReaderTest, anAmountDoesNotDependOnTheLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    // Not every system has these; where one is missing, there is nothing to see.
    for (const char* locale : {"de_DE.UTF-8", "fa_IR.UTF-8", "ps_AF.UTF-8", "C.UTF-8"}) {
        std::setlocale(LC_ALL, locale);
        EXPECT_EQ(read(propertyOf(R"("rentalAmount": 12.25)")).properties[0].rentalAmount,
                  Decimal::parse("12.25"));
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST(BookReaderTest, cyclesAndBehavioursAreReadByNameOrNumber) {
    const BookDocument book = read(bookOf(
        R"("tenures": [{"rentalBillingCycle": "day", "advanceBillingCycle": 1, "chargeBehaviour": "start"},
                       {"rentalBillingCycle": "week", "advanceBillingCycle": 7, "chargeBehaviour": 0},
                       {"rentalBillingCycle": "month", "advanceBillingCycle": 30, "chargeBehaviour": "end"},
                       {"rentalBillingCycle": "year", "advanceBillingCycle": 365.0, "chargeBehaviour": 2}])"));
    for (const Tenure& tenure : book.tenures)
        EXPECT_EQ(tenure.rentalBillingCycle, tenure.advanceBillingCycle);
    EXPECT_EQ(book.tenures[3].rentalBillingCycle, BillingCycle::Year);
    EXPECT_EQ(book.tenures[0].chargeBehaviour, book.tenures[1].chargeBehaviour);
    EXPECT_EQ(book.tenures[2].chargeBehaviour, ChargeBehaviour::End);
}

TEST(BookReaderTest, otherWholeNumbersOfCyclesAndBehavioursAreKept) {
    const BookDocument book = read(propertyOf(R"("rentalBillingCycle": 14)"));
    EXPECT_EQ(book.properties[0].rentalBillingCycle, BillingCycle{14});
    const BookDocument other = read(tenureOf(R"("chargeBehaviour": 18446744073709551615)"));
    EXPECT_EQ(other.tenures[0].chargeBehaviour, ChargeBehaviour{std::numeric_limits<std::uint64_t>::max()});
}

TEST(BookReaderTest, tagsAreKeptAsTheyStandAndARepeatedOneIsDropped) {
    const BookDocument book = read(propertyOf(R"("tags": ["b", " a,b ", "b", "B", "", " a,b ", "a", ""])"));
    EXPECT_THAT(book.properties[0].tags, ElementsAre("b", " a,b ", "B", "", "a"));
}

TEST(BookReaderTest, anEmptyListIsTheSameAsNone) {
    EXPECT_EQ(read(propertyOf(R"("tags": [], "transactions": [], "notes": [])")), read(propertyOf("")));
}

TEST(BookReaderTest, identifiersOfDifferentKindsDoNotMeet) {
    read(bookOf(R"("properties": [{"id": "1", "transactions": [{"id": "1"}], "notes": [{"id": "1"}]}],
                   "tenants": [{"id": "1"}], "tenures": [{"id": "1", "property": "1", "tenant": "1"}])"));
}

TEST(BookReaderTest, anObjectNeedsNoIdentifier) {
    read(bookOf(
        R"("properties": [{}, {}], "tenants": [{}, {}], "tenures": [{"transactions": [{}, {}]}, {}])"));
}

TEST(BookReaderTest, textsMayHoldEveryCharacter) {
    const BookDocument book = read(propertyOf(R"("name": "½ \"a\" \u0000 \ud83d\ude00 \/ \\ )"
                                              "\x7f"
                                              R"(")"));
    EXPECT_EQ(book.properties[0].name, std::string("½ \"a\" \0 \U0001F600 / \\ \x7f", 19));
}

TEST(BookReaderTest, aLettingMayEndOnTheDayItStarts) {
    read(tenureOf(R"("startDate": "2025-03-01", "endDate": "2025-03-01")"));
    read(tenureOf(R"("endDate": "2025-03-01", "startDate": "2025-03-01")"));
}

// -- What is taken in with a warning

TEST(BookReaderTest, termsByWhichRentCannotBeReckonedAreTakenInWithAWarningEach) {
    const BookReading reading = BookReader::readText("{\"schema\": \"estatebook/book/1\",\n"
                                                     " \"tenures\": [\n"
                                                     "  {\"rentalPeriod\": 1,\n"
                                                     "   \"rentalBillingCycle\": 14},\n"
                                                     "  {\"rentalBillingCycle\": \"month\",\n"
                                                     "   \"rentalPeriod\": 0},\n"
                                                     "  {\"rentalPeriod\": 1,\n"
                                                     "   \"rentalAmount\": \"5\"},\n"
                                                     "  {\"advanceBillingCycle\": 0}]}",
                                                     "my book");
    ASSERT_TRUE(reading);
    ASSERT_THAT(reading.warnings, SizeIs(4));
    EXPECT_EQ(
        reading.warnings[0].text(),
        "my book:4: /tenures/0/rentalBillingCycle: warning: 14 is no billing cycle (1, 7, 30 or 365 days)");
    EXPECT_EQ(reading.warnings[1].text(), "my book:6: /tenures/1/rentalPeriod: warning: a rent period of 0");
    EXPECT_EQ(reading.warnings[2].text(),
              "my book:8: /tenures/2/rentalAmount: warning: a rent amount and a rent "
              "period without a billing cycle");
    EXPECT_EQ(reading.warnings[3].path, "/tenures/3/advanceBillingCycle");
    EXPECT_EQ(reading.warnings[3].line, 9);
}

TEST(BookReaderTest, soundTermsBringNoWarning) {
    const BookReading reading = BookReader::readText(
        tenureOf(R"("rentalAmount": "5", "rentalPeriod": 1, "rentalBillingCycle": 365, "advancePeriod": 0)"));
    ASSERT_TRUE(reading);
    EXPECT_THAT(reading.warnings, IsEmpty());
    EXPECT_THAT(BookReader::readText(tenureOf(R"("rentalAmount": "5")")).warnings, IsEmpty());
    EXPECT_THAT(BookReader::readText(tenureOf(R"("rentalPeriod": 5)")).warnings, IsEmpty());
}

// -- What is refused

TEST(BookReaderTest, brokenJsonIsRefused) {
    expectRefusal("", "", "unexpected end of input");
    expectRefusal("   \n ", "", "unexpected end of input");
    expectRefusal(Head, "/timeZone", "unexpected end of input");
    expectRefusal(Head + ",}", "/timeZone", "unexpected '}'");
    expectRefusal(bookOf(R"("properties": [{"name": "a" "id": "b"}])"), "/properties/0/name",
                  "unexpected string");
    expectRefusal(bookOf(R"("properties": [{},])"), "/properties/1", "unexpected ']'");
    expectRefusal(bookOf(R"("properties": [{"rentalPeriod": 01}])"), "/properties/0/rentalPeriod",
                  "unexpected number literal");
    expectRefusal(bookOf(R"("properties": [{"rentalAmount": NaN}])"), "/properties/0/rentalAmount",
                  "invalid literal");
    expectRefusal(bookOf("\"properties\": [{\"name\": \"a\nb\"}]"), "/properties/0/name",
                  "control character");
    expectRefusal("{'schema': 1}", "", "invalid literal");
    expectRefusal(bookOf("// none\n"), "/timeZone", "invalid literal");
}

TEST(BookReaderTest, trailingTextIsRefused) {
    expectRefusal(bookOf("") + " {}", "", "expected end of input");
    expectRefusal(bookOf("") + "x", "", "not JSON");
    read(bookOf("") + " \r\n\t\n");
}

TEST(BookReaderTest, aZeroByteIsRefusedWhereverItStands) {
    const std::string zero(1, '\0');
    for (const std::string& text :
         {zero, bookOf("") + zero, bookOf("") + zero + "more", Head + zero + "}",
          propertyOf("\"name\": \"a" + zero + "b\""), propertyOf("\"rentalPeriod\": 1" + zero)})
        EXPECT_THAT(refusalOf(text).message, HasSubstr("zero byte"));
}

TEST(BookReaderTest, aByteOrderMarkIsRefused) {
    expectRefusal("\xEF\xBB\xBF" + bookOf(""), "", "byte order mark");
    expectRefusal(std::string("\xFF\xFE{\0", 4), "", "not JSON");
}

TEST(BookReaderTest, textThatIsNotUtf8IsRefused) {
    for (const char* bytes : {"\xFF", "\xC0\xAF", "\xE2\x82", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\x80"})
        expectRefusal(propertyOf(std::string("\"name\": \"a") + bytes + "\""), "/properties/0/name", "UTF-8");
    expectRefusal(propertyOf(R"("name": "\ud800")"), "/properties/0/name", "surrogate");
}

TEST(BookReaderTest, whatIsNoObjectIsNoBook) {
    for (const char* text : {"null", "true", "1", "\"book\"", "[]", "[{}]"})
        expectRefusal(text, "", "an object is wanted here");
}

TEST(BookReaderTest, anotherSchemaIsRefused) {
    expectRefusal(R"({"schema": "estatebook/book/2"})", "/schema", "the schema is \"estatebook/book/2\"");
    expectRefusal(R"({"schema": "estatebook/book/1.1"})", "/schema", "estatebook/book/1.1");
    expectRefusal(R"({"schema": "estatebook/values/1"})", "/schema", "estatebook/values/1");
    expectRefusal(R"({"schema": "Estatebook/Book/1"})", "/schema", "the schema is");
    expectRefusal(R"({"schema": 1})", "/schema", "a text is wanted here, not the number 1");
}

TEST(BookReaderTest, aDocumentWithoutASchemaIsRefused) {
    expectRefusal("{}", "/schema", "names no schema");
    expectRefusal(R"({"schema": null})", "/schema", "names no schema");
}

TEST(BookReaderTest, anUnknownMemberIsRefused) {
    expectRefusal(bookOf(R"("owner": 1)"), "/owner", "\"owner\" is no member here");
    expectRefusal(propertyOf(R"("Name": "a")"), "/properties/0/Name", "\"Name\" is no member here");
    expectRefusal(bookOf(R"("tenants": [{"sublease": null}])"), "/tenants/0/sublease", "no member here");
    expectRefusal(tenureOf(R"("tags": [])"), "/tenures/0/tags", "no member here");
    expectRefusal(tenureOf(R"("transactions": [{}, {"property": "p"}])"),
                  "/tenures/0/transactions/1/property", "no member here");
    expectRefusal(propertyOf(R"("notes": [{"when": null}])"), "/properties/0/notes/0/when", "no member here");
    expectRefusal(propertyOf(R"("": 1)"), "/properties/0/", "no member here");
    expectRefusal(propertyOf(R"("a/b~c": 1)"), "/properties/0/a~1b~0c", "no member here");
}

TEST(BookReaderTest, aMemberGivenTwiceIsRefused) {
    expectRefusal(bookOf(R"("schema": "estatebook/book/1")"), "/schema", "given twice");
    expectRefusal(bookOf(R"("tenants": [], "tenants": [])"), "/tenants", "given twice");
    expectRefusal(propertyOf(R"("name": null, "name": "a")"), "/properties/0/name", "given twice");
    expectRefusal(tenureOf(R"("notes": [{"tags": [], "tags": []}])"), "/tenures/0/notes/0/tags",
                  "given twice");
    expectRefusal(propertyOf(R"("name": "a", "\u006eame": "b")"), "/properties/0/name", "given twice");
    read(bookOf(R"("properties": [{"name": "a"}, {"name": "a"}])"));
}

TEST(BookReaderTest, aSettingGivenTwiceIsRefused) {
    const BookError error =
        refusalOf(bookOf("\"settings\": {\"b\": 1,\n\"a\": 1,\n\"c\": 1,\n\"a\": 1,\n\"b\": 1}"));
    EXPECT_EQ(error.path, "/settings/a");
    EXPECT_EQ(error.line, 4);
    expectRefusal(bookOf(R"("settings": {}, "settings": {})"), "/settings", "given twice");
}

TEST(BookReaderTest, settingsThatDifferInCaseAreTwo) {
    EXPECT_THAT(read(bookOf(R"("settings": {"a": 1, "A": 2})")).settings, SizeIs(2));
}

TEST(BookReaderTest, aWrongTypeIsRefused) {
    expectRefusal(bookOf(R"("properties": {})"), "/properties", "a list is wanted here, not an object");
    expectRefusal(bookOf(R"("properties": "a")"), "/properties", "a list is wanted here");
    expectRefusal(bookOf(R"("settings": [])"), "/settings", "an object is wanted here, not a list");
    expectRefusal(bookOf(R"("properties": [null])"), "/properties/0", "an object is wanted here, not null");
    expectRefusal(bookOf(R"("properties": [{}, []])"), "/properties/1",
                  "an object is wanted here, not a list");
    expectRefusal(propertyOf(R"("transactions": [1])"), "/properties/0/transactions/0",
                  "an object is wanted");
    expectRefusal(propertyOf(R"("transactions": {})"), "/properties/0/transactions", "a list is wanted");
    expectRefusal(propertyOf(R"("id": 1)"), "/properties/0/id", "a text is wanted here, not the number 1");
    expectRefusal(propertyOf(R"("name": ["a"])"), "/properties/0/name", "a text is wanted here, not a list");
    expectRefusal(propertyOf(R"("name": {})"), "/properties/0/name", "a text is wanted here, not an object");
    expectRefusal(propertyOf(R"("available": "true")"), "/properties/0/available", "true or false is wanted");
    expectRefusal(propertyOf(R"("available": 1)"), "/properties/0/available", "true or false is wanted");
    expectRefusal(propertyOf(R"("rentalAmount": true)"), "/properties/0/rentalAmount", "an amount is wanted");
    expectRefusal(propertyOf(R"("rentalPeriod": "1")"), "/properties/0/rentalPeriod", "a count is wanted");
    expectRefusal(propertyOf(R"("tags": "a")"), "/properties/0/tags", "a list is wanted");
    expectRefusal(propertyOf(R"("tags": ["a", 1])"), "/properties/0/tags/1", "a text is wanted");
    expectRefusal(propertyOf(R"("tags": ["a", "a", null])"), "/properties/0/tags/2", "a text is wanted");
    expectRefusal(propertyOf(R"("tags": [["a"]])"), "/properties/0/tags/0", "a text is wanted");
    expectRefusal(tenureOf(R"("startDate": 20250101)"), "/tenures/0/startDate", "a date is wanted");
    expectRefusal(tenureOf(R"("startDate": {})"), "/tenures/0/startDate", "a date is wanted");
    expectRefusal(bookOf(R"("settings": {"a": []})"), "/settings/a",
                  "a text, a number, true, false or null is wanted");
    expectRefusal(bookOf(R"("settings": {"a": {"b": 1}})"), "/settings/a", "not an object");
}

TEST(BookReaderTest, aNegativeOrFractionalCountIsRefused) {
    expectRefusal(propertyOf(R"("rentalPeriod": -1)"), "/properties/0/rentalPeriod", "below zero");
    expectRefusal(propertyOf(R"("rentalPeriod": 1.5)"), "/properties/0/rentalPeriod", "has a fraction");
    expectRefusal(propertyOf(R"("rentalPeriod": 1e-1)"), "/properties/0/rentalPeriod", "has a fraction");
    expectRefusal(propertyOf(R"("rentalPeriod": 18446744073709551616)"), "/properties/0/rentalPeriod",
                  "does not fit");
    expectRefusal(tenureOf(R"("advancePeriod": -0.5)"), "/tenures/0/advancePeriod", "below zero");
    expectRefusal(tenureOf(R"("rentalBillingCycle": -7)"), "/tenures/0/rentalBillingCycle", "below zero");
    expectRefusal(tenureOf(R"("chargeBehaviour": 0.5)"), "/tenures/0/chargeBehaviour", "has a fraction");
}

TEST(BookReaderTest, anUnknownNameOfACycleOrABehaviourIsRefused) {
    for (const char* name : {"fortnight", "Month", "months", "", "30", " week"})
        expectRefusal(tenureOf(std::string(R"("rentalBillingCycle": ")") + name + '"'),
                      "/tenures/0/rentalBillingCycle", "a billing cycle is wanted");
    expectRefusal(tenureOf(R"("chargeBehaviour": "day")"), "/tenures/0/chargeBehaviour",
                  "a charge behaviour is wanted");
    expectRefusal(tenureOf(R"("advanceBillingCycle": "end")"), "/tenures/0/advanceBillingCycle",
                  "a billing cycle");
}

TEST(BookReaderTest, aTextThatIsNoNumberInPlainNotationIsRefused) {
    for (const char* text :
         {"",    " 1", "1 ", "+1",    "1e3", "1E3",      "1,5",  "1.",    ".5", "-", "--1",
          "-.5", "01", "00", "1.2.3", "NaN", "Infinity", "0x10", "1_000", "£5", "½", "1\\u0000"})
        expectRefusal(propertyOf(std::string(R"("rentalAmount": ")") + text + '"'),
                      "/properties/0/rentalAmount", "not a number in plain notation");
}

TEST(BookReaderTest, aNumberThatADecimalCannotHoldExactlyIsRefused) {
    const std::string digits39(39, '7');
    for (const std::string& json :
         {digits39, '"' + digits39 + '"', "0." + digits39, std::string("1e166"), std::string("1e-129"),
          std::string("1e400"), std::string("-1e400"), std::string("1e99999999999999999999"),
          std::string("1e-99999999999999999999"), '"' + ("1" + std::string(400, '0')) + '"',
          "\"0." + std::string(400, '0') + "1\"", "1" + std::string(100000, '0')})
        expectRefusal(propertyOf(R"("rentalAmount": )" + json), "/properties/0/rentalAmount", "does not fit");
    expectRefusal(bookOf(R"("settings": {"a": 1e400})"), "/settings/a", "does not fit");
    expectRefusal(bookOf(R"("settings": {"a": 0.)" + digits39 + "}"), "/settings/a", "does not fit");
}

TEST(BookReaderTest, aDateThatDoesNotExistIsRefused) {
    expectRefusal(tenureOf(R"("startDate": "2025-02-29")"), "/tenures/0/startDate",
                  "\"2025-02-29\" is a day that does not exist");
    expectRefusal(tenureOf(R"("transactions": [{"when": "2025-03-30T01:30"}])"),
                  "/tenures/0/transactions/0/when", "is a time that does not exist");
    expectRefusal(propertyOf(R"("notes": [{"createdDate": "yesterday"}])"),
                  "/properties/0/notes/0/createdDate", "\"yesterday\" is not a date");
    expectRefusal(tenureOf(R"("startDate": "")"), "/tenures/0/startDate", "\"\" is not a date");
}

TEST(BookReaderTest, aDateOutside1583To9999IsRefused) {
    for (const char* date : {"1582-12-31", "0000-01-01", "10000-01-01", "999999-01-01"})
        expectRefusal(tenureOf(std::string(R"("startDate": ")") + date + '"'), "/tenures/0/startDate",
                      "lies outside the years 1583 to 9999");
}

TEST(BookReaderTest, aDateReadBeforeTheZoneIsRefusedAllTheSame) {
    const BookError error =
        refusalOf("{\"schema\": \"estatebook/book/1\",\n\"properties\": [{},\n"
                  "{\"transactions\": [{\"when\": \"2025-01-01\"}, {\n"
                  "\"when\": \"2025-03-30T01:30\"}]}],\n\"timeZone\": \"Europe/London\"}");
    EXPECT_EQ(error.path, "/properties/1/transactions/1/when");
    EXPECT_EQ(error.line, 4);
    EXPECT_THAT(error.message, HasSubstr("time that does not exist"));
}

TEST(BookReaderTest, anEndDateBeforeItsStartDateIsRefused) {
    expectRefusal(tenureOf(R"("startDate": "2025-03-02", "endDate": "2025-03-01")"), "/tenures/0/endDate",
                  "the end date is before the start date");
    expectRefusal(tenureOf(R"("endDate": "2025-03-01", "startDate": "2025-03-02")"), "/tenures/0/endDate",
                  "the end date is before the start date");
}

TEST(BookReaderTest, fullInstantsDecideWhetherALettingEndsBeforeItStarts) {
    expectRefusal(tenureOf(R"("startDate": "2025-03-01T10:00:01", "endDate": "2025-03-01T10:00:00")"),
                  "/tenures/0/endDate", "before the start date");
    expectRefusal(tenureOf(R"("startDate": "2025-03-01T10:00", "endDate": "2025-03-01")"),
                  "/tenures/0/endDate", "before the start date");
    read(tenureOf(R"("startDate": "2025-03-01T10:00", "endDate": "2025-03-01T11:00+01:00")"));
}

TEST(BookReaderTest, anEndDateWithoutAStartDateIsRefused) {
    expectRefusal(tenureOf(R"("endDate": "2025-03-01")"), "/tenures/0/endDate", "without a start date");
    expectRefusal(tenureOf(R"("startDate": null, "endDate": "2025-03-01")"), "/tenures/0/endDate",
                  "without a start date");
}

TEST(BookReaderTest, anUnknownZoneIsRefused) {
    for (const char* zone :
         {"", "Europe/Nowhere", "europe/london ", "/etc/passwd", "../UTC", "+01:00", "\\u0000"})
        expectRefusal(std::string(R"({"schema": "estatebook/book/1", "timeZone": ")") + zone + "\"}",
                      "/timeZone", "is unknown");
    expectRefusal(R"({"schema": "estatebook/book/1", "settings": {"TimeZone": "Nowhere"}})",
                  "/settings/TimeZone", "is unknown");
    expectRefusal(R"({"schema": "estatebook/book/1", "settings": {"TimeZone": 1}})", "/settings/TimeZone",
                  "a text is wanted here");
}

TEST(BookReaderTest, aTimeZoneSettingBesideTheMemberIsRefused) {
    expectRefusal(bookOf(R"("settings": {"TimeZone": "Europe/London"})"), "/settings/TimeZone",
                  "the zone is given twice");
    expectRefusal(bookOf(R"("settings": {"TimeZone": null})"), "/settings/TimeZone",
                  "the zone is given twice");
    expectRefusal(R"({"schema": "estatebook/book/1", "settings": {"TimeZone": "UTC"}, "timeZone": "UTC"})",
                  "/timeZone", "the zone is given twice");
    expectRefusal(R"({"schema": "estatebook/book/1", "settings": {"TimeZone": "UTC", "TimeZone": "UTC"}})",
                  "/settings/TimeZone", "given twice");
}

TEST(BookReaderTest, anIdentifierUsedTwiceIsRefused) {
    expectRefusal(bookOf(R"("properties": [{"id": "a"}, {"id": "b"}, {"id": "a"}])"), "/properties/2/id",
                  "the identifier \"a\" is used already, on line 1");
    expectRefusal(bookOf(R"("tenants": [{"id": ""}, {"id": ""}])"), "/tenants/1/id", "is used already");
    expectRefusal(bookOf(R"("tenures": [{"id": "a"}, {"id": "a"}])"), "/tenures/1/id", "is used already");
    expectRefusal(bookOf(R"("tenures": [{"notes": [{"id": "a"}]}, {"notes": [{"id": "a"}]}])"),
                  "/tenures/1/notes/0/id", "is used already");
}

TEST(BookReaderTest, transactionsOfPropertiesAndTenuresShareTheirIdentifiers) {
    expectRefusal(bookOf(R"("properties": [{"transactions": [{"id": "a"}]}],
                            "tenures": [{"transactions": [{"id": "b"}, {"id": "a"}]}])"),
                  "/tenures/0/transactions/1/id", "is used already");
}

TEST(BookReaderTest, anIdentifierThatPointsNowhereIsRefused) {
    expectRefusal(bookOf(R"("properties": [{"id": "p"}], "tenures": [{"property": "P"}])"),
                  "/tenures/0/property", "no property has the identifier \"P\"");
    expectRefusal(bookOf(R"("properties": [{"id": "p"}], "tenures": [{"property": "p"}, {"tenant": "p"}])"),
                  "/tenures/1/tenant", "no tenant has the identifier \"p\"");
}

TEST(BookReaderTest, ofSeveralFaultsTheFirstInTheTextIsTold) {
    const BookError error = refusalOf("{\"schema\": \"estatebook/book/1\", \"tenures\": [\n"
                                      "{\"startDate\": \"2025-02-02\", \"endDate\": \"2025-02-01\"},\n"
                                      "{\"property\": \"nowhere\"}],\n"
                                      "\"tenants\": [{\"id\": \"a\"},\n{\"id\": \"a\"}]}");
    EXPECT_EQ(error.path, "/tenures/0/endDate");
    EXPECT_EQ(error.line, 2);
}

TEST(BookReaderTest, moreEntriesThanADocumentMayHoldAreRefused) {
    std::string text = Head + R"(, "properties": [{"tags": [)";
    for (std::size_t i = 1; i < BookReader::MaximumEntries; ++i) text += "\"\",";
    expectRefusal(text + "\"\"]}]}", "/properties/0/tags/" + std::to_string(BookReader::MaximumEntries - 1),
                  "holds more than");
    text.pop_back();
    EXPECT_TRUE(BookReader::readText(text + "]}]}"));
}

// -- How it is told

TEST(BookReaderTest, anErrorIsOneLineWithFilePathLineReasonAndAdvice) {
    const BookReading reading = BookReader::readText(
        "{\"schema\": \"estatebook/book/1\",\n\"tenures\": [{},\n{\"endDate\":\n\"2025-02-30\"}]}", "b.json");
    ASSERT_TRUE(reading.error);
    EXPECT_EQ(reading.error->text(),
              "b.json:4: /tenures/1/endDate: \"2025-02-30\" is a day that does not exist; correct the day");
}

TEST(BookReaderTest, theLineIsThatOfTheRefusedValue) {
    // A number ends where the next character is no part of it; the next line is not its own.
    EXPECT_EQ(
        refusalOf("{\"schema\": \"estatebook/book/1\", \"properties\": [{\n\"rentalPeriod\": -1\n}]}").line,
        2);
    EXPECT_EQ(
        refusalOf("{\"schema\": \"estatebook/book/1\", \"properties\": [{\n\"rentalPeriod\": \"\"\n}]}").line,
        2);
    EXPECT_EQ(refusalOf("{\n\n\"colour\":\n1}").line, 3);
    EXPECT_EQ(refusalOf("{\r\n\"colour\":1}").line, 2);
    EXPECT_EQ(refusalOf("{\n\"schema\"\n\n:\n1}").line, 5);
    EXPECT_EQ(refusalOf("\n\n").line, 2);
}

TEST(BookReaderTest, whatIsShownOfADocumentIsShortAndHarmless) {
    const std::string escape = "\\u001b[2J\\u009b\\u202e\\u2028\\n";
    const BookError name = refusalOf(bookOf("\"" + escape + std::string(100000, 'a') + "\": 1"));
    const BookError value =
        refusalOf(propertyOf("\"available\": \"" + escape + std::string(100000, 'a') + "\""));
    const BookError identifier =
        refusalOf(tenureOf("\"tenant\": \"" + escape + std::string(100000, 'a') + "\""));
    for (const BookError& error : {name, value, identifier}) {
        EXPECT_LT(error.text().size(), 400u);
        EXPECT_THAT(error.text(), AllOf(HasSubstr("\\u001b"), HasSubstr("\\u009b"), HasSubstr("\\u202e")));
        for (const char character : error.text()) EXPECT_GE(static_cast<unsigned char>(character), 0x20);
    }
}

TEST(BookReaderTest, aDeeplyNestedDocumentIsRefusedAtItsFirstWrongBracket) {
    EXPECT_EQ(refusalOf(std::string(1000000, '[')).line, 1);
    expectRefusal(bookOf("\"properties\": " + std::string(1000000, '[')), "/properties/0",
                  "an object is wanted here");
    std::string objects;
    for (int i = 0; i < 100000; ++i) objects += "{\"a\":";
    expectRefusal(objects, "/a", "no member here");
}

// -- Files

class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& content)
        : path_(testing::TempDir() + "book-" + std::to_string(::getpid()) + ".json") {
        std::ofstream(path_, std::ios::binary) << content;
    }
    ~TemporaryFile() { ::unlink(path_.c_str()); }
    [[nodiscard]] const std::string& path() const { return path_; }

private:
    std::string path_;
};

TEST(BookReaderTest, aFileIsReadInPiecesOfAnySize) {
    // Longer than a bufferful, so that texts and numbers lie across its end.
    std::string text = Head + ", \"properties\": [";
    for (int i = 0; i < 20000; ++i)
        text += (i == 0 ? "" : ",\n") + ("{\"rentalPeriod\": " + std::to_string(i) + "}");
    const TemporaryFile file(text + "]}");
    const BookReading reading = BookReader::readFile(file.path());
    ASSERT_TRUE(reading) << reading.error->text();
    ASSERT_THAT(reading.document->properties, SizeIs(20000));
    EXPECT_EQ(reading.document->properties[19999].rentalPeriod, 19999);
    EXPECT_EQ(reading.document, BookReader::readText(text + "]}").document);
}

TEST(BookReaderTest, aRefusedFileIsNamed) {
    const TemporaryFile file("{}");
    EXPECT_EQ(BookReader::readFile(file.path()).error->file, file.path());
}

TEST(BookReaderTest, aFileThatCannotBeReadIsToldFromOneThatIsRefused) {
    for (const std::string& path : {std::string("/nonexistent/book.json"), std::string("/"), std::string()}) {
        const BookReading reading = BookReader::readFile(path);
        EXPECT_FALSE(reading);
        ASSERT_TRUE(reading.error) << path;
        EXPECT_EQ(reading.error->kind, BookError::Kind::Unreadable) << path;
        EXPECT_EQ(reading.error->file, path);
    }
    EXPECT_THAT(BookReader::readFile("/nonexistent/book.json").error->text(),
                HasSubstr("/nonexistent/book.json: cannot be read: No such file or directory; "));
}

TEST(BookReaderTest, aPipeIsReadToItsEnd) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    std::thread writer([&] {
        const std::string text = propertyOf(R"("name": ")" + std::string(200000, 'a') + "\"");
        for (std::size_t at = 0; at < text.size(); at += 1000) {
            const std::string piece = text.substr(at, 1000);
            EXPECT_EQ(::write(ends[1], piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
        }
        ::close(ends[1]);
    });
    std::FILE* const stream = ::fdopen(ends[0], "rb");
    const BookReading reading = BookReader::readStream(stream, "-");
    writer.join();
    std::fclose(stream);
    ASSERT_TRUE(reading);
    EXPECT_THAT(*reading.document->properties[0].name, SizeIs(200000));
}

TEST(BookReaderTest, anEndlessSourceIsReadOnlyUpToItsFault) {
    EXPECT_THAT(BookReader::readFile("/dev/zero").error->message, HasSubstr("zero byte"));
}

} // namespace
} // namespace estatebook::document
