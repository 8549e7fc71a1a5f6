// SPDX-License-Identifier: MIT
#pragma once

/// What a user does, sent to the window on the screen and not to the widget, so that windows in front of it count.

#include <QApplication>
#include <QEvent>
#include <QPointer>
#include <QTest>
#include <QWidget>
#include <QWindow>

namespace estatebook::test {

/// Everything that was put off happens, deletions included.
inline void settle() {
    for (int times = 0; times < 3; ++times) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

inline void clickAt(QWidget& widget, QPoint place) {
    QWindow* window = widget.window()->windowHandle();
    if (!window || !widget.isVisible()) return;
    const QPoint inWindow = widget.mapTo(widget.window(), place);
    QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, inWindow);
    settle();
}

/// In the middle of it; a check box takes clicks on its mark and text only.
inline void click(QWidget& widget) {
    clickAt(widget, QPoint(std::min(10, widget.width() / 2), widget.height() / 2));
}

inline void press(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QWindow* window = widget.window()->windowHandle();
    if (!window || !widget.isVisible()) return;
    QTest::keyClick(window, key, modifiers);
    settle();
}

/// As the window system asks a window to close.
inline void clickCloseBox(QWidget& window) {
    if (!window.windowHandle() || !window.isVisible()) return;
    window.windowHandle()->close();
    settle();
}

} // namespace estatebook::test
