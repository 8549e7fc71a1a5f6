// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/SheetDialog.hpp"

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
    isFinishing_ = true; // until it is shown again; it may be gone when this returns
    QDialog::done(result);
}

void SheetDialog::setVisible(bool visible) {
    if (visible) isFinishing_ = false;
    QDialog::setVisible(visible);
}

} // namespace estatebook::platform
