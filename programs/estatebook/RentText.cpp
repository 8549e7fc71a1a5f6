// SPDX-License-Identifier: MIT
#include "estatebook/RentText.hpp"

#include <fmt/format.h>

#include <cstdint>
#include <string_view>

namespace estatebook {

namespace {

struct CycleWords {
    std::uint64_t cycle;
    std::string_view one;
    std::string_view many;
};
constexpr CycleWords Cycles[] = {
    {TKBillingCycleDay, "a day", "days"},
    {TKBillingCycleWeek, "a week", "weeks"},
    {TKBillingCycleMonth, "a month", "months"},
    {TKBillingCycleYear, "a year", "years"},
};

} // namespace

std::string rentRhythm(const TKTenure& tenure) {
    const auto billing = tenure.rentalPeriodicBilling();
    for (const auto& [cycle, one, many] : Cycles)
        if (cycle == billing->cycle())
            return billing->period() == 1 ? std::string(one)
                                          : fmt::format("for {} {}", billing->period(), many);
    return "for no known cycle";
}

} // namespace estatebook
