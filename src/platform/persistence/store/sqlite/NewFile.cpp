// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/NewFile.hpp"

#include "platform/persistence/store/StoreRules.hpp"
#include "platform/persistence/store/sqlite/StoreFailure.hpp"

#include <filesystem>

namespace estatebook::platform::sqlite {

namespace {

std::string resolvedNew(const FileSystem& files, const std::string& path) {
    std::error_code error;
    const std::filesystem::path name = std::filesystem::path(path).filename();
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    const std::string folder = files.resolved(parent.empty() ? "." : parent.string(), error);
    if (error == std::errc::no_such_file_or_directory)
        throw StoreFailure{StoreErrorCode::Missing, "there is no such folder"};
    if (error || name.empty()) throw unreadable("its folder cannot be reached", error);
    return (std::filesystem::path(folder) / name).string();
}

void requireNothingAt(const FileSystem& files, const std::string& path) {
    if (files.isTaken(path))
        throw StoreFailure{StoreErrorCode::Exists, "there is something of this name already"};
    // It would be taken for that of the new book, and written into it.
    if (files.sizeOf(path + "-journal") > 0)
        throw StoreFailure{StoreErrorCode::Exists,
                           "beside it lies " + path + "-journal, the unfinished save of a book that is gone"};
}

} // namespace

StoreFailure unreadable(std::string_view what, const std::error_code& error) {
    const bool isForbidden =
        error == std::errc::permission_denied || error == std::errc::read_only_file_system;
    return {isForbidden ? StoreErrorCode::ReadOnly : StoreErrorCode::Unreadable,
            std::string(what) + " (" + error.message() + ")"};
}

NewFile::NewFile(const FileSystem& files, const std::string& path, Makers makers)
    : files_(files), path_(resolvedNew(files, path)), draft_(path_), makers_(makers),
      isDraftOurs_(makers == Makers::Many) {
    constexpr std::size_t Distinct = 8;
    if (makers == Makers::Many) draft_ += "." + detail::newStoreIdentifier().substr(0, Distinct);
    draft_ += ".new";
    if (makers != Makers::Replacer) requireNothingAt(files_, path_);
}

NewFile::~NewFile() {
    if (isDraftOurs_) removeDraft();
}

void NewFile::removeDraft() {
    isDraftOurs_ = true;
    files_.remove(draft_);
    files_.remove(draft_ + "-journal");
}

// A copy is told of as the book it is made of.
std::string NewFile::called() const {
    return makers_ == Makers::Many ? "the new file " + path_ : "its new file";
}

void NewFile::makeLike(const std::string& other) const {
    if (const std::error_code error = files_.makeLike(draft_, other))
        throw unreadable(called() + " cannot be made", error);
}

// The journal of the file that goes must never be taken for that of the new one. And while there is none, the first save makes one
// and syncs the folder for it: so the new name is safe before anything is saved under it, even if it is not now.
void NewFile::clearJournal() const {
    const std::string journal = path_ + "-journal";
    if (files_.sizeOf(journal) > 0) throw StoreFailure{StoreErrorCode::Busy, "a save of it is not finished"};
    files_.remove(journal);
    files_.remove(draft_ + "-journal");
    if (files_.isTaken(journal))
        throw StoreFailure{StoreErrorCode::Unreadable, "its journal cannot be removed"};
    if (const std::error_code error = files_.syncFolderOf(path_))
        throw unreadable("its folder cannot be written", error);
}

void NewFile::settle() {
    if (const std::error_code error = files_.syncFile(draft_))
        throw unreadable(called() + " cannot be written", error);
    if (makers_ == Makers::Replacer) clearJournal();
    const std::error_code error =
        makers_ == Makers::Replacer ? files_.replace(draft_, path_) : files_.rename(draft_, path_);
    if (error == std::errc::file_exists) requireNothingAt(files_, path_);
    if (error) throw unreadable(called() + " cannot be given its name", error);
    isNamed_ = true;
    if (const std::error_code lost = files_.syncFolderOf(path_))
        throw unreadable("the folder of " + called() + " cannot be written", lost);
}

} // namespace estatebook::platform::sqlite
