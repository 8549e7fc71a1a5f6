// SPDX-License-Identifier: MIT
#pragma once

/// StatementSheet: a tenure's statement as it is put on paper.
///
/// What was recorded stands with its own amount. Rent reckoned to 38 digits is rounded to the currency, line by
/// line, and what is then missing to the rounded balance is a line of its own, "Rounding". Lines dated after the day
/// of the statement are not yet due; they follow the others, with balances that run on.
///
///     const StatementSheet sheet = StatementSheet::of(*tenure->statement(), today, rounding);
///     sheet.due().back().balance == sheet.balance();
///
/// The trap: rounded lines need not add up to the rounded balance; that is what the line "Rounding" is for. Without a
/// rounding all digits are kept, and there is no such line.

#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"
#include "statement/TKStatement.hpp"

#include <optional>
#include <string>
#include <vector>

namespace estatebook {

class StatementSheet {
public:
    struct Line {
        std::optional<platform::Date> when;
        std::string what;
        std::optional<platform::Decimal> amount;
        platform::Decimal balance;
        /// Nobody recorded the line: it follows from the terms, or from rounding.
        bool isGenerated = false;
        /// The line is the difference that rounding leaves.
        bool isRounding = false;
    };

    /// Linear in the lines. Raises OverflowException for a sum that no decimal holds.
    [[nodiscard]] static StatementSheet of(const TKStatement& statement, platform::Date asOf,
                                           const std::optional<platform::DecimalBehavior>& rounding);

    [[nodiscard]] const std::vector<Line>& due() const noexcept { return due_; }
    [[nodiscard]] const std::vector<Line>& notYetDue() const noexcept { return notYetDue_; }
    /// The balance of what is due; below zero that much is outstanding.
    [[nodiscard]] const platform::Decimal& balance() const noexcept { return balance_; }
    /// The balance of all lines.
    [[nodiscard]] const platform::Decimal& finalBalance() const noexcept { return finalBalance_; }
    /// What is owed by the day of the statement; 0 when nothing is.
    [[nodiscard]] platform::Decimal outstanding() const;

private:
    std::vector<Line> due_;
    std::vector<Line> notYetDue_;
    platform::Decimal balance_;
    platform::Decimal finalBalance_;
};

} // namespace estatebook
