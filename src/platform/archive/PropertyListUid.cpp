// SPDX-License-Identifier: MIT
#include "platform/archive/PropertyListUid.hpp"

#include <functional>

namespace estatebook::platform {

Ref<PropertyListUid> PropertyListUid::make(std::uint64_t number) {
    return Ref<PropertyListUid>(new PropertyListUid(number));
}

bool PropertyListUid::isEqual(const Object& other) const noexcept {
    const auto* uid = dynamic_cast<const PropertyListUid*>(&other);
    return uid && number_ == uid->number_;
}

std::size_t PropertyListUid::hash() const noexcept {
    return std::hash<std::uint64_t>{}(number_);
}

std::string PropertyListUid::description() const {
    return "UID " + std::to_string(number_);
}

} // namespace estatebook::platform
