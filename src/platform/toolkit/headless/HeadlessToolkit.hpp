// SPDX-License-Identifier: MIT
#pragma once

/// HeadlessToolkit: windows without a screen, for tests and for programs that have none. They behave as real ones do: a
/// second sheet waits, a window under a sheet takes no input, a control that is not enabled is passed over.
///
///     HeadlessToolkit toolkit;
///     toolkit.addInterfaceFile("PaymentSheet", {
///         {.name = "ok", .kind = HeadlessPart::PushButton, .action = "processSheet:"},
///         {.name = "enabled", .kind = HeadlessPart::CheckBox},
///         {.name = "date", .kind = HeadlessPart::DatePicker},
///     });
///     Toolkit::setCurrent(&toolkit);
///     …
///     HeadlessUser user;
///     user.click(*sheet->window()->button("ok"));

#include "platform/toolkit/Toolkit.hpp"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::platform {

/// One control of an interface file.
struct HeadlessPart {
    enum Kind : std::uint8_t { PushButton, CheckBox, DatePicker };

    std::string name;
    Kind kind = PushButton;
    /// The name of its action; empty when it has none.
    std::string action{};
    bool allowsMixedState = false;
};

class ESTATEBOOK_API HeadlessToolkit final : public Toolkit {
public:
    HeadlessToolkit();
    ~HeadlessToolkit() override;

    /// Makes an interface file known, or replaces it.
    void addInterfaceFile(std::string_view name, std::vector<HeadlessPart> parts);

    [[nodiscard]] Ref<Window> loadInterfaceFile(std::string_view name, WindowController& owner,
                                                Ref<Error>* error) override;
    [[nodiscard]] Ref<Window> makeWindow() override;
    [[nodiscard]] Ref<Button> makeButton(ButtonKind kind) override;
    [[nodiscard]] Ref<platform::DatePicker> makeDatePicker() override;

private:
    std::map<std::string, std::vector<HeadlessPart>, std::less<>> files_;
};

/// What a user does. Each answers whether anything happened: a window that is not visible, or has a sheet in front of it, and a
/// control that is not enabled take no input. A control that stands in no window always does.
/// REQUIRES: windows and controls of a HeadlessToolkit.
class ESTATEBOOK_API HeadlessUser {
public:
    bool click(Button& button) const;
    /// Chooses a date in the years of books; others cannot be chosen.
    bool pick(DatePicker& picker, Date date) const;
    bool pressEscape(Window& window) const;
    bool clickCloseBox(Window& window) const;
};

} // namespace estatebook::platform
