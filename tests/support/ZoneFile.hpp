// SPDX-License-Identifier: MIT
#pragma once

/// ZoneFile: a second, plain reader of the system's compiled zone files (TZif version 2 and later, RFC 8536),
/// to check the library against. It keeps what the file says and evaluates the rule in the file's footer
/// afresh for every question: nothing is expanded, nothing is folded, nothing is fast.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::testkit {

class ZoneFile {
public:
    /// The named zone of the system; absent when there is no such file or it is not understood.
    static std::optional<ZoneFile> read(const std::string& name);

    /// Every zone and every alias in the system's list of zones, in its order.
    static std::vector<std::string> names();

    /// Seconds east of UTC at that Unix second.
    int offsetAt(std::int64_t second) const;

    /// All Unix seconds at which a wall shows that time, earliest first.
    std::vector<std::int64_t> instantsOfWall(std::int64_t wall) const;

    /// Seconds in [from, until) at which the offset changes.
    std::vector<std::int64_t> changes(std::int64_t from, std::int64_t until) const;

    /// The bytes of the file, by which aliases are known.
    const std::string& bytes() const { return bytes_; }
    bool hasYearlyRule() const { return rule_.has_value() && rule_->hasSummer; }

private:
    struct Day {
        enum class Form { Julian, Zero, MonthWeek } form = Form::Zero;
        int a = 0, b = 0, c = 0;
        int time = 7200;
    };
    struct Rule {
        int standard = 0, summer = 0;
        bool hasSummer = false;
        Day from, to;
    };
    struct Change {
        std::int64_t second;
        int offset;
    };

    static std::optional<Rule> parseRule(std::string_view text);
    /// The two changes of the rule's year, by time.
    std::vector<Change> ruleChanges(std::int64_t year) const;

    std::string bytes_;
    std::vector<Change> changes_;
    int first_ = 0;
    std::optional<Rule> rule_;
    std::vector<int> offsets_;
};

} // namespace estatebook::testkit
