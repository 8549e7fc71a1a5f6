// SPDX-License-Identifier: MIT
#include "estatebook-desktop/statement/StatementParts.hpp"

#include "estatebook-desktop/session/BookSession.hpp"
#include "estatebook/OutstandingLines.hpp"

#include <algorithm>

namespace estatebook::desktop {

using platform::Date;
using platform::Ref;

namespace {

using Line = StatementParts::Line;
using Part = StatementParts::Part;

/// Lines of the sheet, each with the movement behind it: those of the statement stand in the same order, and lines that only
/// rounding leaves are between them.
class LineMaker {
public:
    explicit LineMaker(const TKStatement& statement) : items_(statement.items()) {}

    std::vector<Line> next(const std::vector<StatementSheet::Line>& lines) {
        std::vector<Line> made;
        made.reserve(lines.size());
        for (const StatementSheet::Line& line : lines) made.push_back(lineOf(line));
        return made;
    }

private:
    Line lineOf(const StatementSheet::Line& line) {
        if (line.isRounding) return {line, {}, nullptr};
        const Ref<TKLedgerTransaction>& movement = (*items_)[place_++].transaction();
        Line made{line, {}, nullptr};
        if (const auto names = movement->tagNames()) made.tags = names->editableString();
        if (!line.isGenerated)
            made.transaction = Ref<TKTransaction>(dynamic_cast<TKTransaction*>(movement.get()));
        return made;
    }

    Ref<platform::ArrayOf<TKStatementItem>> items_;
    std::size_t place_ = 0;
};

class Maker {
public:
    Maker(const BookSession& session, const TKStatement& statement, StatementParts::Choice choice)
        : today_(session.today()), rounding_(session.rounding()), statement_(statement), choice_(choice) {}

    StatementParts make() {
        if (choice_.isByTag)
            addByTag();
        else
            addWhole();
        return std::move(made_);
    }

private:
    Part& add(const std::optional<std::string>& tag, const TKStatement& statement) {
        LineMaker lines(statement);
        Part& part = made_.parts.emplace_back(tag, StatementSheet::of(statement, today_, rounding_),
                                              std::vector<Line>());
        part.due = lines.next(part.sheet.due());
        if (!choice_.isOutstandingOnly) part.notYetDue = lines.next(part.sheet.notYetDue());
        return part;
    }

    void addWhole() {
        Part& part = add(std::nullopt, statement_);
        if (!choice_.isOutstandingOnly) return;
        const std::size_t hidden = linesBeforeOutstanding(part.sheet, statement_, today_);
        part.due.erase(part.due.begin(), part.due.begin() + static_cast<std::ptrdiff_t>(hidden));
    }

    void addByTag() {
        const auto byTag = StatementByTag::of(
            statement_, today_, choice_.isOutstandingOnly ? ShownLines::Outstanding : ShownLines::All);
        for (const TKStatement& ofTag : *byTag.tagged) add(ofTag.primaryTag()->string(), ofTag);
        made_.untaggedCount = byTag.untaggedCount;
        made_.untaggedAmount = StatementSheet::of(*byTag.untagged, today_, rounding_).finalBalance();
    }

    Date today_;
    platform::DecimalBehavior rounding_;
    const TKStatement& statement_;
    StatementParts::Choice choice_;
    StatementParts made_;
};

} // namespace

Reckoned<StatementParts> StatementParts::of(const BookSession& session, TKTenure& tenure, Choice choice) {
    const auto statement = session.statementOf(tenure);
    if (!statement) return statement.error();
    return reckon([&] { return Maker(session, **statement, choice).make(); });
}

} // namespace estatebook::desktop
