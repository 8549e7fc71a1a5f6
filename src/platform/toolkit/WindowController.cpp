// SPDX-License-Identifier: MIT
#include "platform/toolkit/WindowController.hpp"

#include "platform/system/Log.hpp"
#include "platform/toolkit/Toolkit.hpp"

#include <string>

namespace estatebook::platform {

namespace {

class Flag {
public:
    explicit Flag(bool& flag) : flag_(flag) { flag_ = true; }
    ~Flag() { flag_ = false; }
    Flag(const Flag&) = delete;
    Flag& operator=(const Flag&) = delete;

private:
    bool& flag_;
};

} // namespace

WindowController::~WindowController() {
    setDocument(nullptr);
    setWindow(nullptr);
}

Ref<Window> WindowController::window() {
    if (!window_ && !isLoading_) loadWindow();
    return window_;
}

void WindowController::loadWindow() {
    const Flag loading(isLoading_);
    const Ref<String> name = windowNibName();
    loadError_ = nullptr;
    if (!name) return;
    windowWillLoad();
    Ref<Window> loaded;
    if (Toolkit* toolkit = Toolkit::current())
        loaded = toolkit->loadInterfaceFile(name->view(), *this, &loadError_);
    else
        loadError_ =
            Error::make(InterfaceFileErrorDomain, static_cast<std::int64_t>(InterfaceFileError::NoToolkit),
                        "the interface file " + name->string() + " cannot be read: no toolkit is installed");
    if (!loaded) {
        Log::write("No window for " + description() + ": " + loadError_->localizedDescription());
        return;
    }
    setWindow(loaded);
    windowDidLoad();
}

void WindowController::setWindow(const Ref<Window>& window) {
    const Ref<Window> former = window_;
    if (former && former->windowController() == this) former->setWindowController(nullptr);
    window_ = window;
    if (window_) window_->setWindowController(this);
}

void WindowController::setDocument(Document* document) {
    if (document_) std::erase(document_->controllers_, this);
    document_ = document;
    if (document_) document_->controllers_.push_back(this);
}

void WindowController::close() {
    if (const Ref<Window> closed = window_) closed->close();
}

Control::Action WindowController::actionNamed(std::string_view) {
    return {};
}

void WindowController::cancelOperation(Object*) {
    if (!window_) return;
    if (const Ref<Window> parent = window_->sheetParent())
        parent->endSheetReturnCode(*window_, Window::UserCancelled);
    else
        close();
}

} // namespace estatebook::platform
