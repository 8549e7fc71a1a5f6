// SPDX-License-Identifier: MIT
#include "platform/toolkit/NumberFieldFormatter.hpp"

#include "platform/toolkit/ReadPart.hpp"

#include <algorithm>
#include <string>

namespace estatebook::platform {

NumberFieldFormatter::NumberFieldFormatter() : locale_(Locale::current()) {
    renew();
}

NumberFieldFormatter::~NumberFieldFormatter() = default;

void NumberFieldFormatter::renew() {
    text_ = NumberText::make(locale_, style_);
}

void NumberFieldFormatter::setLocale(Locale locale) {
    locale_ = locale;
    renew();
}

void NumberFieldFormatter::setMinimumFractionDigits(int digits) {
    style_.minimumFractionDigits = std::max(digits, 0);
    style_.maximumFractionDigits = std::max(style_.maximumFractionDigits, style_.minimumFractionDigits);
    renew();
}

void NumberFieldFormatter::setMaximumFractionDigits(int digits) {
    style_.maximumFractionDigits = std::max(digits, 0);
    style_.minimumFractionDigits = std::min(style_.minimumFractionDigits, style_.maximumFractionDigits);
    renew();
}

void NumberFieldFormatter::setUsesGroupingSeparator(bool uses) {
    style_.usesGrouping = uses;
    renew();
}

void NumberFieldFormatter::setPositiveSuffix(std::string_view suffix) {
    style_.positiveSuffix = suffix;
    renew();
}

void NumberFieldFormatter::setNegativeSuffix(std::string_view suffix) {
    style_.negativeSuffix = suffix;
    renew();
}

Ref<String> NumberFieldFormatter::stringForObjectValue(const Value& value) const {
    const auto number = value.number();
    return number ? String::make(text_->write(*number)) : nullptr;
}

bool NumberFieldFormatter::getObjectValueForStringRangeError(Value& object, const Ref<String>& string,
                                                             TextRange* range, Ref<Error>* error) const {
    if (!string) return failToRead("there is no text to read a number from", error);
    const std::string_view text = partToRead(string->view(), range);
    const auto found =
        text_->read(text, isLenient_ ? NumberText::Manner::Lenient : NumberText::Manner::Strict);
    if (!found || !isReadWhole(text, found->end, range))
        return failToRead("\"" + std::string(text) + "\" is no number; one is written like " +
                              text_->write(Number(Decimal(1234))),
                          error);
    if (range) range->length = found->end;
    const Number number(found->number);
    const std::int64_t whole = number.integerValue();
    if (generatesDecimals_)
        object = found->number;
    else if (Decimal(whole) == found->number)
        object = whole;
    else
        object = number.doubleValue();
    return true;
}

} // namespace estatebook::platform
