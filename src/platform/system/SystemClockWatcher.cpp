// SPDX-License-Identifier: MIT
#include "platform/system/SystemClockWatcher.hpp"

#include <string_view>
#include <utility>

namespace estatebook::platform {

namespace {

constinit Constant<String> didChange{std::string_view("NSSystemClockDidChangeNotification")};

} // namespace

constinit String* const SystemClockDidChangeNotification = didChange.get();

SystemClockWatcher::SystemClockWatcher(RunLoop& loop, std::unique_ptr<ClockChangeSignal> signal,
                                       const NotificationCentre& centre)
    : loop_(loop), signal_(std::move(signal)) {
    loop_.addDescriptor(signal_->descriptor(), [&taken = *signal_, &centre] {
        if (taken.takeChange()) centre.postNotificationNameObjectUserInfo(SystemClockDidChangeNotification);
    });
}

SystemClockWatcher::~SystemClockWatcher() {
    loop_.removeDescriptor(signal_->descriptor());
}

} // namespace estatebook::platform
