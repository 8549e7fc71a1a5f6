// SPDX-License-Identifier: MIT
#include "platform/text/Text.hpp"

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/ucurr.h>
#include <unicode/uenum.h>
#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <optional>

namespace estatebook::platform {
namespace {

// Currencies

/// A code of three capitals as a number, in the order of the alphabet.
constexpr std::size_t CodeCount = 26 * 26 * 26;

constexpr std::optional<std::size_t> codeIndex(std::string_view code) {
    if (code.size() != 3) return std::nullopt;
    std::size_t index = 0;
    for (const char letter : code) {
        if (letter < 'A' || letter > 'Z') return std::nullopt;
        index = index * 26 + static_cast<std::size_t>(letter - 'A');
    }
    return index;
}

/// The digits of every code, for currencies of today and of the past.
struct CurrencyTable {
    std::array<std::uint8_t, CodeCount> digits{};

    CurrencyTable() {
        digits.fill(2);
        UErrorCode status = U_ZERO_ERROR;
        UEnumeration* codes = ucurr_openISOCurrencies(UCURR_ALL, &status);
        while (const char16_t* code = uenum_unext(codes, nullptr, &status)) {
            const char name[] = {static_cast<char>(code[0]), static_cast<char>(code[1]),
                                 static_cast<char>(code[2])};
            UErrorCode known = U_ZERO_ERROR;
            const std::int32_t count = ucurr_getDefaultFractionDigits(code, &known);
            if (const auto index = codeIndex({name, 3}); index && U_SUCCESS(known))
                digits[*index] = static_cast<std::uint8_t>(count);
        }
        uenum_close(codes);
    }
};

// Canonical equivalence

const icu::Normalizer2* composer() {
    static const icu::Normalizer2* const instance = [] {
        UErrorCode status = U_ZERO_ERROR;
        return icu::Normalizer2::getNFCInstance(status);
    }();
    return instance;
}

/// Up to U+02FF nothing composes and nothing is composed otherwise; UTF-8 has no byte above 0xCB there.
bool isCanonicalAtSight(std::string_view text) noexcept {
    unsigned char highest = 0;
    for (const char byte : text) highest = std::max(highest, static_cast<unsigned char>(byte));
    return highest < 0xCC;
}

icu::StringPiece pieceOf(std::string_view text) {
    return {text.data(), static_cast<std::int32_t>(text.size())};
}

bool isCanonical(std::string_view text) {
    if (isCanonicalAtSight(text) || text.size() > std::numeric_limits<std::int32_t>::max()) return true;
    UErrorCode status = U_ZERO_ERROR;
    return !isWellFormedUtf8(text) || composer()->isNormalizedUTF8(pieceOf(text), status);
}

/// The canonical form of a text, which is the text itself wherever that is possible.
class Canonical {
public:
    explicit Canonical(std::string_view text) : view_(text) {
        if (isCanonical(text)) return;
        UErrorCode status = U_ZERO_ERROR;
        icu::StringByteSink<std::string> sink(&composed_);
        composer()->normalizeUTF8(0, pieceOf(text), sink, nullptr, status);
        if (U_SUCCESS(status)) view_ = composed_;
    }
    Canonical(const Canonical&) = delete;
    Canonical& operator=(const Canonical&) = delete;

