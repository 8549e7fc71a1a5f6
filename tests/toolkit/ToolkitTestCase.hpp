// SPDX-License-Identifier: MIT
#pragma once

/// The fixture of the tests that every toolkit passes.

#include "platform/system/Log.hpp"
#include "platform/toolkit/WindowController.hpp"
#include "platform/values/Exception.hpp"
#include "support/ToolkitBench.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace estatebook::test {

class ToolkitTestCase : public testing::Test {
protected:
    ToolkitTestCase() {
        platform::Toolkit::setCurrent(&bench->toolkit());
        platform::Log::setSink([this](std::string_view line) { logged.emplace_back(line); });
    }
    ~ToolkitTestCase() override {
        platform::Log::setSink({});
        bench->settle();
        platform::Toolkit::setCurrent(nullptr);
    }

    platform::Ref<platform::Window> shownWindow() {
        auto window = bench->toolkit().makeWindow();
        window->show();
        bench->settle();
        return window;
    }

    std::unique_ptr<ToolkitBench> bench = makeToolkitBench();
    std::vector<std::string> logged;
};

/// Counts its hooks; knows no action unless told.
class PlainController : public platform::WindowController {
public:
    explicit PlainController(const char* file) : file(file) {}

    const char* file;
    mutable int timesAsked = 0;
    std::vector<std::string> hooks;
    bool hadWindowWhenLoaded = false;

    [[nodiscard]] platform::Ref<platform::String> windowNibName() const override {
        ++timesAsked;
        return file ? platform::String::make(file) : nullptr;
    }
    void windowWillLoad() override { hooks.emplace_back("will"); }
    void windowDidLoad() override {
        hooks.emplace_back("did");
        hadWindowWhenLoaded = window() != nullptr;
    }
};

} // namespace estatebook::test
