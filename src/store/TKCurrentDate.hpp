// SPDX-License-Identifier: MIT
#pragma once

/// TKCurrentDate: whatever follows the current day.

#include "platform/values/Date.hpp"
#include "platform/values/Protocol.hpp"

#include <optional>

namespace estatebook {

class ESTATEBOOK_API TKCurrentDate : public platform::Protocol {
public:
    /// The instant that counts as today; absent before anybody has set it.
    [[nodiscard]] virtual std::optional<platform::Date> currentDate() const = 0;
    /// Announces "currentDate" and every value that depends on the day. Never an edit of the user.
    virtual void setCurrentDate(const std::optional<platform::Date>& date) = 0;

protected:
    ~TKCurrentDate() = default;
};

} // namespace estatebook
