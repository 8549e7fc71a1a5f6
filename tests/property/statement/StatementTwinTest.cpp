// SPDX-License-Identifier: MIT

// Random statements against a twin that reckons in whole cents and looks everything up by walking.

#include "statement/TKStatement.hpp"
#include "support/PlainTransaction.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace estatebook {
namespace {

using platform::Date;
using platform::Decimal;
using platform::Dictionary;
using platform::makeRef;
using platform::Ref;
using platform::String;
using platform::Value;
using test::PlainTransaction;

/// A movement as the twin knows it. Names are numbers: -1 is no tag names at all.
struct Movement {
    std::optional<std::int64_t> cents;
    std::optional<int> when;
    std::optional<std::vector<int>> names;
};

struct Range {
    std::optional<int> start;
    std::optional<int> end;
};

struct Line {
    std::size_t movement;
    std::int64_t balance;
};

/// Spellings of the names: 0 and 1 are canonically equivalent.
const std::vector<std::string> spellings = {"Caf\u00e9",     "Cafe\u0301",    "caf\u00e9", "Rent",
                                            "rent",          "Bond",          "\u00c5",    "\u212b",
                                            "q\u0323\u0307", "q\u0307\u0323", "x1",        "x2"};
int groupOf(int name) {
    return name == 1 ? 0 : name == 7 ? 6 : name == 9 ? 8 : name;
}

Decimal decimalOf(std::int64_t cents) {
    return Decimal(cents) / 100;
}

class Twin {
public:
    Twin(const std::vector<Movement>& movements, Range range) : movements_(movements) {
        std::int64_t balance = 0;
        for (std::size_t index = 0; index < movements.size(); ++index) {
            const Movement& movement = movements[index];
            const bool tooEarly = range.start && movement.when && *movement.when < *range.start;
            const bool tooLate = range.end && movement.when && *movement.when > *range.end;
            if (tooEarly || tooLate) continue;
            balance += movement.cents.value_or(0);
            lines.push_back({index, balance});
        }
    }

    std::vector<int> names() const {
        std::vector<int> found;
        for (const Line& line : lines)
            for (const int name : movements_[line.movement].names.value_or(std::vector<int>()))
                if (std::ranges::find(found, name) == found.end()) found.push_back(name);
        return found;
    }

    std::size_t outstandingCount() const {
        std::size_t count = 0;
        for (std::size_t index = lines.size(); index > 0 && lines[index - 1].balance < 0; --index) ++count;
        return count;
    }

    /// The movements of each group in the order of the groups' first lines.
    std::vector<std::vector<std::size_t>> groups() const {
        std::vector<int> order;
        std::map<int, std::vector<std::size_t>> members;
        for (const Line& line : lines) {
            const auto& given = movements_[line.movement].names;
            if (!given || given->empty()) continue;
            const int group = groupOf(given->front());
            if (!members.contains(group)) order.push_back(group);
            members[group].push_back(line.movement);
        }
        std::vector<std::vector<std::size_t>> found;
        for (const int group : order) found.push_back(members[group]);
        return found;
    }

    std::vector<Line> lines;

private:
    const std::vector<Movement>& movements_;
};

class StatementTwinTest : public testing::Test {
protected:
    int below(int bound) { return static_cast<int>(random_() % static_cast<std::uint32_t>(bound)); }
    bool oneIn(int chances) { return below(chances) == 0; }

    Movement movement() {
        Movement made;
        if (!oneIn(6)) made.cents = below(2001) - 1000;
        if (oneIn(50)) made.cents = (std::int64_t{below(1000000000)} - 500000000) * 1000003;
        if (!oneIn(6)) made.when = below(40);
        if (!oneIn(4)) {
            made.names.emplace();
            for (int count = below(4); count > 0; --count) {
                const int name = below(static_cast<int>(spellings.size()));
                if (std::ranges::find(*made.names, name) == made.names->end()) made.names->push_back(name);
            }
        }
        return made;
    }

    Ref<TKLedgerTransaction> object(const Movement& movement) {
        Ref<TKTagNames> names;
        if (movement.names) {
            std::vector<Value> texts;
            for (const int name : *movement.names)
                texts.emplace_back(String::make(spellings[static_cast<std::size_t>(name)]));
            names = TKTagNames::initWithArray(platform::Array::make(texts));
        }
        // Now and then the names of the movement before, as rent lines have them.
        if (names && lastNames_ && movement.names == lastNumbers_ && oneIn(2)) names = lastNames_;
        lastNames_ = names;
        lastNumbers_ = movement.names;
        std::optional<Decimal> amount;
        if (movement.cents) amount = decimalOf(*movement.cents);
        std::optional<Date> when;
        if (movement.when) when = Date{*movement.when * 0.5};
        return makeRef<PlainTransaction>(amount, when, names);
    }

    void expectSameLines(const platform::ArrayOf<TKStatementItem>& items, const std::vector<Line>& lines,
                         const std::vector<Ref<TKLedgerTransaction>>& objects) {
        ASSERT_EQ(items.count(), lines.size());
        for (std::size_t index = 0; index < lines.size(); ++index) {
            ASSERT_EQ(items[index].transaction(), objects[lines[index].movement]);
            ASSERT_EQ(items[index].balance(), decimalOf(lines[index].balance));
        }
    }

    std::mt19937 random_;
    Ref<TKTagNames> lastNames_;
    std::optional<std::vector<int>> lastNumbers_;
};

TEST_F(StatementTwinTest, AStatementAgreesWithItsTwin) {
    const std::uint32_t seed = std::random_device{}();
    RecordProperty("seed", static_cast<int>(seed));
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_.seed(seed);
    for (int round = 0; round < 2000; ++round) {
        std::vector<Movement> movements;
        std::vector<Ref<TKLedgerTransaction>> objects;
        for (int count = below(round % 20 == 0 ? 200 : 20); count > 0; --count) {
            movements.push_back(movements.empty() || !oneIn(5) ? movement() : movements.back());
            objects.push_back(object(movements.back()));
        }
        Range range;
        std::vector<Dictionary::Entry> entries;
        if (oneIn(2)) {
            range.start = below(40);
            entries.emplace_back("startDate", Date{*range.start * 0.5});
        }
        if (oneIn(2)) {
            range.end = below(40);
            entries.emplace_back("endDate", Date{*range.end * 0.5});
        }
        const Twin twin(movements, range);
        const auto statement = TKStatement::initWithTransactionsMetadata(objects, Dictionary::make(entries));

        ASSERT_NO_FATAL_FAILURE(expectSameLines(*statement->items(), twin.lines, objects));
        std::string names;
        for (const int name : twin.names())
            names += (names.empty() ? "" : ", ") + spellings[static_cast<std::size_t>(name)];
        ASSERT_EQ(statement->tagNames()->editableString(), names);

        const std::size_t outstanding = twin.outstandingCount();
        ASSERT_NO_FATAL_FAILURE(expectSameLines(
            *statement->outstandingItems(),
            {twin.lines.end() - static_cast<std::ptrdiff_t>(outstanding), twin.lines.end()}, objects));

        const auto groups = twin.groups();
        const auto statements = statement->byPrimaryTag();
        ASSERT_EQ(statements->count(), groups.size());
        for (std::size_t group = 0; group < groups.size(); ++group) {
            std::vector<Line> lines;
            std::int64_t balance = 0;
            for (const std::size_t index : groups[group])
                lines.push_back({index, balance += movements[index].cents.value_or(0)});
            ASSERT_NO_FATAL_FAILURE(expectSameLines(*(*statements)[group].items(), lines, objects));
        }
    }
}

} // namespace
} // namespace estatebook
