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

/// How long a window system may take at most, in milliseconds; nothing waits for it that has happened already.
inline constexpr int Patience = 5000;

/// Everything that was put off happens, deletions included, and the window system has shown what is to be seen.
inline void settle() {
    for (int times = 0; times < 3; ++times) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->isVisible() && widget->windowHandle() && !widget->windowHandle()->isExposed())
            static_cast<void>(QTest::qWaitForWindowExposed(widget, Patience));
}

/// Gives it the keyboard, as far as the window system and what stands in front of it allow.
inline void giveFocus(QWidget& widget) {
    settle();
    widget.activateWindow();
    widget.setFocus();
    if (QApplication::activeModalWidget() && QApplication::activeModalWidget() != widget.window()) return;
    static_cast<void>(QTest::qWaitFor([&] { return widget.hasFocus(); }, Patience));
    settle();
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
