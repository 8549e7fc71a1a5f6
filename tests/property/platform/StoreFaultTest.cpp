// SPDX-License-Identifier: MIT

// Each call that a save makes of the disk, and each piece of memory that it asks for, fails: once, or from then on. The save
// tells so by an error, and by the right one; a save that is said to have landed stays, also when the power fails then; a
// save that is not has left nothing. When the trouble is over, the next save works.

#include "support/Effort.hpp"
#include "support/FailingAllocator.hpp"
#include "support/Platter.hpp"
#include "support/StoreDescription.hpp"
#include "support/StoreScript.hpp"

#include "platform/persistence/store/StoreReading.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <optional>
#include <random>

namespace estatebook::platform {
namespace {

using test::DiskContent;
using test::DiskOperation;
using test::FailingAllocator;
using test::MemoryDisk;
using test::Platter;
using testing::HasSubstr;
using testing::Not;
using Fault = MemoryDisk::Fault;

const std::string Path = "/book.estatebook";

/// Something that goes wrong, if it is ever come to.
class Trouble {
public:
    virtual ~Trouble() = default;
    virtual void begin(MemoryDisk& disk) = 0;
    virtual void end(MemoryDisk& disk) = 0;
    [[nodiscard]] virtual bool came() const = 0;
};

class DiskTrouble final : public Trouble {
public:
    DiskTrouble(Fault fault, bool isLasting, std::uint64_t at)
        : fault_(fault), isLasting_(isLasting), left_(at) {}
    void begin(MemoryDisk& disk) override {
        disk.fault = [this](MemoryDisk::Call call) {
            const bool concerns = fault_ == Fault::Fails || call == MemoryDisk::Call::Write;
            if (!concerns || (left_ > 0 && --left_ > 0) || (came_ && !isLasting_)) return Fault::None;
            came_ = true;
            return fault_;
        };
    }
    void end(MemoryDisk& disk) override { disk.fault = nullptr; }
    [[nodiscard]] bool came() const override { return came_; }

private:
    Fault fault_;
    bool isLasting_;
    std::uint64_t left_;
    bool came_ = false;
};

class MemoryTrouble final : public Trouble {
public:
    MemoryTrouble(FailingAllocator& memory, bool isLasting, std::uint64_t at)
        : memory_(memory), isLasting_(isLasting), at_(at) {}
    void begin(MemoryDisk&) override {
        memory_.failAt(at_, isLasting_ ? FailingAllocator::Fault::FromThenOn : FailingAllocator::Fault::Once);
    }
    void end(MemoryDisk&) override { memory_.recover(); }
    [[nodiscard]] bool came() const override { return memory_.hasFailed(); }

private:
    FailingAllocator& memory_;
    bool isLasting_;
    std::uint64_t at_;
};

/// A book, two saves that are to come, and what the book holds before and after each.
struct Scene {
    DiskContent disk;
    std::vector<StoreChanges> saves;
    std::vector<std::string> contents;

    explicit Scene(std::uint64_t seed) {
        MemoryDisk made;
        test::StoreScript script(seed, test::StoreScript::Manner::Sound);
        const auto twin = InMemoryStore::make(test::bookModel());
        const auto store = *SQLiteStore::create(Path, test::bookModel(), {.fileSystem = &made});
        // More than a page holds, which is read in another way.
        StoreChanges changes = test::newChanges();
        changes.insertions = {
            test::RowOf("Tenant", 1).with(keys::name, String::make(std::string(9000, 'n')))};
        for (int count = 0; count < 6;) {
            const auto taken = twin->save(changes);
            if (taken && taken->landed()) {
                if (count++ < 4)
                    EXPECT_TRUE(store->save(changes)->landed());
                else
                    saves.push_back(changes);
                if (count >= 4) contents.push_back(*test::contentOf(*twin));
            }
            changes = script.changes(*twin);
            if (count == 4) touchTheLongOne(*twin, changes);
        }
        disk = made.content();
    }

private:
    static void touchTheLongOne(const Store& twin, StoreChanges& changes) {
        const RowKey key = 1;
        const auto rows = *twin.rows(test::entityNamed("Tenant"), {&key, 1});
        const auto isTouched = [&](const auto& each) { return each.key == key; };
        if (rows.empty() || std::ranges::any_of(changes.updates, isTouched) ||
            std::ranges::any_of(changes.deletions, isTouched))
            return;
        changes.updates.push_back(
            test::UpdateOf("Tenant", key, rows.front().version).with(keys::addressBookID, String::make("7")));
    }
};

/// What trouble is tried out on.
class Stage {
public:
    MemoryDisk disk;

