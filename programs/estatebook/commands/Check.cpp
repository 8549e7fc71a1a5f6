// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/book/BookFindings.hpp"
#include "estatebook/book/ImpliedSettings.hpp"
#include "estatebook/book/NewBook.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/persistence/store/sqlite/BookCopies.hpp"

#include <fmt/format.h>

#include <ostream>
#include <string_view>

namespace estatebook {

using document::forMessage;

namespace {

constexpr std::size_t LongestName = 4096;

constexpr std::size_t LongestFinding = 1000;

void print(std::string_view file, std::string_view finding, std::ostream& out) {
    out << fmt::format("{}: {}\n", file, forMessage(finding, LongestFinding));
}

/// Also of a book that cannot be opened any more.
void salvage(const std::string& path, const std::string& to, std::ostream& out) {
    const std::string file = forMessage(path, LongestName);
    const std::string saved = forMessage(to, LongestName);
    requireFolderOf(to);
    const auto salvage = platform::salvageBook(path, to, bookModel(), bookOptions("salvage"));
    if (!salvage) throw storeFailure(salvage.error().path == path ? file : saved, salvage.error());
    for (const std::string& lost : salvage->lost) print(file, lost, out);
    for (const std::string& entry : salvage->lostEntries)
        if (const auto setting = impliedSettingOf(entry))
            print(
                file,
                fmt::format("whether a document gave the setting \"{}\" is lost; exports give it from now on",
                            forMessage(*setting)),
                out);
    print(saved,
          fmt::format("holds what could be read, {} {}", salvage->rows, salvage->rows == 1 ? "row" : "rows"),
          out);
    if (!salvage->lost.empty())
        throw Failure(ExitCode::BadData,
                      fmt::format("{}: not all of it could be read; go on with {} or an earlier "
                                  "copy",
                                  file, saved));
}

} // namespace

void checkBook(const CheckOptions& options, std::ostream& out) {
    if (options.salvage) return salvage(options.file, *options.salvage, out);
    const StoredBook book = StoredBook::openForReading(options.file);
    platform::TimeZone::setDefaultTimeZone(book.timeZone());
    const std::vector<std::string> findings = findingsIn(book);
    for (const std::string& finding : findings) print(book.file, finding, out);
    if (!findings.empty())
        throw Failure(ExitCode::BadData,
                      fmt::format("{}: the book is not sound; go on with an earlier copy, or "
                                  "salvage what can be read with --salvage",
                                  book.file));
    print(book.file, "the book is sound", out);
}

} // namespace estatebook
