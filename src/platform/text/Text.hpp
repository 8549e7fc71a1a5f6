// SPDX-License-Identifier: MIT
#pragma once

/// Text: the questions about text that plain bytes cannot answer.
///
/// There are three ways for two texts to be the same, and the model uses all of them:
///   - literally: the same bytes. Members of a set, equality of strings (`String`).
///   - canonically: "é" written as one character or as "e" with an accent. Grouping
///   (`canonicallyEquivalent`).
///   - as ordered: canonically equivalent texts are the same, all others stand by character value
///   (`compareTexts`).
///
/// Texts are UTF-8. Bytes that are not well formed raise nothing anywhere here: such a text is equivalent to
/// itself only.
///
///     canonicallyEquivalent("\u00e9", "e\u0301");    // true
///     compareTexts("B", "a") < 0;                    // no folding of case, no locale
///     trimWhitespace("\t Rent\n");                   // "Rent\n": a line break is kept

#include "EstateBook_ModelExport.hpp"

#include <compare>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace estatebook::platform {

/// The number of minor-unit digits of a currency (ISO 4217): 2 for "EUR", 0 for "JPY", 3 for "KWD". A code
/// that is unknown or empty has 2. Codes are upper-case.
[[nodiscard]] ESTATEBOOK_API int currencyDigits(std::string_view code);

/// Whether two texts are the same under Unicode's canonical equivalence. Letter case matters.
[[nodiscard]] ESTATEBOOK_API bool canonicallyEquivalent(std::string_view a, std::string_view b);

/// The one form (NFC) that all canonically equivalent spellings share; a text that is not well formed as it
/// stands.
[[nodiscard]] ESTATEBOOK_API std::string canonicalForm(std::string_view text);

/// A hash that agrees with canonicallyEquivalent.
[[nodiscard]] ESTATEBOOK_API std::size_t canonicalHash(std::string_view text);

/// The two for unordered containers: `std::unordered_map<std::string, V, CanonicalHash, CanonicalEqual>`.
struct CanonicalHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return canonicalHash(text); }
};
struct CanonicalEqual {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const { return canonicallyEquivalent(a, b); }
};

/// compare: without options. Canonically equivalent texts are the same; all others stand by the code points
/// of their canonical forms, so that "B" < "a" < "z" < "é". A total order.
[[nodiscard]] ESTATEBOOK_API std::weak_ordering compareTexts(std::string_view a, std::string_view b);

/// stringByTrimmingCharactersInSet: with the white-space set. Takes TAB, all Unicode space separators and the
/// zero-width space U+200B from both ends. Line breaks are not in the set. The result is a part of `text`.
[[nodiscard]] ESTATEBOOK_API std::string_view trimWhitespace(std::string_view text) noexcept;

/// Whether the bytes are UTF-8 as Unicode defines it: shortest forms, no surrogates, nothing above U+10FFFF.
[[nodiscard]] ESTATEBOOK_API bool isWellFormedUtf8(std::string_view text) noexcept;

/// The text with U+FFFD in place of what is not well formed.
[[nodiscard]] ESTATEBOOK_API std::string toWellFormedUtf8(std::string_view text);

/// The text in UTF-16 code units; none when it is not well formed.
[[nodiscard]] ESTATEBOOK_API std::optional<std::u16string> toUtf16(std::string_view text);
/// The text of UTF-16 code units; none when a surrogate stands alone.
[[nodiscard]] ESTATEBOOK_API std::optional<std::string> fromUtf16(std::u16string_view units);

/// How many bytes a text begins with that are blanks and visible characters of ASCII.
[[nodiscard]] ESTATEBOOK_API std::size_t plainAsciiPrefix(std::string_view text) noexcept;

/// The columns that a text takes in a terminal: 2 for wide and full-width characters, 0 for marks that join
/// the character before them, for invisible and for control characters, 1 for all others and for each byte
/// that is not well formed.
[[nodiscard]] ESTATEBOOK_API std::size_t columnWidth(std::string_view text) noexcept;

} // namespace estatebook::platform
