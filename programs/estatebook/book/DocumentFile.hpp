// SPDX-License-Identifier: MIT
#pragma once

/// DocumentFile: what a file holds that has a document in it.

#include "estatebook/document/BookReader.hpp"

#include <string>
#include <vector>

namespace estatebook {

struct DocumentFile {
    document::BookDocument document;
    std::vector<document::BookWarning> warnings;

    /// Reads the file; "-" is standard input. Throws Failure when there is no document in it.
    [[nodiscard]] static DocumentFile read(const std::string& file);
    /// The warnings, to standard error.
    void warn() const;
};

} // namespace estatebook
