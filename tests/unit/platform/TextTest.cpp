// SPDX-License-Identifier: MIT
#include "platform/text/Text.hpp"

#include <gtest/gtest.h>
#include <unicode/ucurr.h>

#include <string>
#include <unordered_map>

namespace estatebook::platform {
namespace {

// Currencies

struct CurrencyCase {
    std::string_view code;
    int digits;
};
class CurrencyDigitsTest : public testing::TestWithParam<CurrencyCase> {};

TEST_P(CurrencyDigitsTest, ACurrencyHasItsMinorUnitDigits) {
    EXPECT_EQ(currencyDigits(GetParam().code), GetParam().digits);
}

INSTANTIATE_TEST_SUITE_P(Iso4217, CurrencyDigitsTest,
                         testing::Values(CurrencyCase{"USD", 2}, CurrencyCase{"EUR", 2},
                                         CurrencyCase{"GBP", 2}, CurrencyCase{"AUD", 2},
                                         CurrencyCase{"NZD", 2}, CurrencyCase{"CAD", 2},
                                         CurrencyCase{"CHF", 2}, CurrencyCase{"HUF", 2},
                                         CurrencyCase{"JPY", 0}, CurrencyCase{"KRW", 0},
                                         CurrencyCase{"CLP", 0}, CurrencyCase{"ISK", 0},
                                         CurrencyCase{"KWD", 3}, CurrencyCase{"BHD", 3},
                                         CurrencyCase{"TND", 3}, CurrencyCase{"CLF", 4}),
                         [](const auto& one) { return std::string(one.param.code); });

TEST(TextTest, AnUnknownCurrencyHasTwoDigits) {
    EXPECT_EQ(currencyDigits("QQQ"), 2);
    EXPECT_EQ(currencyDigits("ZZZZ"), 2);
    EXPECT_EQ(currencyDigits("E1R"), 2);
}

TEST(TextTest, AnAbsentCurrencyHasTwoDigits) {
    EXPECT_EQ(currencyDigits(""), 2);
}

TEST(TextTest, EveryThreeLetterCodeHasTheDigitsOfIcu) {
    for (char16_t a = 'A'; a <= 'Z'; ++a)
        for (char16_t b = 'A'; b <= 'Z'; ++b)
            for (char16_t c = 'A'; c <= 'Z'; ++c) {
                const char16_t wide[] = {a, b, c, 0};
                const char code[] = {static_cast<char>(a), static_cast<char>(b), static_cast<char>(c), 0};
                UErrorCode status = U_ZERO_ERROR;
                const int expected = ucurr_getDefaultFractionDigits(wide, &status);
                ASSERT_EQ(currencyDigits(code), expected) << code;
            }
}

// Equivalence

TEST(TextTest, ComposedAndDecomposedSpellingsAreEquivalent) {
    EXPECT_TRUE(canonicallyEquivalent("Caf\u00e9", "Cafe\u0301"));
    EXPECT_EQ(canonicalHash("Caf\u00e9"), canonicalHash("Cafe\u0301"));
    EXPECT_EQ(canonicalForm("Cafe\u0301"), "Caf\u00e9");
}

TEST(TextTest, TheOrderOfIndependentMarksDoesNotMatter) {
    EXPECT_TRUE(canonicallyEquivalent("q\u0307\u0323", "q\u0323\u0307"));
    EXPECT_FALSE(canonicallyEquivalent("q\u0301\u0300", "q\u0300\u0301"));
}

TEST(TextTest, ASignThatIsAnotherNameOfALetterIsEquivalentToIt) {
    EXPECT_TRUE(canonicallyEquivalent("\u212b", "\u00c5"));
    EXPECT_TRUE(canonicallyEquivalent("\u1100\u1161", "\uac00"));
}

TEST(TextTest, CompatibilityIsNotEquivalence) {
    EXPECT_FALSE(canonicallyEquivalent("\ufb01", "fi"));
    EXPECT_FALSE(canonicallyEquivalent("\u00b2", "2"));
}

TEST(TextTest, LetterCaseMattersToEquivalence) {
    EXPECT_FALSE(canonicallyEquivalent("Rent", "rent"));
}

TEST(TextTest, TheEmptyTextIsEquivalentToItselfOnly) {
    EXPECT_TRUE(canonicallyEquivalent("", ""));
    EXPECT_FALSE(canonicallyEquivalent("", "a"));
    EXPECT_EQ(canonicalForm(""), "");
}

TEST(TextTest, ATextThatIsNotWellFormedIsEquivalentToItselfOnly) {
    EXPECT_TRUE(canonicallyEquivalent("e\u0301\xff", "e\u0301\xff"));
    EXPECT_FALSE(canonicallyEquivalent("e\u0301\xff", "\u00e9\xff"));
    EXPECT_FALSE(canonicallyEquivalent("\xff", "\xfe"));
    EXPECT_FALSE(canonicallyEquivalent("\xff", "\ufffd"));
    EXPECT_EQ(canonicalForm("e\u0301\xff"), "e\u0301\xff");
}

TEST(TextTest, EquivalentSpellingsFindOneEntryOfATable) {
    std::unordered_map<std::string, int, CanonicalHash, CanonicalEqual> table;
    ++table["Caf\u00e9"];
    ++table["Cafe\u0301"];
    ++table["caf\u00e9"];
    EXPECT_EQ(table.size(), 2u);
    EXPECT_EQ(table.find(std::string_view("Cafe\u0301"))->second, 2);
}

// Order

TEST(TextTest, EquivalentTextsCompareSame) {
    EXPECT_TRUE(std::is_eq(compareTexts("\u00e9", "e\u0301")));
    EXPECT_TRUE(std::is_eq(compareTexts("", "")));
}

TEST(TextTest, CapitalsStandBeforeSmallLetters) {
    EXPECT_TRUE(std::is_lt(compareTexts("B", "a")));
    EXPECT_TRUE(std::is_gt(compareTexts("a", "B")));
}

TEST(TextTest, LettersWithAccentsStandBehindPlainOnesHoweverTheyAreSpelt) {
    EXPECT_TRUE(std::is_lt(compareTexts("a", "\u00e9")));
    EXPECT_TRUE(std::is_lt(compareTexts("z", "\u00e9")));
    EXPECT_TRUE(std::is_lt(compareTexts("z", "e\u0301")));
}

TEST(TextTest, ATextStandsBeforeItsContinuations) {
    EXPECT_TRUE(std::is_lt(compareTexts("Rent", "Rents")));
    EXPECT_TRUE(std::is_lt(compareTexts("", "a")));
}

TEST(TextTest, CharactersBeyondSixteenBitsStandByTheirCodePoint) {
    EXPECT_TRUE(std::is_lt(compareTexts("\uff5e", "\U00010000")));
}

TEST(TextTest, TheOrderOfSpellingsIsATotalOne) {
    const std::string_view texts[] = {"",
                                      "a",
                                      "z",
                                      "e",
                                      "e\u0301",
                                      "\u00e9",
                                      "\xff",
                                      "e\xff",
                                      "q\u0307\u0323",
                                      "q\u0323\u0307",
                                      "\U0001F600",
                                      "\uff5e",
                                      "\u00e9a"};
    for (const auto a : texts)
        for (const auto b : texts) {
            EXPECT_EQ(std::is_lt(compareTexts(a, b)), std::is_gt(compareTexts(b, a)));
            EXPECT_EQ(std::is_eq(compareTexts(a, b)), canonicallyEquivalent(a, b));
            for (const auto c : texts)
                if (std::is_lteq(compareTexts(a, b)) && std::is_lteq(compareTexts(b, c))) {
                    EXPECT_TRUE(std::is_lteq(compareTexts(a, c))) << a << ' ' << b << ' ' << c;
                }
        }
}

// White space

TEST(TextTest, EverySpaceOfTheWhiteSpaceSetIsTrimmedFromBothEnds) {
    for (const std::string space :
         {"\t", " ", "\u00a0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006",
          "\u2007", "\u2008", "\u2009", "\u200a", "\u200b", "\u202f", "\u205f", "\u3000"})
        EXPECT_EQ(trimWhitespace(space + " a" + space + "b" + space + space), "a" + space + "b");
}

TEST(TextTest, WhatIsNotInTheWhiteSpaceSetIsKept) {
    for (const std::string kept :
         {"\n", "\r", "\v", "\f", "\u0085", "\u2028", "\u2029", "\u180e", "\ufeff", "\u200c", "\u2060"})
        EXPECT_EQ(trimWhitespace(" " + kept + "a" + kept + " "), kept + "a" + kept);
}

TEST(TextTest, ATextOfSpacesOnlyIsTrimmedToNothing) {
    EXPECT_EQ(trimWhitespace(" \t\u200b\u3000 "), "");
    EXPECT_EQ(trimWhitespace(""), "");
}

TEST(TextTest, PartsOfASpaceAreNotTrimmed) {
    EXPECT_EQ(trimWhitespace("\xa0x\xc2"), "\xa0x\xc2");
    EXPECT_EQ(trimWhitespace("\u00e0"), "\u00e0");
}

// UTF-8

TEST(TextTest, WellFormedTextIsTold) {
    for (const std::string_view text : {"", "a", "0123456789", "\u00e9", "\u20ac", "\ud7ff", "\ue000",
                                        "\U0010ffff", "twelve bytes \u00e9 and more"})
        EXPECT_TRUE(isWellFormedUtf8(text)) << text;
    EXPECT_TRUE(isWellFormedUtf8(std::string_view("\0", 1)));
}

TEST(TextTest, TextThatIsNotWellFormedIsTold) {
    for (const std::string_view text :
         {"\x80", "\xc3", "\xc0\x80", "\xc1\xbf", "\xe0\x80\x80", "\xe2\x82", "\xed\xa0\x80",
          "\xf0\x80\x80\x80", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff", "eight by\xc3",
          "eight bytes and\xff more"})
        EXPECT_FALSE(isWellFormedUtf8(text));
}

TEST(TextTest, WhatIsNotWellFormedIsReplaced) {
    EXPECT_EQ(toWellFormedUtf8(""), "");
    EXPECT_EQ(toWellFormedUtf8("twelve bytes \u00e9 \U0010ffff"), "twelve bytes \u00e9 \U0010ffff");
    EXPECT_EQ(toWellFormedUtf8("Zo\xeb B"), "Zo\uFFFD B");
    EXPECT_EQ(toWellFormedUtf8("\xc3"), "\uFFFD");
    EXPECT_EQ(toWellFormedUtf8(std::string_view("a\0\xff", 3)), std::string_view("a\0\uFFFD", 5));
}

// UTF-16

TEST(TextTest, TextIsConvertedToUtf16AndBack) {
    for (const auto& [text, units] : std::initializer_list<std::pair<std::string_view, std::u16string_view>>{
             {"", u""},
             {"Rent", u"Rent"},
             {"Caf\u00e9", u"Caf\u00e9"},
             {"\U0001F3E0\uffff", u"\U0001F3E0\uffff"}}) {
        EXPECT_EQ(toUtf16(text), units);
        EXPECT_EQ(fromUtf16(units), text);
    }
}

TEST(TextTest, WhatIsNotWellFormedIsNotConverted) {
    for (const std::string_view text : {"\x80", "\xc3", "\xed\xa0\x80", "\xf4\x90\x80\x80"})
        EXPECT_FALSE(toUtf16(text));
    for (const std::u16string& units : {std::u16string{0xD83C}, {0xDFE0}, {0xDFE0, 0xD83C}, {0xD83C, u'a'}})
        EXPECT_FALSE(fromUtf16(units));
}

// Columns

TEST(TextTest, TextTakesTheColumnsThatATerminalGivesIt) {
    struct {
        std::string_view text;
        std::size_t columns;
    } const cases[] = {
        {"", 0},
        {"Flat 2", 6},
        {"Caf\u00e9", 4},
        {"Cafe\u0301", 4},
        {"\u5bb6\u8cc3", 4},
        {"\uff21", 2},
        {"\uff71", 1},
        {"\uac00", 2},
        {"\u1100\u1161", 2},
        {"a\u200bb", 2},
        {"a\u00adb", 3},
        {"\u2192", 1},
        {"\u20ac", 1},
        {"\U0001F3E0", 2},
        {"a\nb", 2},
        {"\u0e01\u0e33", 2},
        {"\xff", 1},
        {"\xe2\x82", 2},
        {"\u202fx", 2},
    };
    for (const auto& [text, columns] : cases) EXPECT_EQ(columnWidth(text), columns) << text;
}

TEST(TextTest, AnyByteAtAnyPlaceMayEndWhatIsPlainAscii) {
    EXPECT_EQ(0U, plainAsciiPrefix({}));
    for (std::size_t size = 1; size <= 19; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                std::string text(size, place % 2 == 0 ? '~' : ' ');
                text[place] = static_cast<char>(byte);
                EXPECT_EQ(byte >= 0x20 && byte <= 0x7E ? size : place, plainAsciiPrefix(text))
                    << byte << " at " << place << " of " << size;
            }
        }
    }
}

} // namespace
} // namespace estatebook::platform
