// SPDX-License-Identifier: MIT

// Where the texts of a statement stand on their pages. Each character is half as wide as it is tall, so that no font matters.

#include "paper/StatementLayout.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace estatebook::paper {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class TypewriterMeasure final : public TextMeasure {
public:
    double width(std::string_view text, const TextStyle& style) override {
        return static_cast<double>(text.size()) * style.size / 2;
    }
    std::vector<Line> linesOf(std::string_view text, const TextStyle& style, double width) override {
        ++broken;
        const auto room = std::max<std::size_t>(static_cast<std::size_t>(width / (style.size / 2)), 1);
        std::vector<Line> lines;
        do {
            lines.push_back({ascent * style.size, 0.2 * style.size});
            std::size_t taken = std::min(text.size(), room);
            if (taken < text.size())
                if (const auto blank = text.rfind(' ', taken); blank != 0 && blank != std::string_view::npos)
                    taken = blank + 1;
            text.remove_prefix(taken);
        } while (!text.empty());
        return lines;
    }

    double ascent = 0.9;
    std::size_t broken = 0;
};

using Section = PrintedStatement::Section;
using Page = StatementLayout::Page;

constexpr double Foot = 56;

PrintedStatement statementOf(std::size_t lineCount) {
    PrintedStatement statement{.title = "Flat 2 - A. Smith", .subtitle = "Statement as of 10 Feb 2025, GBP"};
    Section section;
    for (std::size_t i = 0; i < lineCount; ++i)
        section.lines.push_back({"1 Feb 2025", "line " + std::to_string(i), "-1000.00", "-1000.00", false});
    section.totals.push_back({"Balance", "-1000.00"});
    statement.sections.push_back(section);
    return statement;
}

class StatementLayoutTest : public testing::Test {
protected:
    StatementLayout layoutOf(const PrintedStatement& statement) {
        return {statement, PaperSize::a4(), measure};
    }

    static std::vector<PlacedText> textsOf(const StatementLayout& layout, std::string_view text) {
        std::vector<PlacedText> found;
        for (const Page& page : layout.pages())
            std::ranges::copy_if(page.texts, std::back_inserter(found),
                                 [&](const PlacedText& each) { return each.text == text; });
        return found;
    }
    static bool has(const Page& page, std::string_view text) {
        return std::ranges::find(page.texts, text, &PlacedText::text) != page.texts.end();
    }
    /// From the top of the page downwards.
    static std::vector<std::string> linesOf(const Page& page) {
        std::vector<std::string> lines;
        for (const PlacedText& text : page.texts)
            if (text.text.starts_with("line ") && text.line == 0) lines.emplace_back(text.text);
        return lines;
    }

    TypewriterMeasure measure;
};

TEST_F(StatementLayoutTest, AStatementWithoutLinesIsOnePageWithItsTotals) {
    const PrintedStatement statement = statementOf(0);
    const StatementLayout layout = layoutOf(statement);
    ASSERT_EQ(layout.pages().size(), 1u);
    for (const char* text : {"Flat 2 - A. Smith", "Date", "Balance", "Page 1 of 1"})
        EXPECT_TRUE(has(layout.pages().front(), text)) << text;
    EXPECT_EQ(layout.pages().front().rules.size(), 1u) << "no rule below lines that are not there";
}

TEST_F(StatementLayoutTest, AStatementOfNothingIsAPage) {
    const PrintedStatement statement;
    EXPECT_EQ(layoutOf(statement).pages().size(), 1u);
}

TEST_F(StatementLayoutTest, NumbersStandBelowOneAnotherByTheirPoints) {
    PrintedStatement statement = statementOf(0);
    statement.sections[0].lines = {{"", "a", "-1000.00", "5.125", false}, {"", "b", "7", "-12345.5", false}};
    const StatementLayout layout = layoutOf(statement);
    const auto pointOf = [&](std::string_view number) {
        const PlacedText placed = textsOf(layout, number).front();
        return placed.x + measure.width(number.substr(0, number.find('.')), placed.style);
    };
    EXPECT_DOUBLE_EQ(pointOf("-1000.00"), pointOf("7"));
    EXPECT_DOUBLE_EQ(pointOf("5.125"), pointOf("-12345.5"));
    const PlacedText longest = textsOf(layout, "5.125").front();
    EXPECT_NEAR(longest.x + measure.width("5.125", longest.style), PaperSize::a4().width - 56, 1e-9);
}