    void set(const DiskContent& content) {
        disk.load(content);
        content_ = content;
        operations_.clear();
        disk.log = &operations_;
    }
    [[nodiscard]] StoreResult<Ref<SQLiteStore>> open() {
        return SQLiteStore::open(Path, test::bookModel(), {.fileSystem = &disk});
    }
    void expectContent(const Store& store, const std::string& expected) {
        const auto content = test::contentOf(store);
        ASSERT_TRUE(content) << content.error().message;
        EXPECT_EQ(expected, *content);
    }
    /// That the book holds this, also for somebody else, and also when the power fails now.
    void expectLasting(const std::string& expected, std::mt19937_64& random) {
        Platter platter(content_);
        for (const DiskOperation& operation : operations_) platter.apply(operation);
        for (int each = 0; each < 3 && !testing::Test::HasFailure(); ++each) {
            other_.load(platter.afterPowerLoss(random));
            const auto store = SQLiteStore::open(Path, test::bookModel(), {.fileSystem = &other_});
            ASSERT_TRUE(store) << store.error().message;
            expectContent(**store, expected);
        }
    }

private:
    DiskContent content_;
    std::vector<DiskOperation> operations_;
    MemoryDisk other_;
};

/// One line that blames neither the book nor the changes.
void expectTrouble(const StoreError& error) {
    EXPECT_THAT(error.message, HasSubstr(Path));
    EXPECT_THAT(error.message, Not(HasSubstr("\n")));
    EXPECT_NE(StoreErrorCode::Damaged, error.code) << error.message;
    EXPECT_NE(StoreErrorCode::InvalidChange, error.code) << error.message;
}

struct Tally {
    int cases = 0;
    int landed = 0;
    int unknown = 0;
};

/// Half of the time the book is held for reading, and has been read.
void holdByChance(std::optional<StoreReading>& held, const Ref<SQLiteStore>& store, std::mt19937_64& random) {
    if (random() % 2 != 0) return;
    held.emplace(store);
    static_cast<void>(test::contentOf(*store));
}

/// Whether the trouble came at all.
bool saveWith(Trouble& trouble, Stage& stage, const Scene& scene, std::mt19937_64& random, Tally& tally) {
    stage.set(scene.disk);
    auto store = *stage.open();
    std::optional<StoreReading> held;
    holdByChance(held, store, random);
    trouble.begin(stage.disk);
    const auto outcome = store->save(scene.saves[0]);
    auto told = store->hasLanded(scene.saves[0].token);
    trouble.end(stage.disk);
    if (!trouble.came()) return false;
    ++tally.cases;

    const auto landed = store->hasLanded(scene.saves[0].token);
    EXPECT_TRUE(landed) << landed.error().message;
    if (!landed) return true;
    if (outcome) {
        EXPECT_TRUE(outcome->landed());
        EXPECT_TRUE(*landed) << "it was acknowledged";
    } else {
        expectTrouble(outcome.error());
        if (outcome.error().code == StoreErrorCode::OutcomeUnknown)
            ++tally.unknown;
        else
            EXPECT_FALSE(*landed) << "it was said to have changed nothing";
    }
    if (told) {
        EXPECT_EQ(*landed, *told);
    }
    tally.landed += *landed ? 1 : 0;

    const std::size_t next = *landed ? 1 : 0;
    stage.expectContent(*store, scene.contents[next]);
    stage.expectLasting(scene.contents[next], random);
    for (std::size_t index = next; index < 2; ++index) {
        const auto again = store->save(scene.saves[index]);
        EXPECT_TRUE(again && again->landed()) << (again ? "a conflict" : again.error().message);
    }
    const auto findings = store->check();
    EXPECT_TRUE(findings && findings->empty());
    stage.expectLasting(scene.contents[2], random);
    return true;
}

/// Whether opening, reading and checking tell of the trouble or give what they give without it.
bool readWith(Trouble& trouble, Stage& stage, const Scene& scene, std::mt19937_64& random, Tally& tally) {
    stage.set(scene.disk);
    trouble.begin(stage.disk);
    {
        const auto store = stage.open();
        std::optional<StoreReading> held;
        if (store) {
            holdByChance(held, *store, random);
            const auto content = test::contentOf(**store);
            if (content)
                EXPECT_EQ(scene.contents[0], *content);
            else
                expectTrouble(content.error());
            const auto findings = (*store)->check();
            if (findings)
                EXPECT_EQ(std::vector<std::string>(), *findings);
            else
                expectTrouble(findings.error());
        } else {
            expectTrouble(store.error());
        }
        trouble.end(stage.disk);
        if (store) stage.expectContent(**store, scene.contents[0]);
    }
    if (!trouble.came()) return false;
    ++tally.cases;
    const auto store = stage.open();
    EXPECT_TRUE(store) << store.error().message;
    if (store) stage.expectContent(**store, scene.contents[0]);
    stage.expectLasting(scene.contents[0], random);
    return true;
}

/// Whether a book that could not be made is not there, or whole.
bool createWith(Trouble& trouble, Stage& stage, const Scene&, std::mt19937_64&, Tally& tally) {
    stage.set({});
    trouble.begin(stage.disk);
    const bool isMade = [&] {
        const auto store = SQLiteStore::create(Path, test::bookModel(), {.fileSystem = &stage.disk});
        if (!store) expectTrouble(store.error());
        return static_cast<bool>(store);
    }();
    trouble.end(stage.disk);
    if (!trouble.came()) return false;
    ++tally.cases;
    tally.landed += isMade ? 1 : 0;
    EXPECT_TRUE(!isMade || stage.disk.isTaken(Path));
    const auto store = stage.disk.isTaken(Path)
                           ? stage.open()
                           : SQLiteStore::create(Path, test::bookModel(), {.fileSystem = &stage.disk});
    EXPECT_TRUE(store) << store.error().message;
    if (!store) return true;
    const auto findings = (*store)->check();
    EXPECT_TRUE(findings && findings->empty());
    EXPECT_EQ(NoRow, *(*store)->lastKey());
    return true;
}

using Act = bool (*)(Trouble&, Stage&, const Scene&, std::mt19937_64&, Tally&);

/// What is done, and how often it is tried with random books.
struct Play {
    const char* name;
    Act act;
};

class StoreFaultTest : public testing::TestWithParam<Play> {
protected:
    /// Lets the trouble come earlier and later until it does not come any more.
    template <class Make>
    void playThrough(const std::string& name, std::uint64_t step, const Scene& scene, Stage& stage,
                     Make make) {
        for (std::uint64_t at = 1; !HasFailure(); at += step) {
            SCOPED_TRACE("seed " + std::to_string(seed_) + ", " + name + " at " + std::to_string(at));
            const std::unique_ptr<Trouble> trouble = make(at);
            if (!GetParam().act(*trouble, stage, scene, random_, tally_)) return;
        }
    }
    void tell(const char* what) const {
        std::printf("%s, %s: %d cases, %d landed, %d of unknown outcome (seed %llu)\n", GetParam().name, what,
                    tally_.cases, tally_.landed, tally_.unknown, static_cast<unsigned long long>(seed_));
    }

