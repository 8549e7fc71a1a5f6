// SPDX-License-Identifier: MIT
#pragma once

/// TenureTwin: what a letting owes, worked out as one would with a wall calendar and a pencil. Days are crossed off one
/// by one, boundaries are found by trying one after another, money is added line by line. It shares the decimal type
/// with the library, and nothing else.

#include "platform/values/Decimal.hpp"
#include "support/SlowCalendar.hpp"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace estatebook::bookkit {

struct TwinTransaction {
    std::optional<std::int64_t> when;
    std::optional<platform::Decimal> amount;
    bool isAdjustment = false;
};

struct TwinTerms {
    std::int64_t start = 0;
    std::optional<std::int64_t> end;
    std::int64_t today = 0;
    int cycle = 30;
    int period = 1;
    int behaviour = 0;
    bool isFullDuration = false;
    std::optional<int> advancePeriod;
    int advanceCycle = 30;
    platform::Decimal rent;
    std::optional<platform::Decimal> bond;
    std::vector<TwinTransaction> transactions;

    [[nodiscard]] std::string description() const {
        std::string text =
            "start " + std::to_string(start) + " end " + (end ? std::to_string(*end) : "none") + " today " +
            std::to_string(today) + " cycle " + std::to_string(cycle) + " period " + std::to_string(period) +
            " behaviour " + std::to_string(behaviour) + " full " + std::to_string(isFullDuration) +
            " advance " + (advancePeriod ? std::to_string(*advancePeriod) : "none") + " of " +
            std::to_string(advanceCycle) + " rent " + rent.toString();
        return bond ? text + " bond " + bond->toString() : text;
    }
};

class TenureTwin {
public:
    using Decimal = platform::Decimal;
    using Unit = testkit::SlowCalendar::Unit;

    struct Period {
        std::int64_t start;
        std::int64_t end;
        std::int64_t billing;
    };
    struct Line {
        std::optional<std::int64_t> when;
        std::optional<Decimal> amount;
        /// The dates its text tells, for rent.
        std::optional<Period> period;
        std::string opening;
    };

    TenureTwin(const testkit::SlowCalendar& calendar, TwinTerms terms)
        : calendar_(calendar), terms_(std::move(terms)) {
        anchor_ = calendar_.startOfDay(terms_.start);
    }

    std::uint64_t chargeableDays() const {
        const bool toTheEnd = terms_.isFullDuration && terms_.end;
        std::uint64_t days = daysCrossedOff(terms_.start, toTheEnd ? *terms_.end : terms_.today);
        if (!terms_.isFullDuration && terms_.advancePeriod.value_or(0) != 0) {
            const std::int64_t today = calendar_.startOfDay(terms_.today);
            const auto ahead = daysCrossedOff(
                today, calendar_.add(unitOf(terms_.advanceCycle), *terms_.advancePeriod, today));
            const std::int64_t next = calendar_.add(Unit::Day, static_cast<std::int64_t>(ahead), today);
            days += std::min(daysCrossedOff(today, next), daysCrossedOff(terms_.start, next));
        }
        if (terms_.end) days = std::min(days, daysCrossedOff(terms_.start, *terms_.end));
        return days;
    }

    /// Whole periods, and of the next one so many days of how many.
    struct Count {
        std::int64_t whole = 0;
        std::uint64_t part = 0;
        std::uint64_t of = 1;
        Decimal exact() const {
            return part == 0 ? Decimal(whole) : Decimal(whole) + Decimal(part) / Decimal(of);
        }
    };

    Count countOf(std::uint64_t days) const {
        const std::int64_t end = calendar_.add(Unit::Day, static_cast<std::int64_t>(days), anchor_);
        Count count;
        while (boundary(count.whole + 1) <= end) ++count.whole;
        if (terms_.cycle == 1) {
            // Days that the calendar left out are still days of a daily rent's period.
            const std::int64_t cycles = calendar_.difference(Unit::Day, anchor_, end);
            count.whole = cycles / terms_.period;
            count.part = static_cast<std::uint64_t>(cycles % terms_.period);
            count.of = static_cast<std::uint64_t>(terms_.period);
            return count;
        }
        count.part = daysCrossedOff(boundary(count.whole), end);
        count.of = daysCrossedOff(boundary(count.whole), boundary(count.whole + 1));
        return count;
    }

    Decimal chargeablePeriods() const {
        const Count count = countOf(chargeableDays());
        if (terms_.behaviour == 0) return Decimal(count.whole);
        if (terms_.behaviour == 2) return Decimal(count.whole + (count.part > 0 ? 1 : 0));
        return exact(count);
    }

