// SPDX-License-Identifier: MIT
#include "billing/TKPeriod.hpp"

#include "billing/RoundingExtensions.hpp"
#include "platform/system/HostOperations.hpp"
#include "platform/text/DateFormatter.hpp"

namespace estatebook {

using platform::DateFormatter;
using platform::Decimal;
using platform::Number;
using platform::Ref;

std::uint64_t TKPeriod::days() const {
    if (!startDate_ || !endDate_) return 0;
    return platform::hostOperations().daysUntil(*startDate_, *endDate_);
}

std::string TKPeriod::description() const {
    const Ref<DateFormatter> formatter = DateFormatter::medium();
    const auto text = [&](const std::optional<Date>& date) {
        return date ? formatter->stringFromDate(*date) : std::string("(null)");
    };
    // The count is printed as a signed number.
    return "<Period " + text(startDate_) + " -> " + text(endDate_) + " (" +
           std::to_string(static_cast<std::int64_t>(days())) + ")>";
}

Decimal TKPeriod::fractionOfDuration(const std::optional<Number>& duration) const {
    const Decimal whole = duration ? duration->decimalValue() : Decimal::zero();
    return decimalNumberWithUnsignedInteger(days()).decimalNumberByDividingBy(whole);
}

void TKPeriod::dispose() const noexcept {
    platform::ObjectBlock<TKPeriod>::dispose(this);
}

} // namespace estatebook
