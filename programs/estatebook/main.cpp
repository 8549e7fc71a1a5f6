// SPDX-License-Identifier: MIT
#include "estatebook/CommandLine.hpp"

int main(int argumentCount, char** arguments) {
    return estatebook::runCommandLine(argumentCount, arguments);
}
