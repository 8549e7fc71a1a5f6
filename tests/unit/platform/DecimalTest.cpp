// SPDX-License-Identifier: MIT
#include "platform/values/Decimal.hpp"
#include "platform/values/Exception.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <unordered_set>

namespace estatebook::platform {
namespace {

static_assert(std::is_nothrow_default_constructible_v<Decimal>);
static_assert(!std::is_constructible_v<Decimal, double>);
static_assert(!std::is_constructible_v<Decimal, float>);
static_assert(!std::is_constructible_v<Decimal, bool>);
static_assert(Decimal(1000).exponent() == 3);

const Decimal NaN = Decimal::notANumber();

Decimal d(std::string_view text) {
    return Decimal::parse(text);
}
std::string text(const Decimal& decimal) {
    return decimal.toString();
}
std::string nines(std::size_t count) {
    return std::string(count, '9');
}
std::string zeros(std::size_t count) {
    return std::string(count, '0');
}

// -- Representation --------------------------------------------------------------------------------

TEST(DecimalTest, AnEmptyDecimalIsZero) {
    EXPECT_EQ(Decimal(), 0);
    EXPECT_EQ(Decimal::zero(), 0);
    EXPECT_TRUE(Decimal().isZero());
    EXPECT_FALSE(Decimal().isNegative());
    EXPECT_EQ(Decimal::one(), 1);
}

TEST(DecimalTest, ThereIsNoMinusZero) {
    for (const char* zero : {"-0", "-0.0e1", "-0.000", "0e999", "-"}) {
        EXPECT_EQ(d(zero), Decimal()) << zero;
        EXPECT_FALSE(d(zero).isNegative()) << zero;
        EXPECT_EQ(text(d(zero)), "0") << zero;
    }
    EXPECT_EQ(-Decimal(0), Decimal());
    EXPECT_FALSE((-Decimal(0)).isNegative());
    EXPECT_FALSE((d("-1.5") + d("1.5")).isNegative());
    EXPECT_FALSE((d("-1.5") * 0).isNegative());
    EXPECT_FALSE((Decimal(0) / -7).isNegative());
    EXPECT_EQ(Decimal::withMantissaExponentIsNegative(0, 5, true), Decimal());
}

TEST(DecimalTest, EveryNumberIsHeldCompact) {
    const auto expectParts = [](const Decimal& decimal, std::uint64_t mantissa, int exponent) {
        EXPECT_EQ(decimal.mantissa(), (Decimal::Mantissa{0, mantissa})) << decimal;
        EXPECT_EQ(decimal.exponent(), exponent) << decimal;
    };
    expectParts(d("12.50"), 125, -1);
    expectParts(d("1000"), 1, 3);
    expectParts(1000, 1, 3);
    expectParts(-1200, 12, 2);
    expectParts(d("12.25") + d("0.25"), 125, -1);
    expectParts(d("2.5") * 4, 1, 1);
    expectParts(Decimal(10) / 4, 25, -1);
    expectParts(Decimal::withMantissaExponentIsNegative(500, -2, false), 5, 0);
    expectParts(d("99.96").decimalNumberByRoundingAccordingToBehavior({.scale = 1}), 1, 2);
}

TEST(DecimalTest, WhereTheExponentEndsTheZerosStayInTheMantissa) {
    EXPECT_EQ(d("1e127").exponent(), 127);
    EXPECT_EQ(d("1e127").mantissa(), (Decimal::Mantissa{0, 1}));
    EXPECT_EQ((d("1e127") * 10).exponent(), 127);
    EXPECT_EQ((d("1e127") * 10).mantissa(), (Decimal::Mantissa{0, 10}));
    EXPECT_EQ(d("1e127") * 10, d("1e128"));
    EXPECT_EQ(text(d("1e164")), "1" + zeros(164));
    EXPECT_TRUE(d("1e165").isNaN());
    EXPECT_EQ(text(d(nines(38) + "e127")), nines(38) + zeros(127));
}

TEST(DecimalTest, WholeNumbersKeepAll64Bits) {
    EXPECT_EQ(text(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(text(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(text(std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
    EXPECT_EQ(text(-7), "-7");
    EXPECT_EQ(text(static_cast<signed char>(-128)), "-128");
}

TEST(DecimalTest, EqualityIsByValueAndHashesAgree) {
    EXPECT_EQ(d("1.0"), 1);
    EXPECT_EQ(d("1.0").hash(), Decimal(1).hash());
    EXPECT_EQ(d("10e2").hash(), Decimal(1000).hash());
    EXPECT_NE(d("1.1"), 1);
    EXPECT_NE(d("-1"), 1);
    EXPECT_EQ(std::unordered_set<Decimal>({d("1.0"), d("1"), d("10e-1"), d("2")}).size(), 2u);
}

TEST(DecimalTest, OrderIsByValue) {
    const char* ascending[] = {"-1e164", "-1000.01", "-1000", "-999.99", "-1", "-1e-128", "0",    "1e-128",
                               "0.1",    "0.11",     "1",     "9",       "10", "11",      "1e38", "1e164"};
    for (std::size_t i = 0; i < std::size(ascending); ++i)
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            EXPECT_EQ(d(ascending[i]).compare(d(ascending[j])), i <=> j)
                << ascending[i] << " " << ascending[j];
            EXPECT_EQ(d(ascending[i]) < d(ascending[j]), i < j);
        }
}

TEST(DecimalTest, NotANumberEqualsItselfAndIsBelowEveryNumber) {
    EXPECT_EQ(NaN, NaN);
    EXPECT_EQ(NaN.compare(NaN), std::strong_ordering::equal);
    EXPECT_EQ(NaN.hash(), d("x").hash());
    for (const char* number : {"-1e164", "-1", "0", "1"}) {
        EXPECT_TRUE(NaN < d(number)) << number;
        EXPECT_TRUE(d(number) > NaN) << number;
        EXPECT_NE(NaN, d(number)) << number;
    }
    EXPECT_FALSE(NaN.isNegative());
    EXPECT_FALSE(NaN.isZero());
}

TEST(DecimalTest, TextIsPlainNotation) {
    EXPECT_EQ(text(d("0.5")), "0.5");
    EXPECT_EQ(text(d(".5")), "0.5");
    EXPECT_EQ(text(d("12.50")), "12.5");
    EXPECT_EQ(text(d("-535.71")), "-535.71");
    EXPECT_EQ(text(d("1e3")), "1000");
    EXPECT_EQ(text(d("1e-3")), "0.001");
    EXPECT_EQ(text(d("-1e-128")), "-0." + zeros(127) + "1");
    EXPECT_EQ(text(NaN), "NaN");
    EXPECT_EQ(text(d("12345678901234567890123456789012345678")), "12345678901234567890123456789012345678");
    EXPECT_EQ(text(d("10000000000000000000000000000000000001e-20")),
              "100000000000000000.00000000000000000001");
}

TEST(DecimalTest, TheLongestTextFitsTheStatedLength) {
    const Decimal longest = -d(nines(38) + "e127");
    EXPECT_EQ(text(longest).size(), Decimal::MaximumTextLength);
    char room[Decimal::MaximumTextLength];
    EXPECT_EQ(longest.toChars(room, room + sizeof room), room + sizeof room);
    EXPECT_EQ(longest.toChars(room, room + sizeof room - 1), nullptr);
}

TEST(DecimalTest, TextThatDoesNotFitWritesNothing) {
    for (const char* number : {"12.5", "0.5", "-100", "NaN", "0", "-0.001"}) {
        const std::string full = text(d(number));
        std::string room(full.size(), '?');
        EXPECT_EQ(d(number).toChars(room.data(), room.data() + room.size() - 1), nullptr);
        EXPECT_EQ(room, std::string(full.size(), '?'));
        EXPECT_EQ(d(number).toChars(room.data(), room.data() + room.size()), room.data() + room.size());
        EXPECT_EQ(room, full);
    }
}

// -- Reading ---------------------------------------------------------------------------------------

TEST(DecimalTest, ReadingStopsAtTheFirstForeignCharacter) {
    EXPECT_EQ(d("3.14abc"), d("3.14"));
    EXPECT_EQ(d("1,234.56"), 1);
    EXPECT_EQ(d("1.5.3"), d("1.5"));
    EXPECT_EQ(d("12 34"), 12);
    EXPECT_EQ(d("5e"), 5);
    EXPECT_EQ(d("5e+"), 5);
    EXPECT_EQ(d("5e-x"), 5);
    EXPECT_EQ(d("1--2"), 1);
    EXPECT_EQ(d(std::string_view("7\0"
                                 "5",
                                 3)),
              7);
}

TEST(DecimalTest, ReadingSkipsLeadingBlanksAndTakesSignsAndExponents) {
    EXPECT_EQ(d("  \t\n 42"), 42);
    EXPECT_EQ(d("+5"), 5);
    EXPECT_EQ(d("-5"), -5);
    EXPECT_EQ(d("007"), 7);
    EXPECT_EQ(d("1.5e2"), 150);
    EXPECT_EQ(d("1.5E+2"), 150);
    EXPECT_EQ(d("15e-1"), d("1.5"));
    EXPECT_EQ(d(" -.5e1"), -5);
    EXPECT_EQ(d("1."), 1);
}

TEST(DecimalTest, ATextThatDoesNotBeginLikeANumberIsNotANumber) {
    for (const char* text : {"", " ", "x", "NaN", "nan", "inf", ",5", "$5"})
        EXPECT_TRUE(d(text).isNaN()) << text;
}

TEST(DecimalTest, ATextThatOnlyBeginsLikeANumberIsZero) {
    for (const char* text : {"-", "+", ".", "e5", "-x", "+.", ".e5", "-NaN"}) EXPECT_EQ(d(text), 0) << text;
}

TEST(DecimalTest, ReadingOutOfRangeIsNotANumber) {
    for (const char* text :
         {"1e200", "1e-200", "-1e200", "1e999", "1e-129", "1.5e-128", "1e999999999999999999999999",
          "1e-999999999999999999999999", "1e9223372036854775807", "1e18446744073709551616"})
        EXPECT_TRUE(d(text).isNaN()) << text;
}

TEST(DecimalTest, TheRangeCountsTheValueNotTheSpelling) {
    EXPECT_EQ(text(d("1000e-130")), "0." + zeros(126) + "1");
    EXPECT_EQ(d("10e-129"), d("1e-128"));
    EXPECT_EQ(d("0." + zeros(999) + "1e1000"), 1);
    EXPECT_EQ(d("1" + zeros(1000) + "e-1000"), 1);
    EXPECT_EQ(d("0e999999999999999999999"), 0);
}

TEST(DecimalTest, ReadingDropsDigitsAfterThe38th) {
    EXPECT_EQ(d(nines(40)), d(nines(38) + "00"));
    EXPECT_EQ(d("0." + nines(40)), d("0." + nines(38)));
    EXPECT_EQ(d("1" + zeros(37) + "9"), d("1e38"));
    EXPECT_EQ(d("1" + zeros(50) + "7.5"), d("1e51"));
    EXPECT_EQ(d("0." + zeros(50) + nines(39)), d(nines(38) + "e-88"));
    EXPECT_EQ(d(nines(38) + ".9"), d(nines(38)));
    EXPECT_EQ(d("340282366920938463463374607431768211455"), d("340282366920938463463374607431768211450"));
}

TEST(DecimalTest, ADocumentsNumberIsJsonsNumber) {
    const std::pair<const char*, const char*> accepted[] = {
        {"0", "0"},      {"-0", "0"},         {"1000", "1000"}, {"-535.71", "-535.71"},
        {"0.50", "0.5"}, {"1e3", "1000"},     {"1E+3", "1000"}, {"-12.5e-1", "-1.25"},
        {"0.0e-5", "0"}, {"1e-128", nullptr}, {"10", "10"}};
    for (const auto& [document, plain] : accepted) {
        ASSERT_TRUE(Decimal::parseExact(document)) << document;
        EXPECT_EQ(*Decimal::parseExact(document), d(document)) << document;
        if (plain) {
            EXPECT_EQ(text(*Decimal::parseExact(document)), plain);
        }
    }
    for (const char* refused : {"",    " ",     "x",    "-",   ".",        "e5",    " 1",  "1 ",  "+1",
                                "01",  "-01",   "00",   "1.",  ".5",       "-.5",   "1e",  "1e+", "1.5.3",
                                "1,5", "1_000", "0x10", "NaN", "Infinity", "1e5.0", "--1", "1\n"})
        EXPECT_FALSE(Decimal::parseExact(refused)) << refused;
    EXPECT_FALSE(Decimal::parseExact(std::string_view("1\0", 2)));
}

TEST(DecimalTest, ADocumentsNumberIsNeverRounded) {
    EXPECT_EQ(Decimal::parseExact(nines(38)), d(nines(38)));
    EXPECT_FALSE(Decimal::parseExact(nines(39)));
    EXPECT_FALSE(Decimal::parseExact("1" + zeros(37) + "1"));
    EXPECT_EQ(Decimal::parseExact("1" + zeros(37) + ".0"), d("1e37"));
    EXPECT_FALSE(Decimal::parseExact("1" + zeros(37) + ".1"));
    EXPECT_EQ(Decimal::parseExact("1" + zeros(164)), d("1e164"));
    EXPECT_FALSE(Decimal::parseExact("1" + zeros(165)));
    EXPECT_FALSE(Decimal::parseExact("1e165"));
    EXPECT_EQ(Decimal::parseExact(nines(38) + "e127"), d(nines(38) + "e127"));
    EXPECT_FALSE(Decimal::parseExact(nines(38) + "e128"));
    EXPECT_FALSE(Decimal::parseExact("1e-129"));
    EXPECT_FALSE(Decimal::parseExact("1.5e-128"));
    EXPECT_EQ(Decimal::parseExact("10e-129"), d("1e-128"));
    EXPECT_EQ(Decimal::parseExact("0." + zeros(400)), Decimal());
}

TEST(DecimalTest, HostileTextsAreReadInOnePass) {
    const std::string million = std::string(1 << 20, '7');
    EXPECT_FALSE(Decimal::parseExact("1e999999999999"));
    EXPECT_FALSE(Decimal::parseExact("1e-999999999999"));
    EXPECT_FALSE(Decimal::parseExact("1e" + million));
    EXPECT_FALSE(Decimal::parseExact(million));
    EXPECT_FALSE(Decimal::parseExact("0." + million));
    EXPECT_EQ(Decimal::parseExact("0." + zeros(1 << 20)), Decimal());
    EXPECT_EQ(Decimal::parseExact("0." + zeros((1 << 20) - 1) + "1e1048576"), Decimal(1));
    EXPECT_EQ(Decimal::parseExact("0e" + million), Decimal());
    EXPECT_TRUE(d(million).isNaN());
    EXPECT_EQ(d("0." + million), d("0." + std::string(38, '7')));
}

// -- Conditions ------------------------------------------------------------------------------------

TEST(DecimalTest, DividingByZeroRaises) {
    EXPECT_THROW((void)(Decimal(1) / 0), DivideByZeroException);
    EXPECT_THROW((void)(Decimal(0) / 0), DivideByZeroException);
    EXPECT_THROW((void)(Decimal(-1) / Decimal()), DivideByZeroException);
    try {
        (void)Decimal(1).decimalNumberByDividingBy(0);
        FAIL();
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.name(), "NSDecimalNumberDivideByZeroException");
    }
}

TEST(DecimalTest, ANotANumberOperandIsAnOverflow) {
    for (const Decimal& other : {Decimal(0), Decimal(1), NaN}) {
        EXPECT_THROW((void)(NaN + other), OverflowException);
        EXPECT_THROW((void)(other + NaN), OverflowException);
        EXPECT_THROW((void)(NaN - other), OverflowException);
        EXPECT_THROW((void)(other - NaN), OverflowException);
        EXPECT_THROW((void)(NaN * other), OverflowException);
        EXPECT_THROW((void)(other * NaN), OverflowException);
        EXPECT_THROW((void)(NaN / other), OverflowException);
        EXPECT_THROW((void)(other / NaN), OverflowException);
    }
    EXPECT_THROW((void)-NaN, OverflowException);
    try {
        (void)NaN.decimalNumberByDividingBy(0);
        FAIL();
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.name(), "NSDecimalNumberOverflowException");
    }
}

TEST(DecimalTest, AResultOutOfRangeRaises) {
    EXPECT_THROW((void)(d("1e100") / d("1e-100")), OverflowException);
    EXPECT_THROW((void)(d("1e100") * d("1e100")), OverflowException);
    EXPECT_THROW((void)(d("1e-100") * d("1e-100")), UnderflowException);
    EXPECT_THROW((void)(d("1e-100") / d("1e100")), UnderflowException);
    EXPECT_THROW((void)(d("1e164") * 10), OverflowException);
    EXPECT_THROW((void)(d("1e-128") / 2), UnderflowException);
    EXPECT_THROW((void)(d(nines(38) + "e127") + d("1e127")), OverflowException);
    EXPECT_THROW((void)(d("-" + nines(38) + "e127") - d("5e126")), OverflowException);
    EXPECT_EQ(d(nines(38) + "e127") + d("1e100"), d(nines(38) + "e127"));
}

TEST(DecimalTest, ABehaviorThatDoesNotRaiseGivesNotANumber) {
    const DecimalBehavior silent{
        .raiseOnOverflow = false, .raiseOnUnderflow = false, .raiseOnDivideByZero = false};
    EXPECT_EQ(Decimal(1).decimalNumberByDividingBy(0, silent), NaN);
    EXPECT_EQ(NaN.decimalNumberByAdding(1, silent), NaN);
    EXPECT_EQ(Decimal(1).decimalNumberBySubtracting(NaN, silent), NaN);
    EXPECT_EQ(d("1e100").decimalNumberByMultiplyingBy(d("1e100"), silent), NaN);
    EXPECT_EQ(d("1e-100").decimalNumberByMultiplyingBy(d("1e-100"), silent), NaN);
    EXPECT_EQ(NaN.decimalNumberByDividingBy(0, {.raiseOnOverflow = false}), NaN);
    EXPECT_THROW((void)NaN.decimalNumberByDividingBy(0, {.raiseOnDivideByZero = false}), OverflowException);
}

TEST(DecimalTest, ExactnessRaisesOnlyWhenAskedFor) {
    const DecimalBehavior exact{.raiseOnExactness = true};
    EXPECT_THROW((void)Decimal(1).decimalNumberByDividingBy(3, exact), ExactnessException);
    EXPECT_EQ(Decimal(1).decimalNumberByDividingBy(8, exact), d("0.125"));
    EXPECT_THROW((void)d("1e50").decimalNumberByAdding(1, exact), ExactnessException);
    EXPECT_THROW((void)d("1e90").decimalNumberBySubtracting(d("1e-90"), exact), ExactnessException);
    EXPECT_THROW((void)d(nines(38)).decimalNumberByMultiplyingBy(d(nines(38)), exact), ExactnessException);
    EXPECT_EQ(d("1e19").decimalNumberByMultiplyingBy(d("1e19"), exact), d("1e38"));
    EXPECT_THROW(
        (void)d("1.25").decimalNumberByRoundingAccordingToBehavior({.scale = 1, .raiseOnExactness = true}),
        ExactnessException);
    EXPECT_EQ(d("1.2").decimalNumberByRoundingAccordingToBehavior({.scale = 1, .raiseOnExactness = true}),
              d("1.2"));
}

TEST(DecimalTest, ABehaviorRoundsTheResultToItsScale) {
    EXPECT_EQ(Decimal(2).decimalNumberByDividingBy(3, {.scale = 2}), d("0.67"));
    EXPECT_EQ(Decimal(-2).decimalNumberByDividingBy(3, {.mode = RoundingMode::Up, .scale = 2}), d("-0.66"));
    EXPECT_EQ(Decimal(-2).decimalNumberByDividingBy(3, {.mode = RoundingMode::Down, .scale = 2}), d("-0.67"));
    EXPECT_EQ(d("1.5").decimalNumberByMultiplyingBy(d("1.5"), {.mode = RoundingMode::Bankers, .scale = 1}),
              d("2.2"));
    EXPECT_EQ(d("0.04").decimalNumberByAdding(d("0.01"), {.scale = 1}), d("0.1"));
    EXPECT_EQ(d("0.06").decimalNumberBySubtracting(d("0.01"), {.mode = RoundingMode::Bankers, .scale = 1}),
              0);
    EXPECT_EQ(d("1e-100").decimalNumberByMultiplyingBy(d("1e-100"), {.scale = 2}), 0);
}

TEST(DecimalTest, ABehaviorsModeShedsDigitsByTheMagnitude) {
    const auto third = [](int numerator, RoundingMode mode) {
        return text(Decimal(numerator).decimalNumberByDividingBy(3, {.mode = mode}));
    };
    const std::string threes = "0." + std::string(38, '3');
    const std::string above = "0." + std::string(37, '3') + "4";
    EXPECT_EQ(third(1, RoundingMode::Down), threes);
    EXPECT_EQ(third(-1, RoundingMode::Down), "-" + threes);
    EXPECT_EQ(third(1, RoundingMode::Up), above);
    EXPECT_EQ(third(-1, RoundingMode::Up), "-" + above);
    EXPECT_EQ(third(1, RoundingMode::Bankers), threes);
    EXPECT_EQ(third(1, RoundingMode::Plain), threes);
}

// -- Rounding --------------------------------------------------------------------------------------

struct RoundingRow {
    const char* value;
    short scale;
    const char *plain, *down, *up, *bankers;
};

TEST(DecimalTest, RoundsByTheTableOfModes) {
    const RoundingRow rows[] = {
        {"2.5", 0, "3", "2", "3", "2"},
        {"3.5", 0, "4", "3", "4", "4"},
        {"0.5", 0, "1", "0", "1", "0"},
        {"-0.5", 0, "-1", "-1", "0", "0"},
        {"-2.5", 0, "-3", "-3", "-2", "-2"},
        {"-1.25", 0, "-1", "-2", "-1", "-1"},
        {"-5.2", 0, "-5", "-6", "-5", "-5"},
        {"1.25", 1, "1.3", "1.2", "1.3", "1.2"},
        {"1.35", 1, "1.4", "1.3", "1.4", "1.4"},
        {"1.27", 1, "1.3", "1.2", "1.3", "1.3"},
        {"-8.45", 1, "-8.5", "-8.5", "-8.4", "-8.4"},
        {"-4.985", 2, "-4.99", "-4.99", "-4.98", "-4.98"},
        {"0.005", 2, "0.01", "0", "0.01", "0"},
        {"0.015", 2, "0.02", "0.01", "0.02", "0.02"},
        {"0.025", 2, "0.03", "0.02", "0.03", "0.02"},
        {"1250", -2, "1300", "1200", "1300", "1200"},
        {"0.50001", 0, "1", "0", "1", "1"},
        {"-0.50001", 0, "-1", "-1", "0", "-1"},
        {"0.49999999999999999999999999999999999999", 0, "0", "0", "1", "0"},
        {"49", -2, "0", "0", "100", "0"},
        {"-50", -2, "-100", "-100", "0", "0"},
        {"-1e-128", 0, "0", "-1", "0", "0"},
        {"1e-128", 38, "0", "0", "0.00000000000000000000000000000000000001", "0"},
        {"7", 0, "7", "7", "7", "7"},
        {"-7", 30, "-7", "-7", "-7", "-7"},
        {"0", 0, "0", "0", "0", "0"},
        {"0", -5, "0", "0", "0", "0"},
    };
    for (const RoundingRow& row : rows) {
        const std::pair<RoundingMode, const char*> modes[] = {{RoundingMode::Plain, row.plain},
                                                              {RoundingMode::Down, row.down},
                                                              {RoundingMode::Up, row.up},
                                                              {RoundingMode::Bankers, row.bankers}};
        for (const auto& [mode, expected] : modes)
            EXPECT_EQ(text(d(row.value).decimalNumberByRoundingAccordingToBehavior({mode, row.scale})),
                      expected)
                << row.value << " at " << row.scale << " in mode " << static_cast<int>(mode);
    }
}

TEST(DecimalTest, RoundingToNoScaleKeepsAllDigits) {
    EXPECT_EQ(d("-1.23456").decimalNumberByRoundingAccordingToBehavior({RoundingMode::Down}), d("-1.23456"));
}

TEST(DecimalTest, RoundingANotANumberRaisesNothing) {
    for (const RoundingMode mode :
         {RoundingMode::Plain, RoundingMode::Down, RoundingMode::Up, RoundingMode::Bankers})
        EXPECT_EQ(NaN.decimalNumberByRoundingAccordingToBehavior({mode, 0, true, true, true, true}), NaN);
}

TEST(DecimalTest, RoundingBeyondTheRangeIsAnOverflow) {
    EXPECT_THROW((void)Decimal(1).decimalNumberByRoundingAccordingToBehavior({RoundingMode::Up, -200}),
                 OverflowException);
    EXPECT_THROW(
        (void)d(nines(38) + "e127").decimalNumberByRoundingAccordingToBehavior({RoundingMode::Plain, -165}),
        OverflowException);
    EXPECT_EQ(Decimal(1).decimalNumberByRoundingAccordingToBehavior(
                  {.mode = RoundingMode::Up, .scale = -200, .raiseOnOverflow = false}),
              NaN);
    EXPECT_EQ(Decimal(1).decimalNumberByRoundingAccordingToBehavior({RoundingMode::Plain, -32768}), 0);
}

// -- Arithmetic ------------------------------------------------------------------------------------

TEST(DecimalTest, QuotientsHave38Digits) {
    EXPECT_EQ(text(Decimal(1) / 3), "0.33333333333333333333333333333333333333");
    EXPECT_EQ(text(Decimal(2) / 3), "0.66666666666666666666666666666666666667");
    EXPECT_EQ(text(Decimal(15) / 28), "0.53571428571428571428571428571428571429");
    EXPECT_EQ(text(Decimal(15) / 31), "0.48387096774193548387096774193548387097");
    EXPECT_EQ(text(Decimal(10) / 7), "1.4285714285714285714285714285714285714");
    EXPECT_EQ(text(1 + Decimal(15) / 28), "1.5357142857142857142857142857142857143");
    EXPECT_EQ(text(d(nines(38)) / d("1" + zeros(36) + "1e-1")), "99." + nines(34) + "89");
}

TEST(DecimalTest, DivisorsWhereAWordEndsLoseNoDigit) {
    EXPECT_EQ(text(Decimal(69) / d("18446744073709551614")),
              "0.0000000000000000037404974950749902977312577140349880947");
    EXPECT_EQ(text(Decimal(1) / d("18446744073709551615")),
              "0.000000000000000000054210108624275221703311375920552804341");
    EXPECT_EQ(text(Decimal(1) / d("18446744073709551616")),
              "0.000000000000000000054210108624275221700372640043497085571");
    EXPECT_EQ(d("18446744073709551615") / d("18446744073709551615"), 1);
}

TEST(DecimalTest, ALongProductIsRoundedAndCompacted) {
    EXPECT_EQ(text(d("1234.56") * (Decimal(1) / 3)), "411.52");
    EXPECT_EQ(text(d(nines(38)) * d(nines(38))), nines(37) + "8" + zeros(38));
    EXPECT_EQ(text(d("18446744073709551615") * d("18446744073709551615")),
              "340282366920938463426481119284349108230");
}

TEST(DecimalTest, TheRangeIsCheckedOnTheCompactedResult) {
    EXPECT_EQ(d("1e-91") / 1, d("1e-91"));
    EXPECT_EQ(d("1e-128") * 10, d("1e-127"));
    EXPECT_EQ(d("4e-128") * d("2.5"), d("1e-127"));
    EXPECT_EQ(d("1e-128") / d("0.1"), d("1e-127"));
}

TEST(DecimalTest, NoDigitIsLostWhileTheSumFits) {
    EXPECT_EQ(text(d("1e37") + 1), "1" + zeros(36) + "1");
    EXPECT_EQ(text(d("1e38") + 1), "1" + zeros(38));
    EXPECT_EQ(text(d(nines(38)) + 1), "1" + zeros(38));
    EXPECT_EQ(text(d("1e38") - 1), nines(38));
    EXPECT_EQ(text(d(nines(38)) + d("0.5")), "1" + zeros(38));
    EXPECT_EQ(text(d(nines(38)) + d("0.4")), nines(38));
    EXPECT_EQ(text(d("1e100") - d("1e-100")), "1" + zeros(100));
    EXPECT_EQ(text(d("1e39") - d("5e-1")), "1" + zeros(39));
    EXPECT_EQ(text(d("1e164") - d("1e126")), nines(38) + zeros(126));
}

TEST(DecimalTest, SumsOfMoneyAreExact) {
    Decimal sum;
    for (int i = 0; i < 1000; ++i) sum += d("0.1");
    EXPECT_EQ(sum, 100);
    EXPECT_EQ(d("0.1") + d("0.2"), d("0.3"));
    EXPECT_EQ(d("100.10") - d("0.10"), 100);
    EXPECT_EQ(d("5.5") + d("-5.5"), 0);
    EXPECT_EQ(d("-0.05") + d("-0.05"), d("-0.1"));
    EXPECT_EQ(-d("5.5") - 2, d("-7.5"));
    EXPECT_EQ(d("4611686018427387903") + d("4611686018427387903"), d("9223372036854775806"));
    EXPECT_EQ(d("4611686018427387904") + d("4611686018427387904"), d("9223372036854775808"));
    EXPECT_EQ(d("18446744073709551615") + 1, d("18446744073709551616"));
}

TEST(DecimalTest, CompoundOperatorsChangeTheirLeftSide) {
    Decimal value = 10;
    value += d("2.5");
    value -= d("0.5");
    value *= 3;
    value /= 8;
    EXPECT_EQ(value, d("4.5"));
    value += value;
    EXPECT_EQ(value, 9);
}

// -- Conversions -----------------------------------------------------------------------------------

TEST(DecimalTest, IntegersCutTheFraction) {
    EXPECT_EQ(d("2.9").integerValue(), 2);
    EXPECT_EQ(d("2.9").unsignedIntegerValue(), 2u);
    EXPECT_EQ(d("-1.5").integerValue(), -1);
    EXPECT_EQ(d("0.999").integerValue(), 0);
    EXPECT_EQ(d("-0.999").unsignedIntegerValue(), 0u);
    EXPECT_EQ(d("12345678901234567890.12345678901234567").unsignedIntegerValue(), 12345678901234567890u);
}

TEST(DecimalTest, NegativeNumbersWrapToUnsigned) {
    EXPECT_EQ(Decimal(-1).unsignedIntegerValue(), 18446744073709551615u);
    EXPECT_EQ(d("-1.5").unsignedIntegerValue(), 18446744073709551615u);
    EXPECT_EQ(Decimal(std::numeric_limits<std::int64_t>::min()).integerValue(),
              std::numeric_limits<std::int64_t>::min());
}

TEST(DecimalTest, OfNumbersThatAreTooGreatTheLow64BitsRemain) {
    EXPECT_EQ(d("18446744073709551616").unsignedIntegerValue(), 0u);
    EXPECT_EQ(d("18446744073709551617").unsignedIntegerValue(), 1u);
    EXPECT_EQ(d("18446744073709551617").integerValue(), 1);
    EXPECT_EQ(d("1e20").unsignedIntegerValue(), 7766279631452241920u);
    EXPECT_EQ(d("1e21").unsignedIntegerValue(), 0u);
    EXPECT_EQ(d("123e30").unsignedIntegerValue(), 0u);
    EXPECT_EQ(d("1e-39").unsignedIntegerValue(), 0u);
    EXPECT_EQ(NaN.unsignedIntegerValue(), 0u);
    EXPECT_EQ(NaN.integerValue(), 0);
}

TEST(DecimalTest, EverythingButZeroIsTrue) {
    EXPECT_FALSE(Decimal(0).boolValue());
    EXPECT_TRUE(d("0.01").boolValue());
    EXPECT_TRUE(Decimal(-1).boolValue());
    EXPECT_TRUE(NaN.boolValue());
}

TEST(DecimalTest, TheOwnReadingOfADoubleScalesByTens) {
    EXPECT_EQ(text(Decimal::fromDouble(1.8446744073709551e19)), "18446744073709552640");
    EXPECT_EQ(text(Decimal::fromDouble(3.133)), "3.132999999999999488");
    EXPECT_EQ(text(Decimal::fromDouble(0.1)), "0.1");
    EXPECT_EQ(text(Decimal::fromDouble(-2.5)), "-2.5");
    EXPECT_EQ(text(Decimal::fromDouble(1000)), "1000");
    EXPECT_EQ(Decimal::fromDouble(-0.0), Decimal());
    for (const double outside :
         {1e200, -1e200, 1e-200, 5e-324, 1.7e308, std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()})
        EXPECT_TRUE(Decimal::fromDouble(outside).isNaN()) << outside;
}

TEST(DecimalTest, TheShortestReadingOfABinaryNumberIsItsShortestText) {
    EXPECT_EQ(text(Decimal::fromShortest(3.133)), "3.133");
    EXPECT_EQ(text(Decimal::fromShortest(0.1)), "0.1");
    EXPECT_EQ(text(Decimal::fromShortest(0.1f)), "0.1");
    EXPECT_EQ(text(Decimal::fromShortest(-535.71)), "-535.71");
    EXPECT_EQ(text(Decimal::fromShortest(1e22)), "1" + zeros(22));
    EXPECT_EQ(text(Decimal::fromShortest(9007199254740993.0)), "9007199254740992");
    EXPECT_EQ(Decimal::fromShortest(-0.0), Decimal());
    EXPECT_TRUE(Decimal::fromShortest(1e300).isNaN());
    EXPECT_TRUE(Decimal::fromShortest(5e-324).isNaN());
    EXPECT_TRUE(Decimal::fromShortest(std::numeric_limits<float>::infinity()).isNaN());
    EXPECT_TRUE(Decimal::fromShortest(std::numeric_limits<double>::quiet_NaN()).isNaN());
}

TEST(DecimalTest, TheDoubleIsTheNearestOne) {
    EXPECT_EQ(d("0.1").doubleValue(), 0.1);
    EXPECT_EQ(d("-535.71").doubleValue(), -535.71);
    EXPECT_EQ(d("9007199254740993").doubleValue(), 9007199254740992.0); // a tie, to even
    EXPECT_EQ(d("9007199254740995").doubleValue(), 9007199254740996.0);
    EXPECT_EQ(d("9007199254740993.0000000000000000000001").doubleValue(), 9007199254740994.0);
    EXPECT_EQ(d("1e23").doubleValue(), 1e23);
    EXPECT_EQ(d("8.5e22").doubleValue(), 8.5e22);
    EXPECT_EQ(d("1e164").doubleValue(), 1e164);
    EXPECT_EQ(d("1e-128").doubleValue(), 1e-128);
    EXPECT_EQ(d("3.14159265358979323846264338327950288419").doubleValue(), 3.14159265358979323846);
    EXPECT_TRUE(std::isnan(NaN.doubleValue()));
}

TEST(DecimalTest, TheFloatIsTheNearestOneAndNotRoundedTwice) {
    EXPECT_EQ(d("0.1").floatValue(), 0.1f);
    EXPECT_EQ(d("-2.5").floatValue(), -2.5f);
    EXPECT_EQ(d("16777217.000000001").floatValue(), 16777218.0f); // its double would be a tie
    EXPECT_EQ(d("1e100").floatValue(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(d("-1e100").floatValue(), -std::numeric_limits<float>::infinity());
    EXPECT_EQ(d("1e-100").floatValue(), 0.0f);
    EXPECT_TRUE(std::isnan(NaN.floatValue()));
}

} // namespace
} // namespace estatebook::platform
