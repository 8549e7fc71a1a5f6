// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: FileSystem: where book files lie, and all that is asked there beside what the data base asks itself.
///
/// Books lie on the machine's own. Tests put one in its place that forgets, tears and fails.

#include "platform/persistence/store/WriterLock.hpp"

#include <cstdint>
#include <string>
#include <system_error>
#include <vector>

namespace estatebook::platform::sqlite {

class ESTATEBOOK_API FileSystem {
public:
    [[nodiscard]] static const FileSystem& ofTheMachine() noexcept;

    FileSystem() = default;
    virtual ~FileSystem();
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;

    /// The name under which the data base knows its way to these files; null for the machine's.
    [[nodiscard]] virtual const char* name() const noexcept = 0;

    /// The path, absolute and without symbolic links, of something that is there.
    [[nodiscard]] virtual std::string resolved(const std::string& path, std::error_code& error) const = 0;
    [[nodiscard]] virtual bool isFile(const std::string& path) const = 0;
    /// Whether anything has the name, a link that leads nowhere included.
    [[nodiscard]] virtual bool isTaken(const std::string& path) const = 0;
    /// Whether this program may write the file and make others beside it.
    [[nodiscard]] virtual bool isWritable(const std::string& path) const = 0;
    /// In bytes; 0 when there is no such file.
    [[nodiscard]] virtual std::uintmax_t sizeOf(const std::string& path) const = 0;
    /// What is not there, or cannot be removed, is left at that; so is a folder with something in it.
    virtual void remove(const std::string& path) const = 0;
    /// Makes an empty file that those may read who may read the other one. Where files have no rights nothing need be made.
    [[nodiscard]] virtual std::error_code makeLike(const std::string& path,
                                                   const std::string& other) const = 0;
    /// Replaces nothing that bears the name already: file_exists.
    [[nodiscard]] virtual std::error_code rename(const std::string& from, const std::string& to) const = 0;
    /// In place of whatever bears the name.
    [[nodiscard]] virtual std::error_code replace(const std::string& from, const std::string& to) const = 0;
    /// Nothing happens when the folder is there.
    [[nodiscard]] virtual std::error_code makeFolder(const std::string& path) const = 0;
    /// The names in a folder, in no order; none when there is no such folder.
    [[nodiscard]] virtual std::vector<std::string> namesIn(const std::string& folder) const = 0;
    /// Has the disk keep what was written into a file that nobody has open.
    [[nodiscard]] virtual std::error_code syncFile(const std::string& path) const = 0;
    /// Has the folder of a file keep the names that it was told.
    [[nodiscard]] virtual std::error_code syncFolderOf(const std::string& path) const = 0;
    [[nodiscard]] virtual StoreResult<WriterLock> lock(const std::string& path,
                                                       const CommitOrigin& holder) const = 0;
};

} // namespace estatebook::platform::sqlite
