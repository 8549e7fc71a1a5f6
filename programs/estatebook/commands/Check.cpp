// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/book/BookFindings.hpp"
#include "estatebook/document/JsonText.hpp"

#include <fmt/format.h>

#include <ostream>

namespace estatebook {

namespace {

constexpr std::size_t LongestFinding = 1000;

} // namespace

void checkBook(const std::string& file, std::ostream& out) {
    const StoredBook book = StoredBook::openForReading(file);
    platform::TimeZone::setDefaultTimeZone(book.timeZone());
    const std::vector<std::string> findings = findingsIn(book);
    for (const std::string& finding : findings)
        out << fmt::format("{}: {}\n", book.file, document::forMessage(finding, LongestFinding));
    if (!findings.empty())
        throw Failure(ExitCode::BadData,
                      fmt::format("{}: the book is not sound; go on with an earlier copy", book.file));
    out << fmt::format("{}: the book is sound\n", book.file);
}

} // namespace estatebook
