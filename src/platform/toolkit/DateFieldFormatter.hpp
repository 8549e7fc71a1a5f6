// SPDX-License-Identifier: MIT
#pragma once

/// DateFieldFormatter: writes dates as DateFormatter does, a day of medium length, and reads what is typed in their place.
///
///     auto formatter = makeRef<DateFieldFormatter>();
///     formatter->setLenient(true);
///     formatter->getObjectValueForStringRangeError(value, String::make("1/2/2025"), nullptr, &error);
///
/// Locale and zone are those of the moment it was made until it is given others. A date that is read is the first instant of its day. Dates
/// beyond the years of books (1583 to 9999) are written and not read.

#include "platform/calendar/TimeZone.hpp"
#include "platform/text/DateFormatter.hpp"
#include "platform/text/Locale.hpp"
#include "platform/text/MediumDateReader.hpp"
#include "platform/toolkit/FieldFormatter.hpp"

#include <string_view>

namespace estatebook::platform {

class ESTATEBOOK_API DateFieldFormatter : public FieldFormatter {
public:
    DateFieldFormatter();

    [[nodiscard]] Locale locale() const noexcept { return locale_; }
    void setLocale(Locale locale);
    [[nodiscard]] const Ref<TimeZone>& timeZone() const noexcept { return zone_; }
    /// REQUIRES: a zone.
    void setTimeZone(const Ref<TimeZone>& zone);
    /// isLenient: whether texts are read leniently (MediumDateReader.hpp); false at first.
    [[nodiscard]] bool isLenient() const noexcept { return isLenient_; }
    void setLenient(bool lenient) noexcept { isLenient_ = lenient; }

    [[nodiscard]] Ref<String> stringForObjectValue(const Value& value) const override;
    /// A null text is no date.
    bool getObjectValueForStringRangeError(Value& object, const Ref<String>& string, TextRange* range,
                                           Ref<Error>* error) const override;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "DateFieldFormatter"; }

protected:
    ~DateFieldFormatter() override;

private:
    Locale locale_;
    Ref<TimeZone> zone_;
    bool isLenient_ = false;
    Ref<DateFormatter> writer_;
    Ref<MediumDateReader> reader_;
};

} // namespace estatebook::platform
