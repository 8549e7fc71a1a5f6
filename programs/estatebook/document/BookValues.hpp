// SPDX-License-Identifier: MIT
#pragma once

/// BookValues: how a value of JSON becomes one of a book, or why it does not.

#include "estatebook/document/BookDocument.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::document {

/// What is wrong with a value and what to do. Where it stands the caller knows.
struct Refusal {
    std::string message;
    std::string advice;
};
/// Absent when all is well.
using Verdict = std::optional<Refusal>;

/// A value that is neither an object nor a list. A number is the digits it is written with.
struct Scalar {
    enum class Type : std::uint8_t { Null, Boolean, Number, Text };

    Type type = Type::Null;
    bool boolean = false;
    std::string_view text;

    /// "the number 12"
    [[nodiscard]] std::string shown() const;
};

/// What belongs in a place, and how to write it.
struct Wanted {
    std::string_view what;
    std::string_view how;
};

constexpr Wanted wantedFor(const std::optional<std::string>&) noexcept {
    return {"a text", "write it in quotation marks"};
}
constexpr Wanted wantedFor(const std::optional<RichText>&) noexcept {
    return {"a text, or a list of its pieces", "write it in quotation marks"};
}
constexpr Wanted wantedFor(const std::optional<platform::Decimal>&) noexcept {
    return {"an amount", R"(write it as "-535.71")"};
}
constexpr Wanted wantedFor(const std::optional<platform::Date>&) noexcept {
    return {"a date", R"(write it as "2025-02-16" or "2025-02-16T10:30:00+00:00")"};
}
constexpr Wanted wantedFor(const std::optional<bool>&) noexcept {
    return {"true or false", "write it without quotation marks"};
}
constexpr Wanted wantedFor(const std::optional<std::uint64_t>&) noexcept {
    return {"a count", "write a whole number of 0 or more, without quotation marks"};
}
constexpr Wanted wantedFor(const std::optional<BillingCycle>&) noexcept {
    return {"a billing cycle", R"(write "day", "week", "month", "year" or a whole number)"};
}
constexpr Wanted wantedFor(const std::optional<ChargeBehaviour>&) noexcept {
    return {"a charge behaviour", R"(write "start", "partial", "end" or a whole number)"};
}
template <class Entry>
constexpr Wanted wantedFor(const std::vector<Entry>&) noexcept {
    return {"a list", "write its entries in square brackets"};
}
inline constexpr Wanted WantedObject{"an object", "write its members in braces"};

[[nodiscard]] Refusal notWanted(const Wanted& wanted, std::string_view found);

/// Each takes a value into a field. REQUIRES: the value is not null.
[[nodiscard]] Verdict take(const Scalar& value, std::optional<std::string>& field);
/// One without attributes.
[[nodiscard]] Verdict take(const Scalar& value, std::optional<RichText>& field);
[[nodiscard]] Verdict take(const Scalar& value, std::optional<bool>& field);
/// A text is read in plain notation, a number by its digits; what a decimal cannot hold exactly is refused.
[[nodiscard]] Verdict take(const Scalar& value, std::optional<platform::Decimal>& field);
/// A number without fraction, however it is written.
[[nodiscard]] Verdict take(const Scalar& value, std::optional<std::uint64_t>& field);
/// A count, or the name of one.
[[nodiscard]] Verdict take(const Scalar& value, std::optional<BillingCycle>& field);
[[nodiscard]] Verdict take(const Scalar& value, std::optional<ChargeBehaviour>& field);
template <class Entry>
[[nodiscard]] Verdict take(const Scalar& value, std::vector<Entry>& list) {
    return notWanted(wantedFor(list), value.shown());
}
/// Null, too, is a value of a setting.
[[nodiscard]] Verdict takeSetting(const Scalar& value, SettingValue& field);

/// Drops each text that stood in the list before. Takes n log n comparisons.
void dropRepeated(std::vector<std::string>& list);

} // namespace estatebook::document
