// SPDX-License-Identifier: MIT
#pragma once

/// Predicate: a condition on one object. The one form there is: a key equals a value, exactly, letter case and
/// composition included.
///
///     Predicate::predicateWithFormat("name = %@", String::make("CurrencyCode"));

#include "platform/observation/Key.hpp"
#include "platform/values/Value.hpp"

#include <string_view>
#include <utility>

namespace estatebook::platform {

class ObservableObject;

class ESTATEBOOK_API Predicate {
public:
    /// predicateWithFormat: "KEY = %@" with its one argument; another form raises InvalidArgumentException.
    [[nodiscard]] static Predicate predicateWithFormat(std::string_view format, Value argument);

    [[nodiscard]] bool evaluateWithObject(const ObservableObject& object) const;
    [[nodiscard]] Key key() const noexcept { return key_; }
    [[nodiscard]] const Value& value() const noexcept { return value_; }

private:
    Predicate(Key key, Value value) : key_(key), value_(std::move(value)) {}
    Key key_;
    Value value_;
};

} // namespace estatebook::platform
