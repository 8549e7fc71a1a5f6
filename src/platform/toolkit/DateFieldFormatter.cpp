// SPDX-License-Identifier: MIT
#include "platform/toolkit/DateFieldFormatter.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/text/Text.hpp"
#include "platform/toolkit/ReadPart.hpp"

#include <string>

namespace estatebook::platform {

DateFieldFormatter::DateFieldFormatter() : locale_(Locale::current()), zone_(Calendar::current().timeZone()) {
    setLocale(locale_);
}

DateFieldFormatter::~DateFieldFormatter() = default;

void DateFieldFormatter::setLocale(Locale locale) {
    locale_ = locale;
    writer_ = DateFormatter::mediumFor(locale_, zone_);
    reader_ = MediumDateReader::make(locale_);
}

void DateFieldFormatter::setTimeZone(const Ref<TimeZone>& zone) {
    zone_ = zone;
    writer_ = DateFormatter::mediumFor(locale_, zone_);
}

Ref<String> DateFieldFormatter::stringForObjectValue(const Value& value) const {
    const auto date = value.date();
    return date ? String::make(writer_->stringFromDate(*date)) : nullptr;
}

bool DateFieldFormatter::getObjectValueForStringRangeError(Value& object, const Ref<String>& string,
                                                           TextRange* range, Ref<Error>* error) const {
    if (!string) return failToRead("there is no text to read a date from", error);
    const std::string_view text = partToRead(string->view(), range);
    const auto manner = isLenient_ ? MediumDateReader::Manner::Lenient : MediumDateReader::Manner::Strict;
    const auto found = reader_->read(text, manner);
    if (!found || !isReadWhole(text, found->end, range))
        return failToRead("\"" + std::string(text) + "\" is no date; one is written like " +
                              writer_->stringFromDay(CivilDay::fromYearMonthDay(2025, 1, 31)),
                          error);
    if (!Calendar::isBookDay(found->day))
        return failToRead("\"" + std::string(text) + "\" lies outside of the years 1583 to 9999", error);
    if (range) range->length = found->end;
    object = Calendar(zone_).startOfCivilDay(found->day);
    return true;
}

} // namespace estatebook::platform
