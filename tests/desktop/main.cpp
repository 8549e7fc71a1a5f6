// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/DesktopApplication.hpp"

#include <gtest/gtest.h>

/// Leaks that are not ours:
///   - QUiLoader keeps parts of a file that it gives up on in the middle, as of the damaged ones of the tests;
///   - fonts are looked up once and kept for the life of the process.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libQt6UiTools\n"
           "leak:libfontconfig\n";
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // Nobody's screen is used by accident.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const estatebook::desktop::DesktopApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
