// SPDX-License-Identifier: MIT
#pragma once

/// PaperSize: a sheet of paper, in points (1/72 inch).
///
///     PaperSize::ofLocale("en_US") == PaperSize::letter();
///     PaperSize::ofLocale("de_DE") == PaperSize::a4();

#include <string_view>

namespace estatebook::paper {

struct PaperSize {
    double width = 0;
    double height = 0;

    [[nodiscard]] static PaperSize a4() noexcept;
    /// 8½ × 11 inches.
    [[nodiscard]] static PaperSize letter() noexcept;
    /// What printers hold where the locale is spoken: Letter in the United States, Canada and some countries near them, else A4.
    /// A locale without a country, as well as "en_US_POSIX", which is nobody's, has A4.
    [[nodiscard]] static PaperSize ofLocale(std::string_view identifier) noexcept;

    friend bool operator==(const PaperSize&, const PaperSize&) noexcept = default;
};

} // namespace estatebook::paper
