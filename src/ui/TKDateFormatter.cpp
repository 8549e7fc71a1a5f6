// SPDX-License-Identifier: MIT
#include "ui/TKDateFormatter.hpp"

namespace estatebook {

TKDateFormatter::~TKDateFormatter() = default;

void TKDateFormatter::awakeFromNib() {
    setNilSymbol(platform::String::make(""));
    setLenient(true);
}

} // namespace estatebook
