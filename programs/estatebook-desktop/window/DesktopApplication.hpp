// SPDX-License-Identifier: MIT
#pragma once

/// DesktopApplication: the application of the program, which outlives what is raised amid an event.
///
/// Rows are read when they are shown: a book may turn out to be damaged, or its disk gone, wherever one is painted or clicked.
/// Nothing may pass through the event loop then. It is told in the next turn.

#include <QApplication>
#include <QTimer>

#include <exception>

namespace estatebook::desktop {

class DesktopApplication final : public QApplication {
    Q_OBJECT

public:
    DesktopApplication(int& argumentCount, char** arguments);

    bool notify(QObject* receiver, QEvent* event) override;

    /// The same for what is being caught amid an event. Without such an application nobody is told.
    static void tell();

Q_SIGNALS:
    /// A platform::Exception or a Failure. Told once a turn, however many events fail.
    void raised(const std::exception_ptr& exception);

private:
    void tellLater(const std::exception_ptr& exception);
    void tellNow();
    /// To be told in the next turn; null when there is nothing.
    std::exception_ptr exception_;
    QTimer nextTurn_;
};

} // namespace estatebook::desktop
