// SPDX-License-Identifier: MIT
// Any text is read by both readers of decimals, printed and read again; the readers and the printer must
// agree.
#include "platform/values/Decimal.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace {

using estatebook::platform::Decimal;

void require(bool holds, const char* what, std::string_view text) {
    if (holds) return;
    std::fprintf(stderr, "%s: \"%.*s\"\n", what, static_cast<int>(text.size()), text.data());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const Decimal lenient = Decimal::parse(text);
    const std::optional<Decimal> exact = Decimal::parseExact(text);
    if (exact) {
        require(!exact->isNaN(), "a document's number is not a number", text);
        require(*exact == lenient, "the readers disagree", text);
    }

    const std::string printed = lenient.toString();
    require(printed.size() <= Decimal::MaximumTextLength, "the text is too long", printed);
    require(Decimal::parse(printed) == lenient, "the text does not come back", printed);
    require(lenient.isNaN() || Decimal::parseExact(printed) == lenient, "the text is no document's number",
            printed);
    require(printed.find_first_of("eE+") == std::string::npos, "the text is not plain", printed);

    char room[Decimal::MaximumTextLength];
    const char* const end = lenient.toChars(room, room + sizeof room);
    require(end && std::string_view(room, static_cast<std::size_t>(end - room)) == printed, "two printers",
            printed);
    require(lenient.toChars(room, room + printed.size() - 1) == nullptr, "the text has no room", printed);

    // What follows a foreign character has no part in the number.
    require(Decimal::parse(std::string(text) + ";7") == lenient, "a tail takes part", text);
    return 0;
}
