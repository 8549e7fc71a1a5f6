// SPDX-License-Identifier: MIT
#pragma once

/// BookChecks: what can only be said of a book when all of it is there. Identifiers are unique and point
/// somewhere, lettings do not end before they start; and rent can be reckoned, or there is a warning.

#include "estatebook/document/BookDocument.hpp"
#include "estatebook/document/BookMembers.hpp"
#include "estatebook/document/BookPlace.hpp"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace estatebook::document {

/// A fault and where it is.
struct BookFault {
    BookPlace place;
    std::string message;
    std::string advice;
};

/// What share one space of identifiers. Transactions of properties and of tenures do, and so do all notes.
enum class IdentifierKind : unsigned char { Property, Tenant, Tenure, Transaction, Note };

/// Where the things to be checked stand in the text; gathered while reading.
struct BookMarks {
    using TenureLines = std::array<std::size_t, membersOf<Tenure>.size()>;

    std::array<std::vector<BookPlace>, 5> identifiers;
    /// For each tenure the line of each member, or 0.
    std::vector<TenureLines> tenureLines;
};

/// The first fault in the order of lines, or absent.
[[nodiscard]] std::optional<BookFault> checkBook(const BookDocument& book, const BookMarks& marks);

/// The terms by which no rent can be reckoned, in the book's order.
[[nodiscard]] std::vector<BookFault> unreckonableTerms(const BookDocument& book, const BookMarks& marks);

} // namespace estatebook::document
