// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/book/DocumentFile.hpp"
#include "estatebook/book/KeptCopies.hpp"
#include "estatebook/book/NewBook.hpp"
#include "estatebook/book/StoredBook.hpp"
#include "estatebook/document/JsonText.hpp"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>

namespace estatebook {

using document::forMessage;
using platform::TimeZone;

namespace {

/// Sets the zone of the process to that of the document.
DocumentFile read(const std::string& file) {
    if (isBookFile(file))
        throw Failure(ExitCode::BadData,
                      fmt::format("{}: this is a book file, no document; copy it, or export it first",
                                  forMessage(file, 4096)));
    DocumentFile content = DocumentFile::read(file);
    if (content.document.timeZone) TimeZone::setDefaultTimeZone(TimeZone::named(*content.document.timeZone));
    content.warn();
    return content;
}

void requireEmpty(const StoredBook& book) {
    for (const std::string_view entity : {"Account", "Tenure", "Transaction", "Note", "Advertisement"}) {
        const auto keys = book.store->fetchKeys(*book.store->model().entityNamed(entity));
        if (!keys) throw storeFailure(book.file, keys.error());
        if (!keys->empty())
            throw Failure(
                ExitCode::BadData,
                fmt::format("{}: the book holds something already; import into a new file", book.file));
    }
}

// A document that names no zone is read in that of the book.
void importIntoEmpty(const ImportOptions& options) {
    const StoredBook book = StoredBook::openForWriting(options.file, "import");
    requireEmpty(book);
    TimeZone::setDefaultTimeZone(book.timeZone());
    const DocumentFile content = read(options.document);
    keepCopyOfToday(book);
    keepCopyBefore(platform::BookCopies::Occasion::Import, book);
    book.take(content.document, "import");
    book.save();
}

} // namespace

void importBook(const ImportOptions& options) {
    std::error_code ignored;
    if (std::filesystem::exists(std::filesystem::symlink_status(options.file, ignored)))
        return importIntoEmpty(options);
    const DocumentFile content = read(options.document);
    NewBook book(options.file, "import");
    book.take(content.document);
    book.finish();
}

} // namespace estatebook
