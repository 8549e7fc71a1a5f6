// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/book/DocumentFile.hpp"
#include "estatebook/book/StoredBook.hpp"
#include "estatebook/book/StoredDocument.hpp"
#include "estatebook/document/BookWriter.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/calendar/TimeZone.hpp"

#include <fmt/format.h>

#include <iostream>
#include <ostream>
#include <utility>

namespace estatebook {

namespace {

StoredDocument read(const std::string& file) {
    if (!isBookFile(file)) {
        DocumentFile content = DocumentFile::read(file);
        content.warn();
        return {std::move(content.document), {}};
    }
    const StoredBook book = StoredBook::openForReading(file);
    auto stored = StoredDocument::of(*book.store);
    if (!stored) throw storeFailure(book.file, stored.error());
    if (stored->isZoneImplied) platform::TimeZone::setDefaultTimeZone(book.timeZone());
    return *std::move(stored);
}

} // namespace

void exportBook(const ExportOptions& options, std::ostream& out) {
    const StoredDocument book = read(options.file);
    const document::WrittenBook written = document::BookWriter::write(book.document);
    const std::string file = document::forMessage(options.file, 4096);
    std::size_t count = 0;
    for (const auto* leftOut : {&book.leftOut, &written.leftOut})
        for (const document::LeftOut& each : *leftOut) {
            std::cerr << fmt::format("{}: {}{}: {}\n", file, options.isPartial ? "left out: " : "", each.path,
                                     each.reason);
            ++count;
        }
    if (count > 0 && !options.isPartial)
        throw Failure(ExitCode::BadData,
                      count == 1
                          ? fmt::format("{}: a document cannot carry this; leave it out with --partial", file)
                          : fmt::format("{}: a document cannot carry these {} things; leave them out with "
                                        "--partial",
                                        file, count));
    out << written.text;
}

} // namespace estatebook
