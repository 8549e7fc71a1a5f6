// SPDX-License-Identifier: MIT
#include "estatebook-desktop/lists/Slices.hpp"

#include <QElapsedTimer>

#include <utility>

namespace estatebook::desktop {

Slices::Slices(QObject* parent) : QObject(parent) {
    timer_.setInterval(0);
    connect(&timer_, &QTimer::timeout, this, &Slices::work);
}

void Slices::begin(std::function<bool()> step) {
    step_ = std::move(step);
    if (!isWaiting_) timer_.start();
}

void Slices::setWaiting(bool isWaiting) {
    isWaiting_ = isWaiting;
    if (isWaiting_)
        timer_.stop();
    else if (isAtWork())
        timer_.start();
}

void Slices::stop() {
    timer_.stop();
    step_ = nullptr;
}

void Slices::finish() {
    while (isAtWork())
        if (!step_()) stop();
}

void Slices::work() {
    QElapsedTimer time;
    time.start();
    do {
        if (!step_()) return stop();
    } while (time.elapsed() < Milliseconds);
}

} // namespace estatebook::desktop
