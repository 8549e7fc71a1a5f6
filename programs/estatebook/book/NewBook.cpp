// SPDX-License-Identifier: MIT
#include "estatebook/book/NewBook.hpp"

#include "estatebook/document/JsonText.hpp"

#include "platform/system/FileNames.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace estatebook {

namespace {

namespace files = std::filesystem;

[[noreturn]] void refuse(const std::string& file, std::string_view what, int error) {
    throw FileFailure(FileFailure::Why::System, file,
                      fmt::format("{}: {}: {}; check its name, the permissions and the room on the disk",
                                  file, what, std::generic_category().message(error)),
                      error);
}

files::path folderOf(const std::string& path) {
    const files::path folder = files::path(path).parent_path();
    return folder.empty() ? files::path(".") : folder;
}

} // namespace

void requireFolderOf(const std::string& path) {
    std::error_code error;
    if (files::is_directory(folderOf(path), error)) return;
    const std::string file = document::forMessage(path, 4096);
    throw FileFailure(FileFailure::Why::NoFolder, file,
                      fmt::format("{}: there is no such folder; make it first", file));
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
        throw FileFailure(
            FileFailure::Why::Exists, file_,
            fmt::format("{}: there is something of this name already; choose another name", file_));
    if (files::file_size(path_ + "-journal", error) > 0 && !error)
        throw FileFailure(FileFailure::Why::JournalLeft, file_,
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
    if (const std::error_code error = platform::renameToFree(draftPath(), path_)) {
        if (error == std::errc::file_exists) requireRoom();
        refuse(file_, "it cannot be given its name", error.value());
    }
    if (const std::error_code error = platform::syncFolderOf(path_))
        refuse(file_, "its folder cannot be written", error.value());
}

} // namespace estatebook
