// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: values as Qt's properties have them.

#include "platform/toolkit/FieldFormatter.hpp"
#include "platform/values/Value.hpp"

#include <QVariant>

namespace estatebook::platform {

/// The text of a value: the formatter's, or without one the value's own; empty for nothing.
[[nodiscard]] QString shownText(const Value& value, const FieldFormatter* formatter);
/// A text, a number, a truth or, for a date, its day in the current calendar.
[[nodiscard]] QVariant shownVariant(const Value& value);
/// The way back; absent for what is none of these, and for an empty text.
[[nodiscard]] Value valueOfVariant(const QVariant& variant);

} // namespace estatebook::platform
