// SPDX-License-Identifier: MIT
#include "platform/values/String.hpp"

#include "platform/values/StringBlock.hpp"

#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>

namespace estatebook::platform {

// The text stands directly behind the object, in one allocation.
Ref<String> String::make(std::string_view text) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("String: text over 4 GiB");
    void* memory = ::operator new(sizeof(String) + text.size());
    char* characters = static_cast<char*>(memory) + sizeof(String);
    if (!text.empty()) std::memcpy(characters, text.data(), text.size());
    return Ref<String>::adopt(new (memory)
                                  String(Counted{}, characters, static_cast<std::uint32_t>(text.size())));
}

void String::dispose() const noexcept {
    if (placeInBlock() != 0) return StringBlock::endString(*this);
    auto* self = const_cast<String*>(this);
    self->~String();
    ::operator delete(static_cast<void*>(self));
}

bool String::isEqual(const Object& other) const noexcept {
    const auto* string = dynamic_cast<const String*>(&other);
    return string && view() == string->view();
}

std::size_t String::hash() const noexcept {
    return std::hash<std::string_view>{}(view());
}

} // namespace estatebook::platform
