// SPDX-License-Identifier: MIT
#pragma once

/// DueFacts: what lists tell of a tenure's due periods.

#include "billing/TKDuePeriods.hpp"

#include <cstdint>
#include <optional>

namespace estatebook {

/// The charged periods that payments do not cover; absent for a tenure without rent.
[[nodiscard]] inline std::optional<std::uint64_t> unpaidPeriods(const TKDuePeriods& due) noexcept {
    if (due.outstanding().location == Range::NotFound) return std::nullopt;
    return due.outstanding().length;
}

/// When the next period begins that is neither charged nor paid; absent when there is none.
[[nodiscard]] inline std::optional<platform::Date> nextPeriodStart(const TKDuePeriods& due) {
    return due.next() ? due.next()->startDate() : std::nullopt;
}

} // namespace estatebook
