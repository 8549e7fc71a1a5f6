// SPDX-License-Identifier: MIT
#pragma once

/// How the values of the platform stand in an archive, for those who write and read one.

#include "platform/archive/ArchivedClass.hpp"

#include <cstddef>
#include <span>
#include <string_view>

namespace estatebook::platform::detail {

/// The classes of all values that can always be archived and are not a property list in themselves.
[[nodiscard]] std::span<const ArchivedClass> archivedValueClasses() noexcept;

/// Whether a value stands for itself in an archive: a text, data or a number but a decimal.
[[nodiscard]] bool isPropertyList(const Value& value) noexcept;

/// The bytes of a text or of data; 0 for other values.
[[nodiscard]] std::size_t bytesIn(const Value& value) noexcept;

/// The name of the value's class, also for those values that are no objects.
[[nodiscard]] std::string_view runtimeNameOf(const Value& value) noexcept;

} // namespace estatebook::platform::detail
