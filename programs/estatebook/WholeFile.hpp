// SPDX-License-Identifier: MIT
#pragma once

/// WholeFile: a file that is written whole or not at all.
///
///     writeWholeFile("june.pdf", pdf);
///
/// What stood there before stays until the new content is safe on the disk, and stays for good when that fails. A link is followed:
/// what it leads to is replaced.

#include <cstdint>
#include <string>
#include <string_view>

namespace estatebook {

/// Throws Failure when the path is that of a book file, of a folder, or of anything else but a plain file.
void requirePlainFile(const std::string& path);

/// Who may read a file that was not there before: whomever the process lets, or nobody but its owner.
enum class Readers : std::uint8_t { AsUsual, OwnerAlone };

/// Throws Failure, also for all that `requirePlainFile` refuses.
void writeWholeFile(const std::string& path, std::string_view content, Readers readers = Readers::AsUsual);

} // namespace estatebook
