// SPDX-License-Identifier: MIT
#include "tags/TKNegateValueTransformer.hpp"

namespace estatebook {

using platform::Decimal;
using platform::Value;

Decimal TKNegateValueTransformer::invert(const Decimal& amount) const {
    return amount.decimalNumberByMultiplyingBy(negativeOne_);
}

Value TKNegateValueTransformer::transformedValue(const Value& value) const {
    const auto amount = value.decimal();
    return amount ? Value(invert(*amount)) : Value();
}

Value TKNegateValueTransformer::reverseTransformedValue(const Value& value) const {
    return transformedValue(value);
}

} // namespace estatebook