    [[nodiscard]] std::string_view view() const noexcept { return view_; }

private:
    std::string composed_;
    std::string_view view_;
};

// White space

constexpr std::string_view spaces[] = {
    "\t",     " ",      "\u00a0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005",
    "\u2006", "\u2007", "\u2008", "\u2009", "\u200a", "\u200b", "\u202f", "\u205f", "\u3000",
};

constexpr bool isVisibleAscii(char byte) noexcept {
    return byte > ' ' && byte < 0x7F;
}

std::size_t spaceAtStart(std::string_view text) noexcept {
    if (text.empty() || isVisibleAscii(text.front())) return 0;
    const auto found = std::ranges::find_if(spaces, [&](auto space) { return text.starts_with(space); });
    return found == std::end(spaces) ? 0 : found->size();
}

std::size_t spaceAtEnd(std::string_view text) noexcept {
    if (text.empty() || isVisibleAscii(text.back())) return 0;
    const auto found = std::ranges::find_if(spaces, [&](auto space) { return text.ends_with(space); });
    return found == std::end(spaces) ? 0 : found->size();
}

// Columns

std::size_t columnsOf(UChar32 character) noexcept {
    switch (u_charType(character)) {
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
    case U_CONTROL_CHAR:
    case U_LINE_SEPARATOR:
    case U_PARAGRAPH_SEPARATOR:
        return 0;
    case U_FORMAT_CHAR:
        return character == 0xAD ? 1 : 0;
    default:
        break;
    }
    const auto syllable = u_getIntPropertyValue(character, UCHAR_HANGUL_SYLLABLE_TYPE);
    if (syllable == U_HST_VOWEL_JAMO || syllable == U_HST_TRAILING_JAMO) return 0;
    const auto width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

} // namespace

int currencyDigits(std::string_view code) {
    static const CurrencyTable table;
    const auto index = codeIndex(code);
    return index ? table.digits[*index] : 2;
}

bool canonicallyEquivalent(std::string_view a, std::string_view b) {
    if (a == b) return true;
    if (isCanonicalAtSight(a) && isCanonicalAtSight(b)) return false;
    return Canonical(a).view() == Canonical(b).view();
}

std::string canonicalForm(std::string_view text) {
    return std::string(Canonical(text).view());
}

std::size_t canonicalHash(std::string_view text) {
    return std::hash<std::string_view>{}(Canonical(text).view());
}

// The order of UTF-8 bytes is the order of code points.
std::weak_ordering compareTexts(std::string_view a, std::string_view b) {
    if (isCanonicalAtSight(a) && isCanonicalAtSight(b)) return a <=> b;
    return Canonical(a).view() <=> Canonical(b).view();
}

std::string_view trimWhitespace(std::string_view text) noexcept {
    while (const std::size_t size = spaceAtStart(text)) text.remove_prefix(size);
    while (const std::size_t size = spaceAtEnd(text)) text.remove_suffix(size);
    return text;
}

bool isWellFormedUtf8(std::string_view text) noexcept {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const std::size_t size = text.size();
    for (std::size_t at = 0; at < size;) {
        std::uint64_t eight;
        if (at + sizeof eight <= size) {
            std::memcpy(&eight, bytes + at, sizeof eight);
            if ((eight & 0x8080808080808080u) == 0) {
                at += sizeof eight;
                continue;
            }
        }
        UChar32 character;
        U8_NEXT(bytes, at, size, character);
        if (character < 0) return false;
    }
    return true;
}

std::string toWellFormedUtf8(std::string_view text) {
    constexpr std::string_view Replacement = "\uFFFD";
    std::string wellFormed;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t first = at;
        UChar32 character;
        U8_NEXT(bytes, at, text.size(), character);
        wellFormed += character < 0 ? Replacement : text.substr(first, at - first);
    }
    return wellFormed;
}

std::optional<std::u16string> toUtf16(std::string_view text) {
    if (text.size() > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
    // No character takes more units than bytes.
    std::u16string units(text.size(), u'\0');
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(units.data(), static_cast<std::int32_t>(units.size()), &length, text.data(),
                  static_cast<std::int32_t>(text.size()), &status);
    if (U_FAILURE(status)) return std::nullopt;
    units.resize(static_cast<std::size_t>(length));
    return units;
}

std::optional<std::string> fromUtf16(std::u16string_view units) {
    constexpr std::size_t MostBytesOfAUnit = 3;
    if (units.size() > std::numeric_limits<std::int32_t>::max() / MostBytesOfAUnit) return std::nullopt;
    std::string text(units.size() * MostBytesOfAUnit, '\0');
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8(text.data(), static_cast<std::int32_t>(text.size()), &length, units.data(),
                static_cast<std::int32_t>(units.size()), &status);
    if (U_FAILURE(status)) return std::nullopt;
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// Eight bytes at a time: it is asked of each text of long lists.
std::size_t plainAsciiPrefix(std::string_view text) noexcept {
    constexpr std::uint64_t Each = 0x0101010101010101u;
    constexpr std::uint64_t High = 0x80 * Each;
    const auto isPlain = [](std::uint64_t bytes) {
        const std::uint64_t beyond = bytes | (bytes + Each);       // above '~'
        const std::uint64_t visible = (bytes | High) - ' ' * Each; // from ' ' on
        return ((beyond | ~visible) & High) == 0;
    };
    std::size_t at = 0;
    for (std::uint64_t bytes = 0; text.size() - at >= sizeof bytes; at += sizeof bytes) {
        std::memcpy(&bytes, text.data() + at, sizeof bytes);
        if (!isPlain(bytes)) break;
    }
    while (at < text.size() && (text[at] == ' ' || isVisibleAscii(text[at]))) ++at;
    return at;
}

std::size_t columnWidth(std::string_view text) noexcept {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const std::size_t size = text.size();
    std::size_t columns = 0;
    for (std::size_t at = 0; at < size;) {
        const std::size_t plain = plainAsciiPrefix(text.substr(at));
        columns += plain;
        at += plain;
        if (at == size) break;
        const std::size_t start = at;
        UChar32 character;
        U8_NEXT(bytes, at, size, character);
        columns += character < 0 ? at - start : columnsOf(character);
    }
    return columns;
}

} // namespace estatebook::platform
