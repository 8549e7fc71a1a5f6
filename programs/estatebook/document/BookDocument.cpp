// SPDX-License-Identifier: MIT
#include "estatebook/document/BookDocument.hpp"

#include <utility>

namespace estatebook::document {

RichText::RichText(std::string plain) {
    if (!plain.empty()) pieces.push_back({std::move(plain), {}});
}

void RichText::settle() {
    std::vector<TextPiece> settled;
    for (TextPiece& piece : pieces) {
        if (piece.text.empty()) continue;
        if (piece.attributes.empty() && !settled.empty() && settled.back().attributes.empty())
            settled.back().text += piece.text;
        else
            settled.push_back(std::move(piece));
    }
    pieces = std::move(settled);
}

std::optional<std::string_view> RichText::plain() const noexcept {
    if (pieces.empty()) return std::string_view();
    if (pieces.size() > 1 || !pieces.front().attributes.empty()) return std::nullopt;
    return pieces.front().text;
}

} // namespace estatebook::document
