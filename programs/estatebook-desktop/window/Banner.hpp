// SPDX-License-Identifier: MIT
#pragma once

/// Banner: a sentence above the lists, with up to two things that can be done about it.

#include <QFrame>

#include <functional>

class QLabel;
class QPushButton;

namespace estatebook::desktop {

class Banner : public QFrame {
    Q_OBJECT

public:
    struct Choice {
        QString text;
        std::function<void()> action;
    };

    explicit Banner(QWidget* parent = nullptr);

    /// Hides itself for an empty sentence.
    void show(const QString& sentence, const Choice& first = {}, const Choice& second = {});
    [[nodiscard]] QString sentence() const;

private:
    struct Button {
        QPushButton* button = nullptr;
        std::function<void()> action;
    };
    void set(Button& button, const Choice& choice);

    QLabel* sentence_;
    Button first_;
    Button second_;
};

} // namespace estatebook::desktop