    const std::uint64_t seed_ = test::anySeed();
    std::mt19937_64 random_{seed_};
    Tally tally_;
};

TEST_P(StoreFaultTest, EveryCallOfTheDiskMayFail) {
    const Scene scene(seed_);
    Stage stage;
    for (const bool isLasting : {false, true})
        for (const Fault fault : {Fault::Fails, Fault::Half, Fault::Full})
            playThrough(
                "fault " + std::to_string(static_cast<int>(fault)) + (isLasting ? " for good" : ""), 1, scene,
                stage, [&](std::uint64_t at) { return std::make_unique<DiskTrouble>(fault, isLasting, at); });
    tell("disk");
    EXPECT_GT(tally_.cases, 50);
}

TEST_P(StoreFaultTest, EveryPieceOfMemoryMayBeMissing) {
    FailingAllocator memory;
    const Scene scene(seed_);
    Stage stage;
    const std::uint64_t step = test::effort("ESTATEBOOK_MEMORY_STEP", 10, 100);
    for (const bool isLasting : {false, true})
        playThrough(isLasting ? "no memory" : "no memory once", step, scene, stage, [&](std::uint64_t at) {
            return std::make_unique<MemoryTrouble>(memory, isLasting, at + random_() % step);
        });
    tell("memory");
    EXPECT_GT(tally_.cases, 4);
}

INSTANTIATE_TEST_SUITE_P(, StoreFaultTest,
                         testing::Values(Play{"Save", saveWith}, Play{"Read", readWith},
                                         Play{"Create", createWith}),
                         [](const auto& info) { return info.param.name; });

} // namespace
} // namespace estatebook::platform
