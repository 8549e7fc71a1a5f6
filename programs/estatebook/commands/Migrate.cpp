// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/book/StoredBook.hpp"

#include <fmt/format.h>

#include <ostream>

namespace estatebook {

void migrateBook(const std::string& file, std::ostream& out) {
    const StoredBook book = StoredBook::openForWriting(file, "migrate");
    if (!book.store->migration()) out << fmt::format("{}: it is up to date\n", book.file);
}

} // namespace estatebook
