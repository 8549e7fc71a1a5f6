// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/DesktopLoop.hpp"

#include "platform/system/Log.hpp"
#include "platform/values/Exception.hpp"
#include "store/TKCurrentDateController.hpp"

namespace estatebook::desktop {

DesktopLoop::DesktopLoop() : clock_(loop_), notifier_(loop_.descriptor(), QSocketNotifier::Read) {
    connect(&notifier_, &QSocketNotifier::activated, this, &DesktopLoop::turn);
    turn();
}

// Terms that cannot be reckoned raise out of whatever moves the day on, when everybody has been told.
void DesktopLoop::turn() {
    try {
        loop_.turn();
    } catch (const platform::Exception& exception) {
        platform::Log::write(exception.reason());
    }
    loop_.addTimer(TKCurrentDateController::sharedInstance().timer());
}

} // namespace estatebook::desktop
