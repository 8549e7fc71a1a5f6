// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/QtButton.hpp"

#include "platform/toolkit/qt/Unraised.hpp"

#include <QCheckBox>

namespace estatebook::platform {

QtButton::QtButton(QAbstractButton& widget) : widget_(&widget) {
    // Clicked, and not toggled: that one is heard of states that are set, too.
    QObject::connect(&widget, &QAbstractButton::clicked, &connection_,
                     [this] { unraised([this] { sendAction(); }); });
}

QtButton::QtButton(std::unique_ptr<QAbstractButton> widget) : QtButton(*widget.release()) {
    isOurs_ = true;
}

QtButton::~QtButton() {
    // It may be in the middle of telling of a click.
    if (isOurs_ && widget_ && !widget_->parent()) widget_->deleteLater();
}

bool QtButton::isEnabled() const {
    return widget_ && widget_->isEnabled();
}

void QtButton::setEnabled(bool enabled) {
    if (widget_) widget_->setEnabled(enabled);
}

ButtonState QtButton::state() const {
    if (const auto* box = qobject_cast<const QCheckBox*>(widget_.get());
        box && box->checkState() == Qt::PartiallyChecked)
        return ButtonState::Mixed;
    return widget_ && widget_->isChecked() ? ButtonState::On : ButtonState::Off;
}

void QtButton::setState(ButtonState state) {
    if (!widget_) return;
    auto* box = qobject_cast<QCheckBox*>(widget_.get());
    if (box && box->isTristate() && state == ButtonState::Mixed)
        box->setCheckState(Qt::PartiallyChecked);
    else
        widget_->setChecked(state != ButtonState::Off);
}

bool QtButton::allowsMixedState() const {
    const auto* box = qobject_cast<const QCheckBox*>(widget_.get());
    return box && box->isTristate();
}

void QtButton::setAllowsMixedState(bool allowed) {
    auto* box = qobject_cast<QCheckBox*>(widget_.get());
    if (!box) return;
    const ButtonState before = state();
    box->setTristate(allowed);
    setState(before);
}

} // namespace estatebook::platform
