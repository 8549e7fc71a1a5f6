// SPDX-License-Identifier: MIT
#pragma once

/// QBSheetController: the base of whatever edits something in a sheet in front of a document's window.
///
///     class PaymentSheet : public QBSheetController {
///         Ref<String> nibName() const override { return String::make("PaymentSheet"); }
///         void prepareSheet() override { date_ = window()->datePicker("date"); }
///     };
///     auto sheet = makeRef<PaymentSheet>();
///     sheet->setParent(documentWindow);
///     sheet->setDelegate(this);
///     sheet->showSheet(payment);
///
/// In the interface file a button's action is "processSheet:" or "cancelSheet:". Both end the sheet, close its window and
/// tell the delegate first and then the context object, which is kept alive until then. So is the controller.
///
/// The traps: 0 is what the user confirmed and -1 what the user cancelled; anything else is neither. The delegate is not kept alive:
/// it is to outlive the controller, or to be taken from it. And it need only have the operation, while a context object
/// is told only when it adopts QBSheetDelegate.

#include "platform/toolkit/WindowController.hpp"
#include "platform/values/Ref.hpp"
#include "ui/QBSheetDelegate.hpp"

#include <concepts>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace estatebook {

class ESTATEBOOK_API QBSheetController : public platform::WindowController {
public:
    /// The results of processSheet: and cancelSheet:.
    static constexpr std::int64_t Confirmed = 0;
    static constexpr std::int64_t Cancelled = -1;

    QBSheetController() = default;

    /// parent: the window that the sheet stands in front of; held.
    [[nodiscard]] const platform::Ref<platform::Window>& parent() const noexcept { return parent_; }
    void setParent(const platform::Ref<platform::Window>& parent) { parent_ = parent; }

    /// delegate: who is told how the sheet ended; not held.
    [[nodiscard]] void* delegate() const noexcept { return delegate_; }
    /// Any object. It is told if it has the operation sheetControllerDidEndWithResult, or adopts QBSheetDelegate behind what it is
    /// given as.
    template <class Delegate>
    void setDelegate(Delegate* delegate) noexcept {
        delegate_ = delegate;
        tellDelegate_ = nullptr;
        if constexpr (requires(QBSheetController& sheet, std::int64_t result) {
                          delegate->sheetControllerDidEndWithResult(sheet, result);
                      }) {
            tellDelegate_ = [](void* told, QBSheetController& sheet, std::int64_t result) {
                static_cast<Delegate*>(told)->sheetControllerDidEndWithResult(sheet, result);
            };
        } else if constexpr (std::is_polymorphic_v<Delegate>) {
            tellDelegate_ = [](void* told, QBSheetController& sheet, std::int64_t result) {
                if (auto* adopter = dynamic_cast<QBSheetDelegate*>(static_cast<Delegate*>(told)))
                    adopter->sheetControllerDidEndWithResult(sheet, result);
            };
        }
    }
    void setDelegate(std::nullptr_t) noexcept {
        delegate_ = nullptr;
        tellDelegate_ = nullptr;
    }

    /// showSheet:
    /// Begins the window as a sheet of the parent; without a parent it is loaded and not shown. A controller without a window
    /// shows nothing. Raises InvalidArgumentException when the window is a sheet already.
    virtual void showSheet(const platform::Ref<platform::Object>& contextObject = nullptr);
    /// processSheet:
    /// Ends the sheet with 0.
    virtual void processSheet(platform::Object* sender = nullptr);
    /// cancelSheet:
    /// Ends the sheet with -1.
    virtual void cancelSheet(platform::Object* sender = nullptr);
    /// sheetDidEnd:returnCode:contextInfo:
    /// Closes the window, tells the delegate, then the context object. What one of them raises is raised again when all
    /// of this is done.
    virtual void sheetDidEndReturnCodeContextInfo(const platform::Ref<platform::Window>& sheet,
                                                  std::int64_t returnCode,
                                                  const platform::Ref<platform::Object>& contextInfo);

    /// prepareSheet
    /// An empty hook, run once when the window has loaded.
    virtual void prepareSheet() {}
    /// nibName
    /// The name of the interface file, to be overridden; the base logs that it was not, and has none.
    [[nodiscard]] virtual platform::Ref<platform::String> nibName() const;

    /// document: that of the parent's window controller; null when there is none. Without a parent that is logged, too.
    [[nodiscard]] platform::Ref<platform::Document> document() const override;
    /// managedObjectContext: that of the document; null without one.
    [[nodiscard]] platform::Ref<platform::ManagedObjectContext> managedObjectContext() const;

    [[nodiscard]] platform::Ref<platform::String> windowNibName() const override { return nibName(); }
    void windowDidLoad() override;
    /// Knows "processSheet:" and "cancelSheet:".
    [[nodiscard]] platform::Control::Action actionNamed(std::string_view name) override;
    /// Escape and the close box do what Cancel does; a window that is not a sheet of the parent closes.
    void cancelOperation(platform::Object* sender) override;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "QBSheetController"; }

protected:
    ~QBSheetController() override;

private:
    void endSheet(std::int64_t returnCode);

    platform::Ref<platform::Window> parent_;
    void* delegate_ = nullptr;
    void (*tellDelegate_)(void* told, QBSheetController& sheet, std::int64_t result) = nullptr;
};

} // namespace estatebook
