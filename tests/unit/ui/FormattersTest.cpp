// SPDX-License-Identifier: MIT
#include "platform/calendar/Calendar.hpp"
#include "support/ObservedPerson.hpp"
#include "ui/TKDateFormatter.hpp"
#include "ui/TKPeriodFormatter.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

namespace estatebook {
namespace {

using namespace platform;
using test::text;
using testing::HasSubstr;

/// What became of reading a text: "2025-1-31", "no date" or "failure".
std::string outcome(const FieldFormatter& formatter, const Ref<String>& string, TextRange* range = nullptr,
                    Ref<Error>* error = nullptr) {
    Value value(7);
    if (!formatter.getObjectValueForStringRangeError(value, string, range, error)) {
        EXPECT_EQ(value, Value(7)) << "a failure leaves the value as it was";
        return "failure";
    }
    if (value.isAbsent()) return "no date";
    const auto date = value.date();
    if (!date) return value.description();
    EXPECT_EQ(Calendar::current().startOfDay(*date), *date);
    const YearMonthDay parts = Calendar::current().civilDay(*date).yearMonthDay();
    return std::to_string(parts.year) + "-" + std::to_string(parts.month) + "-" + std::to_string(parts.day);
}
std::string outcome(const FieldFormatter& formatter, std::string_view string) {
    return outcome(formatter, text(string));
}

Date midnight(std::int64_t year, int month, int day) {
    return Calendar::current().startOfCivilDay(CivilDay::fromYearMonthDay(year, month, day));
}

template <class Formatter>
Ref<Formatter> american() {
    const auto formatter = makeRef<Formatter>();
    formatter->setLocale(Locale::named("en_US"));
    return formatter;
}

// The date formatter of the platform

TEST(DateFieldFormatterTest, ADateIsWrittenAsADayOfMediumLength) {
    const auto formatter = american<DateFieldFormatter>();
    EXPECT_EQ(*formatter->stringForObjectValue(midnight(2024, 3, 1)), "Mar 1, 2024");
    formatter->setLocale(Locale::named("de_DE"));
    EXPECT_EQ(*formatter->stringForObjectValue(midnight(2024, 3, 1)), "01.03.2024");
    for (const Value& value : {Value(), Value(7), Value(text("Mar 1, 2024")), Value(NullObject{})})
        EXPECT_FALSE(formatter->stringForObjectValue(value));
}

TEST(DateFieldFormatterTest, TheWholeTextMustBeUsedUp) {
    const auto formatter = american<DateFieldFormatter>();
    EXPECT_EQ(outcome(*formatter, "Jan 1, 2025"), "2025-1-1");
    EXPECT_EQ(outcome(*formatter, "  Jan 1, 2025\t "), "2025-1-1");
    EXPECT_EQ(outcome(*formatter, "Jan 1, 2025 x"), "failure");
    EXPECT_EQ(outcome(*formatter, "Jan 1, 2025."), "failure");
    formatter->setLenient(true);
    EXPECT_EQ(outcome(*formatter, "1/2/2025 or so"), "failure");
}

TEST(DateFieldFormatterTest, AFailureSaysWhatADateLooksLike) {
    const auto formatter = american<DateFieldFormatter>();
    Ref<Error> error;
    EXPECT_EQ(outcome(*formatter, text("nonsense"), nullptr, &error), "failure");
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), FormattingErrorDomain);
    EXPECT_EQ(error->code(), FormattingError);
    EXPECT_THAT(error->localizedDescription(),
                testing::AllOf(HasSubstr("nonsense"), HasSubstr("Jan 31, 2025")));
}

TEST(DateFieldFormatterTest, LenientReadingIsChosen) {
    const auto formatter = american<DateFieldFormatter>();
    EXPECT_FALSE(formatter->isLenient());
    EXPECT_EQ(outcome(*formatter, "Jan 32, 2025"), "failure");
    formatter->setLenient(true);
    EXPECT_EQ(outcome(*formatter, "Jan 32, 2025"), "2025-2-1");
    EXPECT_EQ(outcome(*formatter, ""), "failure");
}

