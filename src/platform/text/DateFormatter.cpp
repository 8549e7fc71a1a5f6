// SPDX-License-Identifier: MIT
#include "platform/text/DateFormatter.hpp"

#include "platform/text/LocaleEntry.hpp"
#include "platform/text/MediumDateTable.hpp"

namespace estatebook::platform {

static_assert(DateFormatter::MaximalLength == MediumDateTable::MaximalTextLength);
static_assert(DateFormatter::RoomNeeded == MediumDateTable::RoomNeeded);

DateFormatter::DateFormatter(Locale locale, const Calendar& calendar)
    : Object(Counting::Shared), locale_(locale), calendar_(calendar), table_(&locale.entry_->mediumDates()) {}

Ref<DateFormatter> DateFormatter::medium() {
    return Ref<DateFormatter>(new DateFormatter(Locale::current(), Calendar::current()));
}

Ref<DateFormatter> DateFormatter::mediumFor(Locale locale, const Ref<TimeZone>& zone) {
    return Ref<DateFormatter>(new DateFormatter(locale, Calendar(zone)));
}

std::string DateFormatter::stringFromDay(CivilDay day) const {
    char text[RoomNeeded];
    return std::string(text, table_->write(text, day));
}

DateFormatter::DayText DateFormatter::dayText(CivilDay day) const noexcept {
    return DayText(table_->cellsFor(day));
}

char* DateFormatter::write(char* out, DayText text) const {
    return table_->write(out, text.cells_);
}

} // namespace estatebook::platform
