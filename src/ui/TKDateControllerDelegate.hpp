// SPDX-License-Identifier: MIT
#pragma once

/// TKDateControllerDelegate: may put another date in the place of one that the user picks.

#include "platform/values/Date.hpp"
#include "platform/values/Protocol.hpp"

#include <optional>

namespace estatebook {

class TKDateController;

class ESTATEBOOK_API TKDateControllerDelegate : public platform::Protocol {
public:
    /// dateController:dateValueWillChange:
    /// The date to use in the place of the one in the picker, or that one itself. None clears the controller's date.
    virtual std::optional<platform::Date> dateControllerDateValueWillChange(TKDateController& controller,
                                                                            platform::Date date) = 0;

protected:
    ~TKDateControllerDelegate() = default;
};

} // namespace estatebook
