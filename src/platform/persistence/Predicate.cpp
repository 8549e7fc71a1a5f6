// SPDX-License-Identifier: MIT
#include "platform/persistence/Predicate.hpp"

#include "platform/observation/ObservableObject.hpp"
#include "platform/values/Exception.hpp"

#include <string>

namespace estatebook::platform {

Predicate Predicate::predicateWithFormat(std::string_view format, Value argument) {
    constexpr std::string_view tail = " = %@";
    if (!format.ends_with(tail) || format.size() == tail.size() ||
        format.find(' ') != format.size() - tail.size())
        throw InvalidArgumentException("\"" + std::string(format) +
                                       "\" is no condition; one is written \"key = %@\"");
    format.remove_suffix(tail.size());
    return {Key::named(format), std::move(argument)};
}

bool Predicate::evaluateWithObject(const ObservableObject& object) const {
    return object.valueForKey(key_).isEqual(value_);
}

} // namespace estatebook::platform
