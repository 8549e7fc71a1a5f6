// SPDX-License-Identifier: MIT
#pragma once

/// BookFindings: what is wrong with a book file, a line for each thing.
///
/// First the file is looked at, then what its rows say. Figures are reckoned only with a book that is sound so far, since they would
/// tell of the same fault in other words.

#include "estatebook/book/StoredBook.hpp"

#include <string>
#include <vector>

namespace estatebook {

/// None for a sound book. REQUIRES: the default zone is the book's. Throws Failure when the book cannot be read.
[[nodiscard]] std::vector<std::string> findingsIn(const StoredBook& book);

} // namespace estatebook
