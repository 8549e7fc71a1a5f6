// SPDX-License-Identifier: MIT
#pragma once

/// QtButton: a button on the screen; its action is sent when the user clicks it, by mouse or by key.

#include "platform/toolkit/Button.hpp"
#include "platform/toolkit/qt/Living.hpp"

#include <QAbstractButton>
#include <QObject>

#include <memory>

namespace estatebook::platform {

class QtButton final : public Button {
public:
    /// Of a widget that somebody else owns; it may go before the button does.
    explicit QtButton(QAbstractButton& widget);
    /// Of its own, until somebody gives it a parent.
    explicit QtButton(std::unique_ptr<QAbstractButton> widget);

    /// Null when it is gone.
    [[nodiscard]] QAbstractButton* widget() const noexcept { return widget_.get(); }

    [[nodiscard]] bool isEnabled() const override;
    void setEnabled(bool enabled) override;
    [[nodiscard]] ButtonState state() const override;
    void setState(ButtonState state) override;
    [[nodiscard]] bool allowsMixedState() const override;
    void setAllowsMixedState(bool allowed) override;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "QtButton"; }

private:
    ~QtButton() override;

    Living<QAbstractButton> widget_;
    bool isOurs_ = false;
    QObject connection_;
};

} // namespace estatebook::platform
