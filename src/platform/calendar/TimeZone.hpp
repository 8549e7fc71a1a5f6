// SPDX-License-Identifier: MIT
#pragma once

/// TimeZone: the offsets from UTC that a place has kept and will keep, as the system's zone data base tells.
///
/// One immutable object stands for one name. It is made when it is first asked for, from the system's
/// zone file, and then kept for the life of the process, so it may be read from any thread and held by plain
/// pointer. Before the first change on record a zone keeps local mean time; after the last one its rule
/// goes on for ever.
///
///     Ref<TimeZone> berlin = TimeZone::named("Europe/Berlin");
///     berlin->offsetAt(date);                              // 3600 or 7200, seconds east of UTC
///     TimeZone::named("../../etc/passwd");                 // null, as is every name that is no zone
///     TimeZone::setDefaultTimeZone(berlin);                // new calendars are of Berlin
///
/// The trap: not every wall time exists, and some exist twice. What becomes of those is said at
/// `instantOfWallSecond` and `wallSecond`; most callers want Calendar instead.

#include "EstateBook_ModelExport.hpp"

#include "platform/values/Date.hpp"
#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::platform {

/// How often a wall time exists, and when.
struct WallTime {
    enum class Kind : std::uint8_t { Unique, Missing, Twice };

    Kind kind = Kind::Unique;
    /// The instant; of two the earlier; of a missing wall time the instant as far behind the start of the
    /// gap as the wall time lies in it (02:30 is 03:30).
    std::int64_t first = 0;
    /// Of two the later; of a missing wall time the instant of the change; else the instant.
    std::int64_t second = 0;
};

class ESTATEBOOK_API TimeZone final : public Object {
public:
    /// The zone of that name ("Europe/Berlin"), or null when the system knows none. Names are letters,
    /// digits,
    /// "_", "+", "-" and single "/" between them; anything else, such as a path, is no name. The first call
    /// for a name reads a file, later ones look it up under a lock.
    [[nodiscard]] static Ref<TimeZone> named(std::string_view name);

    /// UTC; needs no file.
    [[nodiscard]] static Ref<TimeZone> utc() noexcept;

    /// The zone of the process: what the environment variable TZ names, else what /etc/localtime points to;
    /// UTC when neither can be read. Looked up afresh on each call.
    [[nodiscard]] static Ref<TimeZone> local();

    /// The zone of new calendars: the one last set, else the zone of the process at the first call.
    [[nodiscard]] static Ref<TimeZone> defaultTimeZone();

    /// Sets the zone of new calendars, for all threads. Null goes back to the zone of the process.
    static void setDefaultTimeZone(const Ref<TimeZone>& zone);

    /// The name that was asked for.
    [[nodiscard]] std::string_view name() const noexcept { return name_; }

    /// Seconds east of UTC at that instant. A date too far away to have a calendar (see Calendar) is taken as
    /// the nearest that has one, a date that is not a number as the earliest.
    [[nodiscard]] int offsetAt(Date date) const noexcept {
        return offsetAtUnixSecond(wholeUnixSeconds(date));
    }

    /// The first instant after the date at which the offset changes, or absent when it never does again.
    [[nodiscard]] std::optional<Date> nextTransition(Date date) const noexcept;

