// SPDX-License-Identifier: MIT
#pragma once

/// BookWriter: writes a book as a document in canonical form.
///
/// Of all the ways to write a book this is the one: members in the order of their tables, absent ones and
/// empty lists left out, two blanks for each level, a line for each member, tags in one line; known cycles
/// and behaviours by name, amounts as exact texts, dates as `dateText` has them. Reading what was written and
/// writing it again gives the same bytes.
///
///     const WrittenBook written = BookWriter::write(*reading.document);
///     if (written.leftOut.empty()) std::cout << written.text;
///
/// The trap: memory can hold what a document cannot, such as a date in the year 12000 or text that is not
/// UTF-8. That is left out and named, so look at `leftOut` before you trust the text.

#include "estatebook/document/BookDocument.hpp"

#include <string>
#include <vector>

namespace estatebook::document {

/// What a document could not carry.
struct LeftOut {
    /// Where it would stand: "/tenures/3/endDate".
    std::string path;
    std::string reason;
};

struct WrittenBook {
    std::string text;
    std::vector<LeftOut> leftOut;
};

class BookWriter {
public:
    /// The whole document, ending in a line break. Days are those of the book's zone; of the default zone
    /// where the book names none or one that is unknown.
    [[nodiscard]] static WrittenBook write(const BookDocument& book);
};

} // namespace estatebook::document
