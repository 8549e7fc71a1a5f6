// SPDX-License-Identifier: MIT
#include "estatebook/DayMembers.hpp"

#include "estatebook/document/DateText.hpp"

namespace estatebook {

void writeDayMembers(JsonWriter& json, const OpenBook& book) {
    json.key("asOf").textOrNull(document::dateText(book.asOf(), book.calendar()));
    json.key("timeZone").text(book.calendar().timeZone()->name());
    json.key("currencyCode");
    if (book.currencyCode())
        json.text(book.currencyCode()->view());
    else
        json.null();
}

} // namespace estatebook
