// SPDX-License-Identifier: MIT
#include "ui/QBSheetController.hpp"

#include "platform/system/Log.hpp"
#include "platform/values/FirstException.hpp"

namespace estatebook {

using namespace platform;

QBSheetController::~QBSheetController() = default;

void QBSheetController::showSheet(const Ref<Object>& contextObject) {
    const Ref<Window> sheet = window();
    if (!parent_) return;
    parent_->beginSheetCompletionHandler(
        sheet, [self = Ref<QBSheetController>(this), contextObject](std::int64_t returnCode) {
            self->sheetDidEndReturnCodeContextInfo(self->window(), returnCode, contextObject);
        });
}

void QBSheetController::processSheet(Object*) {
    endSheet(Confirmed);
}

void QBSheetController::cancelSheet(Object*) {
    endSheet(Cancelled);
}

void QBSheetController::endSheet(std::int64_t returnCode) {
    const Ref<Window> sheet = window();
    const Ref<Window> parent = parent_; // who is told may give the controller another
    if (parent && sheet) parent->endSheetReturnCode(*sheet, returnCode);
}

void QBSheetController::sheetDidEndReturnCodeContextInfo(const Ref<Window>&, std::int64_t returnCode,
                                                         const Ref<Object>& contextInfo) {
    const Ref<QBSheetController> held(this);
    const Ref<Object> context = contextInfo;
    FirstException exceptions;
    exceptions.keep([&] { close(); });
    if (delegate_ && tellDelegate_) exceptions.keep([&] { tellDelegate_(delegate_, *this, returnCode); });
    if (auto* told = dynamic_cast<QBSheetDelegate*>(context.get()))
        exceptions.keep([&] { told->sheetControllerDidEndWithResult(*this, returnCode); });
    exceptions.rethrow();
}

void QBSheetController::windowDidLoad() {
    prepareSheet();
}

Ref<String> QBSheetController::nibName() const {
    Log::write("Warning: QBSheetController#nibName not implemented!");
    return nullptr;
}

Ref<Document> QBSheetController::document() const {
    if (!parent_) {
        Log::write("Trying to get document but no parent specified!");
        return nullptr;
    }
    const WindowController* controller = parent_->windowController();
    return controller ? controller->document() : nullptr;
}

Ref<ManagedObjectContext> QBSheetController::managedObjectContext() const {
    const Ref<Document> shown = document();
    return shown ? shown->managedObjectContext() : nullptr;
}

void QBSheetController::cancelOperation(Object* sender) {
    if (parent_ && isWindowLoaded() && window()->sheetParent() == parent_)
        cancelSheet(sender);
    else
        WindowController::cancelOperation(sender);
}

Control::Action QBSheetController::actionNamed(std::string_view name) {
    if (name == "processSheet:") return [this](Control& sender) { processSheet(&sender); };
    if (name == "cancelSheet:") return [this](Control& sender) { cancelSheet(&sender); };
    return WindowController::actionNamed(name);
}

} // namespace estatebook
