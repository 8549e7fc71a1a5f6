// SPDX-License-Identifier: MIT
#pragma once

/// BookReader: the door through which books come in. It takes a JSON document whole or not at all.
///
/// Whatever stands at the door is read, never believed: the first thing wrong ends the reading with one error
/// that says where it stands, by JSON path and line, what is wrong and what to do. Nothing in a document
/// makes reading take more than its length deserves: it is read in one pass as it comes, nothing is nested
/// deeper than a book is, and a document of more than `MaximumEntries` entries is refused.
///
///     const BookReading reading = BookReader::readFile("harbour-street.json");
///     for (const BookWarning& warning : reading.warnings) std::cerr << warning.text() << '\n';
///     if (!reading) std::cerr << reading.error->text() << '\n';
///     else use(*reading.document);
///
/// What is refused: text that is not JSON in UTF-8; a member that is unknown, given twice or of another type;
/// a count below zero or with a fraction; a number that a decimal cannot hold exactly; a date that does not
/// exist or lies outside the years 1583 to 9999; an end date before its start date or without one; a zone
/// unknown or given twice; an identifier used twice or pointing nowhere; another schema.
///
/// The trap: terms with which rent cannot be reckoned (a cycle that is none of the four, a rent period of 0,
/// a rent without a cycle) are taken in, since a book may hold them. They come with a warning each.

#include "estatebook/document/BookDocument.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::document {

/// Why a document was not taken in.
struct BookError {
    enum class Kind : std::uint8_t {
        Refused,   ///< it is no book, or not a sound one
        Unreadable ///< it could not be read at all; no path, no line
    };

    Kind kind = Kind::Refused;
    std::string file;
    /// A JSON pointer: "/tenures/3/endDate"; empty for the document as a whole.
    std::string path;
    std::size_t line = 0;
    std::string message;
    /// What to do about it.
    std::string advice;

    /// "FILE:LINE: PATH: MESSAGE; ADVICE", on one line whatever the document holds.
    [[nodiscard]] std::string text() const;
};

/// What was taken in, though no rent can be reckoned by it.
struct BookWarning {
    std::string file;
    std::string path;
    std::size_t line = 0;
    std::string message;

    /// "FILE:LINE: PATH: warning: MESSAGE".
    [[nodiscard]] std::string text() const;
};

/// Either a document or an error, and the warnings that go with a document.
struct BookReading {
    std::optional<BookDocument> document;
    std::optional<BookError> error;
    std::vector<BookWarning> warnings;

    explicit operator bool() const noexcept { return document.has_value(); }
};

class BookReader {
public:
    /// The most objects, tags and settings that a document may hold in all.
    static constexpr std::size_t MaximumEntries = 4'000'000;

    /// Reads a file.
    [[nodiscard]] static BookReading readFile(const std::string& path);

    /// Reads what a stream gives until its end, such as standard input. `file` names it in messages.
    [[nodiscard]] static BookReading readStream(std::FILE* stream, std::string_view file);

    /// Reads a text. `file` names it in messages.
    [[nodiscard]] static BookReading readText(std::string_view text, std::string_view file = "book");
};

} // namespace estatebook::document
