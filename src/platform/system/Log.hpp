// SPDX-License-Identifier: MIT
#pragma once

/// Log: where diagnostics go, one line each. By default the system log; tests and programs may put another
/// place in its stead.
///
///     Log::setSink([](std::string_view line) { lines.emplace_back(line); });
///     Log::write("Daily Update: …");

#include "EstateBook_ModelExport.hpp"

#include <functional>
#include <string_view>

namespace estatebook::platform {

class ESTATEBOOK_API Log {
public:
    using Sink = std::function<void(std::string_view line)>;

    /// Writes one line; line breaks in it become blanks.
    static void write(std::string_view line);
    /// An empty function restores the system log.
    static void setSink(Sink sink);
};

} // namespace estatebook::platform
