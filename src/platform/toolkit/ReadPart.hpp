// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: what formatters that read a text have in common.

#include "platform/text/Text.hpp"
#include "platform/toolkit/FieldFormatter.hpp"

#include <algorithm>
#include <string_view>

namespace estatebook::platform {

/// The part of the text that the range tells, as far as it is there; without a range all of it.
[[nodiscard]] inline std::string_view partToRead(std::string_view text, const TextRange* range) {
    if (!range) return text;
    return text.substr(std::min(range->location, text.size()), range->length);
}

/// Whether what was read may end there: with a range anywhere, else where only white space follows.
[[nodiscard]] inline bool isReadWhole(std::string_view text, std::size_t end, const TextRange* range) {
    return range || trimWhitespace(text.substr(end)).empty();
}

/// False, with the error told to who asks.
inline bool failToRead(std::string_view why, Ref<Error>* error) {
    if (error) *error = Error::make(FormattingErrorDomain, FormattingError, why);
    return false;
}

} // namespace estatebook::platform
