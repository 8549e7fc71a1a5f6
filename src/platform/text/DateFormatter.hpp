// SPDX-License-Identifier: MIT
#pragma once

/// DateFormatter: writes a date the way the user's locale writes a day of medium length: "Mar 1, 2024" or
/// "1 mars 2024", without a time.
///
/// A formatter keeps the locale and the time zone it was made with. It is immutable and may be used from
/// any thread; making one costs an allocation, since what there is to know of a locale is kept with it.
///
/// The trap: a locale decides the digits and the calendar as well. th_TH writes 2567 for 2024.
///
///     Ref<DateFormatter> formatter = DateFormatter::medium();
///     formatter->stringFromDate(date);                        // "Mar 1, 2024"
///     char text[DateFormatter::RoomNeeded];                   // without an allocation
///     std::string_view day(text, formatter->writeDate(text, date));
///
/// The texts are those of ICU for its medium date style, byte for byte; on which day an instant falls is told
/// by our own Calendar, so that every part of the system agrees about it.

#include "EstateBook_ModelExport.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/text/Locale.hpp"
#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

namespace estatebook::platform {

class MediumDateTable;

class ESTATEBOOK_API DateFormatter final : public Object {
public:
    /// The text of a day, found but not written yet, for those who write it several times. Of use to the formatter that
    /// gave it.
    class DayText {
    public:
        constexpr DayText() noexcept = default;

    private:
        friend class DateFormatter;
        constexpr explicit DayText(std::uint64_t cells) noexcept : cells_(cells) {}
        std::uint64_t cells_ = 0;
    };

    /// No date text is longer, in bytes; a longer one would be cut, and no locale of ICU has one.
    static constexpr std::size_t MaximalLength = 128;
    /// The bytes that `writeDate` and `writeDay` need; what stands behind the text is left undefined.
    static constexpr std::size_t RoomNeeded = MaximalLength + 16;

    /// dateStyle medium, timeStyle none, for the current locale and the default time zone of this moment.
    [[nodiscard]] static Ref<DateFormatter> medium();

    /// The same for a locale and a zone; a null zone is the default one.
    [[nodiscard]] static Ref<DateFormatter> mediumFor(Locale locale, const Ref<TimeZone>& zone = nullptr);

    /// stringFromDate: the text of the day on which the date falls.
    [[nodiscard]] std::string stringFromDate(Date date) const {
        return stringFromDay(calendar_.civilDay(date));
    }
    [[nodiscard]] std::string stringFromDay(CivilDay day) const;

    /// Writes the same text at `out` and returns its end; allocates nothing for locales that write ordinary
    /// years in the civil calendar. REQUIRES: RoomNeeded bytes at `out`.
    char* writeDate(char* out, Date date) const { return writeDay(out, calendar_.civilDay(date)); }
    char* writeDay(char* out, CivilDay day) const { return write(out, dayText(day)); }

    /// The same in two steps.
    [[nodiscard]] DayText dayText(Date date) const { return dayText(calendar_.civilDay(date)); }
    [[nodiscard]] DayText dayText(CivilDay day) const noexcept;
    char* write(char* out, DayText text) const;

    [[nodiscard]] Locale locale() const noexcept { return locale_; }
    [[nodiscard]] Ref<TimeZone> timeZone() const noexcept { return calendar_.timeZone(); }

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "DateFormatter"; }

private:
    DateFormatter(Locale locale, const Calendar& calendar);

    Locale locale_;
    Calendar calendar_;
    const MediumDateTable* table_;
};

} // namespace estatebook::platform
