// SPDX-License-Identifier: MIT
#include "estatebook/watch/SignalWatcher.hpp"

#include "platform/values/Exception.hpp"

#include <utility>

#include <sys/signalfd.h>
#include <unistd.h>

namespace estatebook {

namespace {

/// Whether there was any.
bool takeSignals(int descriptor) {
    signalfd_siginfo taken{};
    bool isAny = false;
    while (read(descriptor, &taken, sizeof taken) > 0) isAny = true;
    return isAny;
}

} // namespace

SignalWatcher::SignalWatcher(platform::RunLoop& loop, std::initializer_list<int> signals,
                             std::function<void()> heard)
    : loop_(loop) {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals) sigaddset(&set, signal);
    descriptor_ = signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
    if (descriptor_ < 0) throw platform::InternalInconsistencyException("no signals can be waited for");
    pthread_sigmask(SIG_BLOCK, &set, &before_);
    loop_.addDescriptor(descriptor_, [descriptor = descriptor_, heard = std::move(heard)] {
        if (takeSignals(descriptor)) heard();
    });
}

SignalWatcher::~SignalWatcher() {
    loop_.removeDescriptor(descriptor_);
    takeSignals(descriptor_); // those that came again must not end the program now
    close(descriptor_);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

} // namespace estatebook
