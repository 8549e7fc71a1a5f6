// SPDX-License-Identifier: MIT
#include "platform/toolkit/Toolkit.hpp"

namespace estatebook::platform {

namespace {

constinit Toolkit* currentToolkit = nullptr;

} // namespace

Toolkit::~Toolkit() = default;

Toolkit* Toolkit::current() noexcept {
    return currentToolkit;
}

void Toolkit::setCurrent(Toolkit* toolkit) noexcept {
    currentToolkit = toolkit;
}

} // namespace estatebook::platform
