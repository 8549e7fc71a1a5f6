// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/ShownValue.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/toolkit/qt/QtText.hpp"
#include "platform/toolkit/qt/WallTime.hpp"

#include <QDate>
#include <QDateTime>

#include <array>
#include <charconv>
#include <string>

namespace estatebook::platform {

namespace {

/// A double as decimal would bring the noise of its last digits along; what a person typed is its shortest text.
std::string shortestText(double number) {
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return std::string(text.data(), end);
}

} // namespace

QString shownText(const Value& value, const FieldFormatter* formatter) {
    if (formatter) return qString(formatter->stringForObjectValue(value));
    if (value.isAbsent() || value.isNullObject()) return QString();
    return qString(value.description());
}

QVariant shownVariant(const Value& value) {
    if (value.isAbsent() || value.isNullObject()) return QVariant();
    if (const auto date = value.date())
        return Calendar::current().isInBookYears(*date) ? QVariant(wallTimeOf(*date)) : QVariant();
    if (const auto number = value.number()) {
        switch (number->kind()) {
        case Number::Kind::Boolean:
            return value.boolValue();
        case Number::Kind::Signed:
            return static_cast<qlonglong>(number->integerValue());
        case Number::Kind::Unsigned:
            return static_cast<qulonglong>(value.unsignedIntegerValue());
        default:
            return number->doubleValue();
        }
    }
    return qString(value.description());
}

Value valueOfVariant(const QVariant& variant) {
    switch (variant.typeId()) {
    case QMetaType::Bool:
        return variant.toBool();
    case QMetaType::Int:
    case QMetaType::LongLong:
        return static_cast<std::int64_t>(variant.toLongLong());
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return static_cast<std::uint64_t>(variant.toULongLong());
    case QMetaType::Float:
    case QMetaType::Double:
        return Decimal::parse(shortestText(variant.toDouble()));
    case QMetaType::QDate:
        return dateOfWallTime(QDateTime(variant.toDate(), QTime(0, 0), Qt::UTC));
    case QMetaType::QDateTime:
        return dateOfWallTime(variant.toDateTime());
    default:
        break;
    }
    const QString text = variant.toString();
    if (text.isEmpty()) return {};
    return String::make(textOf(text));
}

} // namespace estatebook::platform
