// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Amounts.hpp"
#include "estatebook/Csv.hpp"
#include "estatebook/DayMembers.hpp"
#include "estatebook/JsonWriter.hpp"
#include "estatebook/OpenBook.hpp"
#include "estatebook/OutstandingLines.hpp"
#include "estatebook/Stage.hpp"
#include "estatebook/StatementPaper.hpp"
#include "estatebook/StatementSheet.hpp"
#include "estatebook/TextTable.hpp"
#include "estatebook/WholeFile.hpp"
#include "estatebook/document/DateText.hpp"
#include "estatebook/document/JsonText.hpp"

#include "paper/StatementPdf.hpp"
#include "platform/text/DateFormatter.hpp"
#include "platform/text/Locale.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <span>
#include <sstream>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include <unistd.h>

namespace estatebook {

using document::forMessage;
using platform::Date;
using platform::DateFormatter;
using platform::Decimal;
using platform::Ref;

namespace {

constexpr std::size_t LongestShownText = 400;
constexpr std::size_t LongestShownName = 1000;
constexpr std::size_t MaximalLinesOfName = 5;
constexpr std::string_view SheetSchema = "estatebook/statement/1";

using Line = StatementSheet::Line;

/// A statement, or the part of it that one tag has.
struct Part {
    /// The primary tag of its lines; absent for the whole statement.
    std::optional<std::string> tag;
    StatementSheet sheet;
    /// How many of the lines due are left out before the others.
    std::size_t leftOut = 0;

    [[nodiscard]] std::span<const Line> due() const { return std::span(sheet.due()).subspan(leftOut); }
};

/// All that the forms of a statement are made of, as values: no form asks the book's objects.
struct Statement {
    const OpenBook& book;
    const StatementOptions& options;
    std::string id;
    std::string name;
    /// What it is, of which day, in which currency.
    std::string heading;
    Date asOf;
    /// The whole statement, or a part for each tag.
    std::vector<Part> parts;
    /// Of a statement by tag: how many lines have none, and what they come to.
    std::size_t untaggedCount = 0;
    Decimal untaggedAmount{};
    /// How the currency's amounts are rounded; they have at least as many fraction digits.
    platform::DecimalBehavior rounding{};

