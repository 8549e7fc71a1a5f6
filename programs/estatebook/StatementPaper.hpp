// SPDX-License-Identifier: MIT
#pragma once

/// StatementPaper: the lines of a tenure's statement, worded for paper.
///
///     paper::PrintedStatement printed{.title = name, .subtitle = "Statement as of 10 Feb 2025, GBP"};
///     const StatementPaper words(today, 2);
///     words.addWhole(printed, sheet, sheet.due(), StatementPaper::NotYetDue::Shown);
///     StatementPaper::addRemark(printed);
///     writeWholeFile("statement.pdf", paper::pdfOf(printed, paper::PaperSize::a4()));
///
/// Dates are those of the locale. What is below zero has a sign as wide as a digit.

#include "estatebook/StatementSheet.hpp"

#include "paper/PrintedStatement.hpp"
#include "platform/text/DateFormatter.hpp"
#include "platform/values/Ref.hpp"

#include <span>
#include <string>
#include <string_view>

namespace estatebook {

class StatementPaper {
public:
    enum class NotYetDue : unsigned char { Shown, LeftOut };

    /// Amounts have at least so many fraction digits.
    StatementPaper(platform::Date asOf, int digits)
        : dates_(platform::DateFormatter::medium()), asOf_(asOf), digits_(digits) {}

    /// A section of the lines that are due, of which only those in `due` are shown, with the balance and what is outstanding, and
    /// one of those that are not yet due.
    void addWhole(paper::PrintedStatement& printed, const StatementSheet& sheet,
                  std::span<const StatementSheet::Line> due, NotYetDue notYetDue) const;
    /// The same of the lines of one tag, under its name. What is outstanding is of no tag.
    void addTag(paper::PrintedStatement& printed, std::string_view tag, const StatementSheet& sheet,
                NotYetDue notYetDue) const;
    /// Says what italics mean, where some line is in them.
    static void addRemark(paper::PrintedStatement& printed);

    [[nodiscard]] std::string amount(const platform::Decimal& amount) const;

private:
    using Section = paper::PrintedStatement::Section;

    void addLines(Section& section, std::span<const StatementSheet::Line> lines) const;
    [[nodiscard]] Section dueSection(const StatementSheet& sheet,
                                     std::span<const StatementSheet::Line> due) const;
    void addNotYetDue(paper::PrintedStatement& printed, const StatementSheet& sheet,
                      NotYetDue notYetDue) const;

    platform::Ref<platform::DateFormatter> dates_;
    platform::Date asOf_;
    int digits_;
};

} // namespace estatebook
