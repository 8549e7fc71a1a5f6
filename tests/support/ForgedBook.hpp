// SPDX-License-Identifier: MIT
#pragma once

/// forgeBook: changes a book file as somebody does who knows how books are written: no digest, sum or index gives it away.

#include <string>

namespace estatebook::test {

/// Carries out the statements, then reckons all digests and sums anew. False, with the book in any state, when a statement cannot
/// be carried out. `files` names the data base's way to the file; null is the machine's own.
[[nodiscard]] bool forgeBook(const std::string& path, const std::string& sql, const char* files = nullptr);

} // namespace estatebook::test
