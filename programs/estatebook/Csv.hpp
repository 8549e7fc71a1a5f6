// SPDX-License-Identifier: MIT
#pragma once

/// Csv: records of comma-separated values (RFC 4180).
///
///     writeCsvRecord(out, {"a", "b, c"});              // a,"b, c" and a line break

#include <iosfwd>
#include <string>
#include <vector>

namespace estatebook {

/// A field with a comma, a quotation mark or a line break stands in quotation marks.
void writeCsvRecord(std::ostream& out, const std::vector<std::string>& fields);

} // namespace estatebook
