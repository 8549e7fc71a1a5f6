// SPDX-License-Identifier: MIT
#include "platform/toolkit/headless/HeadlessToolkit.hpp"
#include "support/ToolkitBench.hpp"

namespace estatebook::test {
namespace {

using platform::HeadlessPart;

class HeadlessBench final : public ToolkitBench {
public:
    HeadlessBench() {
        toolkit_.addInterfaceFile("Plain", parts("", ""));
        toolkit_.addInterfaceFile("Sheet", parts("processSheet:", "cancelSheet:"));
        toolkit_.addInterfaceFile("Stray", parts("flySheet:", ""));
    }

    platform::Toolkit& toolkit() override { return toolkit_; }
    void click(platform::Window&, platform::Button& button) override { user_.click(button); }
    void pick(platform::Window&, platform::DatePicker& picker, platform::Date date) override {
        user_.pick(picker, date);
    }
    void pressEscape(platform::Window& window) override { user_.pressEscape(window); }
    void clickCloseBox(platform::Window& window) override { user_.clickCloseBox(window); }

private:
    static std::vector<HeadlessPart> parts(std::string ok, std::string cancel) {
        return {
            {.name = "ok", .kind = HeadlessPart::PushButton, .action = std::move(ok)},
            {.name = "cancel", .kind = HeadlessPart::PushButton, .action = std::move(cancel)},
            {.name = "enabled", .kind = HeadlessPart::CheckBox},
            {.name = "several", .kind = HeadlessPart::CheckBox, .allowsMixedState = true},
            {.name = "date", .kind = HeadlessPart::DatePicker},
        };
    }

    platform::HeadlessToolkit toolkit_;
    platform::HeadlessUser user_;
};

} // namespace

std::unique_ptr<ToolkitBench> makeToolkitBench() {
    return std::make_unique<HeadlessBench>();
}

} // namespace estatebook::test