TEST_F(StatementLayoutTest, ColumnsNeverMeet) {
    PrintedStatement statement = statementOf(3);
    statement.sections[0].lines[1].amount = "123456789012345678901234567890.12345678";
    statement.sections[0].lines[2].balance = "-9999999999999999999999999999999999.1234";
    statement.sections[0].lines[2].what = std::string(900, 'x');
    const StatementLayout layout = layoutOf(statement);
    const auto endOf = [&](const PlacedText& text) {
        return text.x + (text.width > 0 ? text.width : measure.width(text.text, text.style));
    };
    for (const Page& page : layout.pages())
        for (const PlacedText& left : page.texts)
            for (const PlacedText& right : page.texts)
                if (left.baseline == right.baseline && left.x < right.x && left.text != "Balance") {
                    EXPECT_LT(endOf(left), right.x) << left.text << " | " << right.text;
                }
}

TEST_F(StatementLayoutTest, LongNumbersAreSetSmallerSoThatDescriptionsHaveRoom) {
    PrintedStatement statement = statementOf(1);
    const double usual = textsOf(layoutOf(statement), "line 0").front().style.size;
    statement.sections[0].lines[0].amount = "-30.714285714285714285714285714285714277";
    statement.sections[0].lines[0].balance = "-245.71428571428571428571428571428571428";
    const PlacedText what = textsOf(layoutOf(statement), "line 0").front();
    EXPECT_LT(what.style.size, usual);
    EXPECT_GT(what.width, (PaperSize::a4().width - 112) * 0.29);
}

TEST_F(StatementLayoutTest, WhatWasReckonedIsInItalics) {
    PrintedStatement statement = statementOf(2);
    statement.sections[0].lines[1].isGenerated = true;
    const StatementLayout layout = layoutOf(statement);
    EXPECT_FALSE(textsOf(layout, "line 0").front().style.isItalic);
    EXPECT_TRUE(textsOf(layout, "line 1").front().style.isItalic);
    const auto dates = textsOf(layout, "1 Feb 2025");
    EXPECT_TRUE(dates[1].style.isItalic);
}

TEST_F(StatementLayoutTest, EachPageHasTheTitlesAndItsNumber) {
    const PrintedStatement statement = statementOf(200);
    const StatementLayout layout = layoutOf(statement);
    const std::size_t count = layout.pages().size();
    ASSERT_GT(count, 3u);
    for (std::size_t i = 0; i < count; ++i) {
        const Page& page = layout.pages()[i];
        for (const char* title : {"Date", "Description", "Amount"}) EXPECT_TRUE(has(page, title)) << i;
        EXPECT_TRUE(has(page, "Page " + std::to_string(i + 1) + " of " + std::to_string(count)));
        EXPECT_TRUE(has(page, "Flat 2 - A. Smith"));
        EXPECT_TRUE(has(page, "Statement as of 10 Feb 2025, GBP"));
    }
}

TEST_F(StatementLayoutTest, ALongDescriptionIsBrokenAndTheNextRowStandsBelowIt) {
    PrintedStatement statement = statementOf(2);
    std::string& what = statement.sections[0].lines[0].what;
    for (int i = 0; i < 60; ++i) what += " words";
    const StatementLayout layout = layoutOf(statement);
    const auto lines = textsOf(layout, what);
    ASSERT_GT(lines.size(), 3u);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].line, i);
        EXPECT_EQ(lines[i].x, lines[0].x);
        EXPECT_TRUE(i == 0 || lines[i].baseline - lines[i - 1].baseline >= lines[i].style.size);
    }
    EXPECT_GT(textsOf(layout, "line 1").front().baseline - lines.back().baseline, lines[0].style.size);
    EXPECT_EQ(textsOf(layout, "-1000.00").front().baseline, lines[0].baseline)
        << "numbers stand at the first";
}

TEST_F(StatementLayoutTest, ATallScriptHasTheRoomItNeeds) {
    measure.ascent = 1.8;
    const PrintedStatement statement = statementOf(2);
    const StatementLayout layout = layoutOf(statement);
    const PlacedText first = textsOf(layout, "line 0").front();
    EXPECT_GE(textsOf(layout, "line 1").front().baseline - first.baseline, 2 * first.style.size);
}

