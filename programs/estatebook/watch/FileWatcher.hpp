// SPDX-License-Identifier: MIT
#pragma once

/// FileWatcher: tells, on a run loop, that a file may have another content.
///
///     FileWatcher watcher(loop, "book.json", [&] { readAgain(); });
///
/// A file may be written in place, or another be put in its place under its name. So it is the folder that is watched, and
/// where the name is a link also the folder of what it leads to. Several changes before a turn of the loop are told once; a file
/// that is still being written is told of when it is closed. One that its writers keep open, as a book file, is told of with
/// each write: what is written there is for its readers to sort out.

#include "platform/system/RunLoop.hpp"

#include <filesystem>
#include <functional>
#include <map>
#include <string>

namespace estatebook {

class FileWatcher {
public:
    /// `isKeptOpen` is asked whenever the file may have changed; without it the file is none of the kind. Closing a file that is
    /// kept open tells nothing, so that reading it may not end in reading it again. REQUIRES: the loop outlives the watcher.
    FileWatcher(platform::RunLoop& loop, std::filesystem::path file, std::function<void()> changed,
                std::function<bool()> isKeptOpen = {});
    ~FileWatcher();
    FileWatcher(const FileWatcher&) = delete;
    FileWatcher& operator=(const FileWatcher&) = delete;

    /// Why the file is not watched, in the system's words; empty when it is.
    [[nodiscard]] const std::string& fault() const noexcept { return fault_; }

private:
    void watch();
    void watchFolderOf(const std::filesystem::path& path);
    void takeEvents();

    platform::RunLoop& loop_;
    std::filesystem::path file_;
    std::function<void()> changed_;
    std::function<bool()> isKeptOpen_;
    int descriptor_ = -1;
    /// The name that counts in each folder, by the folder's number.
    std::multimap<int, std::string> names_;
    std::string fault_;
};

} // namespace estatebook
