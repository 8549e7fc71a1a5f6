// SPDX-License-Identifier: MIT
#include "estatebook/document/BookWriter.hpp"

#include "estatebook/document/BookReader.hpp"

#include "platform/calendar/TimeZone.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>

namespace estatebook::document {
namespace {

using platform::Date;
using platform::Decimal;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

std::string contentOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string textOf(const BookDocument& book) {
    const WrittenBook written = BookWriter::write(book);
    EXPECT_THAT(written.leftOut, IsEmpty());
    return written.text;
}

/// What a text comes to when it is read and written again.
std::string canonical(const std::string& text) {
    const BookReading reading = BookReader::readText(text);
    EXPECT_TRUE(reading) << (reading.error ? reading.error->text() : "");
    return reading ? textOf(*reading.document) : std::string();
}

std::vector<std::string> pathsOf(const WrittenBook& written) {
    std::vector<std::string> paths;
    for (const LeftOut& entry : written.leftOut) paths.push_back(entry.path);
    return paths;
}

TEST(BookWriterTest, theExampleComesBackByteForByte) {
    const std::string example = contentOf(ESTATEBOOK_EXAMPLES "/harbour-street.json");
    ASSERT_FALSE(example.empty());
    EXPECT_EQ(canonical(example), example);
}

TEST(BookWriterTest, theExampleHoldsNoTermsToBeWarnedOf) {
    const BookReading reading = BookReader::readFile(ESTATEBOOK_EXAMPLES "/harbour-street.json");
    ASSERT_TRUE(reading);
    EXPECT_THAT(reading.warnings, IsEmpty());
    EXPECT_THAT(reading.document->properties, SizeIs(4));
    EXPECT_THAT(reading.document->tenants, SizeIs(7));
    EXPECT_THAT(reading.document->tenures, SizeIs(10));
}

TEST(BookWriterTest, anEmptyBookIsItsSchema) {
    EXPECT_EQ(textOf({}), "{\n  \"schema\": \"estatebook/book/1\"\n}\n");
}

TEST(BookWriterTest, aTextWithAttributesIsWrittenInPiecesAndAPlainOneAsAText) {
    BookDocument book;
    book.tenants.resize(1);
    book.tenants[0].notes.resize(2);
    RichText& rich = book.tenants[0].notes[0].content.emplace();
    rich.pieces = {
        {"Call ", {}},
        {"\"noon\"", {{"bold", true}, {"size", std::int64_t{12}}, {"font", std::string("Serif")}}}};
    book.tenants[0].notes[1].content = RichText(std::string("plain"));
    const std::string text = textOf(book);
    EXPECT_THAT(text, HasSubstr(R"("content": ["Call ", {"text": "\"noon\"", )"
                                R"("attributes": {"bold": true, "size": 12, "font": "Serif"}}])"));
    EXPECT_THAT(text, HasSubstr(R"("content": "plain")"));
    EXPECT_EQ(canonical(text), text);
}

TEST(BookWriterTest, aTextThatNoDocumentCarriesIsLeftOutWhole) {
    BookDocument book;
    book.tenants.resize(1);
    const TextPiece pieces[] = {{"\xff", {{"bold", true}}},
                                {"a", {{"\xff", true}}},
                                {"a", {{"font", std::string("\xff")}}},
                                {"a", {{"size", Decimal::notANumber()}}}};
    for (const TextPiece& piece : pieces) {
        book.tenants[0].notes.emplace_back().content.emplace().pieces = {{"begins well", {}}, piece};
    }
    const WrittenBook written = BookWriter::write(book);
    EXPECT_THAT(pathsOf(written), ElementsAre("/tenants/0/notes/0/content", "/tenants/0/notes/1/content",
                                              "/tenants/0/notes/2/content", "/tenants/0/notes/3/content"));
    EXPECT_THAT(written.text, Not(HasSubstr("begins")));
}

TEST(BookWriterTest, membersStandInTheOrderOfTheTablesWhateverOrderTheyWereReadIn) {
    EXPECT_EQ(
        canonical(
            R"({"tenures":[{"tenant":"a","rentalBillingCycle":30,"id":"t","startDate":"2025-06-01T00:00",
                 "chargeFullDuration":true,"bondAmount":5.50,"chargeBehaviour":1,"transactions":[{"tags":["b","a"],
                 "adjustment":false,"amount":"1.0"},{}]}],"timeZone":"Europe/London","tenants":[{"id":"a"}],
                 "settings":{"z":1.50,"BillingMode":0,"n":null,"t":true,"s":"x"},"schema":"estatebook/book/1"})"),
        R"({
  "schema": "estatebook/book/1",
  "timeZone": "Europe/London",
  "settings": {
    "z": 1.5,
    "BillingMode": 0,
    "n": null,
    "t": true,
    "s": "x"
  },
  "tenants": [
    {
      "id": "a"
    }
  ],
  "tenures": [
    {
      "id": "t",
      "tenant": "a",
      "startDate": "2025-06-01",
      "rentalBillingCycle": "month",
      "chargeBehaviour": "partial",
      "chargeFullDuration": true,
      "bondAmount": "5.5",
      "transactions": [
        {
          "amount": "1",
          "adjustment": false,
          "tags": ["b", "a"]
        },
        {}
      ]
    }
  ]
}
)");
}

