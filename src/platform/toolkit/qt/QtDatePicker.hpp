// SPDX-License-Identifier: MIT
#pragma once

/// QtDatePicker: a date editor on the screen. It shows wall times of the default zone as our own calendar reckons them; Qt
/// reckons with no zone at all.
///
/// The trap: Qt's editor moves what it cannot show into its range without a word. Here an instant outside of the years of books is
/// shown as a text of its own and kept as it is until the user chooses another. Who comes to edit it begins at the first date that
/// there is room for.

#include "platform/toolkit/DatePicker.hpp"
#include "platform/toolkit/qt/Living.hpp"

#include <QDateTimeEdit>
#include <QObject>

#include <memory>

namespace estatebook::platform {

class QtDatePicker final : public DatePicker {
public:
    /// Of a widget that somebody else owns; it may go before the picker does. Its range and its zone are set.
    explicit QtDatePicker(QDateTimeEdit& widget);
    /// Of its own, until somebody gives it a parent.
    explicit QtDatePicker(std::unique_ptr<QDateTimeEdit> widget);

    /// Null when it is gone.
    [[nodiscard]] QDateTimeEdit* widget() const noexcept { return widget_.get(); }

    [[nodiscard]] bool isEnabled() const override;
    void setEnabled(bool enabled) override;
    [[nodiscard]] Date dateValue() const override { return date_; }
    void setDateValue(std::optional<Date> date) override;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "QtDatePicker"; }

private:
    class FocusWatcher;
    ~QtDatePicker() override;
    /// Has the editor show what was set last.
    void show(bool isEdited);
    void takeFromUser(const QDateTime& shown);

    Living<QDateTimeEdit> widget_;
    bool isOurs_ = false;
    Date date_;
    /// What was set last, and what of it is shown.
    Date set_;
    QDateTime shown_;
    /// With it go the connections.
    std::unique_ptr<FocusWatcher> watcher_;
};

} // namespace estatebook::platform
