// SPDX-License-Identifier: MIT
#pragma once

/// Listing: rows of facts about a book under named columns, printed for people or for programs.
///
///     Listing listing(book, "tenures", {{"id", "Identifier"},
///                                       {"name", "Tenure", TextTable::Align::Flexible},
///                                       {"balance", "Balance", TextTable::Align::Decimal}});
///     listing.addRow({letting.id, Listing::cell(tenure.name()), Listing::reckoned([&] { return tenure.balance(); })});
///     listing.print("Tenures on 30 Jun 2026, GBP", Format::Text, std::cout);
///
/// A column without a title is for programs alone. Amounts are rounded to the currency in every form; totals are sums
/// of what is shown.

#include "estatebook/Format.hpp"
#include "estatebook/OpenBook.hpp"
#include "estatebook/Reckoned.hpp"
#include "estatebook/TextTable.hpp"

#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace estatebook {

class Listing {
public:
    /// Nothing, a text, a list of texts, a count, a flag, an amount, a date, or why there is no value.
    using Cell = std::variant<std::monostate, std::string, std::vector<std::string>, std::uint64_t, bool,
                              platform::Decimal, platform::Date, ReckoningError>;

    struct Column {
        /// The title of the column for programs, and the name of the member.
        std::string_view key;
        std::string title{};
        TextTable::Align align = TextTable::Align::Left;
        /// Whether its amounts are added up.
        bool isSummed = false;
        /// How many lines a flexible cell may take.
        std::size_t lines = 6;
        /// What stands for nothing, for people.
        std::string absent{};
    };

    /// `name` is what the rows are: the last part of the schema's name and the member that holds them.
    Listing(const OpenBook& book, std::string_view name, std::vector<Column> columns);

    /// REQUIRES: a cell for each column.
    void addRow(std::vector<Cell> cells);
    [[nodiscard]] std::size_t columnCount() const noexcept { return columns_.size(); }
    [[nodiscard]] bool isEmpty() const noexcept { return rows_.empty(); }

    /// The heading and an empty line, then the columns with titles. REQUIRES: no format for paper.
    void print(std::string_view heading, Format format, std::ostream& out) const;
    /// A table of some of the columns in that order, with a row of totals where one of them is summed.
    void printTable(const std::vector<std::string_view>& keys, std::ostream& out) const;

    [[nodiscard]] static Cell cell(const platform::Ref<platform::String>& text) {
        return text ? Cell(text->string()) : Cell();
    }
    [[nodiscard]] static Cell cell(Cell value) { return value; }
    template <class T>
    [[nodiscard]] static Cell cell(const std::optional<T>& value) {
        return value ? Cell(*value) : Cell();
    }
    /// What the function gives, or why it gives nothing.
    template <class Function>
    [[nodiscard]] static Cell reckoned(Function&& function) {
        const auto outcome = reckon(std::forward<Function>(function));
        return outcome ? cell(*outcome) : Cell(outcome.error());
    }

private:
    [[nodiscard]] std::size_t placeOf(std::string_view key) const;
    [[nodiscard]] std::vector<Cell> totals() const;
    [[nodiscard]] std::string textOf(const Cell& cell) const;
    [[nodiscard]] std::string csvOf(const Cell& cell) const;
    void writeJson(const Cell& cell, class JsonWriter& json) const;
    void printCsv(std::ostream& out) const;
    void printJson(std::ostream& out) const;

    const OpenBook& book_;
    std::string_view name_;
    std::vector<Column> columns_;
    std::vector<std::vector<Cell>> rows_;
    platform::DecimalBehavior rounding_;
};

} // namespace estatebook
