// SPDX-License-Identifier: MIT
#include "platform/text/NumberText.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

namespace estatebook::platform {
namespace {

using Manner = NumberText::Manner;

std::string written(const Number& number, const NumberText::Style& style = {},
                    std::string_view locale = "en_US") {
    return NumberText::make(Locale::named(locale), style)->write(number);
}

std::string read(std::string_view text, Manner manner = Manner::Strict, const NumberText::Style& style = {},
                 std::string_view locale = "en_US") {
    const auto found = NumberText::make(Locale::named(locale), style)->read(text, manner);
    return found ? found->number.toString() + " @" + std::to_string(found->end) : "none";
}

const NumberText::Style weeks{.positiveSuffix = " weeks", .negativeSuffix = " weeks"};
const NumberText::Style money{.minimumFractionDigits = 2, .maximumFractionDigits = 2, .usesGrouping = true};

TEST(NumberTextTest, WholeNumbersAreWrittenWithoutGroups) {
    EXPECT_EQ(written(Number(3)), "3");
    EXPECT_EQ(written(Number(-3)), "-3");
    EXPECT_EQ(written(Number(0)), "0");
    EXPECT_EQ(written(Number(1234567)), "1234567");
    EXPECT_EQ(written(Number(std::numeric_limits<std::uint64_t>::max())), "18446744073709551615");
    EXPECT_EQ(written(Number(std::numeric_limits<std::int64_t>::min())), "-9223372036854775808");
}

TEST(NumberTextTest, HalvesAreRoundedToTheEvenNeighbour) {
    for (const auto& [number, text] :
         {std::pair{3.7, "4"}, std::pair{2.5, "2"}, std::pair{3.5, "4"}, std::pair{0.5, "0"},
          std::pair{1.5, "2"}, std::pair{-0.4, "-0"}, std::pair{-2.5, "-2"}}) {
        EXPECT_EQ(written(Number(number)), text) << number;
        EXPECT_EQ(written(Number(Decimal::parse(std::to_string(number)))), text) << number;
    }
}

TEST(NumberTextTest, EveryDigitOfADecimalIsWritten) {
    const NumberText::Style exact{.maximumFractionDigits = 38};
    EXPECT_EQ(written(Number(Decimal::parse("0.1")), exact), "0.1");
    EXPECT_EQ(written(Number(Decimal::parse("12345678901234567890123456789012345678")), exact),
              "12345678901234567890123456789012345678");
    EXPECT_EQ(written(Number(Decimal::parse("-1.2345678901234567890123456789012345678")), exact),
              "-1.2345678901234567890123456789012345678");
}

TEST(NumberTextTest, MoneyIsGroupedWithTwoDigits) {
    EXPECT_EQ(written(Number(Decimal::parse("1234567.5")), money), "1,234,567.50");
    EXPECT_EQ(written(Number(Decimal::parse("-0.005")), money), "-0.00");
    EXPECT_EQ(written(Number(Decimal::parse("1234567.5")), money, "de_DE"), "1.234.567,50");
}

TEST(NumberTextTest, TheSuffixFollowsNumbersOfEitherSign) {
    EXPECT_EQ(written(Number(3), weeks), "3 weeks");
    EXPECT_EQ(written(Number(-3), weeks), "-3 weeks");
    EXPECT_EQ(written(Number(0), weeks), "0 weeks");
    EXPECT_EQ(written(Number(2.5), weeks), "2 weeks");
}

TEST(NumberTextTest, ASuffixIsTakenAsItStands) {
    for (const char* suffix : {"%", " 'd'", "#0", " \u2030", "-", " ¤", "''"}) {
        const NumberText::Style style{.positiveSuffix = suffix, .negativeSuffix = suffix};
        EXPECT_EQ(written(Number(12), style), "12" + std::string(suffix));
        EXPECT_EQ(read("12" + std::string(suffix), Manner::Strict, style),
                  "12 @" + std::to_string(2 + std::string(suffix).size()));
    }
}

TEST(NumberTextTest, WhatIsNoNumberSaysSo) {
    EXPECT_EQ(written(Number(std::numeric_limits<double>::quiet_NaN())), "NaN");
    EXPECT_EQ(written(Number(Decimal::notANumber())), "NaN");
}

TEST(NumberTextTest, ReadingStopsBehindTheNumber) {
    EXPECT_EQ(read("12"), "12 @2");
    EXPECT_EQ(read("-12"), "-12 @3");
    EXPECT_EQ(read(" \t12 "), "12 @4");
    EXPECT_EQ(read("12 x"), "12 @2");
    EXPECT_EQ(read("3.25"), "3.25 @4");
    EXPECT_EQ(read("1E5"), "1 @1");
    EXPECT_EQ(read("3,25", Manner::Strict, {}, "de_DE"), "3.25 @4");
}

TEST(NumberTextTest, WhatDoesNotBeginWithANumberIsNone) {
    for (const char* text : {"", " ", "x", "-", ".", "NaN", "\u221e", "--3", "\xff", "weeks"})
        EXPECT_EQ(read(text), "none") << text;
}

TEST(NumberTextTest, ReadStrictlyTheSuffixMustStandThere) {
    EXPECT_EQ(read("3 weeks", Manner::Strict, weeks), "3 @7");
    EXPECT_EQ(read("-3 weeks", Manner::Strict, weeks), "-3 @8");
    for (const char* text : {"3", "3 ", "3weeks", "3  weeks", "3 Weeks", "3 week", "weeks"})
        EXPECT_EQ(read(text, Manner::Strict, weeks), "none") << text;
}

TEST(NumberTextTest, ReadLenientlyTheSuffixMayBeLeftOut) {
    EXPECT_EQ(read("3 weeks", Manner::Lenient, weeks), "3 @7");
    EXPECT_EQ(read("3", Manner::Lenient, weeks), "3 @1");
    EXPECT_EQ(read("3weeks", Manner::Lenient, weeks), "3 @6");
    EXPECT_EQ(read("3   weeks", Manner::Lenient, weeks), "3 @9");
    EXPECT_EQ(read("3 days", Manner::Lenient, weeks), "3 @1");
}

TEST(NumberTextTest, EachSignHasItsSuffix) {
    const NumberText::Style style{.positiveSuffix = " in", .negativeSuffix = " out"};
    EXPECT_EQ(written(Number(3), style), "3 in");
    EXPECT_EQ(written(Number(-3), style), "-3 out");
    EXPECT_EQ(read("-3 out", Manner::Strict, style), "-3 @6");
    EXPECT_EQ(read("-3 in", Manner::Strict, style), "none");
}

TEST(NumberTextTest, GroupsMustBeWhereTheyAreWritten) {
    EXPECT_EQ(read("1,234.50", Manner::Strict, money), "1234.5 @8");
    EXPECT_EQ(read("1234.50", Manner::Strict, money), "1234.5 @7");
    EXPECT_EQ(read("1,234", Manner::Lenient), "1234 @5");
    for (const Manner manner : {Manner::Strict, Manner::Lenient}) {
        EXPECT_NE(read("1,5", manner, money), "15 @3");
        EXPECT_NE(read("12,34", manner, money), "1234 @5");
    }
}

TEST(NumberTextTest, WhatIsWrittenIsReadBack) {
    for (const char* locale : {"en_US", "de_DE", "fr_FR", "ar_EG", "hi_IN", "sv_SE"})
        for (const char* digits : {"0", "1", "-1", "1234567.89", "-0.01", "99999999999999999999.99"}) {
            const auto text = NumberText::make(Locale::named(locale), money);
            const Decimal number = Decimal::parse(digits);
            const std::string shown = text->write(Number(number));
            const auto found = text->read(shown, Manner::Strict);
            ASSERT_TRUE(found) << locale << " " << shown;
            EXPECT_EQ(found->number, number) << locale << " " << shown;
            EXPECT_EQ(found->end, shown.size());
        }
}

} // namespace
} // namespace estatebook::platform
