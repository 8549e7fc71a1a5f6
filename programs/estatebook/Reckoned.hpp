// SPDX-License-Identifier: MIT
#pragma once

/// Reckoned<T>: a derived value, or the reason why there is none.
///
/// A book may hold terms with which rent cannot be reckoned. Reading a value that depends on them raises; the
/// commands show that in the value's place and go on with the next one.
///
///     const auto balance = reckon([&] { return tenure.balance(); });
///     if (balance) show(*balance.value);
///     else show(balance.error.words);                    // "division by zero"

#include "platform/values/Exception.hpp"

#include <optional>
#include <string_view>
#include <type_traits>

namespace estatebook {

struct ReckoningError {
    /// As documents name it: "divisionByZero".
    std::string_view name;
    /// As people read it: "division by zero".
    std::string_view words;
};

[[nodiscard]] ReckoningError reckoningError(const platform::Exception& exception) noexcept;

template <class T>
struct Reckoned {
    std::optional<T> value;
    ReckoningError error;

    explicit operator bool() const noexcept { return value.has_value(); }
};

template <class Function>
[[nodiscard]] auto reckon(Function&& function) -> Reckoned<std::invoke_result_t<Function>> {
    try {
        return {function(), {}};
    } catch (const platform::Exception& exception) {
        return {std::nullopt, reckoningError(exception)};
    }
}

} // namespace estatebook
