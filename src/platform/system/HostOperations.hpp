// SPDX-License-Identifier: MIT
#pragma once

/// HostOperations: the few operations that the application around the library may supply. Each has a default here.
///
///     hostOperations().daysUntil = myDayCount;      // at start-up, before the model is used
///
/// They are read at each use and are to be set on the model's thread.

#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/Ref.hpp"
#include "platform/values/Set.hpp"
#include "platform/values/String.hpp"

#include <cstdint>

namespace estatebook::platform {

struct HostOperations {
    /// daysUntil: the whole calendar days from one date to another. By default the difference of their days in the current
    /// calendar, 0 for a reversed pair.
    std::uint64_t (*daysUntil)(Date from, Date to);

    /// currencyRoundingBehaviourForCurrencyCode: how amounts of a currency are rounded. By default to the digits of its
    /// smallest unit, halves away from zero; an unknown or absent (null) code counts as one of 2 digits.
    DecimalBehavior (*currencyRoundingBehaviourForCurrencyCode)(const Ref<String>& code);

    /// subsetConformingTo:withObject: the members of a set of objects for which an operation, given the other object, answers
    /// true. By default asked of each member in order.
    Ref<Set> (*subsetConformingToWithObject)(const Set& set,
                                             bool (*operation)(const Object& member, const Value& object),
                                             const Value& object);
};

[[nodiscard]] ESTATEBOOK_API HostOperations& hostOperations() noexcept;

} // namespace estatebook::platform
