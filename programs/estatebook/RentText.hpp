// SPDX-License-Identifier: MIT
#pragma once

/// RentText: the rhythm of a rent in words.

#include "tenure/TKTenure.hpp"

#include <string>

namespace estatebook {

/// "a month", "for 3 months"; "for no known cycle" for a cycle that is none.
[[nodiscard]] std::string rentRhythm(const TKTenure& tenure);

} // namespace estatebook
