// SPDX-License-Identifier: MIT
#pragma once

/// DesktopProgram: the program with windows, from its command line on.

namespace estatebook::desktop {

/// Runs it and gives its exit code.
[[nodiscard]] int runDesktop(int argumentCount, char** arguments);

} // namespace estatebook::desktop
