// SPDX-License-Identifier: MIT
#pragma once

/// Date: an instant, as seconds since 1 January 2001, 00:00 UTC.
///
/// A plain value. Comparison is exact on the double; there is no tolerance. What day an instant falls on is
/// a question for a Calendar. Two dates are the very same when their bits agree.

#include "EstateBook_ModelExport.hpp"

#include <compare>
#include <cstddef>
#include <functional>
#include <string>

namespace estatebook::platform {

struct Date {
    /// Seconds since 2001-01-01T00:00:00Z; the fraction is kept.
    double secondsSinceReferenceDate = 0;

    /// Seconds from the Unix epoch to the reference date.
    static constexpr double UnixEpochOffset = 978307200.0;

    [[nodiscard]] static constexpr Date fromUnixSeconds(double seconds) noexcept {
        return Date{seconds - UnixEpochOffset};
    }
    [[nodiscard]] constexpr double unixSeconds() const noexcept {
        return secondsSinceReferenceDate + UnixEpochOffset;
    }

    /// "2025-01-01 00:00:00 +0000": always in UTC, whole seconds.
    [[nodiscard]] ESTATEBOOK_API std::string description() const;

    friend constexpr bool operator==(const Date&, const Date&) noexcept = default;
    friend constexpr auto operator<=>(const Date&, const Date&) noexcept = default;
};

} // namespace estatebook::platform

template <>
struct std::hash<estatebook::platform::Date> {
    std::size_t operator()(const estatebook::platform::Date& date) const noexcept {
        return std::hash<double>{}(date.secondsSinceReferenceDate);
    }
};
