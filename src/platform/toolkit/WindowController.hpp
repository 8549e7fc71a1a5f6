// SPDX-License-Identifier: MIT
#pragma once

/// WindowController: owns a window, makes it from an interface file when it is first asked for, and carries out what the
/// controls of that file ask for.
///
///     class PaymentSheet : public WindowController {
///         Ref<String> windowNibName() const override { return String::make("PaymentSheet"); }
///         void windowDidLoad() override { date_ = window()->datePicker("date"); }
///     };
///     controller->window();                       // loads it, once
///
/// The trap: nothing is loaded before `window` is read, and a controller that names no file has no window.

#include "platform/observation/ObservableObject.hpp"
#include "platform/toolkit/Control.hpp"
#include "platform/toolkit/Document.hpp"
#include "platform/toolkit/Window.hpp"
#include "platform/values/Error.hpp"
#include "platform/values/String.hpp"

#include <string_view>

namespace estatebook::platform {

class ESTATEBOOK_API WindowController : public ObservableObject {
public:
    WindowController() = default;

    /// windowNibName: the name of the interface file; null, unless a class says otherwise, for none.
    [[nodiscard]] virtual Ref<String> windowNibName() const { return nullptr; }

    /// window: made from the interface file at the first call, between windowWillLoad and windowDidLoad. Null when there is no
    /// file, no toolkit (`Toolkit::current`), or the file is not in order; the log then has one line and `loadError` says why.
    [[nodiscard]] Ref<Window> window();
    /// setWindow: a window of the program's own making. It counts as loaded; windowDidLoad is not called.
    void setWindow(const Ref<Window>& window);
    [[nodiscard]] bool isWindowLoaded() const noexcept { return window_ != nullptr; }
    /// Why the window could not be loaded the last time; null when it was, or nobody has asked for it.
    [[nodiscard]] const Ref<Error>& loadError() const noexcept { return loadError_; }

    /// windowWillLoad, windowDidLoad: empty hooks.
    virtual void windowWillLoad() {}
    virtual void windowDidLoad() {}

    /// document: what the window shows; null when it has none. Not held.
    [[nodiscard]] virtual Ref<Document> document() const { return Ref<Document>(document_); }
    void setDocument(Document* document);

    /// close: closes the window, if it is loaded.
    void close();

    /// The operation behind a name that a control of the interface file has for its action, such as "processSheet:";
    /// empty when the controller has none. A file that names such a one is not in order.
    [[nodiscard]] virtual Control::Action actionNamed(std::string_view name);

    /// cancelOperation: the user sends the window away (Escape, the close box). A sheet ends with UserCancelled, any
    /// other window closes, unless a class says otherwise. The sender is null.
    virtual void cancelOperation(Object* sender);

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "WindowController"; }

protected:
    ~WindowController() override;

private:
    friend class Document;
    void loadWindow();

    Ref<Window> window_;
    Ref<Error> loadError_;
    Document* document_ = nullptr;
    bool isLoading_ = false;
};

} // namespace estatebook::platform
