// SPDX-License-Identifier: MIT
#pragma once

/// TestFolder: a folder of a test's own, gone with the test.

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

namespace estatebook::test {

class TestFolder {
public:
    explicit TestFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::string name = parent / "estatebook-XXXXXX";
        path_ = mkdtemp(name.data());
    }
    ~TestFolder() { std::filesystem::remove_all(path_); }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    [[nodiscard]] std::string file(std::string_view name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

} // namespace estatebook::test
