// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: what owners of transactions and notes have in common.

#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Number.hpp"

#include <cstdint>
#include <optional>
#include <string_view>

namespace estatebook {

/// A new object of the entity in the owner's own context, led back to the owner by the key.
template <class T>
T* insertOwned(std::string_view entityName, platform::ManagedObject& owner, platform::Key key) {
    platform::ManagedObjectContext* context = owner.managedObjectContext();
    if (!context)
        throw platform::InvalidArgumentException(owner.description() +
                                                 " is in no context and can own nothing");
    const auto object = context->insertNewObject<T>(entityName);
    object->setValueForKey(platform::Value(platform::Ref<platform::Object>(&owner)), key);
    return object.get();
}

/// A count as the model reads it: absent is 0.
[[nodiscard]] inline std::uint64_t unsignedValue(const std::optional<platform::Number>& number) noexcept {
    return number ? number->unsignedIntegerValue() : 0;
}

} // namespace estatebook
