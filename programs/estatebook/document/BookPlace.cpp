// SPDX-License-Identifier: MIT
#include "estatebook/document/BookPlace.hpp"

namespace estatebook::document {

namespace {

template <class Object>
std::string_view nameAt(std::uint8_t member) noexcept {
    return membersOf<Object>[member].name;
}

std::string_view memberName(const BookPlace& place) noexcept {
    if (place.inner == BookPlace::Inner::Transactions) return nameAt<Transaction>(place.member);
    if (place.inner == BookPlace::Inner::Notes) return nameAt<Note>(place.member);
    if (place.list == BookPlace::List::Properties) return nameAt<Property>(place.member);
    if (place.list == BookPlace::List::Tenants) return nameAt<Tenant>(place.member);
    if (place.list == BookPlace::List::Tenures) return nameAt<Tenure>(place.member);
    return BookMemberNames[place.member];
}

} // namespace

std::string BookPlace::path() const {
    constexpr std::array<std::string_view, 4> lists{"", "/properties/", "/tenants/", "/tenures/"};
    constexpr std::array<std::string_view, 3> inners{"", "/transactions/", "/notes/"};
    std::string text;
    if (list != List::None) (text += lists[static_cast<std::size_t>(list)]) += std::to_string(index);
    if (inner != Inner::None) (text += inners[static_cast<std::size_t>(inner)]) += std::to_string(innerIndex);
    if (member != NoMember) (text += '/') += memberName(*this);
    return text;
}

std::string pathStep(std::string_view name) {
    std::string text = "/";
    for (const char character : name) {
        if (character == '~')
            text += "~0";
        else if (character == '/')
            text += "~1";
        else
            text += character;
    }
    return text;
}

} // namespace estatebook::document
