// SPDX-License-Identifier: MIT
#pragma once

/// SettingsPage: the settings of a book: its currency and billing mode, and what is fixed about it.

#include <QWidget>

class QComboBox;
class QLabel;

namespace estatebook::desktop {

class BookSession;

class SettingsPage : public QWidget {
    Q_OBJECT

public:
    /// Shows nothing yet.
    explicit SettingsPage(BookSession& session);

    /// Shows the settings as they are now.
    void refresh();

private:
    void takeCurrency();
    void takeBillingMode();

    BookSession& session_;
    QLabel* file_;
    QLabel* zone_;
    QComboBox* currency_;
    QComboBox* billingMode_;
    QLabel* holds_;
};

} // namespace estatebook::desktop
