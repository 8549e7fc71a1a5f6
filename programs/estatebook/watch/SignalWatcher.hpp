// SPDX-License-Identifier: MIT
#pragma once

/// SignalWatcher: hears signals of the system on a run loop, where anything may be done about them.
///
///     const SignalWatcher ending(loop, {SIGINT, SIGTERM}, [&] { isEnding = true; });
///
/// While it lives the signals do nothing else. The trap: threads that were there before do not heed it.

#include "platform/system/RunLoop.hpp"

#include <functional>
#include <initializer_list>

#include <signal.h>

namespace estatebook {

class SignalWatcher {
public:
    /// Raises InternalInconsistencyException when the system has no descriptors left. REQUIRES: the loop outlives the watcher.
    SignalWatcher(platform::RunLoop& loop, std::initializer_list<int> signals, std::function<void()> heard);
    ~SignalWatcher();
    SignalWatcher(const SignalWatcher&) = delete;
    SignalWatcher& operator=(const SignalWatcher&) = delete;

private:
    platform::RunLoop& loop_;
    sigset_t before_{};
    int descriptor_ = -1;
};

} // namespace estatebook
