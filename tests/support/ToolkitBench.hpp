// SPDX-License-Identifier: MIT
#pragma once

/// ToolkitBench: a toolkit and somebody who uses its windows, for the tests that every toolkit passes (tests/toolkit).

#include "platform/toolkit/Toolkit.hpp"

#include <memory>

namespace estatebook::test {

/// Knows these interface files, all with a push button "ok", a push button "cancel", a check box "enabled", a check box
/// "several" that may be mixed, and a date picker "date":
///   - "Plain", where nothing has an action,
///   - "Sheet", where "ok" asks for processSheet: and "cancel" for cancelSheet:,
///   - "Stray", where "ok" asks for flySheet:.
class ToolkitBench {
public:
    ToolkitBench() = default;
    virtual ~ToolkitBench() = default;
    ToolkitBench(const ToolkitBench&) = delete;
    ToolkitBench& operator=(const ToolkitBench&) = delete;

    virtual platform::Toolkit& toolkit() = 0;

    // What the user tries to do, through the window where the toolkit has one on a screen.
    virtual void click(platform::Window& window, platform::Button& button) = 0;
    virtual void pick(platform::Window& window, platform::DatePicker& picker, platform::Date date) = 0;
    virtual void pressEscape(platform::Window& window) = 0;
    virtual void clickCloseBox(platform::Window& window) = 0;
    /// Has whatever the toolkit put off for later happen.
    virtual void settle() {}
};

/// Each test program that holds these tests supplies its own.
[[nodiscard]] std::unique_ptr<ToolkitBench> makeToolkitBench();

} // namespace estatebook::test
