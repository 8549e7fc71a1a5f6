// SPDX-License-Identifier: MIT
#pragma once

/// Button: a push button, or a check box that is on, off or neither.
///
/// The trap: there are three states. Whoever asks whether a box is ticked compares with `On`; a box that stands for several
/// things of which some are on is mixed, and that is not on.

#include "platform/toolkit/Control.hpp"

#include <cstdint>
#include <string_view>

namespace estatebook::platform {

enum class ButtonState : std::int8_t { Mixed = -1, Off = 0, On = 1 };

enum class ButtonKind : std::uint8_t {
    /// Only sends its action; always off.
    Push,
    /// Goes from off to on when the user uses it, and back.
    CheckBox,
};

class ESTATEBOOK_API Button : public Control {
public:
    /// state
    [[nodiscard]] virtual ButtonState state() const = 0;
    /// Mixed becomes on where mixed is not allowed.
    virtual void setState(ButtonState state) = 0;

    /// allowsMixedState: false by default. When allowed, the user's uses lead from on to off, mixed and on again.
    [[nodiscard]] virtual bool allowsMixedState() const = 0;
    virtual void setAllowsMixedState(bool allowed) = 0;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "Button"; }

protected:
    Button() noexcept = default;
};

} // namespace estatebook::platform
