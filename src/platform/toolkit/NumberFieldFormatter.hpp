// SPDX-License-Identifier: MIT
#pragma once

/// NumberFieldFormatter: writes and reads numbers, as a new one whole numbers without groups: 1234567, -3, 2 for 2.5.
///
///     auto amounts = makeRef<NumberFieldFormatter>();
///     amounts->setMinimumFractionDigits(2);
///     amounts->setMaximumFractionDigits(2);
///     amounts->setUsesGroupingSeparator(true);
///     amounts->setGeneratesDecimalNumbers(true);       // for money, always
///
/// The trap: a number that is read is whole or a double until the formatter is told to make decimals.

#include "platform/text/Locale.hpp"
#include "platform/text/NumberText.hpp"
#include "platform/toolkit/FieldFormatter.hpp"

#include <string>
#include <string_view>

namespace estatebook::platform {

class ESTATEBOOK_API NumberFieldFormatter : public FieldFormatter {
public:
    /// For the locale of this moment.
    NumberFieldFormatter();

    [[nodiscard]] Locale locale() const noexcept { return locale_; }
    void setLocale(Locale locale);
    /// Digits behind the point: 0 at first. A minimum above the maximum raises it, and the other way round.
    [[nodiscard]] int minimumFractionDigits() const noexcept { return style_.minimumFractionDigits; }
    void setMinimumFractionDigits(int digits);
    [[nodiscard]] int maximumFractionDigits() const noexcept { return style_.maximumFractionDigits; }
    void setMaximumFractionDigits(int digits);
    [[nodiscard]] bool usesGroupingSeparator() const noexcept { return style_.usesGrouping; }
    void setUsesGroupingSeparator(bool uses);
    /// What follows the digits of numbers from zero on, and of those below.
    [[nodiscard]] const std::string& positiveSuffix() const noexcept { return style_.positiveSuffix; }
    void setPositiveSuffix(std::string_view suffix);
    [[nodiscard]] const std::string& negativeSuffix() const noexcept { return style_.negativeSuffix; }
    void setNegativeSuffix(std::string_view suffix);
    /// isLenient: whether the suffix may be left out and digits grouped in what is read.
    [[nodiscard]] bool isLenient() const noexcept { return isLenient_; }
    void setLenient(bool lenient) noexcept { isLenient_ = lenient; }
    /// generatesDecimalNumbers: whether what is read becomes a decimal, in the place of a whole number or a double.
    [[nodiscard]] bool generatesDecimalNumbers() const noexcept { return generatesDecimals_; }
    void setGeneratesDecimalNumbers(bool generates) noexcept { generatesDecimals_ = generates; }

    [[nodiscard]] Ref<String> stringForObjectValue(const Value& value) const override;
    /// A null text is no number.
    bool getObjectValueForStringRangeError(Value& object, const Ref<String>& string, TextRange* range,
                                           Ref<Error>* error) const override;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override {
        return "NumberFieldFormatter";
    }

protected:
    ~NumberFieldFormatter() override;

private:
    void renew();

    Locale locale_;
    NumberText::Style style_;
    bool isLenient_ = false;
    bool generatesDecimals_ = false;
    Ref<NumberText> text_;
};

} // namespace estatebook::platform
