// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Amounts.hpp"
#include "estatebook/JsonWriter.hpp"
#include "estatebook/OpenBook.hpp"
#include "estatebook/StatementSheet.hpp"
#include "estatebook/TextTable.hpp"
#include "estatebook/document/DateText.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/text/DateFormatter.hpp"

#include <fmt/format.h>

#include <array>
#include <ostream>

namespace estatebook {

using document::forMessage;
using platform::Date;
using platform::DateFormatter;
using platform::Decimal;
using platform::DecimalBehavior;
using platform::Ref;

namespace {

constexpr std::size_t LongestShownText = 400;
constexpr std::size_t LongestShownName = 1000;
constexpr std::size_t MaximalLinesOfName = 5;
constexpr std::string_view SheetSchema = "estatebook/statement/1";

using Line = StatementSheet::Line;

/// All that the forms of a statement are made of.
struct Statement {
    const OpenBook& book;
    const OpenBook::Letting& letting;
    const StatementSheet& sheet;
    /// The fraction digits that an amount has at least.
    int digits;
    bool isExact;

    [[nodiscard]] std::string amount(const Decimal& amount) const { return amountText(amount, digits); }
    [[nodiscard]] std::string amount(const std::optional<Decimal>& amount) const {
        return amount ? amountText(*amount, digits) : std::string();
    }
    [[nodiscard]] std::optional<std::string> date(const std::optional<Date>& date) const {
        return date ? document::dateText(*date, book.calendar()) : std::nullopt;
    }
    [[nodiscard]] bool hasGeneratedLines() const {
        for (const auto* lines : {&sheet.due(), &sheet.notYetDue()})
            for (const Line& line : *lines)
                if (line.isGenerated) return true;
        return false;
    }
};

// -- Text -----------------------------------------------------------------------------------------------------

void addLines(TextTable& table, const Statement& statement, const std::vector<Line>& lines,
              const DateFormatter& dates) {
    for (const Line& line : lines)
        table.addRow({line.when ? dates.stringFromDate(*line.when) : "", line.isGenerated ? "*" : "",
                      forMessage(line.what, LongestShownText), statement.amount(line.amount),
                      statement.amount(line.balance)});
}

void addTotal(TextTable& table, const Statement& statement, std::string words, const Decimal& amount) {
    table.addRow({"", "", std::move(words), "", statement.amount(amount)});
}

void printText(const Statement& statement, std::ostream& out) {
    const std::size_t width = TextTable::widthOfOutput();
    const Ref<DateFormatter> dates = DateFormatter::medium();
    const StatementSheet& sheet = statement.sheet;
    const std::string day = dates->stringFromDate(statement.book.asOf());

    const std::string name = forMessage(statement.letting.object->name()->view(), LongestShownName);
    for (const std::string& line : wrapText(name, width, MaximalLinesOfName)) out << line << '\n';
    out << fmt::format("Statement as of {}, {}\n\n", day, statement.book.currencyName());

    TextTable table({{"Date"},
                     {"", TextTable::Align::Left, 1},
                     {"Description", TextTable::Align::Flexible, 1},
                     {"Amount", TextTable::Align::Decimal},
                     {"Balance", TextTable::Align::Decimal}});
    addLines(table, statement, sheet.due(), *dates);
    if (!sheet.due().empty()) table.addRule();
    addTotal(table, statement, "Balance on " + day, sheet.balance());
    if (sheet.balance().isNegative()) addTotal(table, statement, "Outstanding", sheet.outstanding());
    if (!sheet.notYetDue().empty()) {
        table.addRow({"", "", "", "", ""});
        table.addRow({"Not yet due", "", "", "", ""});
        addLines(table, statement, sheet.notYetDue(), *dates);
        table.addRule();
        addTotal(table, statement, "Balance with what is not yet due", sheet.finalBalance());
    }
    table.print(out, width);
    if (statement.hasGeneratedLines()) out << "\n* not recorded, but reckoned from the terms of the tenure\n";
}

// -- CSV ------------------------------------------------------------------------------------------------------

std::string csvField(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"') quoted += '"';
        quoted += character;
    }
    return quoted += '"';
}

template <std::size_t Count>
void writeRecord(std::ostream& out, const std::array<std::string, Count>& fields) {
    for (std::size_t i = 0; i < Count; ++i) out << (i > 0 ? "," : "") << csvField(fields[i]);
    out << "\r\n";
}

std::string_view yesOrNo(bool flag) noexcept {
    return flag ? "true" : "false";
}

void printCsv(const Statement& statement, std::ostream& out) {
    writeRecord<6>(out, {"date", "description", "amount", "balance", "generated", "due"});
    const auto writeLines = [&](const std::vector<Line>& lines, bool isDue) {
        for (const Line& line : lines)
            writeRecord<6>(out, {statement.date(line.when).value_or(""), line.what,
                                 statement.amount(line.amount), statement.amount(line.balance),
                                 std::string(yesOrNo(line.isGenerated)), std::string(yesOrNo(isDue))});
    };
    writeLines(statement.sheet.due(), true);
    writeLines(statement.sheet.notYetDue(), false);
}

// -- JSON -----------------------------------------------------------------------------------------------------

void writeLines(JsonWriter& json, const Statement& statement, const std::vector<Line>& lines) {
    json.beginList();
    for (const Line& line : lines) {
        json.beginObject(JsonWriter::Layout::Line);
        json.key("date").textOrNull(statement.date(line.when));
        json.key("description").text(line.what);
        json.key("amount").decimal(line.amount);
        json.key("balance").decimal(line.balance);
        json.key("generated").boolean(line.isGenerated);
        json.endObject();
    }
    json.endList();
}

void printJson(const Statement& statement, std::ostream& out) {
    const OpenBook& book = statement.book;
    const StatementSheet& sheet = statement.sheet;
    JsonWriter json(out);
    json.beginObject();
    json.key("schema").text(SheetSchema);
    json.key("tenure").text(statement.letting.id);
    json.key("name").text(statement.letting.object->name()->view());
    json.key("asOf").textOrNull(statement.date(book.asOf()));
    json.key("timeZone").text(book.calendar().timeZone()->name());
    json.key("currencyCode");
    if (book.currencyCode())
        json.text(book.currencyCode()->view());
    else
        json.null();
    json.key("exact").boolean(statement.isExact);
    json.key("lines");
    writeLines(json, statement, sheet.due());
    json.key("balance").decimal(sheet.balance());
    json.key("outstanding").decimal(sheet.outstanding());
    json.key("notYetDue");
    writeLines(json, statement, sheet.notYetDue());
    json.key("balanceWithNotYetDue").decimal(sheet.finalBalance());
    json.endObject();
    json.finish();
}

} // namespace

void printStatement(const StatementOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.book.file, options.book.asOf);
    const OpenBook::Letting& letting = book.lettingNamed(options.tenure);
    const Schedule schedule(*letting.object);
    if (!schedule.row()) throw book.unreckonable(letting, schedule.row().error);

    const DecimalBehavior rounding = book.rounding();
    const auto sheet = reckon([&] {
        return StatementSheet::of(*letting.object->statement(), book.asOf(),
                                  options.exact ? std::nullopt : std::optional(rounding));
    });
    if (!sheet) throw book.unreckonable(letting, sheet.error);

    const Statement statement{book, letting, *sheet.value, rounding.scale, options.exact};
    if (options.format == "csv")
        printCsv(statement, out);
    else if (options.format == "json")
        printJson(statement, out);
    else
        printText(statement, out);
}

} // namespace estatebook
