// SPDX-License-Identifier: MIT
#include "platform/toolkit/Document.hpp"

#include "platform/toolkit/WindowController.hpp"

namespace estatebook::platform {

Document::~Document() {
    for (WindowController* controller : controllers_) controller->document_ = nullptr;
}

} // namespace estatebook::platform
