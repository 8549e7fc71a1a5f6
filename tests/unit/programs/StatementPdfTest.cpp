// SPDX-License-Identifier: MIT

// A statement as a PDF document: whatever the texts are, it is one, and the same one each time.

#include "paper/StatementPdf.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace estatebook::paper {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

PrintedStatement statementOf(std::string what) {
    PrintedStatement statement{.title = "Flat 2", .subtitle = "Statement"};
    statement.sections.push_back(
        {.lines = {{"1 Feb 2025", std::move(what), "1.00", "1.00", true}}, .totals = {{"Balance", "1.00"}}});
    return statement;
}

std::size_t pagesOf(const std::string& pdf) {
    std::size_t count = 0;
    for (std::size_t at = pdf.find("/Type /Page "); at != std::string::npos;
         at = pdf.find("/Type /Page ", at + 1))
        ++count;
    return count;
}

TEST(StatementPdfTest, TheSameStatementGivesTheSameBytesAndTellsNoTime) {
    const std::string pdf = pdfOf(statementOf("Rent"), PaperSize::a4());
    EXPECT_THAT(pdf, StartsWith("%PDF-"));
    EXPECT_THAT(pdf, EndsWith("%%EOF\n"));
    EXPECT_THAT(pdf, Not(HasSubstr("CreationDate")));
    EXPECT_EQ(pdf, pdfOf(statementOf("Rent"), PaperSize::a4()));
    EXPECT_NE(pdf, pdfOf(statementOf("Bond"), PaperSize::a4()));
    EXPECT_NE(pdf, pdfOf(statementOf("Rent"), PaperSize::letter()));
}

TEST(StatementPdfTest, AnyTextCanBeSet) {
    using namespace std::string_literals;
    for (const std::string& text :
         {""s, "\0"s, "\n\n"s, "\xff\xfe"s, "\xe2\x80"s, "a\tb\x7f\x1b[31m"s, "Миете 家賃 إيجار שכר"s,
          "\u202e\u2066\u2028"s, "\U0001f3e0"s, std::string(5000, 'x'), std::string(300, '\n')}) {
        PrintedStatement statement = statementOf(text);
        statement.title = statement.subtitle = statement.sections[0].heading = text;
        statement.remarks = {text};
        statement.columns.fill(text);
        EXPECT_THAT(pdfOf(statement, PaperSize::a4()), EndsWith("%%EOF\n"));
    }
}

TEST(StatementPdfTest, ThereAreAsManyPagesAsItTakes) {
    EXPECT_EQ(pagesOf(pdfOf(statementOf("Rent"), PaperSize::a4())), 1u);
    PrintedStatement statement = statementOf("Rent");
    statement.sections[0].lines.resize(60, statement.sections[0].lines.front());
    EXPECT_EQ(pagesOf(pdfOf(statement, PaperSize::a4())), 2u);
}

} // namespace
} // namespace estatebook::paper
