// SPDX-License-Identifier: MIT
#pragma once

/// Figures: amounts, days and counts as windows show and read them, in the user's locale.
///
///     const Figures figures = Figures::of(session);
///     figures.amount(tenure.balance());              // "−5,624.50"
///     figures.day(tenure.startDate());               // "15 Feb 2025"
///
/// Amounts keep all their digits, at least as many as the currency has.

#include "estatebook/Reckoned.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/text/DateFormatter.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/String.hpp"

#include <QDate>
#include <QLocale>
#include <QString>

#include <optional>
#include <string>

namespace estatebook::desktop {

class BookSession;

class Figures {
public:
    [[nodiscard]] static Figures of(const BookSession& session);

    [[nodiscard]] QString amount(const platform::Decimal& amount) const;
    /// Empty for none.
    [[nodiscard]] QString amount(const std::optional<platform::Decimal>& amount) const;
    /// Words in the place of what cannot be reckoned.
    [[nodiscard]] QString amount(const Reckoned<platform::Decimal>& amount) const;
    /// As `amount`, ready to be edited: without marks between thousands.
    [[nodiscard]] QString plain(const std::optional<platform::Decimal>& amount) const;
    /// What somebody typed; none when it is no amount. Blanks are passed over, and so are marks between thousands.
    [[nodiscard]] std::optional<platform::Decimal> amountOf(const QString& text) const;
    /// Rounded to the currency.
    [[nodiscard]] platform::Decimal rounded(const platform::Decimal& amount) const;

    /// A day of medium length; empty for none.
    [[nodiscard]] QString day(const std::optional<platform::Date>& date) const;
    [[nodiscard]] QDate dateOf(platform::Date date) const;
    /// The first instant of the day.
    [[nodiscard]] platform::Date instantOf(const QDate& date) const;
    [[nodiscard]] const platform::Calendar& calendar() const noexcept { return calendar_; }

    /// The fraction digits that an amount has at least.
    [[nodiscard]] int digits() const noexcept { return rounding_.scale; }
    /// "GBP"; empty when the book names no currency.
    [[nodiscard]] const QString& currency() const noexcept { return currency_; }
    /// "Balance, GBP"
    [[nodiscard]] QString titled(const QString& title) const;

private:
    Figures(platform::DecimalBehavior rounding, QString currency);

    QLocale locale_;
    platform::Calendar calendar_;
    platform::Ref<platform::DateFormatter> days_;
    platform::DecimalBehavior rounding_;
    QString currency_;
};

/// Why something cannot be reckoned.
[[nodiscard]] QString textOf(const ReckoningError& error);
/// The text of the model as Qt has it; empty for null.
[[nodiscard]] QString textOf(const platform::Ref<platform::String>& text);
/// Null for an empty text; blanks at the ends are taken off.
[[nodiscard]] platform::Ref<platform::String> textFrom(const QString& text);

} // namespace estatebook::desktop
