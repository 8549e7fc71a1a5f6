// SPDX-License-Identifier: MIT
#include "estatebook/StatementSheet.hpp"

#include "tenure/TKTenure.hpp"

namespace estatebook {

using platform::Date;
using platform::Decimal;
using platform::DecimalBehavior;

namespace {

/// Lines one after another, with the balance that their shown amounts give and the one that is exact.
class Sum {
public:
    explicit Sum(const std::optional<DecimalBehavior>& rounding) : rounding_(rounding) {}

    StatementSheet::Line line(const TKStatementItem& item) {
        const TKLedgerTransaction& transaction = *item.transaction();
        StatementSheet::Line line;
        line.when = transaction.when();
        if (const auto what = transaction.what()) line.what = what->string();
        line.amount = transaction.amount();
        line.isGenerated = TKTenure::isGenerated(transaction);
        if (rounding_ && line.isGenerated && line.amount)
            line.amount = line.amount->decimalNumberByRoundingAccordingToBehavior(*rounding_);
        exact_ = item.balance();
        shown_ = rounding_ ? shown_ + line.amount.value_or(Decimal::zero()) : exact_;
        line.balance = shown_;
        return line;
    }

    /// The line that leads from the shown balance to the rounded one, when there is something between them.
    std::optional<StatementSheet::Line> roundingLine() {
        if (!rounding_) return std::nullopt;
        const Decimal rounded = exact_.decimalNumberByRoundingAccordingToBehavior(*rounding_);
        if (rounded == shown_) return std::nullopt;
        StatementSheet::Line line{std::nullopt, "Rounding", rounded - shown_, rounded, true, true};
        shown_ = rounded;
        return line;
    }

    [[nodiscard]] const Decimal& balance() const noexcept { return shown_; }

private:
    const std::optional<DecimalBehavior>& rounding_;
    Decimal shown_;
    Decimal exact_;
};

} // namespace

StatementSheet StatementSheet::of(const TKStatement& statement, Date asOf,
                                  const std::optional<DecimalBehavior>& rounding) {
    StatementSheet sheet;
    Sum sum(rounding);
    const auto close = [&](std::vector<Line>& lines, Decimal& balance) {
        if (auto line = sum.roundingLine()) lines.push_back(*std::move(line));
        balance = sum.balance();
    };
    // The lines stand by date, those without one first: from the first that is not yet due none is.
    bool isDue = true;
    const auto items = statement.items();
    sheet.due_.reserve(items->count() + 1);
    for (const TKStatementItem& item : *items) {
        const auto when = item.transaction()->when();
        if (isDue && when && *when > asOf) {
            isDue = false;
            close(sheet.due_, sheet.balance_);
        }
        (isDue ? sheet.due_ : sheet.notYetDue_).push_back(sum.line(item));
    }
    if (isDue) close(sheet.due_, sheet.balance_);
    if (!isDue) close(sheet.notYetDue_, sheet.finalBalance_);
    if (isDue) sheet.finalBalance_ = sheet.balance_;
    return sheet;
}

Decimal StatementSheet::outstanding() const {
    return balance_.isNegative() ? -balance_ : Decimal::zero();
}

} // namespace estatebook
