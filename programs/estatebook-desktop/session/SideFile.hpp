// SPDX-License-Identifier: MIT
#pragma once

/// SideFile: the edits of a book that cannot be saved at present, as a document beside it: "NAME.edits.json".
///
/// It holds the whole book as it was edited. It appears complete or not at all, and is taken away when the book is saved.

#include "platform/values/Date.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace estatebook::desktop {

class SideFile {
public:
    explicit SideFile(const std::string& book) : path_(book + ".edits.json") {}

    [[nodiscard]] const std::string& path() const noexcept { return path_; }
    /// When it was written; none when there is no such file.
    [[nodiscard]] std::optional<platform::Date> writtenOn() const;
    /// Throws Failure when it cannot be written; then the one before is still there.
    void write(std::string_view text) const;
    /// Does nothing when it is not there.
    void remove() const noexcept;

private:
    std::string path_;
};

} // namespace estatebook::desktop
