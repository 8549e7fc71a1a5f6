// SPDX-License-Identifier: MIT
#pragma once

/// ValuesDocument: everything that the model derives from a book, as a JSON document.
///
/// Members keep their names and their order, so that other programs may read it. Amounts are texts with all their
/// digits, dates are as in a book, and a value whose reading raises is the object {"error": NAME}; the others are
/// still written.

#include "estatebook/OpenBook.hpp"

#include <iosfwd>

namespace estatebook {

/// Writes the document. It takes memory for one tenure's schedule and statement at a time.
void writeValues(const OpenBook& book, std::ostream& out);

} // namespace estatebook
