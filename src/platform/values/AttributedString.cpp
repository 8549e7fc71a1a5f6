// SPDX-License-Identifier: MIT
#include "platform/values/AttributedString.hpp"

#include "platform/values/Exception.hpp"

#include <algorithm>
#include <utility>

namespace estatebook::platform {

namespace {

bool isInsideCharacter(std::string_view text, std::size_t place) {
    return place < text.size() && (static_cast<unsigned char>(text[place]) & 0xC0) == 0x80;
}

} // namespace

AttributedString::AttributedString(Ref<String> text, std::vector<Run> runs) noexcept
    : Object(Counting::Shared), text_(std::move(text)), runs_(std::move(runs)) {}

Ref<AttributedString> AttributedString::make(Ref<String> text, std::vector<Run> runs) {
    if (!text) throw InvalidArgumentException("an attributed string needs a text");
    std::size_t end = 0;
    for (const Run& run : runs) {
        if (run.location < end || run.length > text->size() || run.location > text->size() - run.length ||
            !run.attributes)
            throw InvalidArgumentException(
                "a run of attributes leaves its text, overlaps another or has none");
        end = run.location + run.length;
        if (isInsideCharacter(text->view(), run.location) || isInsideCharacter(text->view(), end))
            throw InvalidArgumentException("a run of attributes cuts a character in two");
    }
    std::erase_if(runs, [](const Run& run) { return run.length == 0 || run.attributes->count() == 0; });
    return Ref<AttributedString>(new AttributedString(std::move(text), std::move(runs)));
}

Ref<AttributedString> AttributedString::empty() {
    return make(String::make(""));
}

bool AttributedString::isEqual(const Object& other) const noexcept {
    const auto* string = dynamic_cast<const AttributedString*>(&other);
    return string && *text_ == *string->text_ &&
           std::ranges::equal(runs_, string->runs_, [](const Run& a, const Run& b) {
               return a.location == b.location && a.length == b.length &&
                      a.attributes->isEqual(*b.attributes);
           });
}

} // namespace estatebook::platform
