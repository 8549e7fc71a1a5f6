// SPDX-License-Identifier: MIT
#pragma once

/// TKTagNamesValueTransformer: tag names for a control that shows a list.
///
///     makeRef<TKTagNamesValueTransformer>()->transformedValue(names);     // an Array of texts
///
/// The trap: the way back takes a list only, never the text that people type; that is for
/// TKTagNames::initWithEditableString.

#include "platform/values/ValueTransformer.hpp"

namespace estatebook {

class ESTATEBOOK_API TKTagNamesValueTransformer : public platform::ValueTransformer {
public:
    /// transformedValue:
    /// The names in their order as an Array; absent when the value is no TKTagNames.
    [[nodiscard]] platform::Value transformedValue(const platform::Value& value) const override;
    /// reverseTransformedValue:
    /// TKTagNames of an Array of texts, as they stand: nothing is trimmed, and of a repeated name the first keeps its place.
    /// Absent when the value is no Array, or one with a member that is no text.
    [[nodiscard]] platform::Value reverseTransformedValue(const platform::Value& value) const override;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override {
        return "TKTagNamesValueTransformer";
    }
};

} // namespace estatebook
