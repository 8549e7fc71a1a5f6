// SPDX-License-Identifier: MIT

// Date texts and the questions about text, ours against ICU. The first byte of an input chooses: an even one
// is followed by a locale (two bytes) and a day (four bytes), an odd one by the length of a text and two
// texts.

#include "platform/text/DateFormatter.hpp"
#include "platform/text/StringsTable.hpp"
#include "platform/text/Text.hpp"

#include <unicode/datefmt.h>
#include <unicode/normalizer2.h>
#include <unicode/normlzr.h>
#include <unicode/ustring.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>

namespace {

using namespace estatebook::platform;

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

const icu::DateFormat& peerOf(const std::string& locale) {
    static std::map<std::string, std::unique_ptr<icu::DateFormat>> peers;
    auto& peer = peers[locale];
    if (!peer) {
        peer.reset(
            icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, icu::Locale(locale.c_str())));
        peer->adoptTimeZone(icu::TimeZone::createTimeZone("UTC"));
    }
    return *peer;
}

void checkDate(const std::uint8_t* data, std::size_t size) {
    static const auto identifiers = Locale::availableIdentifiers();
    std::uint16_t locale = 0;
    std::int32_t number = 0;
    std::memcpy(&locale, data, std::min<std::size_t>(size, sizeof locale));
    if (size > sizeof locale)
        std::memcpy(&number, data + sizeof locale, std::min(size - sizeof locale, sizeof number));
    // A thousand years either way are enough for every calendar, and some of them are slow far away.
    const CivilDay day{number % 400000};
    const std::string identifier(identifiers[locale % identifiers.size()]);
    icu::UnicodeString formatted;
    std::string expected;
    peerOf(identifier).format(static_cast<double>(day.number) * 86400e3, formatted).toUTF8String(expected);
    require(DateFormatter::mediumFor(Locale::named(identifier), TimeZone::utc())->stringFromDay(day) ==
                expected,
            "a date text is that of ICU");
}

bool isWellFormedToIcu(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = 0;
    u_strFromUTF8(nullptr, 0, &length, text.data(), static_cast<std::int32_t>(text.size()), &status);
    return status == U_BUFFER_OVERFLOW_ERROR || U_SUCCESS(status);
}

icu::UnicodeString wide(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

icu::UnicodeString composed(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    return icu::Normalizer2::getNFCInstance(status)->normalize(wide(text), status);
}

int sign(int number) {
    return (number > 0) - (number < 0);
}
int sign(std::weak_ordering order) {
    return std::is_gt(order) - std::is_lt(order);
}

void checkTexts(std::string_view a, std::string_view b) {
    const bool bothWellFormed = isWellFormedUtf8(a) && isWellFormedUtf8(b);
    require(isWellFormedUtf8(a) == isWellFormedToIcu(a), "well-formed text is that of ICU");
    require(sign(compareTexts(a, b)) == -sign(compareTexts(b, a)),
            "the order of two texts has one direction");
    require(std::is_eq(compareTexts(a, b)) == canonicallyEquivalent(a, b), "equivalent texts compare same");
    require(!canonicallyEquivalent(a, b) || canonicalHash(a) == canonicalHash(b),
            "equivalent texts hash alike");
    require(canonicallyEquivalent(a, canonicalForm(a)), "a text is equivalent to its canonical form");
    if (bothWellFormed) {
        UErrorCode status = U_ZERO_ERROR;
        require(canonicallyEquivalent(a, b) == (icu::Normalizer::compare(wide(a), wide(b), 0, status) == 0),
                "equivalence is that of ICU");
        require(sign(compareTexts(a, b)) == sign(composed(a).compareCodePointOrder(composed(b))),
                "the order is that of composed code points");
    }
    const std::string_view trimmed = trimWhitespace(a);
    require(a.find(trimmed) != a.npos, "a trimmed text is a part of the text");
    require(trimWhitespace(trimmed) == trimmed, "trimming twice is trimming once");
    require(trimWhitespace("\u3000\t " + std::string(a) + "\u200b\u00a0") == trimmed,
            "added space is trimmed");
    require(columnWidth(a) <= 2 * a.size(), "no character is wider than two columns");
    const int digits = currencyDigits(a);
    require(digits >= 0 && digits <= 4, "a currency has up to four digits");
    std::string error;
    require(StringsTable::parse(a, &error).has_value() == error.empty(), "a refused table has a reason");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    if (data[0] % 2 == 0) {
        checkDate(data + 1, size - 1);
    } else {
        const std::string_view rest(reinterpret_cast<const char*>(data + 2), size - 2);
        const std::string_view a = rest.substr(0, data[1]);
        checkTexts(a, rest.substr(a.size()));
    }
    return 0;
}
