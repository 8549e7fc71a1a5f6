// SPDX-License-Identifier: MIT
#pragma once

/// Cycles: billing cycles as lists of choices show them, and flags as boxes do.

#include "billing/TKPeriodicBilling.hpp"
#include "platform/values/Number.hpp"

#include <QComboBox>

#include <array>
#include <optional>

namespace estatebook::desktop {

/// False for none.
[[nodiscard]] inline bool isTrue(const std::optional<platform::Number>& number) {
    return number.value_or(platform::Number(false)).boolValue();
}

/// In the order of the lists in interface files.
inline constexpr std::array<TKBillingCycle, 4> Cycles{TKBillingCycleDay, TKBillingCycleWeek,
                                                      TKBillingCycleMonth, TKBillingCycleYear};

/// That of months for a cycle that is none.
[[nodiscard]] inline int placeOfCycle(const std::optional<platform::Number>& cycle) {
    int place = 2;
    for (std::size_t i = 0; i < Cycles.size(); ++i)
        if (cycle && cycle->unsignedIntegerValue() == Cycles[i]) place = static_cast<int>(i);
    return place;
}

inline void showCycle(QComboBox& list, const std::optional<platform::Number>& cycle) {
    list.setCurrentIndex(placeOfCycle(cycle));
}

[[nodiscard]] inline platform::Number cycleIn(const QComboBox& list) {
    return platform::Number(Cycles[static_cast<std::size_t>(list.currentIndex())]);
}

} // namespace estatebook::desktop
