// SPDX-License-Identifier: MIT
#pragma once

/// CommandLine: the program from its arguments to its exit code.

namespace estatebook {

/// Runs the command that the arguments name. What it prints goes to standard output; when it fails, one line on
/// standard error says why.
[[nodiscard]] int runCommandLine(int argumentCount, const char* const* arguments);

} // namespace estatebook
