// SPDX-License-Identifier: MIT
#pragma once

/// TKNegateValueTransformer: an amount with its sign turned round, for a control that shows what is charged as a
/// positive number. The way back is the way forth.
///
///     makeRef<TKNegateValueTransformer>()->transformedValue(Decimal(1000));     // -1000

#include "platform/values/Decimal.hpp"
#include "platform/values/ValueTransformer.hpp"

namespace estatebook {

class ESTATEBOOK_API TKNegateValueTransformer : public platform::ValueTransformer {
public:
    /// negativeOne
    /// Minus one.
    [[nodiscard]] const platform::Decimal& negativeOne() const noexcept { return negativeOne_; }

    /// invert:
    /// The amount times minus one. Raises OverflowException when it is not a number. A class that replaces this changes
    /// both directions.
    [[nodiscard]] virtual platform::Decimal invert(const platform::Decimal& amount) const;

    /// transformedValue:
    /// The opposite of a number of any kind, as a decimal; absent when the value is no number.
    [[nodiscard]] platform::Value transformedValue(const platform::Value& value) const override;
    /// reverseTransformedValue:
    /// The same.
    [[nodiscard]] platform::Value reverseTransformedValue(const platform::Value& value) const override;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override {
        return "TKNegateValueTransformer";
    }

private:
    platform::Decimal negativeOne_ = platform::Decimal::withMantissaExponentIsNegative(1, 0, true);
};

} // namespace estatebook
