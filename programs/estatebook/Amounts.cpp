// SPDX-License-Identifier: MIT
#include "estatebook/Amounts.hpp"

namespace estatebook {

std::string amountText(const platform::Decimal& amount, int digits) {
    std::string text = amount.toString();
    if (amount.isNaN() || digits <= 0) return text;
    const auto wanted = static_cast<std::size_t>(digits);
    std::size_t point = text.find('.');
    if (point == std::string::npos) {
        point = text.size();
        text += '.';
    }
    const std::size_t present = text.size() - point - 1;
    if (present < wanted) text.append(wanted - present, '0');
    return text;
}

} // namespace estatebook
