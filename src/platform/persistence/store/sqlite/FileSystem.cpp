// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/FileSystem.hpp"

#include "platform/system/FileNames.hpp"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace estatebook::platform::sqlite {

namespace {

namespace files = std::filesystem;

std::error_code lastError() {
    return {errno, std::generic_category()};
}

class Machine final : public FileSystem {
public:
    const char* name() const noexcept override { return nullptr; }

    std::string resolved(const std::string& path, std::error_code& error) const override {
        return files::canonical(path, error).string();
    }
    bool isFile(const std::string& path) const override {
        std::error_code error;
        return files::is_regular_file(path, error);
    }
    bool isTaken(const std::string& path) const override {
        std::error_code error;
        return files::exists(files::symlink_status(path, error));
    }
    bool isWritable(const std::string& path) const override {
        const std::string folder = files::path(path).parent_path().string();
        return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0 &&
               faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
    }
    std::uintmax_t sizeOf(const std::string& path) const override {
        std::error_code error;
        const std::uintmax_t size = files::file_size(path, error);
        return error ? 0 : size;
    }
    void remove(const std::string& path) const override {
        std::error_code error;
        files::remove(path, error);
    }
    std::error_code makeLike(const std::string& path, const std::string& other) const override {
        struct stat model {};
        if (stat(other.c_str(), &model) != 0) return lastError();
        const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
        if (descriptor < 0) return lastError();
        mode_t rights = (model.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO)) | S_IRUSR | S_IWUSR;
        // What its group may do, another one may not.
        if (fchown(descriptor, model.st_uid, model.st_gid) != 0) {
            struct stat made {};
            if (fstat(descriptor, &made) != 0 || made.st_gid != model.st_gid)
                rights &= ~static_cast<mode_t>(S_IRWXG);
        }
        const std::error_code error = fchmod(descriptor, rights) == 0 ? std::error_code() : lastError();
        close(descriptor);
        return error;
    }
    std::error_code rename(const std::string& from, const std::string& to) const override {
        return renameToFree(from, to);
    }
    std::error_code replace(const std::string& from, const std::string& to) const override {
        return renameOver(from, to);
    }
    std::error_code makeFolder(const std::string& path) const override {
        std::error_code error;
        files::create_directory(path, error);
        return error ? error : syncFolderOf(path);
    }
    std::vector<std::string> namesIn(const std::string& folder) const override {
        std::vector<std::string> names;
        std::error_code error;
        for (files::directory_iterator each(folder, error), end; !error && each != end; each.increment(error))
            names.push_back(each->path().filename().string());
        return names;
    }
    std::error_code syncFile(const std::string& path) const override { return platform::syncFile(path); }
    std::error_code syncFolderOf(const std::string& path) const override {
        return platform::syncFolderOf(path);
    }
    StoreResult<WriterLock> lock(const std::string& path, const CommitOrigin& holder) const override {
        return WriterLock::take(path, holder);
    }
};

} // namespace

const FileSystem& FileSystem::ofTheMachine() noexcept {
    static const Machine machine;
    return machine;
}

FileSystem::~FileSystem() = default;

} // namespace estatebook::platform::sqlite
