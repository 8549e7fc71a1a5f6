// SPDX-License-Identifier: MIT
#pragma once

/// BookPlace: where in a book a value stands, for messages and for going back to it.

#include "estatebook/document/BookMembers.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

namespace estatebook::document {

struct BookPlace {
    enum class List : std::uint8_t { None, Properties, Tenants, Tenures };
    enum class Inner : std::uint8_t { None, Transactions, Notes };
    static constexpr std::uint8_t NoMember = 255;

    /// None: a member of the book itself.
    List list = List::None;
    /// Whether the object is one of the list or stands in one of it.
    Inner inner = Inner::None;
    /// The place in the object's table of members.
    std::uint8_t member = NoMember;
    std::uint32_t index = 0;
    std::uint32_t innerIndex = 0;
    std::size_t line = 0;

    /// "/tenures/3/transactions/0/when"; empty for the book.
    [[nodiscard]] std::string path() const;
};

/// A member's name as a step of a path, with "~" and "/" escaped as JSON pointers do.
[[nodiscard]] std::string pathStep(std::string_view name);

/// Calls the function with the object at a place. REQUIRES: a place of an object that is there.
template <class Book, class Function>
decltype(auto) visitObject(Book& book, const BookPlace& place, Function&& function) {
    const auto visitIn = [&](auto& owner) -> decltype(auto) {
        using Owner = std::remove_cvref_t<decltype(owner)>;
        if constexpr (!std::is_same_v<Owner, Tenant>)
            if (place.inner == BookPlace::Inner::Transactions)
                return function(owner.transactions[place.innerIndex]);
        if (place.inner == BookPlace::Inner::Notes) return function(owner.notes[place.innerIndex]);
        return function(owner);
    };
    if (place.list == BookPlace::List::Properties) return visitIn(book.properties[place.index]);
    if (place.list == BookPlace::List::Tenants) return visitIn(book.tenants[place.index]);
    return visitIn(book.tenures[place.index]);
}

} // namespace estatebook::document
