// SPDX-License-Identifier: MIT
#include "paper/PaperSize.hpp"

#include <algorithm>

namespace estatebook::paper {

namespace {

constexpr double PointsPerInch = 72;
constexpr double MillimetresPerInch = 25.4;

constexpr std::string_view LocaleOfNobody = "en_US_POSIX";
constexpr std::string_view CountriesWithLetter[] = {"BZ", "CA", "CL", "CO", "CR", "GT", "MX",
                                                    "NI", "PA", "PH", "PR", "SV", "US", "VE"};

bool isCountry(std::string_view part) noexcept {
    return part.size() == 2 &&
           std::ranges::all_of(part, [](char each) { return each >= 'A' && each <= 'Z'; });
}

/// The country of "zh_Hant_TW@calendar=roc" is "TW".
std::string_view countryOf(std::string_view identifier) noexcept {
    identifier = identifier.substr(0, identifier.find('@'));
    for (std::size_t mark = identifier.find('_'); mark != std::string_view::npos;
         mark = identifier.find('_')) {
        identifier.remove_prefix(mark + 1);
        const std::string_view part = identifier.substr(0, identifier.find('_'));
        if (isCountry(part)) return part;
    }
    return {};
}

} // namespace

PaperSize PaperSize::a4() noexcept {
    return {210 / MillimetresPerInch * PointsPerInch, 297 / MillimetresPerInch * PointsPerInch};
}

PaperSize PaperSize::letter() noexcept {
    return {8.5 * PointsPerInch, 11 * PointsPerInch};
}

PaperSize PaperSize::ofLocale(std::string_view identifier) noexcept {
    if (identifier == LocaleOfNobody) return a4();
    return std::ranges::find(CountriesWithLetter, countryOf(identifier)) != std::end(CountriesWithLetter)
               ? letter()
               : a4();
}

} // namespace estatebook::paper
