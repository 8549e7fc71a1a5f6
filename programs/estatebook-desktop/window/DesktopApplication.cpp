// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/DesktopApplication.hpp"

#include "estatebook/Failure.hpp"
#include "estatebook/book/StoredBook.hpp"

#include "platform/values/Exception.hpp"

#include <QTimer>

#include <string>

namespace estatebook::desktop {

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
    if (isTelling_) return;
    isTelling_ = true;
    const auto tell = [this, sentence = QString::fromStdString(reason)] {
        isTelling_ = false;
        Q_EMIT raised(sentence);
    };
    QTimer::singleShot(0, this, tell);
}

} // namespace estatebook::desktop
