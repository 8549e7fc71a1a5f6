// SPDX-License-Identifier: MIT
#pragma once

/// The copies that are made without anybody asking for them, in the folder "NAME.copies" beside the book.

#include "estatebook/book/StoredBook.hpp"

#include "platform/persistence/store/sqlite/BookCopies.hpp"

namespace estatebook {

/// A copy of the book as its last save left it, before much of it changes. Throws Failure when there can be none: then the change
/// is not to be made either.
void keepCopyBefore(platform::BookCopies::Occasion occasion, const StoredBook& book);
/// The copy of the day, the zone being the process's, unless there is one. When there can be none, that is told on standard error
/// and nobody is kept from anything.
void keepCopyOfToday(const StoredBook& book);

} // namespace estatebook
