// SPDX-License-Identifier: MIT
#include "platform/text/MediumDateReader.hpp"

#include "platform/text/Text.hpp"
#include "platform/values/Exception.hpp"

#include <unicode/datefmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <cmath>
#include <mutex>
#include <string>

namespace estatebook::platform {

namespace {

constexpr double MillisecondsPerDay = 86400e3;

} // namespace

class MediumDateReader::Formats {
public:
    explicit Formats(Locale locale)
        : strict_(make(locale, Manner::Strict)), lenient_(make(locale, Manner::Lenient)) {}

    std::optional<UDate> read(const icu::UnicodeString& text, Manner manner, std::int32_t& end) const {
        const std::lock_guard lock(mutex_);
        icu::ParsePosition position(0);
        const UDate date = (manner == Manner::Strict ? strict_ : lenient_)->parse(text, position);
        if (position.getErrorIndex() >= 0 || position.getIndex() == 0) return std::nullopt;
        end = position.getIndex();
        return date;
    }

private:
    static std::unique_ptr<icu::DateFormat> make(Locale locale, Manner manner) {
        const std::string name(locale.identifier());
        std::unique_ptr<icu::DateFormat> format(
            icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, icu::Locale(name.c_str())));
        if (!format) throw InternalInconsistencyException("there is no date format for the locale " + name);
        format->adoptTimeZone(icu::TimeZone::createTimeZone("UTC"));
        format->setLenient(manner == Manner::Lenient);
        if (auto* simple = dynamic_cast<icu::SimpleDateFormat*>(format.get())) {
            constexpr CivilDay first = CivilDay::fromYearMonthDay(1950, 1, 1);
            UErrorCode status = U_ZERO_ERROR;
            simple->set2DigitYearStart(static_cast<UDate>(first.number) * MillisecondsPerDay, status);
        }
        return format;
    }

    mutable std::mutex mutex_;
    std::unique_ptr<icu::DateFormat> strict_;
    std::unique_ptr<icu::DateFormat> lenient_;
};

MediumDateReader::MediumDateReader(Locale locale)
    : Object(Counting::Shared), formats_(std::make_unique<Formats>(locale)) {}

MediumDateReader::~MediumDateReader() = default;

Ref<MediumDateReader> MediumDateReader::make(Locale locale) {
    return Ref<MediumDateReader>(new MediumDateReader(locale));
}

std::optional<MediumDateReader::Found> MediumDateReader::read(std::string_view text, Manner manner) const {
    const auto units = toUtf16(text);
    if (!units) return std::nullopt;
    const icu::UnicodeString unicode(units->data(), static_cast<std::int32_t>(units->size()));
    std::int32_t end = 0;
    const auto date = formats_->read(unicode, manner, end);
    // No further than days can be told apart in.
    constexpr double MostDays = 1e10;
    if (!date || !std::isfinite(*date) || std::abs(*date / MillisecondsPerDay) > MostDays)
        return std::nullopt;
    std::string before;
    unicode.tempSubString(0, end).toUTF8String(before);
    return Found{{static_cast<std::int64_t>(std::floor(*date / MillisecondsPerDay))}, before.size()};
}

} // namespace estatebook::platform
