// SPDX-License-Identifier: MIT
#include "platform/calendar/TimeZone.hpp"

#include <cctz/time_zone.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <utility>

namespace estatebook::platform {

namespace {

/// The Gregorian calendar, and with it every rule of a zone, repeats after 400 years.
constexpr std::int64_t SecondsPerCycle = std::int64_t{146097} * 86400;
/// No wall is further than this from UTC.
constexpr std::int64_t WidestOffset = 26 * 3600;
constexpr std::int64_t Margin = 2 * 86400;
constexpr std::int64_t BeginningOfTime = -(std::int64_t{1} << 60);
constexpr std::int64_t EndOfTime = std::int64_t{1} << 60;

constexpr std::int64_t Year1900 = -2208988800;
constexpr std::int64_t Year2100 = 4102444800;
constexpr std::int64_t Year2250 = 8835955200;
constexpr std::int64_t OneYear = 366 * 86400;

std::int64_t wallSecondOf(const cctz::civil_second& civil) {
    return civil - cctz::civil_second(1970, 1, 1);
}

using Instant = cctz::time_point<cctz::seconds>;

} // namespace

/// Makes zones from the system's files and keeps them.
class TimeZoneReader {
public:
    static TimeZoneReader& shared() {
        static auto* const reader = new TimeZoneReader; // never destroyed: zones outlive every static
        return *reader;
    }

    TimeZone* utc() const noexcept { return utc_; }

    /// The zone in the cache, else the one that `source` names to the zone library.
    TimeZone* zone(std::string_view name, const std::string& source) {
        const std::lock_guard lock(mutex_);
        if (const auto found = zones_.find(name); found != zones_.end()) return found->second;
        cctz::time_zone loaded;
        if (!cctz::load_time_zone(source, &loaded)) return nullptr;
        TimeZone* const zone = read(name, loaded);
        if (zone) zones_.emplace(name, zone);
        return zone;
    }

private:
    using Change = TimeZone::Change;

    TimeZoneReader() : utc_(new TimeZone("UTC", {{BeginningOfTime, 0}}, false)) {
        zones_.emplace("UTC", utc_);
    }

    static TimeZone* read(std::string_view name, const cctz::time_zone& source) {
        const Instant beginning{cctz::seconds(BeginningOfTime / 4)};
        std::vector<Change> changes{{BeginningOfTime, source.lookup(beginning).offset}};
        cctz::time_zone::civil_transition transition;
        for (Instant at = beginning; source.next_transition(at, &transition);) {
            const std::int64_t second = wallSecondOf(transition.from) - changes.back().offset;
            const std::int64_t offset = wallSecondOf(transition.to) - second;
            if (std::abs(offset) > WidestOffset) return nullptr;
            if (offset != changes.back().offset)
                changes.push_back({second, static_cast<std::int32_t>(offset)});
            at = Instant{cctz::seconds(second)};
        }
        // The library carries a rule on for 400 years behind the last change on file; without a rule the
        // table ends with the file, in this century. Two years of the next cycle make every cut below a safe
        // one.
        const bool repeats = changes.back().second > Year2250;
        if (repeats) {
            const std::int64_t cycleStart = changes.back().second - SecondsPerCycle;
            for (std::size_t i = 0; changes[i].second < cycleStart + 2 * OneYear; ++i) {
                if (changes[i].second > cycleStart)
                    changes.push_back({changes[i].second + SecondsPerCycle, changes[i].offset});
            }
        }
        return new TimeZone(std::string(name), std::move(changes), repeats);
    }

