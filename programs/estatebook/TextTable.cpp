// SPDX-License-Identifier: MIT
#include "estatebook/TextTable.hpp"

#include "platform/text/Text.hpp"

#include <algorithm>
#include <cassert>
#include <ostream>
#include <span>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

namespace estatebook {

using platform::columnWidth;

namespace {

constexpr std::size_t PipedWidth = 80;
constexpr std::size_t NarrowestTerminal = 60;
constexpr std::size_t WidestTerminal = 120;
constexpr std::size_t NarrowestFlexible = 16;
/// In a table that is wider than the terminal anyway.
constexpr std::size_t ComfortableFlexible = 44;

std::size_t bytesOfFirstCharacter(std::string_view text) noexcept {
    std::size_t bytes = 1;
    while (bytes < text.size() && (static_cast<unsigned char>(text[bytes]) & 0xC0u) == 0x80u) ++bytes;
    return bytes;
}

/// The bytes of the longest start of a text that fits; marks stay with their character.
std::size_t bytesThatFit(std::string_view text, std::size_t columns) {
    std::size_t bytes = 0;
    std::size_t used = 0;
    while (bytes < text.size()) {
        const std::size_t next = bytesOfFirstCharacter(text.substr(bytes));
        used += columnWidth(text.substr(bytes, next));
        if (used > columns) break;
        bytes += next;
    }
    return bytes;
}

std::string_view withoutBlanksBefore(std::string_view text) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return text;
}

std::size_t placesBeforePoint(std::string_view number) noexcept {
    return std::min(number.find('.'), number.size());
}

bool isNumber(std::string_view text) noexcept {
    const auto isOfNumber = [](char each) {
        return (each >= '0' && each <= '9') || each == '.' || each == '-';
    };
    return !text.empty() && std::ranges::all_of(text, isOfNumber);
}

} // namespace

std::vector<std::string> wrapText(std::string_view text, std::size_t columns, std::size_t maximalLines) {
    assert(columns > 1 && maximalLines > 0);
    std::vector<std::string> lines;
    text = withoutBlanksBefore(text);
    do {
        std::size_t fitting = bytesThatFit(text, columns);
        if (fitting < text.size() && lines.size() + 1 == maximalLines) {
            lines.push_back(std::string(text.substr(0, bytesThatFit(text, columns - 1))) + "…");
            break;
        }
        if (fitting < text.size() && text[fitting] != ' ') {
            const std::size_t blank = text.rfind(' ', fitting);
            if (blank != std::string_view::npos && blank > 0) fitting = blank;
        }
        lines.emplace_back(text.substr(0, fitting));
        text = withoutBlanksBefore(text.substr(fitting));
    } while (!text.empty());
    return lines;
}

std::size_t TextTable::widthOfOutput() noexcept {
    winsize size{};
    if (!isatty(STDOUT_FILENO) || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return PipedWidth;
    return std::clamp<std::size_t>(size.ws_col, NarrowestTerminal, WidestTerminal);
}

TextTable::Widths TextTable::widthsOf(std::string_view text, Align align) {
    if (align != Align::Decimal || !isNumber(text)) return {.whole = columnWidth(text)};
    const std::size_t before = placesBeforePoint(text);
    return {.whole = text.size(), .before = before, .after = text.size() - before};
}

void TextTable::addCell(std::string_view text) {
    const Align align = columns_[cells_.size() % columns_.size()].align;
    cells_.push_back({texts_.size(), text.size(), widthsOf(text, align)});
    texts_ += text;
}

void TextTable::addRow(std::initializer_list<std::string_view> cells) {
    assert(cells.size() == columns_.size());
    for (const std::string_view text : cells) addCell(text);
}

void TextTable::addRow(const std::vector<std::string>& cells) {
    assert(cells.size() == columns_.size());
    for (const std::string& text : cells) addCell(text);
}

std::vector<TextTable::Widths> TextTable::measure(std::size_t width) const {
    std::vector<Widths> widths(columns_.size());
    for (std::size_t i = 0; i < columns_.size(); ++i) widths[i].whole = columnWidth(columns_[i].title);
    for (std::size_t place = 0; place < cells_.size(); ++place) {
        const Widths& cell = cells_[place].widths;
        Widths& own = widths[place % columns_.size()];
        own.whole = std::max(own.whole, cell.whole);
        own.before = std::max(own.before, cell.before);
        own.after = std::max(own.after, cell.after);
    }
    for (Widths& own : widths) own.whole = std::max(own.whole, own.before + own.after);

    std::size_t others = 0;
    std::size_t flexible = columns_.size();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (i > 0) others += columns_[i].gap;
        if (columns_[i].align == Align::Flexible)
            flexible = i;
        else
            others += widths[i].whole;
    }
    if (flexible < columns_.size()) {
        const bool isTooWide = width < others + NarrowestFlexible;
        const std::size_t left = isTooWide ? ComfortableFlexible : width - others;
        widths[flexible].whole = std::min(widths[flexible].whole, left);
    }
    return widths;
}

