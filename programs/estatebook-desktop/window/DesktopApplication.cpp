// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/DesktopApplication.hpp"

#include "estatebook/Failure.hpp"
#include "estatebook/book/StoredBook.hpp"

#include "platform/values/Exception.hpp"

#include <string>
#include <utility>

namespace estatebook::desktop {

DesktopApplication::DesktopApplication(int& argumentCount, char** arguments)
    : QApplication(argumentCount, arguments) {
    nextTurn_.setSingleShot(true);
    connect(&nextTurn_, &QTimer::timeout, this, &DesktopApplication::tellNow);
}

bool DesktopApplication::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (const platform::Exception& exception) {
        tellLater(lineOfStore(exception.reason()));
    } catch (const Failure& failure) {
        tellLater(failure.what());
    }
    return false;
}

void DesktopApplication::tell(const platform::Exception& exception) {
    if (auto* application = qobject_cast<DesktopApplication*>(QCoreApplication::instance()))
        application->tellLater(lineOfStore(exception.reason()));
}

void DesktopApplication::tellLater(const std::string& reason) {
    if (!sentence_.isEmpty()) return;
    sentence_ = QString::fromStdString(reason);
    nextTurn_.start();
}

void DesktopApplication::tellNow() {
    Q_EMIT raised(std::exchange(sentence_, {}));
}

} // namespace estatebook::desktop
