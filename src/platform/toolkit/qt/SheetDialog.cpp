// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/SheetDialog.hpp"

#include <QPointer>

namespace estatebook::platform {

SheetDialog::SheetDialog(QWidget* parent) : QDialog(parent) {}

SheetDialog::~SheetDialog() = default;

void SheetDialog::reject() {
    const auto whenRejected = whenRejected_;
    if (whenRejected)
        whenRejected();
    else
        done(Cancelled);
}

void SheetDialog::done(int result) {
    const QPointer<SheetDialog> living(this);
    isFinishing_ = true;
    QDialog::done(result);
    if (living) isFinishing_ = false;
}

} // namespace estatebook::platform
