// SPDX-License-Identifier: MIT
#pragma once

/// JsonText: how a text stands in a document, and how a part of a document may be shown in a message.
///
///     appendJsonText(out, "½ day\n");                  // "½ day\n", with the break as two characters
///     forMessage(name);                                // at most 60 bytes, nothing a terminal obeys

#include <cstddef>
#include <string>
#include <string_view>

namespace estatebook::document {

/// Appends the text in quotation marks. Quotation marks, backslashes and control characters are escaped, by
/// their short forms where they have one; all else stands as it is. Bytes that are not well-formed UTF-8 are
/// written as U+FFFD, one for each, so that the result is always JSON.
void appendJsonText(std::string& out, std::string_view text);

/// A text from outside, fit to stand on one line of a terminal or a log: control characters, line
/// separators and marks that turn the direction of writing are spelt out, bytes that are not well formed
/// are written as U+FFFD, and what is longer than the limit in bytes ends in "…".
[[nodiscard]] std::string forMessage(std::string_view text, std::size_t limit = 60);

} // namespace estatebook::document
