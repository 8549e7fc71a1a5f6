// SPDX-License-Identifier: MIT
#pragma once

/// Window: a window of the program, and the sheets it carries. A sheet is a window that stands in front of another and keeps
/// the user from it until it ends, with a number that says how.
///
///     parent->beginSheetCompletionHandler(sheet, [this](std::int64_t code) { sheetEnded(code); });
///     …
///     parent->endSheetReturnCode(*sheet, 0);      // calls the handler
///
/// A window shows one sheet at a time. Others that are begun meanwhile wait, and are shown in the order in which they were
/// begun. A sheet may carry sheets of its own.
///
/// Each showing ends once, and its handler is called once. It is called before the operation that ends the sheet
/// returns, with the sheet taken away already and the next one not yet shown, so that it may begin another sheet or the
/// same. The numbers mean what the program says; two are given here:
///   - UserCancelled, when the user sends the sheet away (Escape, the close box) and no controller of its own decides;
///   - Stopped, when something else ends it: its parent closes or dies, it is closed itself, or its parent's own showing ends.
///
/// The trap: beginning a sheet returns at once. What is to happen when it is done belongs into the handler.

#include "EstateBook_ModelExport.hpp"

#include "platform/toolkit/Control.hpp"
#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace estatebook::platform {

class Button;
class DatePicker;
class WindowController;

class ESTATEBOOK_API Window : public Object {
public:
    using CompletionHandler = std::function<void(std::int64_t returnCode)>;

    static constexpr std::int64_t UserCancelled = -1;
    static constexpr std::int64_t Stopped = -1000;

    // Sheets

    /// beginSheet:completionHandler:
    /// Shows the sheet, or has it wait until those before it are done. The window holds sheet and handler until the showing ends. No
    /// sheet at all: nothing happens. Raises InvalidArgumentException for a window that is a sheet already, that carries this window
    /// itself, or that the toolkit cannot show as a sheet.
    void beginSheetCompletionHandler(const Ref<Window>& sheet, CompletionHandler handler);
    /// endSheet:returnCode:
    /// Ends a sheet of this window, shown or waiting; one that is none does nothing. What the handler raises is raised again
    /// once the next sheet is shown.
    void endSheetReturnCode(Window& sheet, std::int64_t returnCode);
    /// endSheet: with Stopped.
    void endSheet(Window& sheet) { endSheetReturnCode(sheet, Stopped); }
    /// The sheet that is shown and those that wait, in order.
    [[nodiscard]] std::vector<Ref<Window>> sheets() const;
    /// The sheet that is shown, or null.
    [[nodiscard]] Ref<Window> attachedSheet() const;
    /// Whether the window is a sheet that is shown or waits.
    [[nodiscard]] bool isSheet() const noexcept { return sheetParent_ != nullptr; }
    /// The window that it is a sheet of, or null.
    [[nodiscard]] Ref<Window> sheetParent() const noexcept { return Ref<Window>(sheetParent_); }

    // The window itself

    /// Brings it before the user; not for sheets.
    void show();
    /// close: ends its sheets with Stopped, ends it with Stopped when it is a sheet, and takes it away. A second time does nothing.
    /// It can be shown again. What handlers begin on it meanwhile does nothing.
    void close();
    [[nodiscard]] virtual bool isVisible() const = 0;

    /// The controller of the window, or null; not held.
    [[nodiscard]] WindowController* windowController() const noexcept { return *controller_; }
    /// REQUIRES: the controller ends before the window does, or the window is told. WindowController sees to it.
    void setWindowController(WindowController* controller) noexcept { *controller_ = controller; }

    /// The control of that name in the window's interface file; null when there is none, or one of another kind.
    [[nodiscard]] virtual Ref<Control> control(std::string_view name) const = 0;
    [[nodiscard]] Ref<Button> button(std::string_view name) const;
    [[nodiscard]] Ref<DatePicker> datePicker(std::string_view name) const;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "Window"; }

protected:
    Window();
    /// REQUIRES: who takes the window from the screen in a destructor of his own calls `endSheetsOfDyingWindow` first.
    ~Window() override;

    // What a toolkit supplies.
    virtual void orderFront() = 0;
    virtual void orderOut() = 0;
    virtual void orderFrontAsSheetOf(Window& parent) = 0;
    /// Whether the toolkit can show it as a sheet.
    [[nodiscard]] virtual bool canBeSheet() const { return true; }

    // What a toolkit tells.
    /// The user sends the window away. Its controller decides (cancelOperation:); without one a sheet ends with UserCancelled
    /// and any other window closes. A window with a sheet in front of it stays.
    void userCancels();
    /// Something else than `close` took it from the screen.
    void wasTakenAway();
    /// What stood behind it on the screen is no more. The window can never be shown again and carries no sheets; what is
    /// begun on it does nothing.
    void wasDestroyed();
    /// The same in a destructor. What handlers raise is logged.
    void endSheetsOfDyingWindow() noexcept;
    /// For each control with an action that an interface file names: a function that asks the controller which the window
    /// has when it is called. Window and controller may be gone by then.
    [[nodiscard]] Control::Action actionOfController(std::string_view name) const;

private:
    struct Showing {
        Ref<Window> sheet;
        CompletionHandler handler;
    };

    /// Takes the sheet off the window and tells its handler; shows no other. One that is no sheet of it does nothing.
    void end(Window& sheet, std::int64_t returnCode);
    void endAllSheets();
    void showNextSheet();
    /// Ends all of them and this window's own showing.
    void endEverything();

    /// The one that is shown, if any is, stands first.
    std::vector<Showing> sheets_;
    bool isShowingSheet_ = false;
    /// No waiting sheet is shown while this is not 0.
    int handlersAtWork_ = 0;
    /// What is begun on the window meanwhile does nothing.
    bool isEndingSheets_ = false;
    bool isDead_ = false;
    Window* sheetParent_ = nullptr;
    /// Shared with the actions of controls, which may outlive the window.
    std::shared_ptr<WindowController*> controller_;
};

} // namespace estatebook::platform
