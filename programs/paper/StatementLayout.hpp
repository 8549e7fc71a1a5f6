// SPDX-License-Identifier: MIT
#pragma once

/// StatementLayout: where each text of a statement stands, page by page.
///
///     const StatementLayout layout(statement, PaperSize::a4(), measure);
///     for (const auto& page : layout.pages()) draw(page);
///
/// Each page has the columns' titles above and its number below. A heading never ends a page, and totals never begin one; a line
/// is only broken over two pages when it needs more than one. Where numbers leave too little room for descriptions, all is set
/// smaller.
///
/// The trap: a placed text is a view of the statement's own, which must outlive the layout.

#include "paper/PaperSize.hpp"
#include "paper/PrintedStatement.hpp"
#include "paper/TextMeasure.hpp"

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::paper {

/// One line of a text.
struct PlacedText {
    std::string_view text;
    TextStyle style;
    /// Where the line begins, and its base line; the origin is the upper left corner.
    double x = 0;
    double baseline = 0;
    /// The width at which the text is broken; 0 for a text that is not.
    double width = 0;
    /// Which line of the text it is.
    std::size_t line = 0;
};

/// A thin line across.
struct PlacedRule {
    double left = 0;
    double right = 0;
    double y = 0;
};

class StatementLayout {
public:
    struct Page {
        std::vector<PlacedText> texts;
        std::vector<PlacedRule> rules;
    };

    /// Linear in the texts.
    StatementLayout(const PrintedStatement& statement, PaperSize size, TextMeasure& measure);

    // Its pages are views of what it made.
    StatementLayout(const StatementLayout&) = delete;
    StatementLayout& operator=(const StatementLayout&) = delete;

    /// At least one.
    [[nodiscard]] const std::vector<Page>& pages() const noexcept { return pages_; }

private:
    class Setter;

    std::vector<Page> pages_;
    /// The texts that are made here. They stay where they are.
    std::deque<std::string> made_;
};

} // namespace estatebook::paper