TEST_F(StatementLayoutTest, ADescriptionOfManyPagesGoesOnFromPageToPage) {
    PrintedStatement statement = statementOf(2);
    std::string& what = statement.sections[0].lines[1].what;
    for (int i = 0; i < 20'000; ++i) what += " words";
    const StatementLayout layout = layoutOf(statement);
    ASSERT_GT(layout.pages().size(), 3u);
    std::size_t line = 0;
    for (const PlacedText& each : textsOf(layout, what)) EXPECT_EQ(each.line, line++);
    EXPECT_TRUE(has(layout.pages().front(), what)) << "it begins where there is room";
    EXPECT_EQ(textsOf(layout, "1 Feb 2025").size(), 2u) << "and its date stands once";
}

TEST_F(StatementLayoutTest, TheFirstPageSaysWhatGoesOnOnTheOthers) {
    PrintedStatement statement = statementOf(60);
    statement.sections[0].heading = "Rent";
    statement.sections[0].isPart = true;
    Section later = statement.sections[0];
    later.heading = "Not yet due";
    later.isPart = false;
    statement.sections.push_back(later);
    const StatementLayout layout = layoutOf(statement);
    ASSERT_EQ(layout.pages().size(), 3u);
    EXPECT_TRUE(has(layout.pages()[0], "Rent"));
    EXPECT_FALSE(has(layout.pages()[0], "Rent (continued)"));
    EXPECT_TRUE(has(layout.pages()[1], "Rent (continued)"));
    EXPECT_FALSE(has(layout.pages()[1], "Not yet due (continued)"));
    EXPECT_TRUE(has(layout.pages()[2], "Rent (continued)"));
    EXPECT_TRUE(has(layout.pages()[2], "Not yet due (continued)"));
}

TEST_F(StatementLayoutTest, RemarksFollowWhatTheyExplain) {
    PrintedStatement statement = statementOf(1);
    statement.remarks = {"one", "two"};
    const StatementLayout layout = layoutOf(statement);
    EXPECT_GT(textsOf(layout, "one").front().baseline, textsOf(layout, "line 0").front().baseline);
    EXPECT_GT(textsOf(layout, "two").front().baseline, textsOf(layout, "one").front().baseline);
}

// However many lines there are, wherever pages end:
class PageBreakTest : public StatementLayoutTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(PageBreakTest, NoLineIsLostHeadingsDoNotEndAPageAndTotalsDoNotBeginOne) {
    PrintedStatement statement = statementOf(GetParam());
    std::mt19937 random(static_cast<unsigned>(GetParam()));
    for (auto& line : statement.sections[0].lines)
        for (auto words = random() % 40; words > 25; --words) line.what += " and more words";
    Section later = statementOf(3).sections[0];
    later.heading = "Not yet due";
    for (auto& line : later.lines) line.what = "later";
    later.totals = {{"Total", "1.00"}, {"Outstanding", "2.00"}};
    statement.sections.push_back(later);
    const StatementLayout layout = layoutOf(statement);

    std::vector<std::string> lines, expected;
    for (const auto& line : statement.sections[0].lines) expected.push_back(line.what);
    for (const Page& page : layout.pages()) {
        std::ranges::copy(linesOf(page), std::back_inserter(lines));
        for (const PlacedText& text : page.texts)
            EXPECT_TRUE(text.baseline <= PaperSize::a4().height - Foot || text.text.starts_with("Page "))
                << text.text;
        EXPECT_EQ(has(page, "Outstanding"), has(page, "Total"));
        EXPECT_TRUE(has(page, "later") || !has(page, "Total"));
        EXPECT_TRUE(has(page, "later") || !has(page, "Not yet due"));
        const auto isRow = [](const PlacedText& text) {
            return text.text.starts_with("line ") || text.text == "later";
        };
        EXPECT_TRUE(std::ranges::any_of(page.texts, isRow)) << "a page of totals alone";
    }
    EXPECT_EQ(lines, expected);
}

INSTANTIATE_TEST_SUITE_P(Counts, PageBreakTest, testing::Range(std::size_t{1}, std::size_t{130}));

TEST_F(StatementLayoutTest, TenThousandLinesAreBrokenOnceEach) {
    const PrintedStatement statement = statementOf(10'000);
    const StatementLayout layout = layoutOf(statement);
    EXPECT_LT(measure.broken, 10'000u + 10);
    EXPECT_GT(layout.pages().size(), 150u);
}

TEST(PaperSizeTest, TheCountryOfTheLocaleDecides) {
    for (const char* letter : {"en_US", "es_MX", "fr_CA", "fil_PH", "en_US@calendar=buddhist", "zh_Hant_US"})
        EXPECT_EQ(PaperSize::ofLocale(letter), PaperSize::letter()) << letter;
    for (const char* a4 : {"", "en", "en_GB", "de_DE", "en_US_POSIX", "zh_Hant_TW", "sr_Latn", "us", "ca_ES"})
        EXPECT_EQ(PaperSize::ofLocale(a4), PaperSize::a4()) << a4;
}

} // namespace
} // namespace estatebook::paper
