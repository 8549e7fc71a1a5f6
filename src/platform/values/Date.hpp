// SPDX-License-Identifier: MIT
#pragma once

/// Date: an instant, as seconds since 1 January 2001, 00:00 UTC.
///
/// A plain value. Comparison is exact on the double; there is no tolerance. What day an instant falls on is
/// a question for a Calendar. `whether two dates are the very same` is whether their bits agree, which for
/// every instant is equality.

#include <compare>
#include <cstddef>
#include <functional>

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
