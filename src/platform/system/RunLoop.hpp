// SPDX-License-Identifier: MIT
#pragma once

/// RunLoop: waits until a timer is due or a file descriptor can be read, and calls who asked for it.
///
///     RunLoop loop;
///     loop.addTimer(controller.timer());
///     loop.addDescriptor(file, [&] { readMore(); });
///     loop.run();                                  // until loop.stop()
///
/// A host with a loop of its own watches one descriptor and takes a turn whenever it can be read:
///
///     QSocketNotifier notifier(loop.descriptor(), QSocketNotifier::Read);
///     QObject::connect(&notifier, &QSocketNotifier::activated, [&] { loop.turn(); });
///
/// An exception out of a call leaves the turn after everything else that was due has been called. Used on one thread.

#include "EstateBook_ModelExport.hpp"
#include "platform/system/Timer.hpp"

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>

namespace estatebook::platform {

class FirstException;

class ESTATEBOOK_API RunLoop {
public:
    static constexpr double Forever = std::numeric_limits<double>::infinity();

    /// Raises InternalInconsistencyException when the system has no descriptors left.
    RunLoop();
    ~RunLoop();
    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;

    /// addTimer: schedules a timer, which is kept until it is invalid. One that is scheduled here or invalid stays as it is.
    void addTimer(const Ref<Timer>& timer);

    /// Calls `whenReadable` in each turn that finds the descriptor readable or at its end. The descriptor stays the
    /// caller's, to be removed before it is closed. Raises InvalidArgumentException for one that is here already or cannot be waited for.
    void addDescriptor(int descriptor, std::function<void()> whenReadable);
    /// Does nothing for one that is not here.
    void removeDescriptor(int descriptor) noexcept;

    /// Can be read whenever there is something to do.
    [[nodiscard]] int descriptor() const noexcept { return poll_; }
    /// The seconds until the next timer is due, 0 when one is; none without valid timers.
    [[nodiscard]] std::optional<double> nextTimeout() const;
    /// Whether there is anything that could ever become due.
    [[nodiscard]] bool isEmpty() const;

    /// Calls everything that is due, without waiting. Timers come last, in the order in which they were due. Whether there was
    /// anything.
    bool turn();
    /// Waits until something is due, for at most so many seconds, and takes a turn. An empty loop does not wait.
    bool runOnce(double seconds = Forever);
    /// Takes turns until `stop`, or until the loop is empty.
    void run();
    /// Ends the innermost `run` after its present turn.
    void stop() noexcept { isStopped_ = true; }

private:
    struct Source {
        std::uint64_t registration;
        std::function<void()> whenReadable;
    };

    void armWakeUp() noexcept;
    bool readDescriptors(FirstException& exceptions);
    bool fireTimers(FirstException& exceptions);

    int poll_ = -1;
    /// Wakes those who wait when the next timer is due.
    int wakeUp_ = -1;
    std::map<int, Source> sources_;
    std::uint64_t lastRegistration_ = 0;
    std::multimap<double, Ref<Timer>> timers_;
    bool isStopped_ = false;
};

} // namespace estatebook::platform
