// SPDX-License-Identifier: MIT
#pragma once

/// LocaleEntry: what is kept for one locale. For the sources of this folder only.

#include <mutex>
#include <string>

namespace estatebook::platform {

class MediumDateTable;

struct LocaleEntry {
    explicit LocaleEntry(std::string_view name) : identifier(name) {}

    const std::string identifier;

    /// The date table, made at the first request.
    const MediumDateTable& mediumDates() const;

private:
    mutable std::once_flag made_;
    mutable const MediumDateTable* mediumDates_ = nullptr;
};

} // namespace estatebook::platform
