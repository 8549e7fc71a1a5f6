// SPDX-License-Identifier: MIT
#include "platform/system/Clock.hpp"

#include <chrono>
#include <ctime>
#include <utility>

namespace estatebook::platform {

namespace {

std::function<Date()>& replacedNow() {
    static std::function<Date()> function;
    return function;
}

std::function<double()>& replacedUptime() {
    static std::function<double()> function;
    return function;
}

} // namespace

Date Clock::now() {
    if (const auto& function = replacedNow()) return function();
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Date::fromUnixSeconds(std::chrono::duration<double>(sinceEpoch).count());
}

void Clock::setNow(std::function<Date()> now) {
    replacedNow() = std::move(now);
}

double Clock::uptime() {
    if (const auto& function = replacedUptime()) return function();
    timespec time{};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void Clock::setUptime(std::function<double()> uptime) {
    replacedUptime() = std::move(uptime);
}

} // namespace estatebook::platform
