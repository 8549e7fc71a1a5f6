// SPDX-License-Identifier: MIT
#include "platform/system/Bundle.hpp"

#include <dlfcn.h>
#include <filesystem>
#include <system_error>

namespace estatebook::platform {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view ResourceFolder = "EstateBook_Model.resources";

fs::path programFile() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error);
}

} // namespace

Bundle Bundle::containing(const void* address) {
    Dl_info info{};
    fs::path file;
    if (dladdr(address, &info) != 0 && info.dli_fname) file = info.dli_fname;
    // The name of the program itself is what it was called by, which need not lead to it.
    std::error_code error;
    if (file.empty() || !file.is_absolute() || !fs::exists(file, error)) file = programFile();
    const fs::path real = fs::canonical(file, error);
    return Bundle((error ? file : real).parent_path().string());
}

std::optional<std::string> Bundle::pathForResourceOfType(std::string_view name, std::string_view type) const {
    const fs::path file = std::string(name) + "." + std::string(type);
    const fs::path folder(folder_);
    for (const fs::path& place :
         {folder / ResourceFolder, folder / ESTATEBOOK_LIBRARY_FROM_PROGRAM / ResourceFolder,
          folder / ".." / "lib" / ResourceFolder}) {
        std::error_code error;
        if (fs::is_regular_file(place / file, error)) return (place / file).lexically_normal().string();
    }
    return std::nullopt;
}

} // namespace estatebook::platform
