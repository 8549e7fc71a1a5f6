// SPDX-License-Identifier: MIT
#include "platform/values/Object.hpp"

#include <cstdio>
#include <functional>

namespace estatebook::platform {

std::size_t Object::hash() const noexcept {
    return std::hash<const void*>{}(this);
}

std::string Object::description() const {
    char address[2 + 2 * sizeof(void*) + 1];
    std::snprintf(address, sizeof address, "%p", static_cast<const void*>(this));
    return "<" + std::string(runtimeClassName()) + ": " + address + ">";
}

std::string_view Object::runtimeClassName() const noexcept {
    return "Object";
}

void Object::dispose() const noexcept {
    delete this;
}

} // namespace estatebook::platform
