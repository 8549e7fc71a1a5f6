// SPDX-License-Identifier: MIT
#include "estatebook/StatementPaper.hpp"

#include "estatebook/Amounts.hpp"

#include <algorithm>
#include <utility>

namespace estatebook {

using paper::PrintedStatement;
using platform::Decimal;

namespace {

constexpr std::string_view MinusSign = "\u2212";

} // namespace

std::string StatementPaper::amount(const Decimal& amount) const {
    std::string text = amountText(amount, digits_);
    if (text.starts_with('-')) text.replace(0, 1, MinusSign);
    return text;
}

void StatementPaper::addLines(Section& section, std::span<const StatementSheet::Line> lines) const {
    section.lines.reserve(lines.size());
    for (const StatementSheet::Line& line : lines)
        section.lines.push_back({line.when ? dates_->stringFromDate(*line.when) : std::string(), line.what,
                                 line.amount ? amount(*line.amount) : std::string(), amount(line.balance),
                                 line.isGenerated});
}

StatementPaper::Section StatementPaper::dueSection(const StatementSheet& sheet,
                                                   std::span<const StatementSheet::Line> due) const {
    Section section;
    addLines(section, due);
    section.totals.push_back({"Balance on " + dates_->stringFromDate(asOf_), amount(sheet.balance())});
    return section;
}

void StatementPaper::addNotYetDue(PrintedStatement& printed, const StatementSheet& sheet,
                                  NotYetDue notYetDue) const {
    if (notYetDue == NotYetDue::LeftOut || sheet.notYetDue().empty()) return;
    Section section{.heading = "Not yet due"};
    addLines(section, sheet.notYetDue());
    section.totals.push_back({"Balance with what is not yet due", amount(sheet.finalBalance())});
    printed.sections.push_back(std::move(section));
}

void StatementPaper::addWhole(PrintedStatement& printed, const StatementSheet& sheet,
                              std::span<const StatementSheet::Line> due, NotYetDue notYetDue) const {
    Section section = dueSection(sheet, due);
    if (sheet.balance().isNegative()) section.totals.push_back({"Outstanding", amount(sheet.outstanding())});
    printed.sections.push_back(std::move(section));
    addNotYetDue(printed, sheet, notYetDue);
}

void StatementPaper::addTag(PrintedStatement& printed, std::string_view tag, const StatementSheet& sheet,
                            NotYetDue notYetDue) const {
    Section section = dueSection(sheet, sheet.due());
    section.heading = tag.empty() ? "\"\"" : std::string(tag);
    section.isPart = true;
    printed.sections.push_back(std::move(section));
    addNotYetDue(printed, sheet, notYetDue);
}

void StatementPaper::addRemark(PrintedStatement& printed) {
    const auto hasGenerated = [](const Section& section) {
        return std::ranges::any_of(section.lines, &PrintedStatement::Line::isGenerated);
    };
    if (std::ranges::any_of(printed.sections, hasGenerated))
        printed.remarks.emplace_back("In italics: not recorded, but reckoned from the terms of the tenure");
}

} // namespace estatebook
