// SPDX-License-Identifier: MIT
#include "platform/system/FileNames.hpp"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace estatebook::platform {

namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::error_code sync(const std::string& path, int flags) {
    const int descriptor = open(path.c_str(), flags | O_CLOEXEC);
    if (descriptor < 0) return lastError();
    const std::error_code error = fsync(descriptor) == 0 ? std::error_code() : lastError();
    close(descriptor);
    return error;
}

} // namespace

std::error_code renameToFree(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return {};
    if (errno != EINVAL && errno != ENOSYS) return lastError();
    // A second name is never put over another file either.
    if (link(from.c_str(), to.c_str()) == 0)
        return unlink(from.c_str()) == 0 ? std::error_code() : lastError();
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS) return lastError();
    std::error_code ignored;
    if (std::filesystem::exists(std::filesystem::symlink_status(to, ignored)))
        return std::make_error_code(std::errc::file_exists);
    return renameOver(from, to);
}

std::error_code renameOver(const std::string& from, const std::string& to) {
    return std::rename(from.c_str(), to.c_str()) == 0 ? std::error_code() : lastError();
}

std::error_code syncFile(const std::string& path) {
    return sync(path, O_RDWR);
}

std::error_code syncFolderOf(const std::string& path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    return sync(folder.empty() ? "." : folder.string(), O_RDONLY | O_DIRECTORY);
}

} // namespace estatebook::platform
