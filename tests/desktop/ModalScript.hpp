// SPDX-License-Identifier: MIT
#pragma once

/// What a user does in windows that hold up the program until they are answered, such as those that ask for a file.
///
///     ModalScript script;
///     script.then<QFileDialog>([](QFileDialog& dialog) { … press(dialog, Qt::Key_Return); })
///           .then<QMessageBox>([](QMessageBox& box) { press(box, Qt::Key_Escape); });
///     menu->trigger();                          // comes back when all of them are answered
///     EXPECT_TRUE(script.isDone());

#include "desktop/QtUser.hpp"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>

#include <deque>
#include <functional>
#include <string>

namespace estatebook::test {

class ModalScript {
public:
    ModalScript() = default;
    ModalScript(const ModalScript&) = delete;
    ModalScript& operator=(const ModalScript&) = delete;

    /// The next window that holds the program up, which must be of the class.
    template <class Dialog>
    ModalScript& then(std::function<void(Dialog&)> answer) {
        steps_.emplace_back([answer = std::move(answer)](QWidget& modal) {
            settle();
            auto* dialog = qobject_cast<Dialog*>(&modal);
            if (dialog) return answer(*dialog);
            ADD_FAILURE() << "another window: " << modal.metaObject()->className() << ", "
                          << modal.windowTitle().toStdString();
            modal.close();
        });
        if (steps_.size() == 1) await();
        return *this;
    }
    /// Whether all of it happened.
    [[nodiscard]] bool isDone() const noexcept { return steps_.empty() && !isWaiting_; }

private:
    // Not by one timer: it would not come round while it is being answered, when the answer opens the next window.
    void await() {
        isWaiting_ = true;
        waited_.start();
        QTimer::singleShot(0, &home_, [this] { look(); });
    }
    void look() {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal && modal != answered_ && modal->isVisible()) {
            answered_ = modal;
            const auto answer = std::move(steps_.front());
            steps_.pop_front();
            isWaiting_ = false;
            const QPointer<QWidget> held(modal);
            if (!steps_.empty()) await();
            answer(*modal);
            settle();
            if (!isDone() || !held || held != QApplication::activeModalWidget()) return;
            ADD_FAILURE() << "a window that is not answered: " << modal->windowTitle().toStdString();
            modal->close();
            return;
        }
        if (!modal) answered_ = nullptr;
        if (waited_.elapsed() < Patience) return QTimer::singleShot(1, &home_, [this] { look(); });
        ADD_FAILURE() << "there is no window to be answered";
        steps_.clear();
        if (modal) modal->close();
    }

    std::deque<std::function<void(QWidget&)>> steps_;
    QPointer<QWidget> answered_;
    bool isWaiting_ = false;
    QElapsedTimer waited_;
    QObject home_;
};

} // namespace estatebook::test
