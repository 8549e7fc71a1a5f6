// SPDX-License-Identifier: MIT
#include "platform/system/Clock.hpp"

#include <chrono>
#include <utility>

namespace estatebook::platform {

namespace {

std::function<Date()>& replacement() {
    static std::function<Date()> function;
    return function;
}

} // namespace

Date Clock::now() {
    if (const auto& function = replacement()) return function();
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Date::fromUnixSeconds(std::chrono::duration<double>(sinceEpoch).count());
}

void Clock::setNow(std::function<Date()> now) {
    replacement() = std::move(now);
}

} // namespace estatebook::platform
