// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: NewFile: a file that appears under its name when it is complete, or not at all.

#include "platform/persistence/store/sqlite/FileSystem.hpp"

#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>

namespace estatebook::platform::sqlite {

struct StoreFailure;

class NewFile {
public:
    /// Whether only one program at a time makes a file of this name, so that a draft of it is left over from an earlier try.
    /// A replacer is one that moreover has the right to write the book that bears the name.
    enum class Makers : std::uint8_t { One, Many, Replacer };

    /// Throws a StoreFailure when something bears the name that is not to be replaced, or no file can be made there.
    NewFile(const FileSystem& files, const std::string& path, Makers makers = Makers::Many);
    /// What was not settled is gone.
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// Absolute.
    [[nodiscard]] const std::string& path() const noexcept { return path_; }
    /// The name it has until it is complete.
    [[nodiscard]] const std::string& draft() const noexcept { return draft_; }
    /// Leaves nothing under the name of the draft, which is this one's from then on. Where one maker makes a file at a time: REQUIRES:
    /// it is this one.
    void removeDraft();
    /// Makes the draft, empty, with the rights of another file. Throws a StoreFailure. REQUIRES: there is none.
    void makeLike(const std::string& other) const;
    /// Gives it its name for good. Throws a StoreFailure. REQUIRES: nobody has the draft open.
    void settle();
    /// Whether it bears its name by now, though nobody may know whether it does so for good.
    [[nodiscard]] bool isNamed() const noexcept { return isNamed_; }

private:
    void clearJournal() const;
    [[nodiscard]] std::string called() const;

    const FileSystem& files_;
    std::string path_;
    std::string draft_;
    Makers makers_;
    bool isDraftOurs_;
    bool isNamed_ = false;
};

/// What the file system could not do.
[[nodiscard]] StoreFailure unreadable(std::string_view what, const std::error_code& error);

} // namespace estatebook::platform::sqlite
