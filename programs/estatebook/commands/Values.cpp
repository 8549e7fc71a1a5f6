// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/OpenBook.hpp"
#include "estatebook/ValuesDocument.hpp"

namespace estatebook {

void printValues(const BookOptions& options, std::ostream& out) {
    writeValues(OpenBook::open(options.file, options.asOf), out);
}

} // namespace estatebook
