// SPDX-License-Identifier: MIT
#pragma once

/// ValueTransformer: what stands between a property of the model and a control that shows it: it turns the property's value
/// into what the control wants, and what was typed back into a value.
///
///     Ref<ValueTransformer> transformer = makeRef<TKNegateValueTransformer>();
///     transformer->transformedValue(Decimal(12));            // -12
///     transformer->reverseTransformedValue(Decimal(-12));    // 12
///
/// The trap: one that does not replace `reverseTransformedValue` transforms forth once more. A transformer that has no
/// way back says so in `allowsReverseTransformation`.

#include "platform/values/Object.hpp"
#include "platform/values/Value.hpp"

#include <string_view>

namespace estatebook::platform {

class ESTATEBOOK_API ValueTransformer : public Object {
public:
    /// allowsReverseTransformation
    /// Whether there is a way back; true unless a class says otherwise.
    [[nodiscard]] virtual bool allowsReverseTransformation() const noexcept { return true; }
    /// transformedValueClass
    /// The run-time name of the class of transformed values; that of all objects unless a class says otherwise.
    [[nodiscard]] virtual std::string_view transformedValueClass() const noexcept { return "Object"; }

    /// transformedValue:
    /// The value itself unless a class says otherwise. Absent goes through it like any other value.
    [[nodiscard]] virtual Value transformedValue(const Value& value) const;
    /// reverseTransformedValue:
    /// The transformed value unless a class says otherwise. Raises InvalidArgumentException when there is no way back.
    [[nodiscard]] virtual Value reverseTransformedValue(const Value& value) const;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "ValueTransformer"; }

protected:
    ValueTransformer() noexcept : Object(Counting::Shared) {}
};

} // namespace estatebook::platform
