// SPDX-License-Identifier: MIT
#pragma once

/// TKDateFormatter: the date formatter of interface files: the empty text means no date, and dates are read leniently.
///
/// The trap: it is one like any QBDateFormatter until `awakeFromNib` was called.

#include "ui/QBDateFormatter.hpp"

#include <string_view>

namespace estatebook {

class ESTATEBOOK_API TKDateFormatter : public QBDateFormatter {
public:
    TKDateFormatter() = default;

    /// awakeFromNib
    /// Sets the empty text for the symbol of no date, and lenient reading.
    void awakeFromNib() override;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "TKDateFormatter"; }

protected:
    ~TKDateFormatter() override;
};

} // namespace estatebook
