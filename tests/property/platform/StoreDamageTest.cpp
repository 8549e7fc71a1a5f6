// SPDX-License-Identifier: MIT

// Books that were damaged in every way: by disks, by people, by other programs. Either the damage is told, or what the book holds
// is what it held; no row ever comes out with other values; and telling so takes bounded work.

#include "support/Effort.hpp"
#include "support/Platter.hpp"
#include "support/SavedHistory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <random>
#include <set>
#include <sstream>

namespace estatebook::platform {
namespace {

using test::DiskContent;
using test::MemoryDisk;
using test::Platter;
using test::SavedHistory;

/// What a book is asked for, bit by bit.
struct Answers {
    std::set<std::string> rows;
    std::string content;
    std::string members;
    std::string sums;
};

/// Calls with each to-many relationship there is and the owners it may have.
template <class Visitor>
void eachToMany(const Store& store, RowKey last, Visitor visit) {
    std::vector<RowKey> owners;
    for (RowKey key = 1; key <= last; ++key) owners.push_back(key);
    for (const RowShape& shape : store.shapes().all())
        for (const RelationshipDescription& each : shape.entity().relationships())
            if (each.kind != PropertyKind::ToOne) visit(each, owners);
}

/// The members of all owners; none when an error was told.
std::optional<std::string> membersOf(const Store& store, RowKey last) {
    std::ostringstream text;
    bool isTold = false;
    eachToMany(store, last, [&](const RelationshipDescription& toMany, const std::vector<RowKey>& owners) {
        const auto members = store.members(toMany, owners);
        isTold = isTold || !members;
        if (!members) return;
        for (const auto& keys : *members) {
            for (const RowKey key : keys) text << key << ' ';
            text << ',';
        }
    });
    return isTold ? std::nullopt : std::optional(text.str());
}

/// The sums of all decimals over all members.
std::optional<std::string> sumsOf(const Store& store, RowKey last) {
    std::ostringstream text;
    bool isTold = false;
    eachToMany(store, last, [&](const RelationshipDescription& toMany, const std::vector<RowKey>& owners) {
        for (const AttributeDescription& attribute : toMany.destinationEntity->attributes()) {
            if (attribute.isTransient || attribute.type != AttributeType::Decimal) continue;
            for (const RowKey owner : owners) {
                const auto sum = store.sum(toMany, owner, attribute.name);
                isTold = isTold || !sum;
                if (sum) text << *sum << ' ';
            }
        }
    });
    return isTold ? std::nullopt : std::optional(text.str());
}

/// All rows that can be read, whatever is wrong with others.
std::set<std::string> rowsOf(const Store& store) {
    std::set<std::string> rows;
    for (const RowShape& shape : store.shapes().all()) {
        if (shape.entity().superentity()) continue;
        static_cast<void>(store.fetchRows(shape.entity(), {}, [&](const Row& row) {
            std::ostringstream text;
            test::describe(text, row);
            rows.insert(text.str());
        }));
    }
    return rows;
}

std::string anyBytes(std::size_t count, std::mt19937_64& random) {
    std::string bytes(count, '\0');
    for (char& each : bytes) each = static_cast<char>(random());
    return bytes;
}

constexpr std::size_t PageSize = 4096;

/// What damages are made of.
struct Damage {
    const SavedHistory& history;
    MemoryDisk& disk;
    DiskContent& content;
    std::string& book;
    std::mt19937_64& random;

    [[nodiscard]] std::size_t below(std::size_t bound) const { return random() % bound; }
    [[nodiscard]] std::size_t anyPage() const { return below(book.size() / PageSize) * PageSize; }

