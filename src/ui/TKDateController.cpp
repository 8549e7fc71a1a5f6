// SPDX-License-Identifier: MIT
#include "ui/TKDateController.hpp"

#include "model/Keys.hpp"
#include "platform/values/FirstException.hpp"

namespace estatebook {

using namespace platform;

namespace {

constexpr std::string_view CurrentDateBinding = "currentDate";

constexpr Property properties[] = {
    writable<&TKDateController::currentDate, &TKDateController::setCurrentDate>(keys::currentDate),
};

} // namespace

constinit const ClassDescription TKDateController::Class("TKDateController", nullptr, properties, {},
                                                         noDependents, announcing<TKDateController>);

TKDateController::~TKDateController() = default;

void TKDateController::setCurrentDate(const std::optional<Date>& date) {
    FirstException exceptions;
    exceptions.keep([&] { change(keys::currentDate, [&] { currentDate_ = date; }); });
    showWhetherThereIsADate();
    if (currentDate_ && datePicker_) datePicker_->setDateValue(currentDate_);
    exceptions.rethrow();
}

void TKDateController::setInitialDate(const std::optional<Date>& date) {
    if (datePicker_) datePicker_->setDateValue(date);
    showWhetherThereIsADate();
}

void TKDateController::showWhetherThereIsADate() {
    if (enabledButton_) enabledButton_->setState(currentDate_ ? ButtonState::On : ButtonState::Off);
    if (datePicker_) datePicker_->setEnabled(currentDate_.has_value());
}

void TKDateController::enabledButtonUpdated(Object* sender) {
    const Ref<TKDateController> held(this);
    if (!enabledButton_ || enabledButton_->state() != ButtonState::On) {
        edit(std::nullopt);
        if (datePicker_) datePicker_->setEnabled(false);
        return;
    }
    if (datePicker_) datePicker_->setEnabled(true);
    datePickerUpdated(sender);
}

void TKDateController::datePickerUpdated(Object*) {
    const Ref<TKDateController> held(this);
    std::optional<Date> date;
    if (datePicker_) date = datePicker_->dateValue();
    if (const Ref<TKDateControllerDelegate> asked = delegate_; asked && datePicker_) {
        date = asked->dateControllerDateValueWillChange(*this, datePicker_->dateValue());
        datePicker_->setDateValue(date);
    }
    edit(date);
}

void TKDateController::edit(const std::optional<Date>& date) {
    FirstException exceptions;
    exceptions.keep([&] { setCurrentDate(date); });
    exceptions.keep([&] { propagateValueForBinding(*this, date, CurrentDateBinding); });
    exceptions.rethrow();
}

} // namespace estatebook
