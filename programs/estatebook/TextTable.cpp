// SPDX-License-Identifier: MIT
#include "estatebook/TextTable.hpp"

#include "platform/text/Text.hpp"

#include <algorithm>
#include <cassert>
#include <ostream>

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

void appendPadded(std::string& line, std::string_view text, std::size_t width, bool right) {
    const std::size_t own = columnWidth(text);
    const std::size_t blanks = width > own ? width - own : 0;
    if (right) line.append(blanks, ' ');
    line += text;
    if (!right) line.append(blanks, ' ');
}

std::size_t placesBeforePoint(std::string_view number) noexcept {
    return std::min(number.find('.'), number.size());
}

bool isNumber(std::string_view text) noexcept {
    return !text.empty() && text.find_first_not_of("-.0123456789") == std::string_view::npos;
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

std::vector<TextTable::Widths> TextTable::measure(std::size_t width) const {
    std::vector<Widths> widths(columns_.size());
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        Widths& own = widths[i];
        own.whole = columnWidth(columns_[i].title);
        for (const auto& row : rows_) {
            if (row.empty()) continue;
            const std::string& cell = row[i];
            if (columns_[i].align == Align::Decimal && isNumber(cell)) {
                const std::size_t before = placesBeforePoint(cell);
                own.before = std::max(own.before, before);
                own.after = std::max(own.after, cell.size() - before);
            } else {
                own.whole = std::max(own.whole, columnWidth(cell));
            }
        }
        own.whole = std::max(own.whole, own.before + own.after);
    }

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

void TextTable::print(std::ostream& out, std::size_t width) const {
    const std::vector<Widths> widths = measure(width);
    std::size_t whole = 0;
    for (std::size_t i = 0; i < columns_.size(); ++i)
        whole += widths[i].whole + (i > 0 ? columns_[i].gap : 0);
    const std::string rule(whole, '-');

    const auto printLine = [&](const std::vector<std::string_view>& cells, bool isTitle) {
        std::string line;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            if (i > 0) line.append(columns_[i].gap, ' ');
            const Align align = columns_[i].align;
            std::string cell(cells[i]);
            if (align == Align::Decimal && !isTitle && isNumber(cell))
                cell.append(widths[i].after - (cell.size() - placesBeforePoint(cell)), ' ');
            appendPadded(line, cell, widths[i].whole, align == Align::Right || align == Align::Decimal);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    };

    std::vector<std::string_view> cells;
    cells.reserve(columns_.size());
    for (const Column& column : columns_) cells.emplace_back(column.title);
    printLine(cells, true);
    out << rule << '\n';
    for (const auto& row : rows_) {
        if (row.empty()) {
            out << rule << '\n';
            continue;
        }
        cells.assign(row.begin(), row.end());
        std::vector<std::string> broken;
        std::size_t flexible = columns_.size();
        for (std::size_t i = 0; i < columns_.size(); ++i)
            if (columns_[i].align == Align::Flexible && columnWidth(row[i]) > widths[i].whole) {
                broken = wrapText(row[i], widths[i].whole, columns_[i].lines);
                flexible = i;
                cells[i] = broken.front();
            }
        printLine(cells, false);
        for (std::size_t next = 1; next < broken.size(); ++next) {
            cells.assign(columns_.size(), {});
            cells[flexible] = broken[next];
            printLine(cells, false);
        }
    }
}

} // namespace estatebook
