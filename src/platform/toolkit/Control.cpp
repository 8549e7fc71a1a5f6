// SPDX-License-Identifier: MIT
#include "platform/toolkit/Control.hpp"

#include "platform/values/Ref.hpp"

namespace estatebook::platform {

Control::~Control() = default;

void Control::sendAction() {
    if (!action_) return;
    const Ref<Control> held(this);
    const Action action = action_;
    action(*this);
}

} // namespace estatebook::platform