    /// "Europe/Berlin".
    [[nodiscard]] std::string description() const override { return name_; }
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "TimeZone"; }

    // The arithmetic in whole seconds on which Calendar stands: Unix seconds for instants, and for wall times
    // the seconds from 1970-01-01 00:00 on the same wall.

    /// Dates are calendar dates up to 2^50 seconds (some 35 million years) from the reference date.
    static constexpr double FarthestSecond = 1125899906842624.0;

    /// Whether the date is a number and near enough to have a calendar.
    [[nodiscard]] static bool isCalendarDate(Date date) noexcept {
        return std::fabs(date.secondsSinceReferenceDate) <= FarthestSecond;
    }
    /// The date's whole seconds, rounded towards the past.
    [[nodiscard]] static std::int64_t wholeUnixSeconds(Date date) noexcept {
        double seconds = date.secondsSinceReferenceDate;
        if (!(std::fabs(seconds) <= FarthestSecond)) [[unlikely]]
            seconds = seconds > 0 ? FarthestSecond : -FarthestSecond;
        const auto whole = static_cast<std::int64_t>(seconds);
        return whole - (static_cast<double>(whole) > seconds ? 1 : 0) + ReferenceSecond;
    }
    /// Unix seconds of the reference date.
    static constexpr std::int64_t ReferenceSecond = 978307200;

    [[nodiscard]] int offsetAtUnixSecond(std::int64_t second) const noexcept {
        const std::uint64_t place = static_cast<std::uint64_t>(second - firstSecond_) >> SecondsPerSpanLog2;
        if (place < spanCount_) [[likely]] {
            const Span& span = spans_[place];
            if (span.before != ManyChanges) [[likely]]
                return span.before + (span.after - span.before) * static_cast<int>(second >= span.change);
        }
        return slowOffsetAt(second);
    }

    /// The instant of a wall time; of two the earlier; a missing one is moved forward by the length of the
    /// gap it lies in.
    [[nodiscard]] std::int64_t instantOfWallSecond(std::int64_t wall) const noexcept {
        const std::uint64_t place = static_cast<std::uint64_t>(wall - firstSecond_) >> SecondsPerSpanLog2;
        if (place < spanCount_) [[likely]] {
            const Span& span = spans_[place];
            if (span.before != ManyChanges) [[likely]]
                return wall -
                       (wall < span.change + std::max(span.before, span.after) ? span.before : span.after);
        }
        return wallSecond(wall).first;
    }

    /// The first instant at which the wall shows this time or a later one (of the times next to it).
    [[nodiscard]] std::int64_t firstInstantFromWallSecond(std::int64_t wall) const noexcept {
        const std::uint64_t place = static_cast<std::uint64_t>(wall - firstSecond_) >> SecondsPerSpanLog2;
        if (place < spanCount_) [[likely]] {
            const Span& span = spans_[place];
            if (span.before != ManyChanges) [[likely]] {
                if (wall < span.change + std::max(span.before, span.after))
                    return std::min(wall - span.before, span.change);
                return wall - span.after;
            }
        }
        const WallTime found = wallSecond(wall);
        return found.kind == WallTime::Kind::Missing ? found.second : found.first;
    }

    /// What there is to know of a wall time.
    [[nodiscard]] WallTime wallSecond(std::int64_t wall) const noexcept;

private:
    friend class TimeZoneReader;

    /// A stretch of the time line that is read in one look: the offset changes at most once in or near it.
    struct Span {
        std::int64_t change;
        std::int32_t before;
        std::int32_t after;
    };
    /// From an instant on, an offset.
    struct Change {
        std::int64_t second;
        std::int32_t offset;
    };

    static constexpr int SecondsPerSpanLog2 = 23;
    /// Stands in `before` of a span with several changes.
    static constexpr std::int32_t ManyChanges = std::numeric_limits<std::int32_t>::min();

    TimeZone(std::string name, std::vector<Change> changes, bool repeats);
    ~TimeZone() override = default;

    [[nodiscard]] int slowOffsetAt(std::int64_t second) const noexcept;
    /// The second in the table that is whole 400-year cycles before the given one.
    [[nodiscard]] std::int64_t folded(std::int64_t second) const noexcept;
    [[nodiscard]] std::size_t changeBefore(std::int64_t second) const noexcept;

    std::int64_t firstSecond_ = 0;
    std::uint64_t spanCount_ = 0;
    const Span* spans_ = nullptr;
    /// The first one stands at the beginning of time and holds local mean time.
    std::vector<Change> changes_;
    std::vector<Span> spanTable_;
    /// Past this second the table repeats its last 400 years; the largest number when nothing more changes.
    std::int64_t repeatsFrom_;
    std::string name_;
};

} // namespace estatebook::platform
