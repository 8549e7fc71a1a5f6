// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: instants as wall times of the current calendar, in Qt's terms but without any of its zones.

#include "platform/values/Date.hpp"

#include <QDateTime>

#include <optional>

namespace estatebook::platform {

/// In UTC by name only, to the millisecond. REQUIRES: a date in the years of books.
[[nodiscard]] QDateTime wallTimeOf(Date date);
/// The instant of a wall time; one that the clock leaves out is moved past the gap, of two the earlier is taken.
[[nodiscard]] std::optional<Date> dateOfWallTime(const QDateTime& wall);

/// The first and the last that there is room for: the years of books.
[[nodiscard]] QDateTime firstWallTime();
[[nodiscard]] QDateTime lastWallTime();

} // namespace estatebook::platform
