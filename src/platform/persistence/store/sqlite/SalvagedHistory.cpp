// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/SalvagedHistory.hpp"

#include "platform/system/Clock.hpp"

#include <algorithm>
#include <vector>

namespace estatebook::platform::sqlite {

namespace {

// Where cells stand.
constexpr std::size_t Number = 0;
constexpr std::size_t FirstKey = 6;
constexpr std::size_t LastKey = 7;
constexpr std::size_t EntryCommit = 1;
constexpr std::size_t EntryKey = 4;

} // namespace

void SalvagedHistory::mend(RowKey lastRow) {
    RowKey lastKey = lastRow;
    for (const auto& [number, cells] : commits_) lastKey = std::max(lastKey, cells[LastKey].integer);
    const LostSaves lost = sortOutEntries(lastKey);
    for (const auto& [number, entries] : lost) {
        lose_("The save " + std::to_string(number) + ": who made it and when is lost; " +
              std::to_string(entries) +
              (entries == 1 ? " entry of the journal is" : " entries of the journal are") +
              " kept under one of this salvage");
        commits_.emplace(number, commitOf(number, NoRow));
    }
    lastKey = std::max(lastKey, mendKeys(lost));
    numberAnew();
    const std::int64_t last = commits_.empty() ? 0 : commits_.rbegin()->first;
    commits_.emplace(last + 1, commitOf(last + 1, lastKey));
}

// No key is ever given twice, also when nobody remembers who had it.
SalvagedHistory::LostSaves SalvagedHistory::sortOutEntries(RowKey& lastKey) {
    LostSaves lost;
    const RowKey lastKnown = lastKey;
    std::erase_if(journal_, [&](const auto& each) {
        const std::int64_t commit = each.second[EntryCommit].integer;
        const RowKey key = each.second[EntryKey].integer;
        if (!commits_.contains(commit)) {
            ++lost[commit];
            lastKey = std::max(lastKey, key);
        } else if (key > lastKnown) {
            lose_("The entry " + std::to_string(each.first) + " of the journal: it is of a row " +
                  std::to_string(key) + ", and no such key was given");
            return true;
        }
        return false;
    });
    return lost;
}

RowKey SalvagedHistory::mendKeys(const LostSaves& lost) {
    RowKey last = NoRow;
    for (auto& [number, cells] : commits_) {
        std::int64_t& first = cells[FirstKey].integer;
        RowKey& own = cells[LastKey].integer;
        if (first <= last || own < first - 1) {
            if (!lost.contains(number))
                lose_("The save " + std::to_string(number) + ": which rows it added cannot be told");
            first = std::max(last, own) + 1;
            own = first - 1;
        }
        last = own;
    }
    return last;
}

void SalvagedHistory::numberAnew() {
    std::map<std::int64_t, std::int64_t> numbers;
    Rows commits;
    for (auto& [former, cells] : commits_) {
        const std::int64_t number = std::ssize(commits) + 1;
        numbers.emplace(former, number);
        cells[Number] = Cell::of(number);
        commits.emplace(number, std::move(cells));
    }
    commits_ = std::move(commits);
    std::vector<Cells> entries;
    for (auto& [former, cells] : journal_) {
        cells[EntryCommit] = Cell::of(numbers.at(cells[EntryCommit].integer));
        entries.push_back(std::move(cells));
    }
    std::ranges::stable_sort(entries, {}, [](const Cells& cells) {
        return std::pair(cells[EntryCommit].integer, cells[EntryKey].integer);
    });
    journal_.clear();
    for (Cells& cells : entries) {
        const std::int64_t number = std::ssize(journal_) + 1;
        cells[Number] = Cell::of(number);
        journal_.emplace(number, std::move(cells));
    }
}

Cells SalvagedHistory::commitOf(std::int64_t number, RowKey lastKey) {
    const CommitToken token = CommitToken::random();
    Cells cells{
        Cell::of(number),
        Cell::blob(room_.keep({reinterpret_cast<const char*>(token.bytes.data()), token.bytes.size()})),
        encodeDate(Clock::now(), room_),
        Cell::text(origin_.author),
        Cell::text(origin_.program),
        Cell::text(origin_.command),
        Cell::of(lastKey + 1),
        Cell::of(lastKey)};
    form_.requireForm(form_.tables().commits, cells);
    return cells;
}

} // namespace estatebook::platform::sqlite
