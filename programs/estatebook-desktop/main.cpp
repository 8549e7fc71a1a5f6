// SPDX-License-Identifier: MIT
#include "estatebook-desktop/DesktopProgram.hpp"

int main(int argumentCount, char** arguments) {
    return estatebook::desktop::runDesktop(argumentCount, arguments);
}
