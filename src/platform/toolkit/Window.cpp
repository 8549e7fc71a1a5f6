// SPDX-License-Identifier: MIT
#include "platform/toolkit/Window.hpp"

#include "platform/system/Log.hpp"
#include "platform/toolkit/Button.hpp"
#include "platform/toolkit/DatePicker.hpp"
#include "platform/toolkit/WindowController.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/FirstException.hpp"

#include <algorithm>
#include <string>
#include <utility>

namespace estatebook::platform {

Window::Window() : Object(Counting::Local), controller_(std::make_shared<WindowController*>(nullptr)) {}

Window::~Window() {
    *controller_ = nullptr;
    endSheetsOfDyingWindow();
}

void Window::endSheetsOfDyingWindow() noexcept {
    isDead_ = true;
    try {
        endAllSheets();
    } catch (const std::exception& exception) {
        Log::write(std::string("A sheet of a window that is gone was not told of its end: ") +
                   exception.what());
    } catch (...) {
        Log::write("A sheet of a window that is gone was not told of its end.");
    }
}

void Window::beginSheetCompletionHandler(const Ref<Window>& sheet, CompletionHandler handler) {
    if (isDead_ || isEndingSheets_ || !sheet || sheet->isDead_) return;
    if (sheet->isSheet())
        throw InvalidArgumentException("a window that is a sheet already cannot be begun as one");
    if (!sheet->canBeSheet())
        throw InvalidArgumentException("a window of this kind cannot be shown as a sheet");
    for (const Window* carrier = this; carrier; carrier = carrier->sheetParent_)
        if (carrier == sheet.get())
            throw InvalidArgumentException(
                "a window cannot be a sheet of itself or of one of its own sheets");
    sheets_.push_back({sheet, std::move(handler)});
    sheet->sheetParent_ = this;
    if (sheets_.size() == 1) showNextSheet();
}

void Window::endSheetReturnCode(Window& sheet, std::int64_t returnCode) {
    if (isDead_ || sheet.sheetParent_ != this) return;
    const Ref<Window> held(this);
    FirstException exceptions;
    exceptions.keep([&] { end(sheet, returnCode); });
    if (handlersAtWork_ == 0 && !isEndingSheets_) exceptions.keep([&] { showNextSheet(); });
    exceptions.rethrow();
}

void Window::end(Window& sheet, std::int64_t returnCode) {
    const auto place =
        std::ranges::find(sheets_, &sheet, [](const Showing& each) { return each.sheet.get(); });
    if (place == sheets_.end()) return;
    const bool wasShown = isShowingSheet_ && place == sheets_.begin();
    const Showing ended = std::move(*place);
    sheets_.erase(place);
    if (wasShown) isShowingSheet_ = false;
    ended.sheet->sheetParent_ = nullptr;

    FirstException exceptions;
    ++handlersAtWork_;
    exceptions.keep([&] { ended.sheet->endAllSheets(); });
    if (wasShown && !ended.sheet->isDead_) exceptions.keep([&] { ended.sheet->orderOut(); });
    if (ended.handler) exceptions.keep([&] { ended.handler(returnCode); });
    --handlersAtWork_;
    exceptions.rethrow();
}

void Window::endAllSheets() {
    FirstException exceptions;
    const bool wasEnding = std::exchange(isEndingSheets_, true);
    const auto all = sheets(); // of which handlers may end some
    for (const Ref<Window>& sheet : all) exceptions.keep([&] { end(*sheet, Stopped); });
    isEndingSheets_ = wasEnding;
    exceptions.rethrow();
}

void Window::showNextSheet() {
    if (isShowingSheet_ || sheets_.empty()) return;
    const Ref<Window> next = sheets_.front().sheet;
    isShowingSheet_ = true;
    next->orderFrontAsSheetOf(*this);
}

std::vector<Ref<Window>> Window::sheets() const {
    std::vector<Ref<Window>> all;
    all.reserve(sheets_.size());
    for (const Showing& each : sheets_) all.push_back(each.sheet);
    return all;
}

Ref<Window> Window::attachedSheet() const {
    return isShowingSheet_ ? sheets_.front().sheet : nullptr;
}

void Window::show() {
    if (!isDead_ && !isSheet()) orderFront();
}

void Window::endEverything() {
    const Ref<Window> held(this);
    FirstException exceptions;
    exceptions.keep([&] { endAllSheets(); });
    if (sheetParent_) exceptions.keep([&] { sheetParent_->endSheet(*this); });
    exceptions.rethrow();
}

void Window::close() {
    if (isDead_) return;
    const Ref<Window> held(this);
    FirstException exceptions;
    exceptions.keep([&] { endEverything(); });
    if (!isDead_ && !isSheet() && isVisible()) exceptions.keep([&] { orderOut(); });
    exceptions.rethrow();
}

void Window::wasTakenAway() {
    if (isDead_) return;
    endEverything();
}

void Window::wasDestroyed() {
    if (std::exchange(isDead_, true)) return;
    endEverything();
}

void Window::userCancels() {
    if (isDead_ || isShowingSheet_) return;
    const Ref<Window> held(this);
    if (const Ref<WindowController> controller(windowController()); controller)
        controller->cancelOperation(nullptr);
    else if (sheetParent_)
        sheetParent_->endSheetReturnCode(*this, UserCancelled);
    else
        close();
}

Control::Action Window::actionOfController(std::string_view name) const {
    return [controller = controller_, name = std::string(name)](Control& sender) {
        const Ref<WindowController> asked(*controller);
        if (!asked) return;
        if (const Control::Action action = asked->actionNamed(name)) action(sender);
    };
}

Ref<Button> Window::button(std::string_view name) const {
    return refCast<Button>(control(name));
}

Ref<DatePicker> Window::datePicker(std::string_view name) const {
    return refCast<DatePicker>(control(name));
}

} // namespace estatebook::platform
