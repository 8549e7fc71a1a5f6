// SPDX-License-Identifier: MIT
#include "estatebook-desktop/sheets/BookSheet.hpp"

#include "platform/calendar/Calendar.hpp"

#include <QCompleter>
#include <QDateEdit>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QShortcut>
#include <QStringList>

namespace estatebook::desktop {

using platform::Control;
using platform::Date;
using platform::Ref;

namespace {

/// Has a day begin when it begins, whatever time the picker has.
class WholeDays final : public platform::Adopts<platform::Object, TKDateControllerDelegate> {
public:
    WholeDays() noexcept : Adopts(platform::Counting::Local) {}
    std::optional<Date> dateControllerDateValueWillChange(TKDateController&, Date date) override {
        return platform::Calendar::current().startOfDay(date);
    }
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "WholeDays"; }
};

/// Completes the last of several names.
class TagCompleter : public QCompleter {
public:
    TagCompleter(const QStringList& names, QObject* parent) : QCompleter(names, parent) {
        setCaseSensitivity(Qt::CaseInsensitive);
    }
    [[nodiscard]] QString pathFromIndex(const QModelIndex& index) const override {
        const auto* line = qobject_cast<const QLineEdit*>(widget());
        const QString text = line ? line->text() : QString();
        const qsizetype comma = text.lastIndexOf(QLatin1Char(','));
        const QString before = comma < 0 ? QString() : text.left(comma + 1) + QLatin1Char(' ');
        return before + QCompleter::pathFromIndex(index);
    }
    [[nodiscard]] QStringList splitPath(const QString& path) const override {
        return {path.mid(path.lastIndexOf(QLatin1Char(',')) + 1).trimmed()};
    }
};

} // namespace

void BookSheet::prepareSheet() {
    window_ = dynamic_cast<platform::QtWindow*>(window().get());
    auto* dialog = qobject_cast<QDialog*>(window_->widget());
    for (const char* keys : {"Ctrl+Return", "Ctrl+Enter"})
        QObject::connect(new QShortcut(QKeySequence(QLatin1String(keys)), dialog), &QShortcut::activated,
                         dialog, [this] { processSheet(nullptr); });
    prepareControls();
}

void BookSheet::processSheet(platform::Object* sender) {
    const QString reason = fault();
    showFault(reason);
    if (!reason.isEmpty()) return;
    try {
        session_.perform(stepName().toStdString(), [this] { apply(); });
    } catch (const platform::Exception& exception) {
        return showFault(QString::fromStdString(std::string(exception.reason())));
    }
    QBSheetController::processSheet(sender);
}

void BookSheet::setTitle(const QString& title) const {
    window_->widget()->setWindowTitle(title);
}

void BookSheet::showFault(const QString& sentence) const {
    auto& label = find<QLabel>("fault");
    label.setText(sentence);
    label.setVisible(!sentence.isEmpty());
}

Ref<TKDateController> BookSheet::makeDates(std::string_view checkBox, std::string_view day) const {
    auto dates = platform::makeRef<TKDateController>();
    const auto button = window_->button(checkBox);
    const auto picker = window_->datePicker(day);
    dates->setEnabledButton(button);
    dates->setDatePicker(picker);
    dates->setDelegate(platform::makeRef<WholeDays>());
    button->setAction(
        [controller = dates.get()](Control& sender) { controller->enabledButtonUpdated(&sender); });
    picker->setAction(
        [controller = dates.get()](Control& sender) { controller->datePickerUpdated(&sender); });
    return dates;
}

void BookSheet::completeTags(QLineEdit& line) const {
    QStringList names;
    const auto known = session_.tagNames();
    for (const std::string& name : known) names << QString::fromStdString(name);
    line.setCompleter(new TagCompleter(names, &line));
}

BookSheet::Amount BookSheet::amountIn(std::string_view line) const {
    const QString text = find<QLineEdit>(line).text().trimmed();
    if (text.isEmpty()) return {};
    const auto amount = figures_.amountOf(text);
    return {amount.has_value(), amount};
}

} // namespace estatebook::desktop
