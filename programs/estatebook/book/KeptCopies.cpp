// SPDX-License-Identifier: MIT
#include "estatebook/book/KeptCopies.hpp"

#include <iostream>
#include <string>

namespace estatebook {

using platform::BookCopies;

namespace {

BookCopies copiesOf(const StoredBook& book) {
    return {std::string(book.store->location()), bookModel(), bookOptions({})};
}

} // namespace

void keepCopyBefore(BookCopies::Occasion occasion, const StoredBook& book) {
    const auto made = copiesOf(book).makeBefore(occasion);
    if (!made) throw storeFailure(book.file + ": no copy can be kept, so nothing is done", made.error());
}

void keepCopyOfToday(const StoredBook& book) {
    const auto made = copiesOf(book).makeForToday();
    if (!made) std::cerr << storeFailure(book.file + ": no copy of this day", made.error()).what() << '\n';
}

} // namespace estatebook
