// SPDX-License-Identifier: MIT
#include "estatebook/book/NewBook.hpp"

#include "estatebook/document/JsonText.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace estatebook {

namespace {

namespace files = std::filesystem;

[[noreturn]] void refuse(const std::string& file, std::string_view what, int error) {
    throw Failure(ExitCode::CannotRead,
                  fmt::format("{}: {}: {}; check its name, the permissions and the room on the disk", file,
                              what, std::generic_category().message(error)));
}

/// Gives the file its name unless something has it already.
int renameToFree(const std::string& from, const std::string& to) noexcept {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    // A link is never put over another file either.
    return link(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

/// Has the folder remember its names when the power fails.
int syncFolder(const files::path& folder) noexcept {
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return errno;
    const int error = fsync(descriptor) == 0 ? 0 : errno;
    close(descriptor);
    return error;
}

files::path folderOf(const std::string& path) {
    const files::path folder = files::path(path).parent_path();
    return folder.empty() ? files::path(".") : folder;
}

} // namespace

void requireFolderOf(const std::string& path) {
    std::error_code error;
    if (files::is_directory(folderOf(path), error)) return;
    throw Failure(ExitCode::CannotRead, fmt::format("{}: there is no such folder; make it first",
                                                    document::forMessage(path, 4096)));
}

NewBook::NewBook(const std::string& path, std::string_view command)
    : path_(path), file_(document::forMessage(path, 4096)), command_(command) {
    requireFolderOf(path_);
    requireRoom();
    makeFolder();
    try {
        draft_ = std::make_unique<StoredBook>(StoredBook::create(draftPath(), command));
    } catch (...) {
        std::error_code ignored;
        files::remove_all(folder_, ignored);
        throw;
    }
}

NewBook::~NewBook() {
    draft_.reset();
    std::error_code ignored;
    files::remove_all(folder_, ignored);
}

// A journal that lies beside the place would be taken for that of the new book, and written into it.
void NewBook::requireRoom() const {
    std::error_code error;
    if (files::exists(files::symlink_status(path_, error)))
        throw Failure(ExitCode::CannotRead,
                      fmt::format("{}: there is something of this name already; choose another name", file_));
    if (files::file_size(path_ + "-journal", error) > 0 && !error)
        throw Failure(ExitCode::CannotRead,
                      fmt::format("{}: beside it lies {}-journal, the unfinished save of a "
                                  "book that is gone; choose another name",
                                  file_, file_));
}

void NewBook::makeFolder() {
    folder_ = path_ + ".new-XXXXXX";
    if (mkdtemp(folder_.data()) == nullptr) refuse(file_, "it cannot be made", errno);
}

void NewBook::finish() {
    draft_->save();
    draft_.reset();
    requireRoom();
    if (const int error = renameToFree(draftPath(), path_)) {
        if (error == EEXIST) requireRoom();
        refuse(file_, "it cannot be given its name", error);
    }
    if (const int error = syncFolder(folderOf(path_))) refuse(file_, "its folder cannot be written", error);
}

} // namespace estatebook
