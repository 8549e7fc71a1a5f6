// SPDX-License-Identifier: MIT
#include "support/ZoneFile.hpp"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

namespace estatebook::testkit {

namespace {

const std::string Folder = "/usr/share/zoneinfo/";

std::int64_t bigEndian(const char* at, int bytes) {
    std::int64_t value = static_cast<signed char>(at[0]) < 0 ? -1 : 0;
    for (int i = 0; i < bytes; ++i) value = value * 256 + static_cast<unsigned char>(at[i]);
    return value;
}

std::int64_t dayNumber(std::int64_t year, unsigned month, unsigned day) {
    using namespace std::chrono;
    return sys_days(std::chrono::year(static_cast<int>(year)) / std::chrono::month(month) /
                    std::chrono::day(day))
        .time_since_epoch()
        .count();
}

std::int64_t yearOf(std::int64_t second) {
    using namespace std::chrono;
    const auto day = floor<days>(sys_seconds(seconds(second)));
    return static_cast<int>(year_month_day(day).year());
}

/// A reader of one line that is eaten from the front.
struct Cursor {
    std::string_view left;
    bool good = true;

    bool eat(char c) {
        if (left.empty() || left[0] != c) return false;
        left.remove_prefix(1);
        return true;
    }
    void name() {
        if (eat('<')) {
            while (!left.empty() && left[0] != '>') left.remove_prefix(1);
            good = good && eat('>');
            return;
        }
        std::size_t n = 0;
        while (n < left.size() && std::isalpha(static_cast<unsigned char>(left[n]))) ++n;
        good = good && n >= 3;
        left.remove_prefix(n);
    }
    int number() {
        int value = 0;
        std::size_t n = 0;
        for (; n < left.size() && std::isdigit(static_cast<unsigned char>(left[n])); ++n)
            value = value * 10 + (left[n] - '0');
        good = good && n > 0;
        left.remove_prefix(n);
        return value;
    }
    int time() {
        const int sign = eat('-') ? -1 : 1;
        if (sign > 0) eat('+');
        int seconds = number() * 3600;
        if (eat(':')) seconds += number() * 60;
        if (eat(':')) seconds += number();
        return sign * seconds;
    }
};

} // namespace

std::optional<ZoneFile::Rule> ZoneFile::parseRule(std::string_view text) {
    Cursor cursor{text};
    Rule rule;
    cursor.name();
    rule.standard = -cursor.time();
    if (cursor.left.empty()) return cursor.good ? std::optional(rule) : std::nullopt;
    rule.hasSummer = true;
    cursor.name();
    rule.summer = cursor.left.starts_with(',') ? rule.standard + 3600 : -cursor.time();
    for (Day* day : {&rule.from, &rule.to}) {
        cursor.good = cursor.good && cursor.eat(',');
        if (cursor.eat('M')) {
            day->form = Day::Form::MonthWeek;
            day->a = cursor.number();
            cursor.good = cursor.good && cursor.eat('.');
            day->b = cursor.number();
            cursor.good = cursor.good && cursor.eat('.');
            day->c = cursor.number();
        } else {
            day->form = cursor.eat('J') ? Day::Form::Julian : Day::Form::Zero;
            day->a = cursor.number();
        }
        if (cursor.eat('/')) day->time = cursor.time();
    }
    return cursor.good && cursor.left.empty() ? std::optional(rule) : std::nullopt;
}

std::optional<ZoneFile> ZoneFile::read(const std::string& name) {
    std::ifstream stream(Folder + name, std::ios::binary);
    std::stringstream all;
    all << stream.rdbuf();
    ZoneFile file;
    file.bytes_ = all.str();
    const std::string& b = file.bytes_;
    if (b.size() < 44 || b.compare(0, 4, "TZif") != 0 || b[4] < '2') return {};
    const auto count = [&](std::size_t at, int which) { return bigEndian(&b[at + 20 + 4 * which], 4); };
    enum { Utc, Standard, Leap, Time, Type, Letters };
    const std::size_t second = 44 + count(0, Time) * 5 + count(0, Type) * 6 + count(0, Letters) +
                               count(0, Leap) * 8 + count(0, Standard) + count(0, Utc);
    const std::int64_t times = count(second, Time);
    const std::int64_t types = count(second, Type);
    if (count(second, Leap) != 0) return {};
    const std::size_t timesAt = second + 44;
    const std::size_t indexAt = timesAt + times * 8;
    const std::size_t typesAt = indexAt + times;
    const std::size_t end =
        typesAt + types * 6 + count(second, Letters) + count(second, Standard) + count(second, Utc);
    const auto offsetOf = [&](int type) { return static_cast<int>(bigEndian(&b[typesAt + 6 * type], 4)); };
    file.first_ = offsetOf(0);
    for (std::int64_t i = 0; i < times; ++i)
        file.changes_.push_back({bigEndian(&b[timesAt + 8 * i], 8), offsetOf(b[indexAt + i])});
    const std::size_t close = b.find('\n', end + 1);
    if (b[end] != '\n' || close == std::string::npos) return {};
    const std::string_view footer = std::string_view(b).substr(end + 1, close - end - 1);
    if (!footer.empty() && !(file.rule_ = parseRule(footer))) return {};

    std::set<int> offsets{file.first_};
    for (const Change& change : file.changes_) offsets.insert(change.offset);
    if (file.rule_)
        offsets.insert(
            {file.rule_->standard, file.rule_->hasSummer ? file.rule_->summer : file.rule_->standard});
    file.offsets_.assign(offsets.rbegin(), offsets.rend());
    return file;
}

std::vector<std::string> ZoneFile::names() {
    std::vector<std::string> names;
    std::ifstream stream(Folder + "tzdata.zi");
    for (std::string line; std::getline(stream, line);) {
        std::istringstream words(line);
        std::string kind, first, second;
        words >> kind >> first >> second;
        if (kind == "Z") names.push_back(first);
        if (kind == "L") names.push_back(second);
    }
    return names;
}

std::vector<ZoneFile::Change> ZoneFile::ruleChanges(std::int64_t year) const {
    const auto second = [&](const Day& day, int offset) {
        const std::int64_t newYear = dayNumber(year, 1, 1);
        const bool leap = dayNumber(year + 1, 1, 1) - newYear == 366;
        std::int64_t number = 0;
        if (day.form == Day::Form::Zero) number = newYear + day.a;
        if (day.form == Day::Form::Julian) number = newYear + day.a - 1 + (leap && day.a >= 60 ? 1 : 0);
        if (day.form == Day::Form::MonthWeek) {
            using namespace std::chrono;
            const auto y = std::chrono::year(static_cast<int>(year));
            const auto m = std::chrono::month(static_cast<unsigned>(day.a));
            const auto w = weekday(static_cast<unsigned>(day.c));
            number =
                (day.b == 5 ? sys_days(y / m / w[last]) : sys_days(y / m / w[static_cast<unsigned>(day.b)]))
                    .time_since_epoch()
                    .count();
        }
        return number * 86400 + day.time - offset;
    };
    std::vector<Change> both{{second(rule_->from, rule_->standard), rule_->summer},
                             {second(rule_->to, rule_->summer), rule_->standard}};
    if (both[1].second < both[0].second) std::swap(both[0], both[1]);
    return both;
}

int ZoneFile::offsetAt(std::int64_t second) const {
    if (changes_.empty() || second >= changes_.back().second) {
        if (!rule_) return changes_.empty() ? first_ : changes_.back().offset;
        if (!rule_->hasSummer) return rule_->standard;
        int offset = 0;
        const std::int64_t year = yearOf(second);
        for (std::int64_t y = year - 1; y <= year + 1; ++y) {
            for (const Change& change : ruleChanges(y)) {
                if (change.second <= second) offset = change.offset;
            }
        }
        return offset;
    }
    int offset = first_;
    for (const Change& change : changes_) {
        if (change.second > second) break;
        offset = change.offset;
    }
    return offset;
}

std::vector<std::int64_t> ZoneFile::instantsOfWall(std::int64_t wall) const {
    std::vector<std::int64_t> found; // offsets_ descends, so the instants ascend
    for (const int offset : offsets_) {
        if (offsetAt(wall - offset) == offset) found.push_back(wall - offset);
    }
    return found;
}

std::vector<std::int64_t> ZoneFile::changes(std::int64_t from, std::int64_t until) const {
    std::vector<std::int64_t> seconds;
    for (const Change& change : changes_) seconds.push_back(change.second);
    const std::int64_t last = changes_.empty() ? from : changes_.back().second;
    if (hasYearlyRule()) {
        for (std::int64_t year = yearOf(std::max(from, last)) - 1; year <= yearOf(until) + 1; ++year) {
            for (const Change& change : ruleChanges(year)) {
                if (change.second > last) seconds.push_back(change.second);
            }
        }
    }
    std::erase_if(seconds,
                  [&](std::int64_t s) { return s < from || s >= until || offsetAt(s - 1) == offsetAt(s); });
    return seconds;
}

} // namespace estatebook::testkit
