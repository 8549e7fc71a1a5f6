// SPDX-License-Identifier: MIT
#pragma once

/// TextTable: rows in aligned columns, as wide as a terminal and no wider.
///
/// Widths are those that a terminal gives to characters. One column may be flexible: it takes what the others
/// leave, its texts are broken between words, and a text that needs too many lines ends in "…". Numbers are
/// aligned on the point and never broken, so that a table of very long ones is wider than the terminal.
///
///     TextTable table({{"Date"}, {"Description", TextTable::Align::Flexible}, {"Amount", TextTable::Align::Decimal}});
///     table.addRow({"30 Sept 2025", "Rent", "-1050.00"});
///     table.print(std::cout, TextTable::widthOfOutput());

#include <cstddef>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook {

class TextTable {
public:
    enum class Align : unsigned char { Left, Right, Decimal, Flexible };

    static constexpr std::size_t UsualLines = 3;

    struct Column {
        std::string title;
        Align align = Align::Left;
        /// Blanks before the column; none before the first.
        std::size_t gap = 2;
        /// How many lines a text of a flexible column may take.
        std::size_t lines = UsualLines;
    };

    explicit TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

    /// The texts are copied. REQUIRES: a cell for each column.
    void addRow(std::initializer_list<std::string_view> cells);
    void addRow(const std::vector<std::string>& cells);
    /// A line across the table.
    void addRule() { rules_.push_back(rowCount()); }

    /// Titles, a rule and the rows. Without any row just titles and rule.
    void print(std::ostream& out, std::size_t width) const;

    /// The columns of the terminal that standard output is, between 60 and 120; 80 for all else.
    [[nodiscard]] static std::size_t widthOfOutput() noexcept;

private:
    struct Widths {
        std::size_t whole = 0;
        /// Of numbers: the places before the point, and from the point on.
        std::size_t before = 0;
        std::size_t after = 0;
    };
    /// A text, by where it stands, and how wide it is. Numbers are told apart in the columns that align them.
    struct Cell {
        std::size_t begin;
        std::size_t size;
        Widths widths;
    };
    class Printer;

    [[nodiscard]] static Widths widthsOf(std::string_view text, Align align);
    void addCell(std::string_view text);
    [[nodiscard]] std::string_view textOf(const Cell& cell) const noexcept {
        return std::string_view(texts_).substr(cell.begin, cell.size);
    }
    [[nodiscard]] std::size_t rowCount() const noexcept { return cells_.size() / columns_.size(); }
    [[nodiscard]] std::vector<Widths> measure(std::size_t width) const;

    std::vector<Column> columns_;
    /// Row after row.
    std::vector<Cell> cells_;
    /// Theirs, one behind the other: there may be millions.
    std::string texts_;
    /// The rows before which they stand.
    std::vector<std::size_t> rules_;
};

/// Breaks a text between words into lines of at most so many columns; a word that is too long is broken, too.
/// At most `maximalLines` lines, the last one then ends in "…". REQUIRES: columns > 1.
[[nodiscard]] std::vector<std::string> wrapText(std::string_view text, std::size_t columns,
                                                std::size_t maximalLines);

} // namespace estatebook
