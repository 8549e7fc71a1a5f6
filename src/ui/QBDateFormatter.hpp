// SPDX-License-Identifier: MIT
#pragma once

/// QBDateFormatter: a date formatter to which a chosen text means no date, so that a date field can be emptied.
///
///     auto formatter = makeRef<QBDateFormatter>();
///     formatter->setNilSymbol(String::make("none"));
///     formatter->getObjectValueForStringRangeError(value, String::make("none"), nullptr, &error);    // true, no date
///
/// A text that is a date is never taken for the symbol. Until a symbol is set only a text that is not there at all means no
/// date: an empty one cannot be read.

#include "platform/toolkit/DateFieldFormatter.hpp"

#include <mutex>
#include <string_view>

namespace estatebook {

class ESTATEBOOK_API QBDateFormatter : public platform::DateFieldFormatter {
public:
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override;

    QBDateFormatter() = default;

    /// nilSymbol: the text that means no date; null at first. May be read and set by any thread.
    [[nodiscard]] platform::Ref<platform::String> nilSymbol() const;
    void setNilSymbol(const platform::Ref<platform::String>& symbol);

    /// getObjectValue:forString:range:error:
    /// A date as the base reads it; else success with no date for a null text and for the symbol, literally. The error that the
    /// base told is left where it is then.
    bool getObjectValueForStringRangeError(platform::Value& object,
                                           const platform::Ref<platform::String>& string,
                                           platform::TextRange* range,
                                           platform::Ref<platform::Error>* error) const override;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "QBDateFormatter"; }

protected:
    ~QBDateFormatter() override;

private:
    mutable std::mutex mutex_;
    platform::Ref<platform::String> nilSymbol_;
};

} // namespace estatebook
