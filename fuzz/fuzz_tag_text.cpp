// SPDX-License-Identifier: MIT

// Tag names from any two texts, against a slow reading of the rules.

#include "platform/text/Text.hpp"
#include "tags/TKTagNames.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace estatebook;

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

std::vector<std::string> namesOf(const TKTagNames& names) {
    std::vector<std::string> texts;
    for (const platform::Value& name : names.items()->members()) texts.push_back(name.string()->string());
    return texts;
}

/// Every piece between two commas, character by character.
std::vector<std::string> slowNames(const std::string& text) {
    std::vector<std::string> names;
    std::string piece;
    for (const char character : text + ",") {
        if (character != ',') {
            piece += character;
            continue;
        }
        const std::string name(platform::trimWhitespace(piece));
        if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(name);
        piece.clear();
    }
    return names;
}

int sign(std::weak_ordering order) {
    return std::is_gt(order) - std::is_lt(order);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view rest(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::string_view a = rest.substr(0, data[0]);
    const std::string_view b = rest.substr(a.size());

    const auto names = TKTagNames::initWithEditableString(a);
    require(namesOf(*names) == slowNames(std::string(a)), "names are those of the slow reading");
    require(names->isEmpty() == (names->first() == nullptr), "a value that is not empty has a first name");
    for (const std::string& name : namesOf(*names)) require(names->contains(name), "a name is contained");

    const auto again = TKTagNames::initWithEditableString(names->editableString());
    require(namesOf(*again) == namesOf(*names), "the printed form reads back as the same names");
    require(std::is_eq(again->compare(*names)), "and compares same");

    const auto other = TKTagNames::initWithEditableString(b);
    require(sign(names->compare(*other)) == -sign(other->compare(*names)), "the order has one direction");
    return 0;
}
