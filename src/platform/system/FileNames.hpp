// SPDX-License-Identifier: MIT
#pragma once

/// File names: giving a file that was written whole the name under which others look for it.
///
///     if (const auto error = syncFile(draft)) …        // what was written is safe
///     if (const auto error = renameToFree(draft, path)) …
///     if (const auto error = syncFolderOf(path)) …     // and so is the name

#include "EstateBook_ModelExport.hpp"

#include <string>
#include <system_error>

namespace estatebook::platform {

/// Replaces nothing that bears the name already, a link that leads nowhere included: file_exists.
[[nodiscard]] ESTATEBOOK_API std::error_code renameToFree(const std::string& from, const std::string& to);
/// In place of whatever bears the name.
[[nodiscard]] ESTATEBOOK_API std::error_code renameOver(const std::string& from, const std::string& to);
/// Has the disk keep what was written into a file that nobody has open.
[[nodiscard]] ESTATEBOOK_API std::error_code syncFile(const std::string& path);
/// Has the folder of a file keep the names that it was told.
[[nodiscard]] ESTATEBOOK_API std::error_code syncFolderOf(const std::string& path);

} // namespace estatebook::platform
