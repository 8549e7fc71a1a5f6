// SPDX-License-Identifier: MIT
#include "estatebook-desktop/session/SideFile.hpp"

#include "estatebook/Failure.hpp"
#include "estatebook/document/JsonText.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace estatebook::desktop {

namespace {

namespace files = std::filesystem;

/// Seconds from 1970 to 2001, where dates are counted from.
constexpr double SecondsTo2001 = 978307200;

/// A file that is being written, gone unless it was given its name.
class Draft {
public:
    explicit Draft(std::string path)
        : path_(std::move(path)),
          descriptor_(open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600)) {}
    ~Draft() {
        if (descriptor_ >= 0) close(descriptor_);
        std::error_code ignored;
        files::remove(path_, ignored);
    }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;

    [[nodiscard]] bool write(std::string_view text) const noexcept {
        while (!text.empty()) {
            const ssize_t count = ::write(descriptor_, text.data(), text.size());
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) return false;
            text.remove_prefix(static_cast<std::size_t>(count));
        }
        return descriptor_ >= 0 && fsync(descriptor_) == 0;
    }
    [[nodiscard]] bool rename(const std::string& to) const noexcept {
        return std::rename(path_.c_str(), to.c_str()) == 0;
    }

private:
    std::string path_;
    int descriptor_;
};

} // namespace

std::optional<platform::Date> SideFile::writtenOn() const {
    std::error_code error;
    if (!files::is_regular_file(path_, error)) return std::nullopt;
    const auto written = files::last_write_time(path_, error);
    if (error) return std::nullopt;
    const auto since1970 = std::chrono::file_clock::to_sys(written).time_since_epoch();
    return platform::Date{std::chrono::duration<double>(since1970).count() - SecondsTo2001};
}

void SideFile::write(std::string_view text) const {
    const Draft draft(path_ + ".new");
    if (draft.write(text) && draft.rename(path_)) return;
    const int error = errno;
    throw Failure(ExitCode::CannotRead,
                  fmt::format("{}: {}; check the permissions and the room on the disk",
                              document::forMessage(path_, 4096), std::generic_category().message(error)));
}

void SideFile::remove() const noexcept {
    std::error_code ignored;
    files::remove(path_, ignored);
}

} // namespace estatebook::desktop
