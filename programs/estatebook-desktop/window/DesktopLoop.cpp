// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/DesktopLoop.hpp"

#include "store/TKCurrentDateController.hpp"

namespace estatebook::desktop {

DesktopLoop::DesktopLoop()
    : clock_(loop_),
      driver_(loop_, [this] { loop_.addTimer(TKCurrentDateController::sharedInstance().timer()); }) {}

} // namespace estatebook::desktop
