// SPDX-License-Identifier: MIT
#include "platform/system/RunLoop.hpp"

#include "platform/system/Clock.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/FirstException.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <poll.h>
#include <string>
#include <sys/epoll.h>
#include <sys/timerfd.h>
#include <unistd.h>
#include <utility>

namespace estatebook::platform {

namespace {

/// The registration by which the loop's own wake-up is known.
constexpr std::uint64_t WakeUp = 0;

bool watch(int poll, int descriptor, std::uint64_t registration) noexcept {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u64 = registration;
    return ::epoll_ctl(poll, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

int millisecondsOf(double seconds) noexcept {
    if (std::isinf(seconds)) return -1;
    constexpr double Most = 1e9;
    return static_cast<int>(std::min(std::ceil(std::max(seconds, 0.0) * 1000), Most));
}

} // namespace

RunLoop::RunLoop()
    : poll_(::epoll_create1(EPOLL_CLOEXEC)),
      wakeUp_(::timerfd_create(CLOCK_BOOTTIME, TFD_NONBLOCK | TFD_CLOEXEC)) {
    if (poll_ >= 0 && wakeUp_ >= 0 && watch(poll_, wakeUp_, WakeUp)) return;
    const std::string reason = std::strerror(errno);
    ::close(poll_);
    ::close(wakeUp_);
    throw InternalInconsistencyException("a run loop cannot be made: " + reason);
}

RunLoop::~RunLoop() {
    ::close(wakeUp_);
    ::close(poll_);
}

void RunLoop::addTimer(const Ref<Timer>& timer) {
    const bool isHere =
        std::ranges::any_of(timers_, [&](const auto& scheduled) { return scheduled.second == timer; });
    if (isHere || !timer->isValid()) return;
    timers_.emplace(timer->fireUptime(), timer);
    armWakeUp();
}

void RunLoop::addDescriptor(int descriptor, std::function<void()> whenReadable) {
    if (!watch(poll_, descriptor, lastRegistration_ + 1))
        throw InvalidArgumentException("the descriptor " + std::to_string(descriptor) +
                                       " cannot be waited for: " + std::strerror(errno));
    sources_.insert_or_assign(descriptor, Source{++lastRegistration_, std::move(whenReadable)});
}

void RunLoop::removeDescriptor(int descriptor) noexcept {
    if (sources_.erase(descriptor) > 0) ::epoll_ctl(poll_, EPOLL_CTL_DEL, descriptor, nullptr);
}

std::optional<double> RunLoop::nextTimeout() const {
    const auto next =
        std::ranges::find_if(timers_, [](const auto& scheduled) { return scheduled.second->isValid(); });
    if (next == timers_.end()) return std::nullopt;
    return std::max(next->first - Clock::uptime(), 0.0);
}

bool RunLoop::isEmpty() const {
    return sources_.empty() && !nextTimeout();
}

void RunLoop::armWakeUp() noexcept {
    constexpr double Longest = 1e9;
    constexpr double Shortest = 1e-9; // of nothing at all it would be disarmed
    itimerspec time{};
    if (const auto timeout = nextTimeout()) {
        const double seconds = std::clamp(*timeout, Shortest, Longest);
        time.it_value.tv_sec = static_cast<time_t>(seconds);
        time.it_value.tv_nsec = static_cast<long>(std::ceil((seconds - std::floor(seconds)) * 1e9));
        if (time.it_value.tv_nsec >= 1'000'000'000) time.it_value = {time.it_value.tv_sec + 1, 0};
    }
    ::timerfd_settime(wakeUp_, 0, &time, nullptr);
}

bool RunLoop::readDescriptors(FirstException& exceptions) {
    std::array<epoll_event, 32> events{};
    const int count = ::epoll_wait(poll_, events.data(), static_cast<int>(events.size()), 0);
    bool wasReadable = false;
    for (int index = 0; index < count; ++index) {
        const std::uint64_t registration = events[static_cast<std::size_t>(index)].data.u64;
        // Those that were called before may have taken it away, and closed the file; its number may mean another by now.
        const auto source = std::ranges::find_if(
            sources_, [&](const auto& each) { return each.second.registration == registration; });
        if (source == sources_.end()) continue;
        wasReadable = true;
        const auto whenReadable = source->second.whenReadable;
        exceptions.keep(whenReadable);
    }
    return wasReadable;
}

bool RunLoop::fireTimers(FirstException& exceptions) {
    const double now = Clock::uptime();
    bool hasFired = false;
    while (!timers_.empty() && timers_.begin()->first <= now) {
        const auto due = timers_.extract(timers_.begin());
        const Ref<Timer> timer = due.mapped();
        if (!timer->isValid()) continue;
        hasFired = true;
        timer->moveFireDatePast(now);
        exceptions.keep([&] { timer->fire(); });
        addTimer(timer);
    }
    std::erase_if(timers_, [](const auto& scheduled) { return !scheduled.second->isValid(); });
    return hasFired;
}

bool RunLoop::turn() {
    FirstException exceptions;
    const bool wasReadable = readDescriptors(exceptions);
    const bool hasFired = fireTimers(exceptions);
    armWakeUp();
    exceptions.rethrow();
    return wasReadable || hasFired;
}

bool RunLoop::runOnce(double seconds) {
    if (isEmpty()) return false;
    const bool isDue = nextTimeout() == 0.0;
    pollfd waiting{.fd = poll_, .events = POLLIN, .revents = 0};
    // A signal ends the waiting, too; the turn then finds nothing to do.
    ::poll(&waiting, 1, millisecondsOf(isDue ? 0 : seconds));
    return turn();
}

void RunLoop::run() {
    isStopped_ = false;
    while (!isEmpty()) {
        runOnce();
        if (std::exchange(isStopped_, false)) return;
    }
}

} // namespace estatebook::platform
