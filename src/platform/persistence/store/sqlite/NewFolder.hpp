// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: NewFolder: a folder that goes again when nothing came into it, unless it was there before.

#include "platform/persistence/store/sqlite/FileSystem.hpp"

#include <string>
#include <system_error>
#include <utility>

namespace estatebook::platform::sqlite {

class NewFolder {
public:
    /// Makes nothing yet.
    NewFolder(const FileSystem& files, std::string path)
        : files_(files), path_(std::move(path)), wasThere_(files.isTaken(path_)) {}
    ~NewFolder() {
        if (!wasThere_) files_.remove(path_);
    }
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;

    [[nodiscard]] std::error_code make() const { return files_.makeFolder(path_); }

private:
    const FileSystem& files_;
    std::string path_;
    bool wasThere_;
};

} // namespace estatebook::platform::sqlite
