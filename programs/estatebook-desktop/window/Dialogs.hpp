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

    struct NewFile {
        QString title;
        /// What it is called when nobody says otherwise.
        QString path;
        QString filter;
        /// ".pdf": what its name ends with, also when somebody leaves it out.
        QString suffix;
        /// Whether it may take the place of one that is there, after a question. Else another name is asked for.
        bool mayReplace = true;
    };

    virtual ~Dialogs() = default;

    /// A file to be written; empty for none.
    [[nodiscard]] QString fileToSave(QWidget& parent, const NewFile& file);

    /// A file that is there; empty for none.
    [[nodiscard]] virtual QString fileToOpen(QWidget& parent, const QString& title, const QString& folder,
                                             const QString& filter) = 0;
    /// Sets the printer up. False when nothing is to be printed.
    [[nodiscard]] virtual bool choosePrinter(QWidget& parent, QPrinter& printer) = 0;
    [[nodiscard]] virtual bool confirm(QWidget& parent, const Question& question) = 0;
    virtual void tell(QWidget& parent, const QString& title, const QString& words) = 0;
    virtual void warn(QWidget& parent, const QString& title, const QString& words) = 0;

    /// Where files of the user's are when nobody says otherwise.
    [[nodiscard]] static QString usualFolder();
    /// Those of Qt.
    [[nodiscard]] static Dialogs& usual();

protected:
    /// The name of a file to be written, whatever it ends with and whether or not it is there; empty for none.
    [[nodiscard]] virtual QString nameToSave(QWidget& parent, const QString& title, const QString& path,
                                             const QString& filter) = 0;
};

} // namespace estatebook::desktop
