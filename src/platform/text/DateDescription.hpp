// SPDX-License-Identifier: MIT
#pragma once

/// Date description: an instant in full, as logs tell it: "Saturday, March 1, 2025 at 12:00:00 AM Eastern Standard Time".

#include "EstateBook_ModelExport.hpp"
#include "platform/calendar/TimeZone.hpp"
#include "platform/text/Locale.hpp"
#include "platform/values/Date.hpp"
#include "platform/values/Ref.hpp"

#include <string>

namespace estatebook::platform {

/// descriptionWithLocale: the full date and the full time with the name of the zone, byte for byte as ICU writes them for the
/// locale; a null zone is the default one. A date without a calendar day reads as `Date::description`.
[[nodiscard]] ESTATEBOOK_API std::string descriptionWithLocale(Date date, Locale locale,
                                                               const Ref<TimeZone>& zone = nullptr);

} // namespace estatebook::platform
