// SPDX-License-Identifier: MIT
#include "platform/system/HostOperations.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/text/Text.hpp"

namespace estatebook::platform {

namespace {

std::uint64_t daysInCurrentCalendar(Date from, Date to) {
    return Calendar::current().daysFromTo(from, to);
}

DecimalBehavior roundingToSmallestUnit(const Ref<String>& code) {
    const int digits = currencyDigits(code ? code->view() : std::string_view());
    return {.mode = RoundingMode::Plain,
            .scale = static_cast<short>(digits),
            .raiseOnOverflow = false,
            .raiseOnUnderflow = false,
            .raiseOnDivideByZero = false};
}

Ref<Set> membersThatConform(const Set& set, bool (*operation)(const Object&, const Value&),
                            const Value& object) {
    std::vector<Value> conforming;
    for (const Value& member : set.members())
        if (const auto each = member.object(); each && operation(*each, object)) conforming.push_back(member);
    return Set::make(std::move(conforming));
}

} // namespace

HostOperations& hostOperations() noexcept {
    static HostOperations operations{daysInCurrentCalendar, roundingToSmallestUnit, membersThatConform};
    return operations;
}

} // namespace estatebook::platform
