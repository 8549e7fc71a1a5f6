// SPDX-License-Identifier: MIT
#pragma once

/// TKPeriodFormatter: writes the unit behind each number: "3 weeks", "-3 weeks".
///
///     auto formatter = makeRef<TKPeriodFormatter>();
///     formatter->setSuffix(String::make("weeks"));
///     formatter->stringForObjectValue(3);
///
/// The trap: a null unit is written, too, as " (null)".

#include "platform/toolkit/NumberFieldFormatter.hpp"

#include <string_view>

namespace estatebook {

class ESTATEBOOK_API TKPeriodFormatter : public platform::NumberFieldFormatter {
public:
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override;

    TKPeriodFormatter() = default;

    /// suffix: the unit, without the blank before it; null at first, when nothing is written.
    [[nodiscard]] const platform::Ref<platform::String>& suffix() const noexcept { return suffix_; }
    /// setSuffix:
    /// Announces "suffix", then has it follow all numbers, those below zero as well.
    void setSuffix(const platform::Ref<platform::String>& suffix);

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "TKPeriodFormatter"; }

protected:
    ~TKPeriodFormatter() override;

private:
    platform::Ref<platform::String> suffix_;
};

} // namespace estatebook
