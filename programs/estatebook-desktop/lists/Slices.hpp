// SPDX-License-Identifier: MIT
#pragma once

/// Slices: long work done a little in each turn of the event loop, so that the window goes on answering.
///
///     slices.begin([this] { return addNext(); });        // until it answers false

#include <QObject>
#include <QTimer>

#include <functional>

namespace estatebook::desktop {

class Slices : public QObject {
public:
    /// The milliseconds after which the event loop has its turn.
    static constexpr int Milliseconds = 8;

    explicit Slices(QObject* parent = nullptr);

    /// Calls `step` until it answers false; what was begun before ends here.
    void begin(std::function<bool()> step);
    void stop();
    /// Leaves the rest for later, for as long as it is told to wait.
    void setWaiting(bool isWaiting);
    /// Whether there is something left to do.
    [[nodiscard]] bool isAtWork() const noexcept { return step_ != nullptr; }
    /// All that is left, at once; also of what waits.
    void finish();

private:
    void work();

    QTimer timer_;
    std::function<bool()> step_;
    bool isWaiting_ = false;
};

} // namespace estatebook::desktop
