// SPDX-License-Identifier: MIT
#pragma once

/// Clock: what time it is. There is one for the process; tests and programs may put another in its place.
///
///     Clock::setNow([] { return Date{800000000}; });
///     Date now = Clock::now();

#include "EstateBook_ModelExport.hpp"
#include "platform/values/Date.hpp"

#include <functional>

namespace estatebook::platform {

class ESTATEBOOK_API Clock {
public:
    /// The present instant: of the system's clock, to its full resolution, unless another was put in place.
    [[nodiscard]] static Date now();
    /// Puts another clock in place; an empty function restores the system's.
    static void setNow(std::function<Date()> now);
};

} // namespace estatebook::platform
