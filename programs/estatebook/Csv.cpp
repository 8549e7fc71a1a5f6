// SPDX-License-Identifier: MIT
#include "estatebook/Csv.hpp"

#include <ostream>
#include <string_view>

namespace estatebook {

namespace {

std::string csvField(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"') quoted += '"';
        quoted += character;
    }
    return quoted += '"';
}

} // namespace

void writeCsvRecord(std::ostream& out, const std::vector<std::string>& fields) {
    for (std::size_t i = 0; i < fields.size(); ++i) out << (i > 0 ? "," : "") << csvField(fields[i]);
    out << "\r\n";
}

} // namespace estatebook
