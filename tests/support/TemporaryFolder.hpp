// SPDX-License-Identifier: MIT
#pragma once

/// An empty folder that goes away with all that is in it.

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <stdlib.h>

namespace estatebook::testkit {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "estatebook-XXXXXX").string();
        path_ = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

inline void writeFile(const std::filesystem::path& path, std::string_view text) {
    std::ofstream(path) << text;
}

} // namespace estatebook::testkit
