// SPDX-License-Identifier: MIT
#pragma once

/// DayMembers: what every document about a book says of its day, zone and currency.

#include "estatebook/JsonWriter.hpp"
#include "estatebook/OpenBook.hpp"

namespace estatebook {

/// Writes "asOf", "timeZone" and "currencyCode". REQUIRES: within an object.
void writeDayMembers(JsonWriter& json, const OpenBook& book);

} // namespace estatebook