    [[nodiscard]] bool hasNotYetDue() const { return !options.outstanding; }
    [[nodiscard]] std::string amount(const Decimal& amount) const {
        return amountText(amount, rounding.scale);
    }
    [[nodiscard]] std::string amount(const std::optional<Decimal>& amount) const {
        return amount ? amountText(*amount, rounding.scale) : std::string();
    }
    [[nodiscard]] std::optional<std::string> date(const std::optional<Date>& date) const {
        return date ? document::dateText(*date, book.calendar()) : std::nullopt;
    }
    [[nodiscard]] std::string untagged(std::string_view amount) const {
        return fmt::format("Lines without a tag: {}, which come to {}", untaggedCount, amount);
    }
    [[nodiscard]] bool hasGeneratedLines() const {
        return std::ranges::any_of(parts, [&](const Part& part) {
            return std::ranges::any_of(part.due(), &Line::isGenerated) ||
                   (hasNotYetDue() && std::ranges::any_of(part.sheet.notYetDue(), &Line::isGenerated));
        });
    }
};

// -- Reckoning ------------------------------------------------------------------------------------------------

StatementSheet sheetOf(const Statement& statement, const TKStatement& lines) {
    return StatementSheet::of(lines, statement.asOf,
                              statement.options.exact ? std::nullopt : std::optional(statement.rounding));
}

/// The lines of the whole statement that are to be seen.
void addWhole(Statement& statement, const TKStatement& lines) {
    Part& part = statement.parts.emplace_back(std::nullopt, sheetOf(statement, lines));
    if (statement.options.outstanding)
        part.leftOut = linesBeforeOutstanding(part.sheet, lines, statement.asOf);
}

void addByTag(Statement& statement, const TKStatement& lines) {
    const auto byTag = StatementByTag::of(
        lines, statement.asOf, statement.options.outstanding ? ShownLines::Outstanding : ShownLines::All);
    for (const TKStatement& ofTag : *byTag.tagged)
        statement.parts.emplace_back(ofTag.primaryTag()->string(), sheetOf(statement, ofTag));
    statement.untaggedCount = byTag.untaggedCount;
    statement.untaggedAmount = sheetOf(statement, *byTag.untagged).finalBalance();
}

// -- Text -----------------------------------------------------------------------------------------------------

void addLines(TextTable& table, const Statement& statement, std::span<const Line> lines,
              const DateFormatter& dates) {
    for (const Line& line : lines)
        table.addRow({line.when ? dates.stringFromDate(*line.when) : "", line.isGenerated ? "*" : "",
                      forMessage(line.what, LongestShownText), statement.amount(line.amount),
                      statement.amount(line.balance)});
}

void addTotal(TextTable& table, const Statement& statement, std::string_view words, const Decimal& amount) {
    table.addRow({"", "", words, "", statement.amount(amount)});
}

void printTextOf(const Part& part, const Statement& statement, const DateFormatter& dates, std::size_t width,
                 std::ostream& out) {
    const StatementSheet& sheet = part.sheet;
    TextTable table({{"Date"},
                     {"", TextTable::Align::Left, 1},
                     {"Description", TextTable::Align::Flexible, 1},
                     {"Amount", TextTable::Align::Decimal},
                     {"Balance", TextTable::Align::Decimal}});
    addLines(table, statement, part.due(), dates);
    if (!part.due().empty()) table.addRule();
    addTotal(table, statement, "Balance on " + dates.stringFromDate(statement.asOf), sheet.balance());
    if (!part.tag && sheet.balance().isNegative())
        addTotal(table, statement, "Outstanding", sheet.outstanding());
    if (statement.hasNotYetDue() && !sheet.notYetDue().empty()) {
        table.addRow({"", "", "", "", ""});
        table.addRow({"Not yet due", "", "", "", ""});
        addLines(table, statement, sheet.notYetDue(), dates);
        table.addRule();
        addTotal(table, statement, "Balance with what is not yet due", sheet.finalBalance());
    }
    table.print(out, width);
}

void printText(const Statement& statement, std::ostream& out) {
    const std::size_t width = TextTable::widthOfOutput();
    const Ref<DateFormatter> dates = DateFormatter::medium();
    const StatementOptions& options = statement.options;

    const std::string name = forMessage(statement.name, LongestShownName);
    for (const std::string& line : wrapText(name, width, MaximalLinesOfName)) out << line << '\n';
    out << statement.heading << "\n\n";
    for (const Part& part : statement.parts) {
        if (part.tag) out << (part.tag->empty() ? "\"\"" : forMessage(*part.tag, LongestShownText)) << "\n\n";
        printTextOf(part, statement, *dates, width, out);
        if (part.tag) out << '\n';
    }
    if (statement.hasGeneratedLines()) out << "\n* not recorded, but reckoned from the terms of the tenure\n";
    if (options.byTag) out << statement.untagged(statement.amount(statement.untaggedAmount)) << '\n';
}

// -- CSV ------------------------------------------------------------------------------------------------------

std::string yesOrNo(bool flag) {
    return flag ? "true" : "false";
}

/// With one column before the others, unless it has no name.
void writeCsvHeader(const StatementOptions& options, std::string_view first, std::ostream& out) {
    std::vector<std::string> names{"date", "description", "amount", "balance", "generated", "due"};
    if (options.byTag) names.insert(names.begin(), "tag");
    if (!first.empty()) names.insert(names.begin(), std::string(first));
    writeCsvRecord(out, names);
}

void writeCsvLines(const Statement& statement, const std::optional<std::string>& first, std::ostream& out) {
    for (const Part& part : statement.parts) {
        const auto writeLines = [&](std::span<const Line> lines, bool isDue) {
            for (const Line& line : lines) {
                std::vector<std::string> fields{statement.date(line.when).value_or(""),
                                                line.what,
                                                statement.amount(line.amount),
                                                statement.amount(line.balance),
                                                yesOrNo(line.isGenerated),
                                                yesOrNo(isDue)};
                if (statement.options.byTag) fields.insert(fields.begin(), part.tag.value_or(""));
                if (first) fields.insert(fields.begin(), *first);
                writeCsvRecord(out, fields);
            }
        };
        writeLines(part.due(), true);
        if (statement.hasNotYetDue()) writeLines(part.sheet.notYetDue(), false);
    }
}

void printCsv(const Statement& statement, std::ostream& out) {
    writeCsvHeader(statement.options, "", out);
    writeCsvLines(statement, std::nullopt, out);
}

// -- JSON -----------------------------------------------------------------------------------------------------

void writeLines(JsonWriter& json, const Statement& statement, std::span<const Line> lines) {
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

void writePart(JsonWriter& json, const Statement& statement, const Part& part) {
    json.key("lines");
    writeLines(json, statement, part.due());
    json.key("balance").decimal(part.sheet.balance());
    json.key("outstanding").decimal(part.sheet.outstanding());
    if (!statement.hasNotYetDue()) return;
    json.key("notYetDue");
    writeLines(json, statement, part.sheet.notYetDue());
    json.key("balanceWithNotYetDue").decimal(part.sheet.finalBalance());
}

void printJson(const Statement& statement, std::ostream& out) {
    JsonWriter json(out);
    json.beginObject();
    json.key("schema").text(SheetSchema);
    json.key("tenure").text(statement.id);
    json.key("name").text(statement.name);
    writeDayMembers(json, statement.book);
    json.key("exact").boolean(statement.options.exact);
    if (statement.options.byTag) {
        json.key("byTag");
        json.beginList();
        for (const Part& part : statement.parts) {
            json.beginObject();
            json.key("tag").textOrNull(part.tag);
            writePart(json, statement, part);
            json.endObject();
        }
        json.endList();
        json.key("untagged");
        json.beginObject(JsonWriter::Layout::Line);
        json.key("lines").integer(std::uint64_t{statement.untaggedCount});
        json.key("amount").decimal(statement.untaggedAmount);
        json.endObject();
    } else {
        writePart(json, statement, statement.parts.front());
    }
    json.endObject();
    json.finish();
}

// -- PDF ------------------------------------------------------------------------------------------------------

void printPdf(const Statement& statement, std::ostream& out) {
    using NotYetDue = StatementPaper::NotYetDue;
    const auto notYetDue = statement.hasNotYetDue() ? NotYetDue::Shown : NotYetDue::LeftOut;
    const StatementPaper words(statement.asOf, statement.rounding.scale);
    paper::PrintedStatement printed{.title = statement.name, .subtitle = statement.heading};
    for (const Part& part : statement.parts) {
        if (part.tag)
            words.addTag(printed, *part.tag, part.sheet, notYetDue);
        else
            words.addWhole(printed, part.sheet, part.due(), notYetDue);
    }
    StatementPaper::addRemark(printed);
    if (statement.options.byTag)
        printed.remarks.push_back(statement.untagged(words.amount(statement.untaggedAmount)));
    const auto size = paper::PaperSize::ofLocale(platform::Locale::current().identifier());
    try {
        out << paper::pdfOf(printed, size);
    } catch (const paper::PaperError& error) {
        throw Failure(ExitCode::CannotRead,
                      fmt::format("{}: {}", forMessage(statement.options.output.value_or("standard output")),
                                  error.what()));
    }
}

// -- Where it is written --------------------------------------------------------------------------------------

void requirePlaceFor(const StatementOptions& options) {
    if (options.output) {
        requirePlainFile(*options.output);
        std::error_code ignored;
        if (std::filesystem::equivalent(*options.output, options.list.book.file, ignored))
            throw Failure(ExitCode::CannotRead,
                          fmt::format("{}: this is the book itself; choose another name",
                                      forMessage(*options.output, LongestShownName)));
    } else if (options.list.format == Format::Pdf && isatty(STDOUT_FILENO)) {
        throw Failure(ExitCode::WrongUsage,
                      "a terminal cannot show a PDF; name a file with --output FILE, or pipe it on");
    }
}

void print(const Statement& statement, std::ostream& out) {
    switch (statement.options.list.format) {
    case Format::Csv:
        return printCsv(statement, out);
    case Format::Json:
        return printJson(statement, out);
    case Format::Pdf:
        return printPdf(statement, out);
    case Format::Text:
        return printText(statement, out);
    }
}

Reckoned<Statement> statementOf(const OpenBook& book, const OpenBook::Letting& letting,
                                const StatementOptions& options) {
    return reckon([&] {
        Statement made{.book = book,
                       .options = options,
                       .id = letting.id,
                       .name = letting.object->name()->string(),
                       .heading = book.heading(
                           fmt::format("{}{} as of", options.outstanding ? "Outstanding lines" : "Statement",
                                       options.byTag ? " by tag" : "")),
                       .asOf = book.asOf(),
                       .parts = {},
                       .rounding = book.rounding()};
        const auto lines = letting.object->statement();
        (options.byTag ? addByTag : addWhole)(made, *lines);
        return made;
    });
}

} // namespace

void printStatement(const StatementOptions& options, std::ostream& out) {
    requirePlaceFor(options);
    const OpenBook book = OpenBook::open(options.list.book.file, options.list.book.asOf);
    const OpenBook::Letting& letting = book.lettingNamed(options.tenure);
    const Schedule schedule(*letting.object);
    if (!schedule.row()) throw book.unreckonable(letting, schedule.row().error());
    const auto statement = statementOf(book, letting, options);
    if (!statement) throw book.unreckonable(letting, statement.error());
    if (!options.output) return print(*statement, out);
    std::ostringstream content;
    print(*statement, content);
    writeWholeFile(*options.output, content.view());
}

void printStatements(const StatementOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.list.book.file, options.list.book.asOf);
    const bool isCsv = options.list.format == Format::Csv;
    if (isCsv) writeCsvHeader(options, "tenure", out);
    bool isFirst = true;
    // Without a statement, why there is none.
    using Listed = std::variant<Statement, Failure>;
    Stage<Listed> printing([&](const Listed& listed) {
        const auto* const statement = std::get_if<Statement>(&listed);
        if (isCsv) {
            // Whoever reads a record misses what has none.
            if (!statement) throw std::get<Failure>(listed);
            return writeCsvLines(*statement, statement->id, out);
        }
        if (!std::exchange(isFirst, false)) out << '\n';
        if (statement)
            printText(*statement, out);
        else
            out << std::get<Failure>(listed).what() << '\n';
    });
    for (const OpenBook::Letting& letting : book.lettings()) {
        const Schedule schedule(*letting.object);
        auto statement = schedule.row() ? statementOf(book, letting, options)
                                        : Reckoned<Statement>(schedule.row().error());
        if (statement)
            printing.put(std::move(*statement));
        else
            printing.put(book.unreckonable(letting, statement.error()));
        book.forgetTransactions(letting);
    }
    printing.finish();
}

} // namespace estatebook