/// Puts lines together, many at a time: there may be millions.
class TextTable::Printer {
public:
    Printer(const TextTable& table, const std::vector<Widths>& widths, std::ostream& out)
        : table_(table), columns_(table.columns_), widths_(widths), out_(out) {
        std::size_t whole = 0;
        for (std::size_t i = 0; i < columns_.size(); ++i)
            whole += widths[i].whole + (i > 0 ? columns_[i].gap : 0);
        rule_ = std::string(whole, '-') + '\n';
    }
    ~Printer() { flush(); }
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    void rule() { text_ += rule_; }

    /// A row takes further lines when its flexible text is too wide for one.
    void row(std::span<const Cell> cells) {
        std::vector<std::string> broken;
        for (std::size_t i = 0; i < columns_.size(); ++i)
            if (columns_[i].align == Align::Flexible && cells[i].widths.whole > widths_[i].whole)
                broken = wrapText(table_.textOf(cells[i]), widths_[i].whole, columns_[i].lines);
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            if (columns_[i].align == Align::Flexible && !broken.empty())
                add(i, broken.front(), {.whole = columnWidth(broken.front())});
            else
                add(i, table_.textOf(cells[i]), cells[i].widths);
        }
        endLine();
        for (std::size_t next = 1; next < broken.size(); ++next) {
            for (std::size_t i = 0; i < columns_.size(); ++i) {
                const std::string_view text =
                    columns_[i].align == Align::Flexible ? broken[next] : std::string_view();
                add(i, text, {.whole = columnWidth(text)});
            }
            endLine();
        }
    }
    void titles() {
        for (std::size_t i = 0; i < columns_.size(); ++i)
            add(i, columns_[i].title, {.whole = columnWidth(columns_[i].title)});
        endLine();
    }

private:
    static constexpr std::size_t Enough = std::size_t{1} << 16;

    void add(std::size_t column, std::string_view text, const Widths& widths) {
        if (column > 0) text_.append(columns_[column].gap, ' ');
        const bool isNumber = widths.before + widths.after > 0;
        const std::size_t behind = isNumber ? widths_[column].after - widths.after : 0;
        const std::size_t own = widths.whole + behind;
        const std::size_t blanks = widths_[column].whole > own ? widths_[column].whole - own : 0;
        const Align align = columns_[column].align;
        const bool isRight = align == Align::Right || align == Align::Decimal;
        if (isRight) text_.append(blanks, ' ');
        text_ += text;
        text_.append(isRight ? behind : blanks, ' ');
    }
    void endLine() {
        while (!text_.empty() && text_.back() == ' ') text_.pop_back();
        text_ += '\n';
        if (text_.size() >= Enough) flush();
    }
    void flush() {
        out_.write(text_.data(), static_cast<std::streamsize>(text_.size()));
        text_.clear();
    }

    const TextTable& table_;
    const std::vector<Column>& columns_;
    const std::vector<Widths>& widths_;
    std::ostream& out_;
    std::string rule_;
    std::string text_;
};

void TextTable::print(std::ostream& out, std::size_t width) const {
    const std::vector<Widths> widths = measure(width);
    Printer printer(*this, widths, out);
    printer.titles();
    printer.rule();
    auto rule = rules_.begin();
    for (std::size_t row = 0; row < rowCount(); ++row) {
        for (; rule != rules_.end() && *rule == row; ++rule) printer.rule();
        printer.row(std::span(cells_).subspan(row * columns_.size(), columns_.size()));
    }
    for (; rule != rules_.end(); ++rule) printer.rule();
}

} // namespace estatebook
