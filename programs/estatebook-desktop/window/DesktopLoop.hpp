// SPDX-License-Identifier: MIT
#pragma once

/// DesktopLoop: has the timers of books, midnight and clocks that are set looked after by Qt's event loop.
///
///     DesktopLoop loop;
///     MainWindow window(loop);

#include "platform/system/RunLoop.hpp"
#include "platform/system/SystemClockWatcher.hpp"
#include "platform/toolkit/qt/RunLoopDriver.hpp"

namespace estatebook::desktop {

class DesktopLoop {
public:
    DesktopLoop();

    [[nodiscard]] platform::RunLoop& runLoop() noexcept { return loop_; }
    /// Does all that is due now, and waits for the next midnight. What is raised meanwhile goes to the log.
    void turn() { driver_.turn(); }

private:
    platform::RunLoop loop_;
    platform::SystemClockWatcher clock_;
    platform::RunLoopDriver driver_;
};

} // namespace estatebook::desktop
