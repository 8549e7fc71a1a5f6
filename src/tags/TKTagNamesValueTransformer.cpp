// SPDX-License-Identifier: MIT
#include "tags/TKTagNamesValueTransformer.hpp"

#include "platform/values/Array.hpp"
#include "tags/TKTagNames.hpp"

namespace estatebook {

using platform::Array;
using platform::Value;

Value TKTagNamesValueTransformer::transformedValue(const Value& value) const {
    const auto names = value.as<TKTagNames>();
    return names ? Value(names->items()->array()) : Value();
}

Value TKTagNamesValueTransformer::reverseTransformedValue(const Value& value) const {
    const auto names = value.as<Array>();
    if (!names) return {};
    for (std::size_t index = 0; index < names->count(); ++index)
        if (!names->at(index).string()) return {};
    return TKTagNames::initWithArray(names);
}

} // namespace estatebook
