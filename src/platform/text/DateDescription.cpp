// SPDX-License-Identifier: MIT
#include "platform/text/DateDescription.hpp"

#include <unicode/datefmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <memory>

namespace estatebook::platform {

std::string descriptionWithLocale(Date date, Locale locale, const Ref<TimeZone>& zone) {
    constexpr double MillisecondsPerSecond = 1000;
    const std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createDateTimeInstance(icu::DateFormat::kFull, icu::DateFormat::kFull,
                                                icu::Locale(std::string(locale.identifier()).c_str())));
    if (!format || !TimeZone::isCalendarDate(date)) return date.description();

    const Ref<TimeZone> shown = zone ? zone : TimeZone::defaultTimeZone();
    auto* named = icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(std::string(shown->name())));
    format->adoptTimeZone(named);

    // The words are ICU's, the wall time is ours: where the two know different offsets, ours hold.
    const double instant = date.unixSeconds() * MillisecondsPerSecond;
    std::int32_t raw = 0;
    std::int32_t saving = 0;
    UErrorCode status = U_ZERO_ERROR;
    named->getOffset(instant, false, raw, saving, status);
    const double ours = shown->offsetAt(date) * MillisecondsPerSecond;
    icu::UnicodeString written;
    format->format(U_SUCCESS(status) ? instant + ours - (raw + saving) : instant, written);
    std::string bytes;
    return written.toUTF8String(bytes);
}

} // namespace estatebook::platform
