// SPDX-License-Identifier: MIT
#include "platform/text/NumberText.hpp"

#include "platform/text/Text.hpp"
#include "platform/values/Exception.hpp"

#include <unicode/decimfmt.h>
#include <unicode/fmtable.h>

namespace estatebook::platform {

namespace {

icu::UnicodeString unicodeOf(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

std::size_t blanksAtStart(std::string_view text) {
    // The trimming keeps line breaks, which stand in no number.
    const std::string_view fromEnd = trimWhitespace(text);
    return fromEnd.empty() ? text.size() : static_cast<std::size_t>(fromEnd.data() - text.data());
}

} // namespace

class NumberText::Formats {
public:
    Formats(Locale locale, const Style& style)
        : written(make(locale)), strict(make(locale)), lenient(make(locale)) {
        written->setMinimumFractionDigits(style.minimumFractionDigits);
        written->setMaximumFractionDigits(style.maximumFractionDigits);
        written->setGroupingUsed(style.usesGrouping);
        written->setPositiveSuffix(unicodeOf(style.positiveSuffix));
        written->setNegativeSuffix(unicodeOf(style.negativeSuffix));
        strict->setGroupingUsed(style.usesGrouping);
        lenient->setGroupingUsed(true);
        for (icu::DecimalFormat* reading : {strict.get(), lenient.get()}) {
            reading->setLenient(false); // of groups, even if the suffix may be absent
            reading->setParseNoExponent(true);
        }
    }

    std::unique_ptr<icu::DecimalFormat> written;
    std::unique_ptr<icu::DecimalFormat> strict;
    std::unique_ptr<icu::DecimalFormat> lenient;

private:
    static std::unique_ptr<icu::DecimalFormat> make(Locale locale) {
        const std::string name(locale.identifier());
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::NumberFormat> format(
            icu::NumberFormat::createInstance(icu::Locale(name.c_str()), UNUM_DECIMAL, status));
        auto* decimal = dynamic_cast<icu::DecimalFormat*>(format.get());
        if (U_FAILURE(status) || !decimal)
            throw InternalInconsistencyException("there is no number format for the locale " + name);
        static_cast<void>(format.release());
        decimal->setRoundingMode(icu::DecimalFormat::kRoundHalfEven);
        decimal->setMinimumIntegerDigits(1);
        return std::unique_ptr<icu::DecimalFormat>(decimal);
    }
};

NumberText::NumberText(Locale locale, const Style& style)
    : Object(Counting::Shared), style_(style), formats_(std::make_unique<Formats>(locale, style)) {}

NumberText::~NumberText() = default;

Ref<NumberText> NumberText::make(Locale locale, const Style& style) {
    return Ref<NumberText>(new NumberText(locale, style));
}

std::string NumberText::write(const Number& number) const {
    icu::UnicodeString text;
    const Number::Kind kind = number.kind();
    if (kind == Number::Kind::Single || kind == Number::Kind::Double || number.decimalValue().isNaN()) {
        formats_->written->format(number.doubleValue(), text);
    } else {
        const std::string digits = number.decimalValue().toString();
        UErrorCode status = U_ZERO_ERROR;
        formats_->written->format(icu::StringPiece(digits), text, nullptr, status);
    }
    std::string bytes;
    return text.toUTF8String(bytes);
}

std::optional<NumberText::Found> NumberText::read(std::string_view text, Manner manner) const {
    if (!isWellFormedUtf8(text)) return std::nullopt;
    const std::size_t start = blanksAtStart(text);
    const icu::UnicodeString unicode = unicodeOf(text.substr(start));
    icu::ParsePosition position(0);
    icu::Formattable parsed;
    (manner == Manner::Strict ? formats_->strict : formats_->lenient)->parse(unicode, parsed, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() == 0) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    const icu::StringPiece digits = parsed.getDecimalNumber(status);
    if (U_FAILURE(status) || digits.empty()) return std::nullopt;
    const Decimal number =
        Decimal::parse(std::string_view(digits.data(), static_cast<std::size_t>(digits.length())));
    if (number.isNaN()) return std::nullopt;

    std::string before;
    unicode.tempSubString(0, position.getIndex()).toUTF8String(before);
    std::size_t end = start + before.size();
    const std::string& suffix = number < Decimal(0) ? style_.negativeSuffix : style_.positiveSuffix;
    if (text.substr(end).starts_with(suffix)) return Found{number, end + suffix.size()};
    if (manner == Manner::Strict) return std::nullopt;
    // The word without the blank before it, or with more of them.
    const std::string_view word = trimWhitespace(suffix);
    const std::size_t wordStart = end + blanksAtStart(text.substr(end));
    if (!word.empty() && text.substr(wordStart).starts_with(word)) end = wordStart + word.size();
    return Found{number, end};
}

} // namespace estatebook::platform
