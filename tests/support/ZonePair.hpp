// SPDX-License-Identifier: MIT
#pragma once

/// ZonePair: a zone as the library knows it beside the same zone as the plain reader has it, and what must
/// hold of the two.

#include "platform/calendar/TimeZone.hpp"

#include "support/ZoneFile.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace estatebook::testkit {

struct ZonePair {
    std::string name;
    ZoneFile file;
    platform::Ref<platform::TimeZone> zone;

    /// Every zone and alias of the system.
    static const std::vector<ZonePair>& all();
    /// Those whose file differs from the files before.
    static const std::vector<ZonePair>& distinct();

    int offsetAt(std::int64_t second) const { return zone->offsetAtUnixSecond(second); }
    /// The library's answers for a wall time, against all instants the file has for it.
    void expectSameWall(std::int64_t wall) const;
    /// Offsets and wall times before, at and after a change.
    void expectSameAround(std::int64_t change) const;
};

/// Unix seconds of the first day of years.
constexpr std::int64_t Year1583 = -12212553600;
constexpr std::int64_t Year2037 = 2114380800;
constexpr std::int64_t Year2500 = 16725225600;
constexpr std::int64_t Year10000 = 253402300800;
/// Before every change on record.
constexpr std::int64_t LongAgo = -(std::int64_t{1} << 40);

} // namespace estatebook::testkit
