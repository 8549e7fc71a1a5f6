// SPDX-License-Identifier: MIT
#include "estatebook-desktop/session/SideFile.hpp"

#include "estatebook/WholeFile.hpp"

#include <chrono>
#include <filesystem>
#include <system_error>

namespace estatebook::desktop {

namespace {

namespace files = std::filesystem;

/// Seconds from 1970 to 2001, where dates are counted from.
constexpr double SecondsTo2001 = 978307200;

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
    writeWholeFile(path_, text, Readers::OwnerAlone);
}

void SideFile::remove() const noexcept {
    std::error_code ignored;
    files::remove(path_, ignored);
}

} // namespace estatebook::desktop