TEST(BookWriterTest, amountsHaveNeitherExponentNorTrailingZeros) {
    BookDocument book;
    book.properties.resize(1);
    book.properties[0].rentalAmount = Decimal::withMantissaExponentIsNegative(12, 20, true);
    book.properties[0].bondAmount = Decimal::parse("0.00000000100");
    EXPECT_THAT(textOf(book), testing::HasSubstr("\"rentalAmount\": \"-1200000000000000000000\",\n"
                                                 "      \"bondAmount\": \"0.000000001\"\n"));
}

TEST(BookWriterTest, unnamedCyclesAndBehavioursAreWrittenAsNumbers) {
    BookDocument book;
    book.tenures.resize(1);
    book.tenures[0].rentalBillingCycle = BillingCycle{14};
    book.tenures[0].chargeBehaviour = ChargeBehaviour{std::numeric_limits<std::uint64_t>::max()};
    EXPECT_THAT(textOf(book), testing::HasSubstr("\"rentalBillingCycle\": 14,\n"
                                                 "      \"chargeBehaviour\": 18446744073709551615\n"));
}

TEST(BookWriterTest, textsAreEscapedOnlyWhereTheyMustBe) {
    BookDocument book;
    book.properties.resize(1);
    book.properties[0].name = std::string("\"\\/\b\f\n\r\t\x01\x1f\0½\x7f\U0001F600", 18);
    const std::string text = textOf(book);
    EXPECT_THAT(text, testing::HasSubstr(R"("\"\\/\b\f\n\r\t\u0001\u001f\u0000½)"
                                         "\x7f\U0001F600\""));
    EXPECT_EQ(BookReader::readText(text).document, book);
}

TEST(BookWriterTest, settingsKeepTheirKind) {
    BookDocument book;
    book.settings = {{"a", std::monostate()},
                     {"b", true},
                     {"c", std::int64_t{-9223372036854775807 - 1}},
                     {"d", Decimal::parse("0.1")},
                     {"e", std::string("0.1")},
                     {"f", Decimal::withMantissaExponentIsNegative(1, 30, false)}};
    EXPECT_EQ(BookReader::readText(textOf(book)).document, book);
}

TEST(BookWriterTest, datesAreWrittenInTheBooksZone) {
    BookDocument book;
    book.properties.resize(1);
    book.properties[0].transactions.resize(1);
    book.properties[0].transactions[0].when = Date::fromUnixSeconds(1748732400);
    book.timeZone = "Europe/London";
    EXPECT_THAT(textOf(book), testing::HasSubstr("\"when\": \"2025-06-01\"\n"));
    book.timeZone = "UTC";
    EXPECT_THAT(textOf(book), testing::HasSubstr("\"when\": \"2025-05-31T23:00:00+00:00\"\n"));
}

TEST(BookWriterTest, whatADocumentCannotCarryIsLeftOutAndNamed) {
    BookDocument book;
    book.timeZone = "Europe/London";
    book.settings = {{"TimeZone", std::string("UTC")},
                     {"x\xFF", true},
                     {"n", Decimal::notANumber()},
                     {"t", std::string("\xFF")}};
    book.properties.resize(2);
    book.properties[1].name = "\xC0\xAF";
    book.properties[1].rentalAmount = Decimal::notANumber();
    book.properties[1].tags = {"a", "\xFF", "b"};
    book.tenures.resize(1);
    book.tenures[0].transactions.resize(1);
    book.tenures[0].transactions[0].when = Date{1e15};
    book.tenures[0].startDate = Date{std::nan("")};
    const WrittenBook written = BookWriter::write(book);
    EXPECT_THAT(pathsOf(written),
                ElementsAre("/settings/TimeZone", "/settings/x\xEF\xBF\xBD", "/settings/n", "/settings/t",
                            "/properties/1/name", "/properties/1/rentalAmount", "/properties/1/tags",
                            "/tenures/0/startDate", "/tenures/0/transactions/0/when"));
    const BookReading reading = BookReader::readText(written.text);
    ASSERT_TRUE(reading) << reading.error->text();
    EXPECT_THAT(reading.document->settings, IsEmpty());
    EXPECT_THAT(reading.document->properties[1].tags, ElementsAre("a", "b"));
}

TEST(BookWriterTest, anUnknownZoneIsLeftOutAndNamed) {
    BookDocument book;
    book.timeZone = "Nowhere";
    const WrittenBook written = BookWriter::write(book);
    EXPECT_THAT(pathsOf(written), ElementsAre("/timeZone"));
    EXPECT_TRUE(BookReader::readText(written.text));
}

} // namespace
} // namespace estatebook::document
