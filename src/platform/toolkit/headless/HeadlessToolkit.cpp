// SPDX-License-Identifier: MIT
#include "platform/toolkit/headless/HeadlessToolkit.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/system/Clock.hpp"
#include "platform/toolkit/WindowController.hpp"

#include <string>
#include <utility>

namespace estatebook::platform {

namespace {

class HeadlessWindow final : public Window {
public:
    HeadlessWindow() = default;
    ~HeadlessWindow() override;

    [[nodiscard]] bool isVisible() const override { return isVisible_; }
    [[nodiscard]] Ref<Control> control(std::string_view name) const override {
        const auto found = controls_.find(name);
        return found == controls_.end() ? nullptr : found->second;
    }
    void addControl(std::string_view name, const Ref<Control>& control) { controls_.emplace(name, control); }

    [[nodiscard]] bool takesInput() const { return isVisible_ && !attachedSheet(); }
    bool sendAway() {
        if (!takesInput()) return false;
        userCancels();
        return true;
    }
    using Window::actionOfController;

protected:
    void orderFront() override { isVisible_ = true; }
    void orderOut() override { isVisible_ = false; }
    void orderFrontAsSheetOf(Window&) override { isVisible_ = true; }

private:
    bool isVisible_ = false;
    std::map<std::string, Ref<Control>, std::less<>> controls_;
};

/// What buttons and date pickers have in common: the window they stand in.
class Placed {
public:
    Placed() = default;
    Placed(const Placed&) = delete;
    Placed& operator=(const Placed&) = delete;
    virtual ~Placed() = default;

    HeadlessWindow* window = nullptr;
    bool isEnabled = true;
    [[nodiscard]] bool takesInput() const { return isEnabled && (!window || window->takesInput()); }
};

class HeadlessButton final : public Button, public Placed {
public:
    explicit HeadlessButton(ButtonKind kind) : kind_(kind) {}

    [[nodiscard]] bool isEnabled() const override { return Placed::isEnabled; }
    void setEnabled(bool enabled) override { Placed::isEnabled = enabled; }
    [[nodiscard]] ButtonState state() const override { return state_; }
    void setState(ButtonState state) override {
        if (kind_ == ButtonKind::Push) return;
        state_ = state == ButtonState::Mixed && !allowsMixedState_ ? ButtonState::On : state;
    }
    [[nodiscard]] bool allowsMixedState() const override { return allowsMixedState_; }
    void setAllowsMixedState(bool allowed) override {
        allowsMixedState_ = allowed;
        setState(state_);
    }

    void goOn() {
        if (state_ == ButtonState::Off)
            setState(allowsMixedState_ ? ButtonState::Mixed : ButtonState::On);
        else
            setState(state_ == ButtonState::Mixed ? ButtonState::On : ButtonState::Off);
    }

private:
    ButtonKind kind_;
    ButtonState state_ = ButtonState::Off;
    bool allowsMixedState_ = false;
};

class HeadlessDatePicker final : public DatePicker, public Placed {
public:
    [[nodiscard]] bool isEnabled() const override { return Placed::isEnabled; }
    void setEnabled(bool enabled) override { Placed::isEnabled = enabled; }
    [[nodiscard]] Date dateValue() const override { return date_; }
    void setDateValue(std::optional<Date> date) override { date_ = date.value_or(date_); }

private:
    Date date_ = Clock::now();
};

// Controls learn that their window is gone: somebody may hold them still.
HeadlessWindow::~HeadlessWindow() {
    for (const auto& [name, control] : controls_)
        if (auto* placed = dynamic_cast<Placed*>(control.get())) placed->window = nullptr;
}

Ref<Error> wrongWith(InterfaceFileError code, std::string_view file, std::string_view what) {
    return Error::make(InterfaceFileErrorDomain, static_cast<std::int64_t>(code),
                       "the interface file " + std::string(file) + std::string(what));
}

} // namespace

HeadlessToolkit::HeadlessToolkit() = default;
HeadlessToolkit::~HeadlessToolkit() = default;

void HeadlessToolkit::addInterfaceFile(std::string_view name, std::vector<HeadlessPart> parts) {
    files_.insert_or_assign(std::string(name), std::move(parts));
}

Ref<Window> HeadlessToolkit::loadInterfaceFile(std::string_view name, WindowController& owner,
                                               Ref<Error>* error) {
    const auto fail = [&](InterfaceFileError code, std::string_view what) {
        if (error) *error = wrongWith(code, name, what);
        return Ref<Window>();
    };
    const auto file = files_.find(name);
    if (file == files_.end()) return fail(InterfaceFileError::Missing, " is not there");
    const Ref<HeadlessWindow> window = makeRef<HeadlessWindow>();
    for (const HeadlessPart& part : file->second) {
        Ref<Control> control;
        if (part.kind == HeadlessPart::DatePicker) {
            const auto picker = makeRef<HeadlessDatePicker>();
            picker->window = window.get();
            control = picker;
        } else {
            const auto button = makeRef<HeadlessButton>(
                part.kind == HeadlessPart::CheckBox ? ButtonKind::CheckBox : ButtonKind::Push);
            button->window = window.get();
            button->setAllowsMixedState(part.allowsMixedState);
            control = button;
        }
        if (!part.action.empty()) {
            if (!owner.actionNamed(part.action))
                return fail(InterfaceFileError::UnknownAction, ": " + part.name + " asks for " + part.action +
                                                                   ", which its controller does not know");
            control->setAction(window->actionOfController(part.action));
        }
        window->addControl(part.name, control);
    }
    return window;
}

Ref<Window> HeadlessToolkit::makeWindow() {
    return makeRef<HeadlessWindow>();
}

Ref<Button> HeadlessToolkit::makeButton(ButtonKind kind) {
    return makeRef<HeadlessButton>(kind);
}

Ref<DatePicker> HeadlessToolkit::makeDatePicker() {
    return makeRef<HeadlessDatePicker>();
}

bool HeadlessUser::click(Button& button) const {
    auto& clicked = dynamic_cast<HeadlessButton&>(button);
    if (!clicked.takesInput()) return false;
    clicked.goOn();
    clicked.sendAction();
    return true;
}

bool HeadlessUser::pick(DatePicker& picker, Date date) const {
    const auto& used = dynamic_cast<HeadlessDatePicker&>(picker);
    if (!used.takesInput() || !Calendar::current().isInBookYears(date)) return false;
    if (picker.dateValue() == date) return true;
    picker.setDateValue(date);
    picker.sendAction();
    return true;
}

bool HeadlessUser::pressEscape(Window& window) const {
    return dynamic_cast<HeadlessWindow&>(window).sendAway();
}

bool HeadlessUser::clickCloseBox(Window& window) const {
    return dynamic_cast<HeadlessWindow&>(window).sendAway();
}

} // namespace estatebook::platform
