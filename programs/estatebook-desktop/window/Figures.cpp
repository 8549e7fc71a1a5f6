// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/Figures.hpp"

#include "estatebook-desktop/session/BookSession.hpp"
#include "estatebook/Amounts.hpp"

#include <QCoreApplication>

#include <utility>

namespace estatebook::desktop {

using platform::Calendar;
using platform::CivilDay;
using platform::Date;
using platform::Decimal;
using platform::Ref;
using platform::String;

namespace {

/// What ReckoningError says, so that it is translated.
[[maybe_unused]] constexpr const char* ReckoningWords[] = {
    QT_TRANSLATE_NOOP("Figures", "division by zero"), QT_TRANSLATE_NOOP("Figures", "overflow"),
    QT_TRANSLATE_NOOP("Figures", "underflow"), QT_TRANSLATE_NOOP("Figures", "invalid argument")};
constexpr qsizetype DigitsOfThousands = 3;
constexpr QChar MinusSign(0x2212);

/// Whether the marks between thousands stand where such marks do, and nowhere else.
bool isGrouped(const QStringList& groups) {
    for (qsizetype i = 1; i < groups.size(); ++i)
        if (groups[i].size() != DigitsOfThousands) return false;
    return groups.size() == 1 || (!groups.front().isEmpty() && groups.front().size() <= DigitsOfThousands);
}

} // namespace

Figures::Figures(platform::DecimalBehavior rounding, QString currency)
    : calendar_(Calendar::current()), days_(platform::DateFormatter::medium()), rounding_(rounding),
      currency_(std::move(currency)) {}

Figures Figures::of(const BookSession& session) {
    return {session.rounding(), textOf(session.currencyCode())};
}

QString Figures::plain(const std::optional<Decimal>& amount) const {
    if (!amount) return {};
    QString text = QString::fromStdString(amountText(*amount, rounding_.scale));
    return text.replace(QLatin1Char('.'), locale_.decimalPoint());
}

QString Figures::amount(const Decimal& amount) const {
    QString text = QString::fromStdString(amountText(amount, rounding_.scale));
    const bool isNegative = text.startsWith(QLatin1Char('-'));
    if (isNegative) text.remove(0, 1);
    qsizetype point = text.indexOf(QLatin1Char('.'));
    if (point >= 0) text.replace(point, 1, locale_.decimalPoint());
    if (point < 0) point = text.size();
    for (qsizetype place = point - DigitsOfThousands; place > 0; place -= DigitsOfThousands)
        text.insert(place, locale_.groupSeparator());
    return isNegative ? MinusSign + text : text;
}

QString Figures::amount(const std::optional<Decimal>& amount) const {
    return amount ? this->amount(*amount) : QString();
}

QString Figures::amount(const Reckoned<Decimal>& amount) const {
    return amount ? this->amount(*amount) : textOf(amount.error());
}

std::optional<Decimal> Figures::amountOf(const QString& text) const {
    QString digits =
        text.simplified().remove(QLatin1Char(' ')).remove(QChar(QChar::Nbsp)).remove(QChar(0x202F));
    digits.replace(MinusSign, QLatin1Char('-'));
    const bool isNegative = digits.startsWith(QLatin1Char('-'));
    if (isNegative) digits.remove(0, 1);
    const QString point = locale_.decimalPoint();
    const qsizetype place = digits.lastIndexOf(point);
    const QString fraction = place < 0 ? QString() : digits.mid(place + 1);
    const QString whole = place < 0 ? digits : digits.left(place);
    const QStringList groups = whole.split(locale_.groupSeparator());
    if (!isGrouped(groups)) return std::nullopt;
    QString plain = groups.join(QString());
    if (plain.isEmpty() && fraction.isEmpty()) return std::nullopt;
    while (plain.startsWith(QLatin1Char('0'))) plain.remove(0, 1);
    if (plain.isEmpty()) plain = QStringLiteral("0");
    if (!fraction.isEmpty()) plain += QLatin1Char('.') + fraction;
    for (const QChar each : std::as_const(plain))
        if (each != QLatin1Char('.') && (each < QLatin1Char('0') || each > QLatin1Char('9')))
            return std::nullopt;
    if (plain.count(QLatin1Char('.')) > 1) return std::nullopt;
    const auto amount = Decimal::parseExact((isNegative ? QStringLiteral("-") + plain : plain).toStdString());
    return amount;
}

Decimal Figures::rounded(const Decimal& amount) const {
    return amount.decimalNumberByRoundingAccordingToBehavior(rounding_);
}

QString Figures::day(const std::optional<Date>& date) const {
    return date ? QString::fromStdString(days_->stringFromDate(*date)) : QString();
}

QDate Figures::dateOf(Date date) const {
    const platform::YearMonthDay day = calendar_.civilDay(date).yearMonthDay();
    return {static_cast<int>(day.year), day.month, day.day};
}

Date Figures::instantOf(const QDate& date) const {
    return calendar_.startOfCivilDay(CivilDay::fromYearMonthDay(date.year(), date.month(), date.day()));
}

QString Figures::titled(const QString& title) const {
    return currency_.isEmpty() ? title
                               : QCoreApplication::translate("Figures", "%1, %2").arg(title, currency_);
}

QString textOf(const ReckoningError& error) {
    return QCoreApplication::translate("Figures", std::string(error.words).c_str());
}

QString textOf(const Ref<String>& text) {
    if (!text) return {};
    const std::string_view view = text->view();
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

Ref<String> textFrom(const QString& text) {
    const QByteArray bytes = text.trimmed().toUtf8();
    if (bytes.isEmpty()) return nullptr;
    return String::make(std::string_view(bytes.data(), static_cast<std::size_t>(bytes.size())));
}

} // namespace estatebook::desktop