    void bit() const {
        char& byte = book[below(book.size())];
        byte = static_cast<char>(byte ^ (1 << below(8)));
    }
    void headBit() const {
        char& byte = book[below(100)];
        byte = static_cast<char>(byte ^ (1 << below(8)));
    }
    /// Where pages tell what is in them.
    void pageHeadByte() const { book[anyPage() + below(64)] = static_cast<char>(random()); }
    void bytes() const {
        for (auto count = 1 + below(8); count > 0; --count)
            book[below(book.size())] = static_cast<char>(random());
    }
    void sector() const {
        const std::size_t place = below(book.size() / 512) * 512;
        switch (below(3)) {
        case 0:
            book.replace(place, 512, std::string(512, '\0'));
            break;
        case 1:
            book.replace(place, 512, anyBytes(512, random));
            break;
        default:
            book.replace(place, 512, book.substr(below(book.size() / 512) * 512, 512));
        }
    }
    void page() const {
        book.replace(anyPage(), PageSize,
                     below(2) == 0 ? std::string(PageSize, '\0') : anyBytes(PageSize, random));
    }
    void swappedPages() const {
        const std::size_t first = anyPage();
        const std::size_t second = anyPage();
        const std::string kept = book.substr(first, PageSize);
        book.replace(first, PageSize, book, second, PageSize);
        book.replace(second, PageSize, kept);
    }
    void truncation() const { book.resize(below(2) == 0 ? below(book.size()) : anyPage()); }
    void appendix() const { book += anyBytes(1 + below(2 * PageSize), random); }
    /// A page that a disk forgot to write.
    void stalePage() const {
        const auto& states = history.states();
        const std::string earlier = bookAfter(states[below(states.size() - 1)].acknowledged);
        const std::size_t place = below(earlier.size() / PageSize) * PageSize;
        book.replace(place, PageSize, earlier, place, PageSize);
    }
    void strayJournal() const {
        std::string journal = anyBytes(512 + below(3 * PageSize), random);
        if (below(2) == 0) {
            constexpr std::array<unsigned char, 8> Magic{0xd9, 0xd5, 0x05, 0xf9, 0x20, 0xa1, 0x63, 0xd7};
            std::copy(Magic.begin(), Magic.end(), journal.begin());
        }
        content[std::string(test::HistoryPath) + "-journal"] = journal;
    }
    /// The journal of a save that is over.
    void earlierJournal() const {
        const auto& operations = history.operations();
        DiskContent earlier;
        for (int attempt = 0; attempt < 20 && earlier[journalPath()].empty(); ++attempt)
            earlier = contentAfter(below(operations.size()));
        content[journalPath()] = earlier[journalPath()];
    }
    void foreignFile() const {
        static const std::array<std::string, 7> Heads{
            "",           "SQLite format 3", "%PDF-1.7\n",
            "PK\x03\x04", "\x89PNG\r\n",     "<?xml version=\"1.0\"?>",
            "bplist00"};
        book = Heads[below(Heads.size())] + anyBytes(below(20'000), random);
    }
    void foreignDataBase() const {
        book.clear();
        sql("CREATE TABLE songs(title); INSERT INTO songs VALUES('Summer')");
    }
    void schema() const {
        static const std::array<const char*, 9> Changes{
            "CREATE TRIGGER t AFTER INSERT ON Tenure BEGIN DELETE FROM Tenure; END",
            "CREATE TRIGGER t AFTER UPDATE ON book_sum BEGIN UPDATE Account SET name = 'Eve'; END",
            "CREATE VIEW v AS SELECT 1",
            "CREATE TABLE songs(title)",
            "CREATE INDEX i ON Tenure(startDate)",
            "ALTER TABLE Tenure ADD COLUMN secret",
            "ALTER TABLE Account RENAME COLUMN name TO title",
            "DROP INDEX \"Tenure.property\"",
            "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET rootpage = 2 + abs(random() % 20) "
            "WHERE rowid = 1 + abs(random() % 30)"};
        sql(Changes[below(Changes.size())]);
    }
    void rows() const {
        static const std::array<const char*, 12> Changes{
            "UPDATE Account SET name = name || 'x'",
            "UPDATE \"Transaction\" SET amount = '1000'",
            "UPDATE Tenure SET property = NULL",
            "UPDATE Account SET _version = _version + 1",
            "UPDATE Account SET _key = _key + 1000",
            "DELETE FROM Account WHERE _key = (SELECT max(_key) FROM Account)",
            "DELETE FROM book_commit WHERE number = 2",
            "UPDATE book_commit SET token = randomblob(16)",
            "UPDATE book_journal SET current = 'x'",
            "INSERT INTO book_metadata VALUES('a', 'b', 1)",
            "UPDATE book_sum SET rows = rows + 1 WHERE name = 'Account'",
            "UPDATE book_header SET identifier = 'x'"};
        sql(Changes[below(Changes.size())]);
    }

private:
    static std::string journalPath() { return std::string(test::HistoryPath) + "-journal"; }
    [[nodiscard]] DiskContent contentAfter(std::size_t operations) const {
        Platter platter;
        for (std::size_t index = 0; index < operations; ++index) platter.apply(history.operations()[index]);
        return platter.content();
    }
    [[nodiscard]] std::string bookAfter(std::size_t operations) const {
        return contentAfter(operations)[std::string(test::HistoryPath)];
    }
    /// As a person with another program would do it.
    void sql(const char* text) const {
        const std::string path(test::HistoryPath);
        disk.load(content);
        sqlite3* database = nullptr;
        if (sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, disk.name()) == SQLITE_OK)
            sqlite3_exec(database, text, nullptr, nullptr, nullptr);
        sqlite3_close(database);
        content = disk.content();
    }
};

struct Kind {
    const char* name;
    void (Damage::*make)() const;
    /// Whether rows may be those of an earlier time, which only the check can tell; and when it is the whole book that is of
    /// an earlier time, nobody.
    bool mayBringBack = false;
};

constexpr std::array<Kind, 16> Kinds{{{"bit", &Damage::bit},
                                      {"bit of the head", &Damage::headBit},
                                      {"byte of a page's head", &Damage::pageHeadByte},
                                      {"bytes", &Damage::bytes},
                                      {"sector", &Damage::sector},
                                      {"page", &Damage::page},
                                      {"swapped pages", &Damage::swappedPages},
                                      {"truncation", &Damage::truncation},
                                      {"appendix", &Damage::appendix},
                                      {"stale page", &Damage::stalePage, true},
                                      {"stray journal", &Damage::strayJournal},
                                      {"earlier journal", &Damage::earlierJournal, true},
                                      {"foreign file", &Damage::foreignFile},
                                      {"foreign data base", &Damage::foreignDataBase},
                                      {"schema", &Damage::schema},
                                      {"rows", &Damage::rows}}};

class Damages {
public:
    Damages(std::uint64_t seed, std::uint64_t cases) : seed_(seed), random_(seed), wanted_(cases) {}

