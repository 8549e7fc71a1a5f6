// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/Dialogs.hpp"

#include <QCoreApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPushButton>

namespace estatebook::desktop {

namespace {

class QtDialogs final : public Dialogs {
public:
    QString fileToOpen(QWidget& parent, const QString& title, const QString& folder,
                       const QString& filter) override {
        return QFileDialog::getOpenFileName(&parent, title, folder, filter);
    }
    QString fileToSave(QWidget& parent, const QString& title, const QString& path,
                       const QString& filter) override {
        return QFileDialog::getSaveFileName(&parent, title, path, filter);
    }
    bool choosePrinter(QWidget& parent, QPrinter& printer) override {
        return QPrintDialog(&printer, &parent).exec() == QDialog::Accepted;
    }
    bool confirm(QWidget& parent, const Question& question) override {
        QMessageBox box(QMessageBox::Question, question.title, question.words, QMessageBox::NoButton,
                        &parent);
        const QPushButton* yes = box.addButton(question.yes, QMessageBox::AcceptRole);
        box.setDefaultButton(
            box.addButton(QCoreApplication::translate("Dialogs", "Cancel"), QMessageBox::RejectRole));
        box.exec();
        return box.clickedButton() == yes;
    }
    void tell(QWidget& parent, const QString& title, const QString& words) override {
        QMessageBox::information(&parent, title, words);
    }
    void warn(QWidget& parent, const QString& title, const QString& words) override {
        QMessageBox::warning(&parent, title, words);
    }
};

} // namespace

Dialogs& Dialogs::usual() {
    static QtDialogs dialogs;
    return dialogs;
}

} // namespace estatebook::desktop
