// SPDX-License-Identifier: MIT
#pragma once

/// SystemClockWatcher: posts a notification, on a run loop, whenever the clock of the system was set.
///
///     RunLoop loop;
///     SystemClockWatcher watcher(loop);
///     loop.run();                       // TKCurrentDateController hears of it and moves on
///
/// The notification has neither an object nor user information. Without a watcher nobody is told.

#include "EstateBook_ModelExport.hpp"
#include "platform/system/ClockChangeSignal.hpp"
#include "platform/system/NotificationCentre.hpp"
#include "platform/system/RunLoop.hpp"
#include "platform/values/String.hpp"

#include <memory>

namespace estatebook::platform {

/// The name of the notification, "NSSystemClockDidChangeNotification".
ESTATEBOOK_API extern String* const SystemClockDidChangeNotification;

class ESTATEBOOK_API SystemClockWatcher {
public:
    /// REQUIRES: the loop and the centre outlive the watcher.
    explicit SystemClockWatcher(RunLoop& loop,
                                std::unique_ptr<ClockChangeSignal> signal = ClockChangeSignal::ofSystem(),
                                const NotificationCentre& centre = NotificationCentre::defaultCentre());
    ~SystemClockWatcher();
    SystemClockWatcher(const SystemClockWatcher&) = delete;
    SystemClockWatcher& operator=(const SystemClockWatcher&) = delete;

private:
    RunLoop& loop_;
    std::unique_ptr<ClockChangeSignal> signal_;
};

} // namespace estatebook::platform