    void run() {
        while (cases_ < wanted_ && !testing::Test::HasFailure()) {
            const SavedHistory history(random_(), 10);
            const Answers sound = soundAnswers(history);
            for (int each = 0; each < 200 && cases_ < wanted_ && !testing::Test::HasFailure(); ++each)
                damage(history, sound);
        }
        std::printf(
            "%llu damaged books: %llu refused, %llu told by the check, %llu while read, %llu as they were; "
            "members differed in %llu and sums in %llu until the check (seed %llu)\n",
            number(cases_), number(refused_), number(told_), number(unread_), number(same_),
            number(wrongMembers_), number(wrongSums_), number(seed_));
    }

private:
    static unsigned long long number(std::uint64_t number) { return number; }

    Answers soundAnswers(const SavedHistory& history) {
        disk_.load(history.disk());
        disk_.calls = 0;
        const auto store =
            *SQLiteStore::open(std::string(test::HistoryPath), test::bookModel(), {.fileSystem = &disk_});
        EXPECT_TRUE(store->check()->empty());
        last_ = *store->lastKey();
        const Answers answers{rowsOf(*store), *test::contentOf(*store), membersOf(*store, last_).value(),
                              sumsOf(*store, last_).value()};
        bound_ = 100 * disk_.calls;
        return answers;
    }

    void damage(const SavedHistory& history, const Answers& sound) {
        const Kind& kind = Kinds[random_() % Kinds.size()];
        SCOPED_TRACE("seed " + std::to_string(seed_) + ", case " + std::to_string(cases_) + ": " + kind.name);
        ++cases_;
        DiskContent content = history.disk();
        std::string& book = content[std::string(test::HistoryPath)];
        const Damage damage{history, disk_, content, book, random_};
        (damage.*kind.make)();
        disk_.load(content);
        disk_.calls = 0;
        disk_.fault = [&](MemoryDisk::Call) {
            return disk_.calls > bound_ ? MemoryDisk::Fault::Fails : MemoryDisk::Fault::None;
        };
        expectToldOrSame(kind, history, sound);
        disk_.fault = nullptr;
        EXPECT_LE(disk_.calls, bound_) << "it takes too long";
    }

    void expectToldOrSame(const Kind& kind, const SavedHistory& history, const Answers& sound) {
        const auto access = random_() % 2 == 0 ? SQLiteStore::Access::Read : SQLiteStore::Access::Write;
        const auto store = SQLiteStore::open(std::string(test::HistoryPath), test::bookModel(),
                                             {.access = access, .fileSystem = &disk_});
        if (!store) {
            ++refused_;
            EXPECT_THAT(store.error().message, testing::StartsWith(std::string(test::HistoryPath) + ": "));
            return;
        }
        const std::set<std::string> rows = rowsOf(**store);
        EXPECT_TRUE(kind.mayBringBack || std::ranges::includes(sound.rows, rows)) << "a row has other values";
        const auto content = test::contentOf(**store);
        const auto members = membersOf(**store, last_);
        const auto sums = sumsOf(**store, last_);
        const auto findings = (*store)->check();
        const bool isTold = !findings || !findings->empty();
        const bool isRead = content && members && sums;
        if (content && *content == sound.content) {
            wrongMembers_ += members && *members != sound.members ? 1 : 0;
            wrongSums_ += sums && *sums != sound.sums ? 1 : 0;
        }
        if (isTold) {
            ++told_;
        } else if (!isRead) {
            ++unread_;
        } else {
            ++same_;
            if (kind.mayBringBack && *content != sound.content) {
                EXPECT_TRUE(std::ranges::count(history.states(), *content, &SavedHistory::State::content))
                    << "it holds a save in part";
                return;
            }
            EXPECT_EQ(sound.content, *content);
            EXPECT_EQ(sound.members, *members);
            EXPECT_EQ(sound.sums, *sums);
        }
    }

    std::uint64_t seed_;
    std::mt19937_64 random_;
    std::uint64_t wanted_;
    std::uint64_t cases_ = 0;
    std::uint64_t refused_ = 0;
    std::uint64_t told_ = 0;
    std::uint64_t unread_ = 0;
    std::uint64_t same_ = 0;
    // Of books whose rows are as they were, what a wrong index gave until the check told of it.
    std::uint64_t wrongMembers_ = 0;
    std::uint64_t wrongSums_ = 0;
    std::uint64_t bound_ = 0;
    RowKey last_ = NoRow;
    MemoryDisk disk_;
};

TEST(StoreDamageTest, DamageIsToldOrDoesNoHarm) {
    Damages(test::anySeed(), test::effort("ESTATEBOOK_DAMAGES", 2'000, 300)).run();
}

} // namespace
} // namespace estatebook::platform
