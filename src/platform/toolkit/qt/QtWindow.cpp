// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/QtWindow.hpp"

#include "platform/toolkit/qt/QtButton.hpp"
#include "platform/toolkit/qt/QtDatePicker.hpp"
#include "platform/toolkit/qt/QtText.hpp"
#include "platform/toolkit/qt/SheetDialog.hpp"
#include "platform/toolkit/qt/Unraised.hpp"

#include <QAbstractButton>
#include <QDateTimeEdit>
#include <QEvent>

#include <utility>

namespace estatebook::platform {

/// Sees what happens to the widget; with it go all connections.
class QtWindow::Watcher final : public QObject {
public:
    explicit Watcher(QtWindow& window) : window_(window) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched != window_.widget()) return false;
        if (event->type() == QEvent::Close && window_.attachedSheet()) {
            event->ignore();
            return true;
        }
        if (event->type() == QEvent::Hide && !event->spontaneous()) window_.widgetWasHidden();
        return false;
    }

private:
    QtWindow& window_;
};

namespace {

/// A sheet is a child of the widget that it was shown on, and shall not go with it.
void freeSheetsOf(QObject& widget) {
    for (QDialog* dialog : widget.findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly))
        if (auto* sheet = dynamic_cast<SheetDialog*>(dialog); sheet && sheet->isKept())
            sheet->setParent(nullptr);
}

} // namespace

Ref<QtWindow> QtWindow::around(QWidget& widget) {
    return Ref<QtWindow>(new QtWindow(widget, Ownership::Theirs));
}

Ref<QtWindow> QtWindow::owning(std::unique_ptr<SheetDialog> dialog) {
    return Ref<QtWindow>(new QtWindow(*dialog.release(), Ownership::Ours));
}

QtWindow::QtWindow(QWidget& widget, Ownership ownership)
    : widget_(&widget), ownership_(ownership), watcher_(std::make_unique<Watcher>(*this)) {
    widget.installEventFilter(watcher_.get());
    QObject::connect(&widget, &QObject::destroyed, watcher_.get(),
                     [this](QObject* destroyed) { widgetWasDestroyed(*destroyed); });
    if (SheetDialog* sheet = dialog()) {
        sheet->setKept(ownership_ == Ownership::Ours);
        sheet->setWhenRejected([this] { unraised([this] { userCancels(); }); });
        QObject::connect(sheet, &QDialog::finished, watcher_.get(),
                         [this](int result) { dialogFinished(result); });
    }
}

QtWindow::~QtWindow() {
    endSheetsOfDyingWindow();
    watcher_ = nullptr;
    if (!widget_) return;
    if (SheetDialog* sheet = dialog()) sheet->setWhenRejected({});
    if (ownership_ == Ownership::Theirs) return;
    freeSheetsOf(*widget_);
    widget_->hide();
    // It may be in the middle of telling of a click.
    widget_->deleteLater();
}

SheetDialog* QtWindow::dialog() const {
    return dynamic_cast<SheetDialog*>(widget_.get());
}

bool QtWindow::canBeSheet() const {
    return dialog() != nullptr;
}

bool QtWindow::isVisible() const {
    return widget_ && widget_->isVisible();
}

void QtWindow::orderFront() {
    if (!widget_) return;
    widget_->show();
    widget_->raise();
    widget_->activateWindow();
}

void QtWindow::orderOut() {
    if (!widget_) return;
    const bool wasOrderingOut = std::exchange(isOrderingOut_, true);
    widget_->hide();
    isOrderingOut_ = wasOrderingOut;
}

void QtWindow::orderFrontAsSheetOf(Window& parent) {
    SheetDialog* sheet = dialog();
    const auto* carrier = dynamic_cast<const QtWindow*>(&parent);
    if (!sheet) return;
    sheet->hide();
    sheet->setParent(carrier ? carrier->widget() : nullptr, sheet->windowFlags() | Qt::Dialog);
    sheet->open();
}

void QtWindow::dialogFinished(int result) {
    unraised([&] {
        if (const Ref<Window> parent = sheetParent(); parent && parent->attachedSheet() == this)
            parent->endSheetReturnCode(*this, result);
        else
            wasTakenAway();
    });
}

void QtWindow::widgetWasHidden() {
    const SheetDialog* sheet = dialog();
    if (isOrderingOut_ || (sheet && sheet->isFinishing())) return;
    unraised([&] { wasTakenAway(); });
}

void QtWindow::widgetWasDestroyed(QObject& widget) {
    unraised([&] { wasDestroyed(); });
    freeSheetsOf(widget); // which still has its children
}

QWidget* QtWindow::findWidget(std::string_view name) const {
    return widget_ && !name.empty() ? widget_->findChild<QWidget*>(qString(name)) : nullptr;
}

Ref<Control> QtWindow::control(std::string_view name) const {
    if (const auto known = controls_.find(name); known != controls_.end()) return known->second;
    QWidget* found = findWidget(name);
    Ref<Control> control;
    if (auto* button = qobject_cast<QAbstractButton*>(found))
        control = makeRef<QtButton>(*button);
    else if (auto* edit = qobject_cast<QDateTimeEdit*>(found))
        control = makeRef<QtDatePicker>(*edit);
    if (control) controls_.emplace(name, control);
    return control;
}

} // namespace estatebook::platform
