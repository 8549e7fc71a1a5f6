// SPDX-License-Identifier: MIT
#pragma once

/// RunLoopDriver: has Qt's event loop take the turns of one of ours, so that timers fire and clock changes are heard in a
/// program that shows windows.
///
///     RunLoop loop;
///     SystemClockWatcher watcher(loop);
///     RunLoopDriver driver(loop, [&] { loop.addTimer(TKCurrentDateController::sharedInstance().timer()); });
///     return QApplication::exec();
///
/// What a call of the loop raises is logged.

#include "platform/system/RunLoop.hpp"

#include <QObject>
#include <QSocketNotifier>

#include <functional>

namespace estatebook::platform {

class RunLoopDriver {
public:
    /// The function is called now and after each turn, for timers that each firing makes anew.
    /// REQUIRES: the loop outlives the driver; an application is there.
    explicit RunLoopDriver(RunLoop& loop, std::function<void()> beforeWaiting = {});
    ~RunLoopDriver();
    RunLoopDriver(const RunLoopDriver&) = delete;
    RunLoopDriver& operator=(const RunLoopDriver&) = delete;

    /// Takes a turn now, as for a clock that a test has moved.
    void turn();

private:
    RunLoop& loop_;
    std::function<void()> beforeWaiting_;
    QSocketNotifier notifier_;
};

} // namespace estatebook::platform
