// SPDX-License-Identifier: MIT
#pragma once

/// Dialogs: what the program asks in windows that are not its own: for files, for a printer, and whether something is meant.
///
///     if (dialogs.confirm(window, {tr("Delete"), tr("Delete “%1”?").arg(name), tr("Delete")})) …
///
/// Each waits for its answer.

#include <QString>

class QPrinter;
class QWidget;

namespace estatebook::desktop {

class Dialogs {
public:
    struct Question {
        QString title;
        QString words;
        /// What the button says that answers yes; the other one cancels, and is the one to be pressed by the return key.
        QString yes;
    };

    virtual ~Dialogs() = default;

    /// A file that is there; empty for none.
    [[nodiscard]] virtual QString fileToOpen(QWidget& parent, const QString& title, const QString& folder,
                                             const QString& filter) = 0;
    /// A file to be written, `path` when nobody says otherwise; empty for none. Whoever chooses one that is there was asked.
    [[nodiscard]] virtual QString fileToSave(QWidget& parent, const QString& title, const QString& path,
                                             const QString& filter) = 0;
    /// Sets the printer up. False when nothing is to be printed.
    [[nodiscard]] virtual bool choosePrinter(QWidget& parent, QPrinter& printer) = 0;
    [[nodiscard]] virtual bool confirm(QWidget& parent, const Question& question) = 0;
    virtual void tell(QWidget& parent, const QString& title, const QString& words) = 0;
    virtual void warn(QWidget& parent, const QString& title, const QString& words) = 0;

    /// Those of Qt.
    [[nodiscard]] static Dialogs& usual();
};

} // namespace estatebook::desktop
