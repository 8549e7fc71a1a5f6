// SPDX-License-Identifier: MIT
#pragma once

/// DatePicker: shows an instant and lets the user choose another. It always has one, also while it is not enabled.
///
/// An instant that was set is given back to the last bit until the user chooses another, however little of it is shown. The user
/// chooses among the years of books (`Calendar::isInBookYears`); an instant beyond them that was set is shown for what
/// it is and kept as well.

#include "platform/toolkit/Control.hpp"
#include "platform/values/Date.hpp"

#include <optional>
#include <string_view>

namespace estatebook::platform {

class ESTATEBOOK_API DatePicker : public Control {
public:
    /// dateValue
    /// What the user chooses is a wall time of the default zone; of one that the clock shows twice the earlier instant is meant.
    /// Parts that the picker does not show, such as the seconds, stay as they were.
    [[nodiscard]] virtual Date dateValue() const = 0;
    /// setDateValue: nothing is ignored.
    virtual void setDateValue(std::optional<Date> date) = 0;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "DatePicker"; }

protected:
    DatePicker() noexcept = default;
};

} // namespace estatebook::platform
