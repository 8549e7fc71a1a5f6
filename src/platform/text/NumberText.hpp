// SPDX-License-Identifier: MIT
#pragma once

/// NumberText: how numbers are written and read in a locale: with so many digits, grouped or not, and a word behind.
///
///     auto weeks = NumberText::make(Locale::named("en_US"), {.positiveSuffix = " weeks", .negativeSuffix = " weeks"});
///     weeks->write(Number(3));                          // "3 weeks"
///     weeks->read("3 weeks", NumberText::Manner::Strict)->number;
///
/// The trap: halves are rounded to the even neighbour. Without digits behind the point 2.5 is written "2".

#include "EstateBook_ModelExport.hpp"

#include "platform/text/Locale.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/Number.hpp"
#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace estatebook::platform {

class ESTATEBOOK_API NumberText final : public Object {
public:
    struct Style {
        /// Digits behind the point; no more than are needed between the two.
        int minimumFractionDigits = 0;
        int maximumFractionDigits = 0;
        bool usesGrouping = false;
        /// What stands behind the digits of numbers from zero on, and of those below.
        std::string positiveSuffix{};
        std::string negativeSuffix{};
        friend bool operator==(const Style&, const Style&) = default;
    };
    enum class Manner : bool {
        /// The suffix must stand there, groups of digits only where they are written.
        Strict,
        /// The suffix may be left out, and digits may be grouped.
        Lenient,
    };
    struct Found {
        Decimal number;
        /// Where number and suffix end in the text, in bytes.
        std::size_t end = 0;
    };

    [[nodiscard]] static Ref<NumberText> make(Locale locale, const Style& style);

    /// All digits are right, those of decimals to the 38th.
    [[nodiscard]] std::string write(const Number& number) const;
    /// The number that the text begins with, white space aside; none when there is none. What follows is not looked at.
    [[nodiscard]] std::optional<Found> read(std::string_view text, Manner manner) const;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "NumberText"; }

private:
    class Formats;
    NumberText(Locale locale, const Style& style);
    ~NumberText() override;

    Style style_;
    std::unique_ptr<Formats> formats_;
};

} // namespace estatebook::platform