TEST(DateFieldFormatterTest, WithARangeAPartIsReadAndWhatWasReadIsTold) {
    const auto formatter = american<DateFieldFormatter>();
    TextRange range{4, 17};
    EXPECT_EQ(outcome(*formatter, text("due Jan 1, 2025 or so"), &range), "2025-1-1");
    EXPECT_EQ(range, (TextRange{4, 11}));
    range = {0, 3};
    EXPECT_EQ(outcome(*formatter, text("due Jan 1, 2025"), &range), "failure");
    EXPECT_EQ(range, (TextRange{0, 3}));
    range = {100, 3};
    EXPECT_EQ(outcome(*formatter, text("Jan 1, 2025"), &range), "failure");
}

TEST(DateFieldFormatterTest, DatesBeyondTheYearsOfBooksAreRefusedByName) {
    const auto formatter = american<DateFieldFormatter>();
    EXPECT_EQ(outcome(*formatter, "Jan 1, 1583"), "1583-1-1");
    EXPECT_EQ(outcome(*formatter, "Dec 31, 9999"), "9999-12-31");
    for (const char* far : {"Dec 31, 1582", "Jan 1, 10000", "Jan 1, 5"}) {
        Ref<Error> error;
        EXPECT_EQ(outcome(*formatter, text(far), nullptr, &error), "failure");
        EXPECT_THAT(error->localizedDescription(), testing::AllOf(HasSubstr(far), HasSubstr("1583")));
    }
    formatter->setLenient(true);
    for (const std::string& year :
         {std::string("99999999999999999999"), std::string(100'000, '9'), std::string("-5")})
        EXPECT_EQ(outcome(*formatter, "Jan 1, " + year), "failure");
}

TEST(DateFieldFormatterTest, ADateIsTheFirstInstantOfItsDayInTheZone) {
    const auto formatter = american<DateFieldFormatter>();
    // Clocks went from 24:00 to 01:00: the day begins an hour late.
    const auto beirut = TimeZone::named("Asia/Beirut");
    ASSERT_TRUE(beirut);
    formatter->setTimeZone(beirut);
    Value value;
    ASSERT_TRUE(formatter->getObjectValueForStringRangeError(value, text("Mar 31, 2024"), nullptr, nullptr));
    EXPECT_EQ(value.date()->description(), "2024-03-30 22:00:00 +0000");
    EXPECT_EQ(*formatter->stringForObjectValue(value), "Mar 31, 2024");
}

// With a symbol for no date

TEST(QBDateFormatterTest, TheSymbolMeansNoDate) {
    const auto formatter = american<QBDateFormatter>();
    formatter->setNilSymbol(text("none"));
    EXPECT_EQ(outcome(*formatter, "none"), "no date");
    EXPECT_EQ(outcome(*formatter, "nonsense"), "failure");
    EXPECT_EQ(outcome(*formatter, "None"), "failure");
    EXPECT_EQ(outcome(*formatter, " none"), "failure");
    EXPECT_EQ(outcome(*formatter, ""), "failure");
    EXPECT_EQ(outcome(*formatter, "Jan 1, 2025"), "2025-1-1");
}

TEST(QBDateFormatterTest, WithoutASymbolOnlyANullTextMeansNoDate) {
    const auto formatter = american<QBDateFormatter>();
    EXPECT_FALSE(formatter->nilSymbol());
    EXPECT_EQ(outcome(*formatter, ""), "failure");
    EXPECT_EQ(outcome(*formatter, Ref<String>()), "no date");
}

TEST(QBDateFormatterTest, ADateIsNeverTakenForTheSymbol) {
    const auto formatter = american<QBDateFormatter>();
    formatter->setNilSymbol(text("Jan 1, 2025"));
    EXPECT_EQ(outcome(*formatter, "Jan 1, 2025"), "2025-1-1");
}

TEST(QBDateFormatterTest, TheSymbolIsComparedLiterally) {
    const auto formatter = american<QBDateFormatter>();
    formatter->setNilSymbol(text("\u00e9"));
    EXPECT_EQ(outcome(*formatter, "\u00e9"), "no date");
    EXPECT_EQ(outcome(*formatter, "e\u0301"), "failure");
}

TEST(QBDateFormatterTest, TheErrorThatTheBaseToldStays) {
    const auto formatter = american<QBDateFormatter>();
    formatter->setNilSymbol(text("none"));
    Ref<Error> error;
    EXPECT_EQ(outcome(*formatter, text("none"), nullptr, &error), "no date");
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), FormattingError);
    error = nullptr;
    EXPECT_EQ(outcome(*formatter, text("Jan 1, 2025"), nullptr, &error), "2025-1-1");
    EXPECT_FALSE(error);
}

TEST(QBDateFormatterTest, WritingIsThatOfTheBase) {
    const auto formatter = american<QBDateFormatter>();
    formatter->setNilSymbol(text("none"));
    EXPECT_EQ(*formatter->stringForObjectValue(midnight(2024, 3, 1)), "Mar 1, 2024");
    EXPECT_FALSE(formatter->stringForObjectValue({}));
}

TEST(QBDateFormatterTest, TheSymbolIsAKeyAndTheVeryObjectThatWasSet) {
    const auto formatter = american<QBDateFormatter>();
    const auto symbol = text("none");
    formatter->setValueForKey(symbol, "nilSymbol");
    EXPECT_EQ(formatter->nilSymbol(), symbol);
    EXPECT_EQ(formatter->valueForKey("nilSymbol").string(), symbol);
    formatter->setNilSymbol(nullptr);
    EXPECT_EQ(symbol->referenceCount(), 1u);
}

TEST(QBDateFormatterTest, TheSymbolMayBeSetWhileItIsRead) {
    const auto formatter = american<QBDateFormatter>();
    formatter->setNilSymbol(text("none"));
    std::atomic<bool> isDone = false;
    std::jthread setting([&] {
        for (int times = 0; times < 20'000; ++times)
            formatter->setNilSymbol(text(times % 2 ? "none" : "keine"));
        isDone = true;
    });
    while (!isDone) {
        const auto symbol = formatter->nilSymbol();
        ASSERT_TRUE(*symbol == "none" || *symbol == "keine");
    }
}

TEST(TKDateFormatterTest, AwakeItReadsTheEmptyTextAsNoDateAndIsLenient) {
    const auto formatter = american<TKDateFormatter>();
    EXPECT_EQ(outcome(*formatter, ""), "failure");
    formatter->awakeFromNib();
    EXPECT_EQ(outcome(*formatter, ""), "no date");
    EXPECT_EQ(*formatter->nilSymbol(), "");
    EXPECT_TRUE(formatter->isLenient());
    EXPECT_EQ(outcome(*formatter, "1/2/2025"), "2025-1-2");
    EXPECT_EQ(outcome(*formatter, " "), "failure");
    EXPECT_EQ(outcome(*formatter, "nonsense"), "failure");
}

// Numbers

TEST(NumberFieldFormatterTest, NumbersAreReadAsWholeOnesDoublesOrDecimals) {
    const auto formatter = american<NumberFieldFormatter>();
    Value value;
    ASSERT_TRUE(formatter->getObjectValueForStringRangeError(value, text("12"), nullptr, nullptr));
    EXPECT_EQ(value.number()->kind(), Number::Kind::Signed);
    ASSERT_TRUE(formatter->getObjectValueForStringRangeError(value, text("12.5"), nullptr, nullptr));
    EXPECT_EQ(value.number()->kind(), Number::Kind::Double);
    formatter->setGeneratesDecimalNumbers(true);
    ASSERT_TRUE(formatter->getObjectValueForStringRangeError(value, text("0.1"), nullptr, nullptr));
    EXPECT_EQ(value.number()->kind(), Number::Kind::Decimal);
    EXPECT_EQ(*value.decimal(), Decimal::parse("0.1"));
}

TEST(NumberFieldFormatterTest, TheWholeTextMustBeUsedUp) {
    const auto formatter = american<NumberFieldFormatter>();
    EXPECT_EQ(outcome(*formatter, " 12 "), "12");
    for (const char* other : {"12x", "12 12", "1,234", "1E5", "", "twelve"})
        EXPECT_EQ(outcome(*formatter, other), "failure") << other;
    EXPECT_EQ(outcome(*formatter, Ref<String>()), "failure");
    TextRange range{0, 3};
    EXPECT_EQ(outcome(*formatter, text("12x"), &range), "12");
    EXPECT_EQ(range, (TextRange{0, 2}));
}

TEST(NumberFieldFormatterTest, FewestAndMostDigitsGiveWayToEachOther) {
    const auto formatter = american<NumberFieldFormatter>();
    formatter->setMinimumFractionDigits(2);
    EXPECT_EQ(formatter->maximumFractionDigits(), 2);
    formatter->setMaximumFractionDigits(1);
    EXPECT_EQ(formatter->minimumFractionDigits(), 1);
    formatter->setMinimumFractionDigits(-3);
    EXPECT_EQ(formatter->minimumFractionDigits(), 0);
    EXPECT_EQ(*formatter->stringForObjectValue(Decimal::parse("1.25")), "1.2");
}

TEST(NumberFieldFormatterTest, WhatIsNoNumberIsNotWritten) {
    const auto formatter = american<NumberFieldFormatter>();
    for (const Value& value : {Value(), Value(NullObject{}), Value(text("3")), Value(Date{3})})
        EXPECT_FALSE(formatter->stringForObjectValue(value));
}

TEST(TKPeriodFormatterTest, TheUnitFollowsNumbersOfEitherSign) {
    const auto formatter = american<TKPeriodFormatter>();
    EXPECT_EQ(*formatter->stringForObjectValue(3), "3");
    formatter->setSuffix(text("weeks"));
    EXPECT_EQ(*formatter->stringForObjectValue(3), "3 weeks");
    EXPECT_EQ(*formatter->stringForObjectValue(-3), "-3 weeks");
    EXPECT_EQ(*formatter->stringForObjectValue(0), "0 weeks");
    EXPECT_EQ(*formatter->stringForObjectValue(Decimal::parse("2.5")), "2 weeks");
    EXPECT_EQ(formatter->positiveSuffix(), " weeks");
    EXPECT_EQ(formatter->negativeSuffix(), " weeks");
}

TEST(TKPeriodFormatterTest, ANullUnitIsWrittenAsNull) {
    const auto formatter = american<TKPeriodFormatter>();
    formatter->setSuffix(text("weeks"));
    formatter->setSuffix(nullptr);
    EXPECT_EQ(*formatter->stringForObjectValue(3), "3 (null)");
    EXPECT_FALSE(formatter->suffix());
    formatter->setSuffix(text(""));
    EXPECT_EQ(*formatter->stringForObjectValue(3), "3 ");
}

TEST(TKPeriodFormatterTest, TheUnitMustStandThereWhenANumberIsRead) {
    const auto formatter = american<TKPeriodFormatter>();
    formatter->setSuffix(text("weeks"));
    EXPECT_EQ(outcome(*formatter, "3 weeks"), "3");
    EXPECT_EQ(outcome(*formatter, "3"), "failure");
    formatter->setLenient(true);
    EXPECT_EQ(outcome(*formatter, "3"), "3");
    EXPECT_EQ(outcome(*formatter, "3 days"), "failure");
}

TEST(TKPeriodFormatterTest, SettingTheUnitAnnouncesItOnceBeforeItIsUsed) {
    const auto formatter = american<TKPeriodFormatter>();
    const auto watcher = makeRef<test::Watcher>([&](const auto&) {
        EXPECT_EQ(*formatter->suffix(), "weeks");
        EXPECT_EQ(formatter->positiveSuffix(), "");
    });
    test::watch(*formatter, *watcher, "suffix", ObservingOld | ObservingNew);
    formatter->setSuffix(text("weeks"));
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_TRUE(watcher->heard[0].change.oldValue.isNullObject());
    EXPECT_EQ(watcher->heard[0].change.newValue, Value(text("weeks")));
}

TEST(TKPeriodFormatterTest, AnObserverThatRaisesLeavesTheUnitInUse) {
    const auto formatter = american<TKPeriodFormatter>();
    const auto watcher = makeRef<test::Watcher>([](const auto&) { throw std::runtime_error("no room"); });
    test::watch(*formatter, *watcher, "suffix");
    EXPECT_THROW(formatter->setSuffix(text("weeks")), std::runtime_error);
    EXPECT_EQ(*formatter->stringForObjectValue(3), "3 weeks");
}

TEST(TKPeriodFormatterTest, OtherSettingsKeepTheUnit) {
    const auto formatter = american<TKPeriodFormatter>();
    formatter->setSuffix(text("weeks"));
    formatter->setMaximumFractionDigits(1);
    formatter->setLocale(Locale::named("de_DE"));
    EXPECT_EQ(*formatter->stringForObjectValue(Decimal::parse("2.5")), "2,5 weeks");
}

} // namespace
} // namespace estatebook
