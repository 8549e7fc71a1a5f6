// SPDX-License-Identifier: MIT
#include "estatebook/WholeFile.hpp"

#include "estatebook/Failure.hpp"
#include "estatebook/book/NewBook.hpp"
#include "estatebook/book/StoredBook.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/system/FileNames.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace estatebook {

namespace {

namespace files = std::filesystem;

constexpr int MaximalNames = 100;

std::string shown(const std::string& path) {
    return document::forMessage(path, 4096);
}

/// The new content under a name of its own, until it is given that of the file.
class Draft {
public:
    /// `given` is what the user calls the file.
    Draft(const std::string& path, std::string given, Readers readers)
        : path_(path), given_(std::move(given)) {
        // Less what the process withholds.
        const mode_t permissions = readers == Readers::AsUsual ? 0666 : 0600;
        for (int number = 0; descriptor_ < 0; ++number) {
            name_ = fmt::format("{}.new-{}-{}", path, getpid(), number);
            descriptor_ = open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
            if (descriptor_ < 0 && (errno != EEXIST || number == MaximalNames)) refuse(errno);
        }
    }
    ~Draft() {
        if (descriptor_ < 0) return;
        close(descriptor_);
        unlink(name_.c_str());
    }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;

    void write(std::string_view content) {
        while (!content.empty()) {
            const ssize_t count = ::write(descriptor_, content.data(), content.size());
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) refuse(errno);
            content.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    /// Whoever could read the file before still can.
    void takePermissions() {
        std::error_code error;
        const files::file_status before = files::status(path_, error);
        if (!files::exists(before)) return;
        files::permissions(name_, before.permissions(), error);
        if (error) refuse(error.value());
    }

    void finish() {
        if (fsync(descriptor_) != 0) refuse(errno);
        if (const std::error_code error = platform::renameOver(name_, path_)) refuse(error.value());
        close(descriptor_);
        descriptor_ = -1;
    }

private:
    [[noreturn]] void refuse(int error) const {
        throw FileFailure(
            FileFailure::Why::System, shown(given_),
            fmt::format("{}: it cannot be written: {}; check its name, the permissions and the room "
                        "on the disk",
                        shown(given_), std::generic_category().message(error)),
            error);
    }

    std::string path_;
    std::string given_;
    std::string name_;
    int descriptor_ = -1;
};

/// Where the links lead, also when there is nothing yet.
std::string targetOf(const std::string& path) {
    std::error_code error;
    const files::path target = files::weakly_canonical(path, error);
    return error ? path : target.string();
}

} // namespace

void requirePlainFile(const std::string& path) {
    if (path.empty())
        throw Failure(ExitCode::WrongUsage, "the name of the file to write is empty; name a file");
    const std::string target = targetOf(path);
    requireFolderOf(target);
    std::error_code error;
    const files::file_status status = files::status(target, error);
    if (files::exists(status) && !files::is_regular_file(status))
        throw FileFailure(FileFailure::Why::NoPlainFile, shown(path),
                          fmt::format("{}: this is no plain file; choose another name", shown(path)));
    if (isBookFile(target))
        throw FileFailure(
            FileFailure::Why::IsBook, shown(path),
            fmt::format("{}: this is a book file, which is not replaced; choose another name", shown(path)));
}

void writeWholeFile(const std::string& path, std::string_view content, Readers readers) {
    requirePlainFile(path);
    Draft draft(targetOf(path), path, readers);
    draft.write(content);
    draft.takePermissions();
    draft.finish();
}

} // namespace estatebook
