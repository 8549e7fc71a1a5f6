// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/RunLoopDriver.hpp"

#include "platform/toolkit/qt/Unraised.hpp"

#include <utility>

namespace estatebook::platform {

RunLoopDriver::RunLoopDriver(RunLoop& loop, std::function<void()> beforeWaiting)
    : loop_(loop), beforeWaiting_(std::move(beforeWaiting)),
      notifier_(loop.descriptor(), QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { turn(); });
    if (beforeWaiting_) unraised(beforeWaiting_);
}

RunLoopDriver::~RunLoopDriver() = default;

void RunLoopDriver::turn() {
    unraised([this] { loop_.turn(); });
    if (beforeWaiting_) unraised(beforeWaiting_);
}

} // namespace estatebook::platform
