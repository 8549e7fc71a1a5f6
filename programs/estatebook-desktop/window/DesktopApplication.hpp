// SPDX-License-Identifier: MIT
#pragma once

/// DesktopApplication: the application of the program, which outlives what is raised amid an event.
///
/// Rows are read when they are shown: a book may turn out to be damaged, or its disk gone, wherever one is painted or clicked.
/// Nothing may pass through the event loop then. It is told in the next turn.

#include <QApplication>
#include <QTimer>

#include <string>

namespace estatebook::platform {
class Exception;
}

namespace estatebook::desktop {

class DesktopApplication final : public QApplication {
    Q_OBJECT

public:
    DesktopApplication(int& argumentCount, char** arguments);

    bool notify(QObject* receiver, QEvent* event) override;

    /// The same for what was caught amid an event. Without such an application nobody is told.
    static void tell(const platform::Exception& exception);

Q_SIGNALS:
    /// The reason in one sentence. Told once a turn, however many events fail.
    void raised(const QString& sentence);

private:
    void tellLater(const std::string& reason);
    void tellNow();
    /// To be told in the next turn; empty when there is nothing.
    QString sentence_;
    QTimer nextTurn_;
};

} // namespace estatebook::desktop
