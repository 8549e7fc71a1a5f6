// SPDX-License-Identifier: MIT
#pragma once

/// Control: what the user works with in a window: a button, a date picker. A control that the user uses sends its
/// action, once for each use.
///
///     button->setAction([this](Control& sender) { enabledButtonUpdated(sender); });
///
/// The trap: code that sets a control's value or state sends no action. Who wants both calls both.

#include "EstateBook_ModelExport.hpp"

#include "platform/values/Object.hpp"

#include <functional>
#include <utility>

namespace estatebook::platform {

class ESTATEBOOK_API Control : public Object {
public:
    using Action = std::function<void(Control& sender)>;

    /// What happens when the user uses the control; nothing by default. The control holds what the function holds.
    void setAction(Action action) { action_ = std::move(action); }
    [[nodiscard]] bool hasAction() const noexcept { return static_cast<bool>(action_); }
    /// sendAction: as if the user had used the control, its value and state left as they are. The action may let the control
    /// go, or give it another action.
    void sendAction();

    /// isEnabled
    /// A control that is not enabled takes no part in what the user does, and keeps its value.
    [[nodiscard]] virtual bool isEnabled() const = 0;
    virtual void setEnabled(bool enabled) = 0;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "Control"; }

protected:
    Control() noexcept : Object(Counting::Local) {}
    ~Control() override;

private:
    Action action_;
};

} // namespace estatebook::platform
