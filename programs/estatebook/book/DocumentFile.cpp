// SPDX-License-Identifier: MIT
#include "estatebook/book/DocumentFile.hpp"

#include "estatebook/Failure.hpp"

#include <cstdio>
#include <iostream>
#include <utility>

namespace estatebook {

namespace {

Failure failureOf(const document::BookError& error) {
    const bool isUnreadable = error.kind == document::BookError::Kind::Unreadable;
    return {isUnreadable ? ExitCode::CannotRead : ExitCode::BadData, error.text()};
}

} // namespace

DocumentFile DocumentFile::read(const std::string& file) {
    auto reading = file == "-" ? document::BookReader::readStream(stdin, "standard input")
                               : document::BookReader::readFile(file);
    if (!reading.document) throw failureOf(reading.error.value_or(document::BookError()));
    return {*std::move(reading.document), std::move(reading.warnings)};
}

void DocumentFile::warn() const {
    for (const document::BookWarning& warning : warnings) std::cerr << warning.text() << '\n';
}

} // namespace estatebook
