// SPDX-License-Identifier: MIT
#pragma once

/// TextMeasure: how much room texts take. Layout asks it and knows no font.
///
///     measure.width("1050.00", {.size = 9.5});
///     measure.linesOf("Allowance, two weeks with the roof open", {.size = 9.5}, 120).size(); // 2

#include <string_view>
#include <vector>

namespace estatebook::paper {

struct TextStyle {
    /// In points, as all lengths are.
    double size = 0;
    bool isBold = false;
    bool isItalic = false;
    /// Grey: it says where one is.
    bool isPale = false;

    friend bool operator==(const TextStyle&, const TextStyle&) noexcept = default;
};

class TextMeasure {
public:
    struct Line {
        /// Above and below the base line.
        double ascent = 0;
        double descent = 0;
    };

    virtual ~TextMeasure() = default;

    /// Of a text on one line.
    [[nodiscard]] virtual double width(std::string_view text, const TextStyle& style) = 0;
    /// The lines of a text that is broken between words, and within one only where it is wider than the width; at least one.
    [[nodiscard]] virtual std::vector<Line> linesOf(std::string_view text, const TextStyle& style,
                                                    double width) = 0;

protected:
    TextMeasure() = default;
    TextMeasure(const TextMeasure&) = default;
    TextMeasure& operator=(const TextMeasure&) = default;
};

} // namespace estatebook::paper