    std::mutex mutex_;
    std::map<std::string, TimeZone*, std::less<>> zones_;
    TimeZone* const utc_;
};

TimeZone::TimeZone(std::string name, std::vector<Change> changes, bool repeats)
    : Object(Counting::Immortal), changes_(std::move(changes)),
      repeatsFrom_(repeats ? changes_.back().second - OneYear / 2 : std::numeric_limits<std::int64_t>::max()),
      name_(std::move(name)) {
    constexpr std::int64_t Width = std::int64_t{1} << SecondsPerSpanLog2;
    firstSecond_ = (changes_.size() > 1 ? std::min(changes_[1].second, Year1900) : Year1900) - Margin;
    const std::int64_t end = repeats ? repeatsFrom_ : std::max(changes_.back().second + Margin, Year2100);
    spanCount_ = static_cast<std::uint64_t>((end - firstSecond_) / Width);
    spanTable_.reserve(spanCount_);
    std::size_t from = 0;
    for (std::uint64_t i = 0; i < spanCount_; ++i) {
        // The margins let a wall time be looked up as if it were an instant.
        const std::int64_t start = firstSecond_ + static_cast<std::int64_t>(i) * Width - Margin;
        while (from + 1 < changes_.size() && changes_[from + 1].second <= start) ++from;
        std::size_t to = from;
        while (to + 1 < changes_.size() && changes_[to + 1].second < start + Width + 2 * Margin) ++to;
        const std::int32_t before = to - from > 1 ? ManyChanges : changes_[from].offset;
        spanTable_.push_back({to == from ? EndOfTime : changes_[to].second, before, changes_[to].offset});
    }
    spans_ = spanTable_.data();
}

std::int64_t TimeZone::folded(std::int64_t second) const noexcept {
    if (second < repeatsFrom_) return second;
    return second - ((second - repeatsFrom_) / SecondsPerCycle + 1) * SecondsPerCycle;
}

/// The place of the change that is in force at that second.
std::size_t TimeZone::changeBefore(std::int64_t second) const noexcept {
    const auto next = std::upper_bound(changes_.begin() + 1, changes_.end(), second,
                                       [](std::int64_t a, const Change& b) { return a < b.second; });
    return static_cast<std::size_t>(next - changes_.begin()) - 1;
}

int TimeZone::slowOffsetAt(std::int64_t second) const noexcept {
    return changes_[changeBefore(folded(second))].offset;
}

WallTime TimeZone::wallSecond(std::int64_t wall) const noexcept {
    const std::int64_t cycles = wall - folded(wall);
    wall -= cycles;
    WallTime found;
    bool any = false;
    for (std::size_t i = changeBefore(wall - Margin); i < changes_.size(); ++i) {
        const std::int64_t since = changes_[i].second;
        if (since > wall + Margin) break;
        const std::int64_t until = i + 1 < changes_.size() ? changes_[i + 1].second : EndOfTime;
        const std::int64_t instant = wall - changes_[i].offset;
        if (instant >= since && instant < until) {
            found.kind = any ? WallTime::Kind::Twice : WallTime::Kind::Unique;
            if (!any) found.first = instant;
            found.second = instant;
            any = true;
        } else if (!any && instant >= until && wall < until + changes_[i + 1].offset) {
            found = {WallTime::Kind::Missing, instant, until};
            break;
        }
    }
    found.first += cycles;
    found.second += cycles;
    return found;
}

std::optional<Date> TimeZone::nextTransition(Date date) const noexcept {
    const std::int64_t second = wholeUnixSeconds(date);
    const std::int64_t inTable = folded(second);
    const std::size_t next = changeBefore(inTable) + 1;
    if (next == changes_.size()) return {};
    return Date{static_cast<double>(changes_[next].second + (second - inTable) - ReferenceSecond)};
}

namespace {

bool isZoneName(std::string_view name) {
    if (name.empty() || name.size() > 255 || name.starts_with("Fixed/")) return false;
    char before = '/';
    for (const char c : name) {
        const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                            c == '_' || c == '+' || c == '-';
        if (!letter && (c != '/' || before == '/')) return false;
        before = c;
    }
    return before != '/';
}

/// "Europe/Berlin" of "/usr/share/zoneinfo/Europe/Berlin"; empty when the path does not lead there.
std::string_view zoneNameInPath(std::string_view path) {
    constexpr std::string_view Folder = "/zoneinfo/";
    const std::size_t at = path.find(Folder);
    if (at == std::string_view::npos) return {};
    const std::string_view name = path.substr(at + Folder.size());
    return isZoneName(name) ? name : std::string_view{};
}

/// The zone of a file, under its name in the zone data base if it has one there.
TimeZone* zoneOfFile(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) return nullptr;
    std::string target = file.string();
    if (zoneNameInPath(target).empty()) {
        if (const auto link = std::filesystem::read_symlink(file, error); !error) target = link.string();
        if (zoneNameInPath(target).empty()) {
            if (const auto real = std::filesystem::canonical(file, error); !error) target = real.string();
        }
    }
    if (const auto name = zoneNameInPath(target); !name.empty()) {
        if (TimeZone* const zone = TimeZoneReader::shared().zone(name, std::string(name))) return zone;
    }
    return TimeZoneReader::shared().zone(file.string(), file.string());
}

std::atomic<TimeZone*> chosenZone{nullptr};

} // namespace

Ref<TimeZone> TimeZone::named(std::string_view name) {
    if (!isZoneName(name)) return {};
    return TimeZoneReader::shared().zone(name, std::string(name));
}

Ref<TimeZone> TimeZone::utc() noexcept {
    return TimeZoneReader::shared().utc();
}

Ref<TimeZone> TimeZone::local() {
    TimeZone* zone = nullptr;
    if (const char* const variable = std::getenv("TZ")) {
        std::string_view name = variable;
        if (name.starts_with(':')) name.remove_prefix(1);
        if (Ref<TimeZone> found = named(name)) return found;
        if (name.starts_with('/')) zone = zoneOfFile(name);
    } else {
        zone = zoneOfFile("/etc/localtime");
    }
    return zone ? Ref<TimeZone>(zone) : utc();
}

Ref<TimeZone> TimeZone::defaultTimeZone() {
    TimeZone* zone = chosenZone.load(std::memory_order_acquire);
    if (zone) return zone;
    TimeZone* const ofProcess = local().get();
    // Another thread may have set a zone meanwhile; that one stands.
    return chosenZone.compare_exchange_strong(zone, ofProcess, std::memory_order_acq_rel) ? ofProcess : zone;
}

void TimeZone::setDefaultTimeZone(const Ref<TimeZone>& zone) {
    chosenZone.store(zone.get(), std::memory_order_release);
}

} // namespace estatebook::platform