    /// A daily rent is one division, the others are whole periods and a share.
    Decimal exact(const Count& count) const {
        if (terms_.cycle == 1)
            return Decimal(count.whole * terms_.period + static_cast<std::int64_t>(count.part)) /
                   terms_.period;
        return count.exact();
    }

    std::vector<Period> schedule() const {
        const Count count = countOf(chargeableDays());
        std::int64_t rows = count.whole;
        if ((terms_.behaviour == 1 || terms_.behaviour == 2) && count.part > 0) ++rows;
        std::vector<Period> periods;
        for (std::int64_t place = 0; place < rows; ++place) periods.push_back(periodAt(place));
        if (terms_.end && !periods.empty()) periods.back().end = *terms_.end;
        return periods;
    }

    Period periodAt(std::int64_t place) const {
        const std::int64_t start = boundary(place);
        const std::int64_t end = boundary(place + 1);
        return {start, end, terms_.advancePeriod.value_or(0) == 0 ? end : start};
    }

    std::vector<Line> statement() const {
        std::vector<Line> lines;
        // Each new line goes behind all that are not later, so that lines of one instant keep their order.
        const auto put = [&](const Line& line) {
            auto place = lines.end();
            while (place != lines.begin() && isEarlier(line.when, (place - 1)->when)) --place;
            lines.insert(place, line);
        };
        for (const TwinTransaction& each : terms_.transactions)
            put({each.when, each.amount, std::nullopt, ""});
        if (terms_.bond && *terms_.bond > Decimal(0))
            put({terms_.start, Decimal(0) - *terms_.bond, std::nullopt, "Bond Debit"});
        const Count count = countOf(chargeableDays());
        const bool hasPart = terms_.behaviour != 0 && terms_.behaviour != 2 && count.part > 0;
        const auto rows = schedule();
        for (std::size_t place = 0; place < rows.size(); ++place) {
            const bool isPart = hasPart && place + 1 == rows.size();
            const Decimal share = exact(count) - Decimal(count.whole);
            const Decimal amount = isPart ? (Decimal(0) - terms_.rent) * share : Decimal(0) - terms_.rent;
            put({rows[place].billing, amount, rows[place], isPart ? "Partial Rent (" : "Rent ("});
        }
        return lines;
    }

    Decimal income(bool ofAdjustments) const {
        Decimal sum = ofAdjustments && terms_.bond ? Decimal(0) - *terms_.bond : Decimal(0);
        for (const TwinTransaction& each : terms_.transactions)
            if (each.amount && each.isAdjustment == ofAdjustments) sum = sum + *each.amount;
        return sum;
    }

    Decimal cost() const { return Decimal(0) - terms_.rent * chargeablePeriods(); }

    Decimal balance() const {
        const Decimal sum = income(false) + cost() + income(true);
        return terms_.behaviour == 1 ? toTheCent(sum) : sum;
    }

    std::uint64_t numberOfDays() const {
        return daysCrossedOff(terms_.start, terms_.end.value_or(terms_.today));
    }

    std::int64_t boundary(std::int64_t place) const {
        return calendar_.add(unitOf(terms_.cycle), place * terms_.period, anchor_);
    }

    const TwinTerms& terms() const { return terms_; }

    /// Rounds the written digits: a third one of 5 or more adds a cent, whatever the sign.
    static Decimal toTheCent(const Decimal& amount) {
        std::string digits = amount.toString();
        const std::size_t point = digits.find('.');
        if (point == std::string::npos || digits.size() <= point + 3) return amount;
        const bool up = digits[point + 3] >= '5';
        const bool isNegative = digits[0] == '-';
        const Decimal cut = Decimal::parse(digits.substr(0, point + 3));
        if (!up) return cut;
        return cut + Decimal::parse(isNegative ? "-0.01" : "0.01");
    }

private:
    static Unit unitOf(int cycle) {
        return cycle == 1 ? Unit::Day : cycle == 7 ? Unit::Week : cycle == 30 ? Unit::Month : Unit::Year;
    }

    static bool isEarlier(const std::optional<std::int64_t>& a, const std::optional<std::int64_t>& b) {
        if (!b) return false;
        return !a || *a < *b;
    }

    /// One stroke for each day, from the day of the first instant to the day of the second, which has none.
    std::uint64_t daysCrossedOff(std::int64_t from, std::int64_t to) const {
        std::uint64_t strokes = 0;
        const auto last = calendar_.day(to);
        for (auto day = calendar_.day(from); day < last; day += std::chrono::days(1)) ++strokes;
        return strokes;
    }

    const testkit::SlowCalendar& calendar_;
    TwinTerms terms_;
    std::int64_t anchor_ = 0;
};

} // namespace estatebook::bookkit
