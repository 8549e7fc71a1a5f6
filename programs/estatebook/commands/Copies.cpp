// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/book/NewBook.hpp"
#include "estatebook/book/StoredBook.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/persistence/store/sqlite/BookCopies.hpp"

#include <fmt/format.h>

#include <optional>
#include <ostream>

namespace estatebook {

using document::forMessage;
using platform::BookCopies;
using platform::StoreErrorCode;
using platform::TimeZone;

namespace {

constexpr std::size_t LongestName = 4096;

std::string shown(const std::string& path) {
    return forMessage(path, LongestName);
}

void copy(const std::string& from, const std::string& to, std::string_view command, std::ostream& out) {
    requireFolderOf(to);
    const auto copied = platform::copyBook(from, to, bookModel(), bookOptions(command));
    if (!copied) {
        // Of the two files it is the new one that cannot be where something is.
        const bool isAboutNew = copied.error().code == StoreErrorCode::Exists;
        throw storeFailure(shown(isAboutNew ? to : from), copied.error());
    }
    out << fmt::format("{}: a sound copy of {}\n", shown(to), shown(from));
}

/// The day is that of the book's zone. The book is closed before it is copied.
void copyOfToday(const std::string& file, std::ostream& out) {
    std::string location;
    {
        const StoredBook book = StoredBook::openForReading(file);
        TimeZone::setDefaultTimeZone(book.timeZone());
        location = book.store->location();
    }
    BookCopies copies(location, bookModel(), bookOptions("backup"));
    const auto made = copies.makeForToday();
    if (!made) throw storeFailure(shown(file), made.error());
    if (const std::optional<std::string>& copied = *made)
        out << fmt::format("{}: a sound copy of {}\n", shown(*copied), shown(file));
    else
        out << fmt::format("{}: there is a copy of this day already, in {}\n", shown(file),
                           shown(copies.folder()));
}

} // namespace

void backUpBook(const BackupOptions& options, std::ostream& out) {
    if (options.copy) return copy(options.file, *options.copy, "backup", out);
    copyOfToday(options.file, out);
}

void restoreBook(const RestoreOptions& options, std::ostream& out) {
    copy(options.copy, options.file, "restore", out);
}

} // namespace estatebook
