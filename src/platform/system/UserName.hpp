// SPDX-License-Identifier: MIT
#pragma once

/// User name: who is logged in, as people call them.

#include "EstateBook_ModelExport.hpp"

#include <string>
#include <string_view>

namespace estatebook::platform {

/// The full name of the user whose process this is, their login name when the system knows no other, or nothing. Asks
/// the system at each call.
[[nodiscard]] ESTATEBOOK_API std::string fullUserName();

/// The full name in the comment field of a user's record: all before its first comma, where "&" stands for the login name
/// with a capital letter. The login name when that is empty. In UTF-8, whatever the record is written in.
[[nodiscard]] ESTATEBOOK_API std::string fullNameInComment(std::string_view comment, std::string_view login);

} // namespace estatebook::platform
