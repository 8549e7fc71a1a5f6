// SPDX-License-Identifier: MIT
#pragma once

/// Amounts: how money is written for people.

#include "platform/values/Decimal.hpp"

#include <string>

namespace estatebook {

/// Plain notation with at least so many fraction digits; no digit is ever lost.
///
///     amountText(Decimal(1050), 2);                        // "1050.00"
///     amountText(Decimal::parse("0.125"), 2);              // "0.125"
[[nodiscard]] std::string amountText(const platform::Decimal& amount, int digits);

} // namespace estatebook
