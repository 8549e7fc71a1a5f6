// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/Dialogs.hpp"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPushButton>
#include <QStandardPaths>

namespace estatebook::desktop {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(Dialogs)
};

class QtDialogs final : public Dialogs {
public:
    QString fileToOpen(QWidget& parent, const QString& title, const QString& folder,
                       const QString& filter) override {
        return QFileDialog::getOpenFileName(&parent, title, folder, filter);
    }
    bool choosePrinter(QWidget& parent, QPrinter& printer) override {
        return QPrintDialog(&printer, &parent).exec() == QDialog::Accepted;
    }
    bool confirm(QWidget& parent, const Question& question) override {
        QMessageBox box(QMessageBox::Question, question.title, question.words, QMessageBox::NoButton,
                        &parent);
        const QPushButton* yes = box.addButton(question.yes, QMessageBox::AcceptRole);
        box.setDefaultButton(box.addButton(Words::tr("Cancel"), QMessageBox::RejectRole));
        box.exec();
        return box.clickedButton() == yes;
    }
    void tell(QWidget& parent, const QString& title, const QString& words) override {
        QMessageBox::information(&parent, title, words);
    }
    void warn(QWidget& parent, const QString& title, const QString& words) override {
        QMessageBox::warning(&parent, title, words);
    }

protected:
    QString nameToSave(QWidget& parent, const QString& title, const QString& path,
                       const QString& filter) override {
        return QFileDialog::getSaveFileName(&parent, title, path, filter, nullptr,
                                            QFileDialog::DontConfirmOverwrite);
    }
};

} // namespace

// What is asked about the file is asked here, since a dialog knows the name without the suffix that it will get.
QString Dialogs::fileToSave(QWidget& parent, const NewFile& file) {
    QString path = nameToSave(parent, file.title, file.path, file.filter);
    while (!path.isEmpty()) {
        if (!path.endsWith(file.suffix, Qt::CaseInsensitive)) path += file.suffix;
        const QFileInfo found(path);
        if (!found.exists() && !found.isSymLink()) break;
        const QString name = found.fileName();
        if (!file.mayReplace)
            warn(parent, file.title,
                 Words::tr("There is “%1” in this folder already. Choose another name.").arg(name));
        else if (confirm(parent,
                         {file.title,
                          Words::tr("There is “%1” in this folder already. Put the new file in its place?")
                              .arg(name),
                          Words::tr("Replace")}))
            break;
        path = nameToSave(parent, file.title, path, file.filter);
    }
    return path;
}

QString Dialogs::usualFolder() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(folder).isDir() ? folder : QDir::homePath();
}

Dialogs& Dialogs::usual() {
    static QtDialogs dialogs;
    return dialogs;
}

} // namespace estatebook::desktop
