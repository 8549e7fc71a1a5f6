// SPDX-License-Identifier: MIT
#include "platform/values/ValueTransformer.hpp"

#include "platform/values/Exception.hpp"

#include <string>

namespace estatebook::platform {

Value ValueTransformer::transformedValue(const Value& value) const {
    return value;
}

Value ValueTransformer::reverseTransformedValue(const Value& value) const {
    if (!allowsReverseTransformation())
        throw InvalidArgumentException("a " + std::string(runtimeClassName()) + " has no way back");
    return transformedValue(value);
}

} // namespace estatebook::platform
