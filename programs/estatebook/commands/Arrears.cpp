// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/ArrearsListing.hpp"

namespace estatebook {

void printArrears(const ListOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.book.file, options.book.asOf);
    ArrearsListing(book).print(options.format, out);
}

} // namespace estatebook
