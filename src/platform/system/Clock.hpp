// SPDX-License-Identifier: MIT
#pragma once

/// Clock: what time it is. There is one for the process; tests and programs may put another in its place.
///
///     Clock::setNow([] { return Date{800000000}; });
///     Date now = Clock::now();
///
/// The trap: the time of day can be set, so that the difference of two readings may be anything. How long to wait is reckoned
/// by `uptime`.

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

    /// Seconds since the machine started, those it slept included. Nobody sets this clock, and it never goes back.
    [[nodiscard]] static double uptime();
    /// Puts another in place; an empty function restores the system's.
    static void setUptime(std::function<double()> uptime);
};

} // namespace estatebook::platform
