// SPDX-License-Identifier: MIT
#pragma once

/// Reckoned<T>: a derived value, or the reason why there is none.
///
/// A book may hold terms with which rent cannot be reckoned. Reading a value that depends on them raises; the
/// commands show that in the value's place and go on with the next one.
///
///     const auto balance = reckon([&] { return tenure.balance(); });
///     if (balance) show(*balance);
///     else show(balance.error().words);                  // "division by zero"

#include "platform/values/Exception.hpp"

#include <cassert>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

namespace estatebook {

struct ReckoningError {
    /// As documents name it: "divisionByZero".
    std::string_view name;
    /// As people read it: "division by zero".
    std::string_view words;
};

[[nodiscard]] ReckoningError reckoningError(const platform::Exception& exception) noexcept;

template <class T>
class Reckoned {
public:
    Reckoned(T value) : value_(std::move(value)) {}
    Reckoned(ReckoningError error) : error_(error) {}

    explicit operator bool() const noexcept { return value_.has_value(); }
    /// REQUIRES: there is a value.
    [[nodiscard]] const T& operator*() const noexcept {
        assert(value_);
        return *value_;
    }
    [[nodiscard]] T& operator*() noexcept {
        assert(value_);
        return *value_;
    }
    [[nodiscard]] const T* operator->() const noexcept { return &**this; }
    /// Empty when there is a value.
    [[nodiscard]] ReckoningError error() const noexcept { return error_; }

private:
    std::optional<T> value_;
    ReckoningError error_{};
};

template <class Function>
[[nodiscard]] auto reckon(Function&& function) -> Reckoned<std::invoke_result_t<Function>> {
    try {
        return function();
    } catch (const platform::ObjectInaccessibleException&) {
        throw; // the book cannot be read, so that nothing else can be either
    } catch (const platform::Exception& exception) {
        return reckoningError(exception);
    }
}

} // namespace estatebook
