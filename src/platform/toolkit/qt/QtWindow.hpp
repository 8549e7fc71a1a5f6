// SPDX-License-Identifier: MIT
#pragma once

/// QtWindow: a window of the program on the screen.
///
///     Ref<QtWindow> window = QtWindow::around(mainWindow);        // a QMainWindow of the program
///     controller->setWindow(window);
///     sheet->setParent(window);
///
/// A widget that is closed, hidden or destroyed, by whomever, ends the sheets in front of it (Window::Stopped).

#include "platform/toolkit/Window.hpp"
#include "platform/toolkit/qt/Living.hpp"

#include <QWidget>

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace estatebook::platform {

class SheetDialog;

class QtWindow final : public Window {
public:
    /// Around a widget that somebody else owns; it may go before the window does. Anything but a SheetDialog cannot be a
    /// sheet. What the user does to its close box is the widget's affair (closeEvent), as long as no sheet is in front of it.
    [[nodiscard]] static Ref<QtWindow> around(QWidget& widget);
    /// With a dialog of its own, which goes when the window does.
    [[nodiscard]] static Ref<QtWindow> owning(std::unique_ptr<SheetDialog> dialog);

    /// The widget; null when it is gone.
    [[nodiscard]] QWidget* widget() const noexcept { return widget_.get(); }

    [[nodiscard]] bool isVisible() const override;
    /// Buttons and date editors are controls; the name is that of the widget (objectName).
    [[nodiscard]] Ref<Control> control(std::string_view name) const override;
    /// The widget of that name and class, whatever it is; null when there is none.
    template <class Widget>
    [[nodiscard]] Widget* find(std::string_view name) const {
        return dynamic_cast<Widget*>(findWidget(name));
    }

    /// For controls that an interface file gives actions.
    using Window::actionOfController;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "QtWindow"; }

protected:
    void orderFront() override;
    void orderOut() override;
    void orderFrontAsSheetOf(Window& parent) override;
    [[nodiscard]] bool canBeSheet() const override;

private:
    class Watcher;
    enum class Ownership : bool { Theirs, Ours };
    QtWindow(QWidget& widget, Ownership ownership);
    ~QtWindow() override;

    [[nodiscard]] QWidget* findWidget(std::string_view name) const;
    [[nodiscard]] SheetDialog* dialog() const;
    void dialogFinished(int result);
    void widgetWasHidden();
    void widgetWasDestroyed(QObject& widget);

    Living<QWidget> widget_;
    Ownership ownership_;
    bool isOrderingOut_ = false;
    std::unique_ptr<Watcher> watcher_;
    mutable std::map<std::string, Ref<Control>, std::less<>> controls_;
};

} // namespace estatebook::platform
