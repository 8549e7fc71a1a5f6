// SPDX-License-Identifier: MIT
#pragma once

/// WelcomePage: what stands in the window as long as no book is open.

#include <QWidget>

class QLabel;
class QPushButton;

namespace estatebook::desktop {

class WelcomePage : public QWidget {
    Q_OBJECT

public:
    WelcomePage();

    /// Says why a book was not opened; nothing for an empty sentence. `canBeRead`: whether it is offered to look at it.
    void showRefusal(const QString& sentence, bool canBeRead);

Q_SIGNALS:
    void exampleWanted();
    void newBookWanted();
    void openingWanted();
    void readingWanted();

private:
    QLabel* refusal_;
    QPushButton* read_;
};

} // namespace estatebook::desktop
