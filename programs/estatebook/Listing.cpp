// SPDX-License-Identifier: MIT
#include "estatebook/Listing.hpp"

#include "estatebook/Amounts.hpp"
#include "estatebook/Csv.hpp"
#include "estatebook/DayMembers.hpp"
#include "estatebook/JsonWriter.hpp"
#include "estatebook/document/DateText.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/text/DateFormatter.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cassert>
#include <ostream>

namespace estatebook {

using platform::Date;
using platform::Decimal;

namespace {

constexpr std::size_t LongestShownText = 400;

template <class... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

} // namespace

Listing::Listing(const OpenBook& book, std::string_view name, std::vector<Column> columns)
    : book_(book), name_(name), columns_(std::move(columns)), rounding_(book.rounding()) {}

void Listing::addRow(std::vector<Cell> cells) {
    assert(cells.size() == columns_.size());
    for (Cell& cell : cells)
        if (const auto* amount = std::get_if<Decimal>(&cell))
            cell = reckoned([&] { return amount->decimalNumberByRoundingAccordingToBehavior(rounding_); });
    rows_.push_back(std::move(cells));
}

std::size_t Listing::placeOf(std::string_view key) const {
    const auto found = std::ranges::find(columns_, key, &Column::key);
    assert(found != columns_.end());
    return static_cast<std::size_t>(found - columns_.begin());
}

std::vector<Listing::Cell> Listing::totals() const {
    std::vector<Cell> totals(columns_.size());
    for (std::size_t place = 0; place < columns_.size(); ++place) {
        if (!columns_[place].isSummed) continue;
        totals[place] = reckoned([&] {
            Decimal sum;
            for (const auto& row : rows_)
                if (const auto* amount = std::get_if<Decimal>(&row[place])) sum += *amount;
            return sum;
        });
    }
    return totals;
}

// -- Text -----------------------------------------------------------------------------------------------------

std::string Listing::textOf(const Cell& cell) const {
    return std::visit(
        Overloaded{
            [](std::monostate) { return std::string(); },
            [](const std::string& text) { return document::forMessage(text, LongestShownText); },
            [](const std::vector<std::string>& texts) {
                return document::forMessage(fmt::format("{}", fmt::join(texts, ", ")), LongestShownText);
            },
            [](std::uint64_t count) { return std::to_string(count); },
            [](bool flag) { return std::string(flag ? "yes" : ""); },
            [&](const Decimal& amount) { return amountText(amount, rounding_.scale); },
            [](Date date) { return platform::DateFormatter::medium()->stringFromDate(date); },
            [](const ReckoningError& error) { return std::string(error.words); },
        },
        cell);
}

void Listing::printTable(const std::vector<std::string_view>& keys, std::ostream& out) const {
    std::vector<TextTable::Column> columns;
    std::vector<std::size_t> places;
    for (const std::string_view key : keys) {
        const std::size_t place = places.emplace_back(placeOf(key));
        columns.push_back(
            {.title = columns_[place].title, .align = columns_[place].align, .lines = columns_[place].lines});
    }
    TextTable table(std::move(columns));
    const auto addRow = [&](const std::vector<Cell>& row, std::string_view opening) {
        std::vector<std::string> cells;
        for (const std::size_t place : places) {
            const bool isAbsent = std::holds_alternative<std::monostate>(row[place]);
            cells.push_back(isAbsent ? columns_[place].absent : textOf(row[place]));
        }
        if (!opening.empty()) cells.front() = opening;
        table.addRow(cells);
    };
    for (const auto& row : rows_) addRow(row, {});
    const bool isSummed =
        std::ranges::any_of(places, [&](std::size_t place) { return columns_[place].isSummed; });
    if (isSummed && rows_.size() > 1) {
        table.addRule();
        addRow(totals(), "Total");
    }
    table.print(out, TextTable::widthOfOutput());
}

// -- CSV ------------------------------------------------------------------------------------------------------

std::string Listing::csvOf(const Cell& cell) const {
    return std::visit(
        Overloaded{
            [](std::monostate) { return std::string(); },
            [](const std::string& text) { return text; },
            [](const std::vector<std::string>& texts) { return fmt::format("{}", fmt::join(texts, ", ")); },
            [](std::uint64_t count) { return std::to_string(count); },
            [](bool flag) { return std::string(flag ? "true" : "false"); },
            [&](const Decimal& amount) { return amountText(amount, rounding_.scale); },
            [&](Date date) { return document::dateText(date, book_.calendar()).value_or(""); },
            [](const ReckoningError& error) { return std::string(error.name); },
        },
        cell);
}

void Listing::printCsv(std::ostream& out) const {
    std::vector<std::string> fields;
    fields.reserve(columns_.size());
    for (const Column& column : columns_) fields.emplace_back(column.key);
    writeCsvRecord(out, fields);
    for (const auto& row : rows_) {
        fields.clear();
        for (const Cell& cell : row) fields.push_back(csvOf(cell));
        writeCsvRecord(out, fields);
    }
}

// -- JSON -----------------------------------------------------------------------------------------------------

void Listing::writeJson(const Cell& cell, JsonWriter& json) const {
    std::visit(Overloaded{
                   [&](std::monostate) { json.null(); },
                   [&](const std::string& text) { json.text(text); },
                   [&](const std::vector<std::string>& texts) {
                       json.beginList();
                       for (const std::string& text : texts) json.text(text);
                       json.endList();
                   },
                   [&](std::uint64_t count) { json.integer(count); },
                   [&](bool flag) { json.boolean(flag); },
                   [&](const Decimal& amount) { json.decimal(amount); },
                   [&](Date date) { json.textOrNull(document::dateText(date, book_.calendar())); },
                   [&](const ReckoningError& error) {
                       json.beginObject();
                       json.key("error").text(error.name);
                       json.endObject();
                   },
               },
               cell);
}

void Listing::printJson(std::ostream& out) const {
    JsonWriter json(out);
    json.beginObject();
    json.key("schema").text(fmt::format("estatebook/{}/1", name_));
    writeDayMembers(json, book_);
    json.key(name_);
    json.beginList();
    for (const auto& row : rows_) {
        json.beginObject(JsonWriter::Layout::Line);
        for (std::size_t place = 0; place < columns_.size(); ++place) {
            json.key(columns_[place].key);
            writeJson(row[place], json);
        }
        json.endObject();
    }
    json.endList();
    if (std::ranges::any_of(columns_, &Column::isSummed)) {
        json.key("totals");
        json.beginObject(JsonWriter::Layout::Line);
        const std::vector<Cell> sums = totals();
        for (std::size_t place = 0; place < columns_.size(); ++place) {
            if (!columns_[place].isSummed) continue;
            json.key(columns_[place].key);
            writeJson(sums[place], json);
        }
        json.endObject();
    }
    json.endObject();
    json.finish();
}

void Listing::print(std::string_view heading, Format format, std::ostream& out) const {
    if (format == Format::Csv) return printCsv(out);
    if (format == Format::Json) return printJson(out);
    std::vector<std::string_view> keys;
    for (const Column& column : columns_)
        if (!column.title.empty()) keys.push_back(column.key);
    out << heading << "\n\n";
    printTable(keys, out);
}

} // namespace estatebook
