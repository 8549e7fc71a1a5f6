// SPDX-License-Identifier: MIT
#pragma once

/// PrintedStatement: the texts of a statement, ready to be set on paper.
///
///     PrintedStatement statement{.title = "Flat 2 - A. Smith", .subtitle = "Statement as of 10 Feb 2025, GBP"};
///     statement.sections.push_back({.lines = {{"1 Feb 2025", "Rent", "-1000.00", "-1000.00", true}},
///                                   .totals = {{"Balance on 10 Feb 2025", "-1000.00"}}});
///     const std::string pdf = pdfOf(statement, PaperSize::a4());
///
/// All words are the caller's, so that they stand in its reader's language. Texts are UTF-8 in any script; a line feed begins
/// a new line, other control characters are blanks, and bytes that are not well formed are shown as U+FFFD.

#include <array>
#include <string>
#include <vector>

namespace estatebook::paper {

struct PrintedStatement {
    struct Line {
        std::string date;
        std::string what;
        /// Numbers stand below one another by their point. Either may be empty.
        std::string amount;
        std::string balance;
        /// Set in italics: nobody recorded it.
        bool isGenerated = false;
    };

    struct Total {
        std::string words;
        /// Stands in the column of balances.
        std::string amount;
    };

    /// Lines, and below a rule what they come to.
    struct Section {
        std::string heading{};
        /// Whether the sections that follow, up to the next such one, belong to this one.
        bool isPart = false;
        std::vector<Line> lines{};
        std::vector<Total> totals{};
    };

    /// Large on the first page, small on the others.
    std::string title{};
    std::string subtitle{};
    std::vector<Section> sections{};
    /// Below the last section.
    std::vector<std::string> remarks{};

    /// Above the columns of each page.
    std::array<std::string, 4> columns{"Date", "Description", "Amount", "Balance"};
    /// At the foot of each page.
    std::string pageOfPages = "Page {page} of {pages}";
    /// Above what goes on from the page before.
    std::string continued = "{heading} (continued)";
};

} // namespace estatebook::paper
