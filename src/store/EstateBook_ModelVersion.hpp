// SPDX-License-Identifier: MIT
#pragma once

/// The version of the library that was loaded, which may be newer than the headers a program was built with.
///
///     std::fputs(reinterpret_cast<const char*>(EstateBook_ModelVersionString), stdout);
///
/// The text begins with the four characters that make it findable in a file of machine code, ends in a line
/// feed and is followed by a zero byte. Both symbols have C linkage, so that a host can look them up by name.

#include "EstateBook_ModelExport.hpp"

extern "C" {

/// "@(#)PROGRAM:EstateBook_Model  PROJECT:EstateBook-1\n"
ESTATEBOOK_API extern const unsigned char EstateBook_ModelVersionString[];

/// 1.0
ESTATEBOOK_API extern const double EstateBook_ModelVersionNumber;
}
