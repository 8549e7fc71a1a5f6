// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/QtDatePicker.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/system/Clock.hpp"
#include "platform/toolkit/qt/QtText.hpp"
#include "platform/toolkit/qt/Unraised.hpp"
#include "platform/toolkit/qt/WallTime.hpp"

#include <QEvent>
#include <QSignalBlocker>

namespace estatebook::platform {

/// A text of its own cannot be edited part by part; it makes room for a date as long as somebody is about to.
class QtDatePicker::FocusWatcher final : public QObject {
public:
    explicit FocusWatcher(QtDatePicker& picker) : picker_(picker) {}

    bool eventFilter(QObject*, QEvent* event) override {
        const bool comes = event->type() == QEvent::FocusIn;
        if (!comes && event->type() != QEvent::FocusOut) return false;
        const Ref<QtDatePicker> held(&picker_);
        // What is typed already is taken, before the editor would.
        if (!comes) picker_.widget_->interpretText();
        if (picker_.widget_ && picker_.date_ == picker_.set_) picker_.show(comes);
        return false;
    }

private:
    QtDatePicker& picker_;
};

QtDatePicker::QtDatePicker(QDateTimeEdit& widget)
    : widget_(&widget), watcher_(std::make_unique<FocusWatcher>(*this)) {
    const QSignalBlocker silence(&widget);
    widget.setTimeSpec(Qt::UTC);
    widget.setDateTimeRange(firstWallTime(), lastWallTime());
    // A date is chosen when it is typed to its end.
    widget.setKeyboardTracking(false);
    setDateValue(Clock::now());
    widget.installEventFilter(watcher_.get());
    QObject::connect(&widget, &QDateTimeEdit::dateTimeChanged, watcher_.get(),
                     [this](const QDateTime& shown) { unraised([&] { takeFromUser(shown); }); });
}

QtDatePicker::QtDatePicker(std::unique_ptr<QDateTimeEdit> widget) : QtDatePicker(*widget.release()) {
    isOurs_ = true;
}

QtDatePicker::~QtDatePicker() {
    if (isOurs_ && widget_ && !widget_->parent()) widget_->deleteLater();
}

bool QtDatePicker::isEnabled() const {
    return widget_ && widget_->isEnabled();
}

void QtDatePicker::setEnabled(bool enabled) {
    if (widget_) widget_->setEnabled(enabled);
}

void QtDatePicker::setDateValue(std::optional<Date> date) {
    if (!date) return;
    date_ = set_ = *date;
    if (widget_) show(widget_->hasFocus());
}

void QtDatePicker::show(bool isEdited) {
    const bool hasRoom = Calendar::current().isInBookYears(set_);
    // Shown in the place of the first date, when it is not empty.
    const QString text = hasRoom || isEdited ? QString() : qString(set_.description());
    const QDateTime shown = hasRoom ? wallTimeOf(set_) : firstWallTime();
    if (widget_->dateTime() == shown && widget_->specialValueText() == text) return;
    const QSignalBlocker silence(widget_.get());
    widget_->setSpecialValueText(text);
    widget_->setDateTime(shown);
    shown_ = shown;
}

void QtDatePicker::takeFromUser(const QDateTime& shown) {
    if (shown == shown_) {
        date_ = set_;
    } else {
        const auto chosen = dateOfWallTime(shown);
        if (!chosen) return;
        date_ = *chosen;
    }
    sendAction();
}

} // namespace estatebook::platform
