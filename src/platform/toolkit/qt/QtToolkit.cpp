// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/QtToolkit.hpp"

#include "platform/toolkit/WindowController.hpp"
#include "platform/toolkit/qt/InterfaceFile.hpp"
#include "platform/toolkit/qt/QtButton.hpp"
#include "platform/toolkit/qt/QtDatePicker.hpp"
#include "platform/toolkit/qt/QtText.hpp"
#include "platform/toolkit/qt/QtWindow.hpp"
#include "platform/toolkit/qt/SheetDialog.hpp"

#include <QAbstractButton>
#include <QCheckBox>
#include <QDateTimeEdit>
#include <QFile>
#include <QPushButton>
#include <QVariant>

#include <utility>

namespace estatebook::platform {

namespace {

/// Leads the actions that the file names to the window's controller. What is wrong with one, if anything is.
std::optional<InterfaceFileFault> connectActions(QtWindow& window, WindowController& owner) {
    for (const QWidget* widget : window.widget()->findChildren<QWidget*>()) {
        const QVariant action = widget->property(ActionProperty);
        if (!action.isValid()) continue;
        const std::string name = textOf(widget->objectName());
        const std::string asked = textOf(action.toString());
        const Ref<Control> control = window.control(name);
        if (!control)
            return InterfaceFileFault{InterfaceFileError::UnknownAction,
                                      ": \"" + name + "\" asks for " + asked +
                                          ", but is no button or date editor"};
        if (!owner.actionNamed(asked))
            return InterfaceFileFault{InterfaceFileError::UnknownAction,
                                      ": \"" + name + "\" asks for " + asked +
                                          ", which its controller does not know"};
        control->setAction(window.actionOfController(asked));
    }
    return std::nullopt;
}

} // namespace

QtToolkit::QtToolkit(QString folder) : folder_(std::move(folder)) {}

QtToolkit::~QtToolkit() = default;

Ref<Window> QtToolkit::loadInterfaceFile(std::string_view name, WindowController& owner, Ref<Error>* error) {
    const QString path = folder_ + QLatin1Char('/') + qString(name) + QLatin1String(".ui");
    std::optional<InterfaceFileFault> fault;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        fault = InterfaceFileFault{InterfaceFileError::Missing, ": " + textOf(file.errorString())};
    } else if (auto dialog = makeFromInterfaceFile(file.readAll(), fault)) {
        const Ref<QtWindow> window = QtWindow::owning(std::move(dialog));
        fault = connectActions(*window, owner);
        if (!fault) return window;
    }
    if (error)
        *error = Error::make(InterfaceFileErrorDomain, static_cast<std::int64_t>(fault->code),
                             "the interface file " + textOf(path) + fault->what);
    return nullptr;
}

Ref<Window> QtToolkit::makeWindow() {
    return QtWindow::owning(std::make_unique<SheetDialog>());
}

Ref<Button> QtToolkit::makeButton(ButtonKind kind) {
    if (kind == ButtonKind::CheckBox) return makeRef<QtButton>(std::make_unique<QCheckBox>());
    return makeRef<QtButton>(std::make_unique<QPushButton>());
}

Ref<DatePicker> QtToolkit::makeDatePicker() {
    return makeRef<QtDatePicker>(std::make_unique<QDateTimeEdit>());
}

} // namespace estatebook::platform
