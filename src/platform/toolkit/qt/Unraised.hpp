// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: exceptions end before Qt, which cannot pass them on.

#include "platform/system/Log.hpp"

#include <exception>
#include <string>

namespace estatebook::platform {

/// Calls the function; what it raises is logged.
template <class Function>
void unraised(Function&& function) noexcept {
    try {
        function();
    } catch (const std::exception& exception) {
        Log::write(std::string("An operation of the user interface failed: ") + exception.what());
    } catch (...) {
        Log::write("An operation of the user interface failed.");
    }
}

} // namespace estatebook::platform
