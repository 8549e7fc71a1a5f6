// SPDX-License-Identifier: MIT
#pragma once

/// StoredValues: values of a store as a document holds them.
///
/// Each function gives nothing for a value that a document cannot hold. Numbers may be boxed in whatever kind, as long as
/// they are equal to one that a document holds; only settings and attributes of texts, which hold anything, are particular.

#include "estatebook/document/BookDocument.hpp"

#include "platform/values/Value.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace estatebook {

/// A whole number of 0 or more.
[[nodiscard]] std::optional<std::uint64_t> documentCount(const platform::Value& value);
/// A boolean, or the number 0 or 1.
[[nodiscard]] std::optional<bool> documentFlag(const platform::Value& value);
/// What the null object, a text, a boolean, a whole number or a decimal stands for.
[[nodiscard]] std::optional<document::SettingValue> documentSetting(const platform::Value& value);
/// A text, with or without attributes.
[[nodiscard]] std::optional<document::RichText> documentText(const platform::Value& value);
/// What the value is, for people: "a date", "an object of the class Array".
[[nodiscard]] std::string kindOfValue(const platform::Value& value);

} // namespace estatebook
