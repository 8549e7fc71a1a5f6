// SPDX-License-Identifier: MIT
#pragma once

/// TKDateController: a check box and a date picker that edit one date, which may be absent. With the box ticked the picker's
/// date is the value; with the box cleared there is none, and the picker waits with the date it had.
///
///     auto ends = makeRef<TKDateController>();
///     ends->setEnabledButton(window->button("hasEnd"));
///     ends->setDatePicker(window->datePicker("end"));
///     ends->bindToObjectWithKeyPath("currentDate", tenure, "endDate");
///     ends->enabledButton()->setAction([&ends = *ends](Control& sender) { ends.enabledButtonUpdated(&sender); });
///     ends->datePicker()->setAction([&ends = *ends](Control& sender) { ends.datePickerUpdated(&sender); });
///
/// What the user edits goes back through the binding of "currentDate". A date that is merely set does not.
///
/// The trap: the delegate and the controls are held. A delegate, or the action of a control, that holds the controller keeps
/// both alive until one lets go.

#include "platform/toolkit/BindableObject.hpp"
#include "platform/toolkit/Button.hpp"
#include "platform/toolkit/DatePicker.hpp"
#include "ui/TKDateControllerDelegate.hpp"

#include <optional>
#include <string_view>

namespace estatebook {

class ESTATEBOOK_API TKDateController : public platform::BindableObject {
public:
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }

    TKDateController() = default;

    // All four are held; none need be there.
    [[nodiscard]] const platform::Ref<TKDateControllerDelegate>& delegate() const noexcept {
        return delegate_;
    }
    void setDelegate(const platform::Ref<TKDateControllerDelegate>& delegate) { delegate_ = delegate; }
    /// enabledButton: the check box; on means that there is a date.
    [[nodiscard]] const platform::Ref<platform::Button>& enabledButton() const noexcept {
        return enabledButton_;
    }
    void setEnabledButton(const platform::Ref<platform::Button>& button) { enabledButton_ = button; }
    [[nodiscard]] const platform::Ref<platform::DatePicker>& datePicker() const noexcept {
        return datePicker_;
    }
    void setDatePicker(const platform::Ref<platform::DatePicker>& picker) { datePicker_ = picker; }

    /// currentDate: the value; none means no date.
    [[nodiscard]] std::optional<platform::Date> currentDate() const noexcept { return currentDate_; }
    /// setCurrentDate:
    /// Announces "currentDate"; then the button is on, the picker enabled and shows the date, or, with none, the button is off
    /// and the picker not enabled and keeps its date. Nothing is written back.
    void setCurrentDate(const std::optional<platform::Date>& date);

    /// setInitialDate:
    /// The date that the picker starts from when the box is ticked. Button and picker then stand as `currentDate` has it.
    /// Nothing is announced.
    void setInitialDate(const std::optional<platform::Date>& date);

    /// enabledButtonUpdated:
    /// The check box's action. Anything but on clears the date and writes that back; on makes the picker's date the value, as if it
    /// had just been picked.
    virtual void enabledButtonUpdated(platform::Object* sender = nullptr);
    /// datePickerUpdated:
    /// The picker's action. The delegate may replace the date, in the picker as well; then it becomes the value and is written back.
    virtual void datePickerUpdated(platform::Object* sender = nullptr);

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "TKDateController"; }

protected:
    ~TKDateController() override;

private:
    void showWhetherThereIsADate();
    /// Sets the date and writes it back, whatever those who are told of it raise.
    void edit(const std::optional<platform::Date>& date);

    platform::Ref<TKDateControllerDelegate> delegate_;
    platform::Ref<platform::Button> enabledButton_;
    platform::Ref<platform::DatePicker> datePicker_;
    std::optional<platform::Date> currentDate_;
};

} // namespace estatebook
