// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Failure.hpp"
#include "estatebook/watch/ArrearsWatch.hpp"
#include "estatebook/watch/SignalWatcher.hpp"

#include "platform/system/RunLoop.hpp"
#include "platform/system/SystemClockWatcher.hpp"
#include "platform/values/Exception.hpp"
#include "store/TKCurrentDateController.hpp"

#include <ostream>

#include <unistd.h>

namespace estatebook {

namespace {

/// One turn. A tenure whose rent cannot be reckoned raises on each new day; its row tells that.
void takeTurn(platform::RunLoop& loop) {
    loop.addTimer(TKCurrentDateController::sharedInstance().timer());
    try {
        loop.runOnce();
    } catch (const platform::Exception&) {
    }
}

} // namespace

void watchArrears(const BookOptions& options, std::ostream& out) {
    if (options.file == "-")
        throw Failure(ExitCode::WrongUsage, "standard input cannot be watched; give the name of a file");
    const bool isTerminal = isatty(STDOUT_FILENO) != 0;
    platform::RunLoop loop;
    bool isEnding = false;
    const SignalWatcher ending(loop, {SIGINT, SIGTERM}, [&] { isEnding = true; });
    const platform::SystemClockWatcher clockChanges(loop);
    ArrearsWatch watch(options.file, options.asOf, loop, out,
                       isTerminal ? ArrearsWatch::Screen::Terminal : ArrearsWatch::Screen::Lines);
    const SignalWatcher resizing(loop, {SIGWINCH}, [&] {
        if (isTerminal) watch.redraw();
    });
    while (!isEnding && out) takeTurn(loop);
}

} // namespace estatebook
