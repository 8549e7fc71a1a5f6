// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: a line of a tenure's statement that nobody recorded. It belongs to no context.
///
/// Its text names a range of days and is made when it is first read, from the locale and zone that held when the statement was
/// built. Reading it from several threads is safe; all see one text.

#include "platform/calendar/Calendar.hpp"
#include "platform/text/DateFormatter.hpp"
#include "platform/values/ObjectBlock.hpp"
#include "store/TKTenureTransaction.hpp"

#include <atomic>
#include <utility>

namespace estatebook {

/// What the lines of one statement have in common. Counted on the statement's thread; reading a text counts nothing.
class GeneratedLines final : public platform::Object {
public:
    explicit GeneratedLines(platform::Ref<platform::DateFormatter> formatter) noexcept
        : Object(platform::Counting::Local), formatter(std::move(formatter)) {}
    const platform::Ref<platform::DateFormatter> formatter;
};

class GeneratedLine final : public TKTenureTransaction {
public:
    /// What the text says before its range of dates.
    enum class Kind : std::uint8_t { Rent, PartialRent };

    using Birth = platform::ManagedObjectBirth;

    /// With a text as it is.
    GeneratedLine(const Birth& birth, const std::optional<platform::Decimal>& amount,
                  const std::optional<platform::Date>& when,
                  const platform::Ref<platform::String>& what) noexcept;
    /// With a text about the days from start to end.
    GeneratedLine(const Birth& birth, const std::optional<platform::Decimal>& amount,
                  const std::optional<platform::Date>& when, Kind kind,
                  const std::optional<platform::Date>& start, const std::optional<platform::Date>& end,
                  const platform::Ref<GeneratedLines>& lines) noexcept;

    [[nodiscard]] platform::Ref<platform::String> what() const override;

private:
    ~GeneratedLine() override;
    friend class platform::ObjectBlock<GeneratedLine>;
    void dispose() const noexcept override;
    [[nodiscard]] platform::Ref<platform::String> makeText() const;

    platform::Ref<GeneratedLines> lines_;
    std::optional<platform::Date> start_;
    std::optional<platform::Date> end_;
    mutable std::atomic<platform::String*> text_ = nullptr;
    Kind kind_ = Kind::Rent;
};

} // namespace estatebook
