// SPDX-License-Identifier: MIT
#include "estatebook/document/JsonText.hpp"

#include "platform/text/Text.hpp"

#include <array>
#include <cstddef>
#include <cstdio>

namespace estatebook::document {

namespace {

constexpr std::string_view Replacement = "\xEF\xBF\xBD";

unsigned byteAt(std::string_view text, std::size_t index) noexcept {
    return index < text.size() ? static_cast<unsigned char>(text[index]) : 0u;
}

struct Character {
    char32_t code = 0;
    /// Its bytes; 0 when they are not well formed.
    std::size_t length = 0;
};

/// The range of the second byte keeps out long forms, surrogates and what lies beyond U+10FFFF.
Character firstCharacter(std::string_view text) noexcept {
    const unsigned lead = byteAt(text, 0);
    if (lead < 0x80) return {lead, 1};
    const std::size_t length = lead >= 0xC2 && lead < 0xE0 ? 2 : (lead & 0xF0u) == 0xE0 ? 3 : 4;
    if (lead < 0xC2 || lead > 0xF4) return {};
    const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (byteAt(text, 1) < lowest || byteAt(text, 1) > highest) return {};
    char32_t code = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(text, i) & 0xC0u) != 0x80u) return {};
        code = code << 6 | (byteAt(text, i) & 0x3Fu);
    }
    return {code, length};
}

std::string escaped(char32_t code) {
    std::array<char, 8> text{};
    const int length = std::snprintf(text.data(), text.size(), "\\u%04x", static_cast<unsigned>(code));
    return {text.data(), static_cast<std::size_t>(length)};
}

/// Characters that have a short form, each before its letter.
constexpr std::string_view ShortForms = "\"\"\\\\\bb\ff\nn\rr\tt";

void appendEscaped(std::string& out, char character) {
    for (std::size_t i = 0; i < ShortForms.size(); i += 2) {
        if (ShortForms[i] != character) continue;
        (out += '\\') += ShortForms[i + 1];
        return;
    }
    out += escaped(static_cast<unsigned char>(character));
}

/// Whether a terminal might do something with the character other than show it in its place.
bool isUnshowable(char32_t code) noexcept {
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x61C ||
           (code >= 0x200E && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069) || code == 0xFEFF;
}

/// Whether the text can be shown as it is.
bool isShowable(std::string_view text) noexcept {
    for (;;) {
        text.remove_prefix(platform::plainAsciiPrefix(text));
        if (text.empty()) return true;
        const auto [code, length] = firstCharacter(text);
        if (length == 0 || isUnshowable(code)) return false;
        text.remove_prefix(length);
    }
}

} // namespace

void appendJsonText(std::string& out, std::string_view text) {
    out += '"';
    while (!text.empty()) {
        const auto [code, length] = firstCharacter(text);
        if (length == 0)
            out += Replacement;
        else if (code < 0x20 || code == '"' || code == '\\')
            appendEscaped(out, text.front());
        else
            out += text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    out += '"';
}

std::string forMessage(std::string_view text, std::size_t limit) {
    if (text.size() <= limit && isShowable(text)) return std::string(text);
    std::string out;
    while (!text.empty()) {
        const auto [code, length] = firstCharacter(text);
        const std::string shown = length == 0          ? std::string(Replacement)
                                  : isUnshowable(code) ? escaped(code)
                                                       : std::string(text.substr(0, length));
        if (out.size() + shown.size() > limit) return out += "…";
        out += shown;
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return out;
}

} // namespace estatebook::document
