// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/DesktopApplication.hpp"

#include "estatebook/Failure.hpp"

#include "platform/values/Exception.hpp"

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
    } catch (const platform::Exception&) {
        tellLater(std::current_exception());
    } catch (const Failure&) {
        tellLater(std::current_exception());
    }
    return false;
}

void DesktopApplication::tell() {
    if (auto* application = qobject_cast<DesktopApplication*>(QCoreApplication::instance()))
        application->tellLater(std::current_exception());
}

void DesktopApplication::tellLater(const std::exception_ptr& exception) {
    if (exception_) return;
    exception_ = exception;
    nextTurn_.start();
}

void DesktopApplication::tellNow() {
    Q_EMIT raised(std::exchange(exception_, nullptr));
}

} // namespace estatebook::desktop
