// SPDX-License-Identifier: MIT
#include "platform/system/HostOperations.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/text/Text.hpp"

namespace estatebook::platform {

namespace {

std::uint64_t daysInCurrentCalendar(Date from, Date to) { return Calendar::current().daysFromTo(from, to); }

DecimalBehavior roundingToSmallestUnit(const Ref<String>& code) {
    const int digits = currencyDigits(code ? code->view() : std::string_view());
    return {.mode = RoundingMode::Plain,
            .scale = static_cast<short>(digits),
            .raiseOnOverflow = false,
            .raiseOnUnderflow = false,
            .raiseOnDivideByZero = false};
}

} // namespace

HostOperations& hostOperations() noexcept {
    static HostOperations operations{daysInCurrentCalendar, roundingToSmallestUnit};
    return operations;
}

} // namespace estatebook::platform
