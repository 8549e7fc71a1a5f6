// SPDX-License-Identifier: MIT

// Two contexts that edit the same rows at random and save with random policies. The twin is a plain table of what either one
// has read, holds and has deleted, and of what the store should hold, merged property by property.

#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Exception.hpp"
#include "store/TKProperty.hpp"
#include "support/StoreKinds.hpp"
#include "tenure/TKTenure.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using estatebook::test::bookModel;
using estatebook::test::StoreKind;
using estatebook::test::storeKinds;

/// What a letting holds: its amounts, and the number of its property. 0 is none.
constexpr std::size_t PropertyCount = 3;
using Record = std::array<int, PropertyCount>;
constexpr std::size_t Link = 2;

struct StoredRecord {
    Record values;
    int version;
};
using Table = std::map<std::uint64_t, StoredRecord>;

constexpr MergePolicy Policies[] = {MergePolicy::Error, MergePolicy::StoreTrump, MergePolicy::ObjectTrump,
                                    MergePolicy::Overwrite, MergePolicy::Rollback};

/// A context, and what it should hold.
class Desk {
public:
    explicit Desk(const Ref<Store>& store) {
        auto coordinator = makeRef<PersistentStoreCoordinator>(bookModel());
        coordinator->addPersistentStore(Ref<Store>(store));
        context->setPersistentStoreCoordinator(std::move(coordinator));
        context->setUndoManager(nullptr);
    }

    struct Twin {
        Ref<TKTenure> object;
        StoredRecord read;
        Record held;
        bool isDeleted = false;
        bool isTouched = false;
        [[nodiscard]] bool isChanged() const { return isDeleted || held != read.values; }
    };

    /// Reads what is new.
    void look(const Table& stored) {
        flats = context->fetchAll<TKProperty>("Property");
        for (const auto& each : context->fetchAll<TKTenure>("Tenure")) {
            if (each->isInserted() || twins.contains(each->creationNumber())) continue;
            ASSERT_TRUE(stored.contains(each->creationNumber()));
            const StoredRecord& row = stored.at(each->creationNumber());
            twins.emplace(each->creationNumber(), Twin{each, row, row.values});
        }
    }
    static Record read(const TKTenure& tenure, const std::vector<Ref<TKProperty>>& flats) {
        const auto amount = [](const std::optional<Decimal>& value) {
            return value ? static_cast<int>(value->integerValue()) : 0;
        };
        const auto flat =
            std::ranges::find(flats, tenure.property(), [](const auto& each) { return each.get(); });
        return {amount(tenure.rentalAmount()), amount(tenure.bondAmount()),
                flat == flats.end() ? 0 : static_cast<int>(flat - flats.begin()) + 1};
    }
    void write(TKTenure& tenure, std::size_t property, int value) const {
        const auto amount = value == 0 ? std::nullopt : std::optional(Decimal(value));
        if (property == 0)
            tenure.setRentalAmount(amount);
        else if (property == 1)
            tenure.setBondAmount(amount);
        else
            tenure.setProperty(value == 0 ? nullptr : flats[static_cast<std::size_t>(value) - 1].get());
    }
    void expectHeld() const {
        for (const auto& [number, twin] : twins) {
            EXPECT_EQ(twin.object->isDeleted(), twin.isDeleted);
            if (twin.isDeleted) continue;
            EXPECT_EQ(read(*twin.object, flats), twin.held) << "letting " << number;
            EXPECT_TRUE(twin.isTouched || !twin.object->hasChanges()) << "letting " << number;
            // Others may have moved it unbeknown to it, and members that were read since then leave it out.
            if (twin.held[Link] != twin.read.values[Link]) expectMember(*twin.object);
        }
        for (const auto& each : inserted) expectMember(*each);
        for (const auto& flat : flats)
            for (const TKTenure& each : flat->tenures()) EXPECT_EQ(each.property(), flat.get());
    }
    static void expectMember(const TKTenure& tenure) {
        if (!tenure.property()) return;
        const auto isIt = [&](const TKTenure& each) { return &each == &tenure; };
        EXPECT_TRUE(std::ranges::any_of(tenure.property()->tenures(), isIt));
    }

    Ref<ManagedObjectContext> context = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
    std::vector<Ref<TKProperty>> flats;
    std::map<std::uint64_t, Twin> twins;
    std::vector<Ref<TKTenure>> inserted;
};

class MergeScript {
public:
    MergeScript(Ref<Store> store, std::uint64_t seed) : store_(std::move(store)), random_(seed) {
        Desk first(store_);
        for (std::size_t count = 0; count < PropertyCount; ++count)
            static_cast<void>(first.context->insertNewObject<TKProperty>("Property"));
        EXPECT_TRUE(first.context->save());
    }

    void run(std::size_t steps) {
        for (std::size_t step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
            Desk& desk = *desks_[below(desks_.size())];
            desk.look(stored_);
            doOnce(desk);
            desk.look(stored_);
            desk.expectHeld();
        }
    }

private:
    std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
    }
    Desk::Twin* anyTwin(Desk& desk) {
        std::vector<Desk::Twin*> all;
        for (auto& [number, twin] : desk.twins)
            if (!twin.isDeleted) all.push_back(&twin);
        return all.empty() ? nullptr : all[below(all.size())];
    }

    void doOnce(Desk& desk) {
        switch (below(10)) {
        case 0: {
            if (desk.twins.size() > 5) break;
            const auto made = desk.context->insertNewObject<TKTenure>("Tenure");
            desk.write(*made, Link, static_cast<int>(below(PropertyCount + 1)));
            desk.inserted.push_back(made);
            break;
        }
        default:
            if (Desk::Twin* twin = anyTwin(desk)) {
                const std::size_t property = below(PropertyCount);
                const int value = static_cast<int>(below(4));
                desk.write(*twin->object, property, value);
                twin->held[property] = value;
                twin->isTouched = true;
            }
            break;
        case 5:
            if (Desk::Twin* twin = anyTwin(desk); twin && below(3) == 0) {
                desk.context->deleteObject(*twin->object);
                twin->isDeleted = true;
            }
            break;
        case 6:
            if (Desk::Twin* twin = anyTwin(desk)) refresh(desk, *twin);
            break;
        case 7:
            desk.context->refreshObjectMergeChanges(*desk.flats[below(PropertyCount)], below(2) == 0);
            break;
        case 8:
        case 9:
            save(desk, Policies[below(std::size(Policies))]);
            break;
        }
    }

    void refresh(Desk& desk, Desk::Twin& twin) {
        const auto row = stored_.find(twin.object->creationNumber());
        const bool merges = below(2) == 0;
        if (row == stored_.end()) {
            // Nothing to read it from; a merge says so at once.
            if (merges) {
                EXPECT_THROW(desk.context->refreshObjectMergeChanges(*twin.object, true),
                             ObjectInaccessibleException);
            }
            return;
        }
        desk.context->refreshObjectMergeChanges(*twin.object, merges);
        for (std::size_t property = 0; property < PropertyCount; ++property)
            if (!merges || twin.held[property] == twin.read.values[property])
                twin.held[property] = row->second.values[property];
        twin.read = row->second;
        if (!merges) twin.isTouched = false;
    }

    void save(Desk& desk, MergePolicy policy) {
        std::set<std::uint64_t> conflicts;
        bool isLost = false;
        for (const auto& [number, twin] : desk.twins) {
            if (!twin.isChanged()) continue;
            const auto row = stored_.find(number);
            if (row != stored_.end() && row->second.version == twin.read.version) continue;
            if (row == stored_.end() && twin.isDeleted) continue; // both agree
            conflicts.insert(number);
            isLost = isLost || row == stored_.end();
        }
        const bool storeWins = policy == MergePolicy::StoreTrump || policy == MergePolicy::Rollback;
        const bool isRefused = !conflicts.empty() && (policy == MergePolicy::Error || (isLost && !storeWins));
        desk.context->setMergePolicy(policy);
        Ref<Error> error;
        const bool isSaved = desk.context->save(&error);
        ASSERT_EQ(isSaved, !isRefused) << (error ? error->localizedDescription() : "");
        if (isRefused) return expectConflicts(*error, conflicts);
        for (const std::uint64_t number : conflicts) settle(desk, number, policy);
        for (auto each = desk.twins.begin(); each != desk.twins.end();) {
            auto& [number, twin] = *each;
            twin.isTouched = false;
            if (!twin.isChanged()) {
                ++each;
            } else if (twin.isDeleted) {
                stored_.erase(number);
                each = desk.twins.erase(each);
            } else {
                twin.read = {twin.held, stored_.at(number).version + 1};
                stored_.at(number) = twin.read;
                ++each;
            }
        }
        for (const auto& made : desk.inserted) {
            const StoredRecord row{Desk::read(*made, desk.flats), 1};
            stored_.emplace(made->creationNumber(), row);
            desk.twins.emplace(made->creationNumber(), Desk::Twin{made, row, row.values});
        }
        desk.inserted.clear();
        EXPECT_FALSE(desk.context->hasChanges());
        expectStored();
    }
    static void expectConflicts(const Error& error, const std::set<std::uint64_t>& conflicts) {
        std::set<std::uint64_t> told;
        const auto list = error.userInfo()->find(ConflictListKey).as<Array>();
        ASSERT_TRUE(list);
        for (std::size_t index = 0; index < list->count(); ++index)
            told.insert(list->at(index).as<MergeConflict>()->sourceObject()->creationNumber());
        EXPECT_EQ(told, conflicts);
    }
    void settle(Desk& desk, std::uint64_t number, MergePolicy policy) {
        Desk::Twin& twin = desk.twins.at(number);
        const auto row = stored_.find(number);
        if (row == stored_.end()) {
            EXPECT_FALSE(twin.object->managedObjectContext());
            desk.twins.erase(number);
            return;
        }
        const StoredRecord& theirs = row->second;
        const bool objectWins = policy == MergePolicy::Overwrite || policy == MergePolicy::ObjectTrump;
        if (twin.isDeleted && objectWins) return;
        if (twin.isDeleted) twin.held = theirs.values;
        twin.isDeleted = false;
        for (std::size_t property = 0; property < PropertyCount; ++property) {
            const bool isMine = twin.held[property] != twin.read.values[property];
            const bool isTheirs = theirs.values[property] != twin.read.values[property];
            if (policy == MergePolicy::Rollback || (policy == MergePolicy::StoreTrump && isTheirs) ||
                (policy == MergePolicy::ObjectTrump && !isMine))
                twin.held[property] = theirs.values[property];
        }
        twin.read = theirs;
    }
    /// As somebody else reads it.
    void expectStored() {
        const Desk other(store_);
        const auto flats = other.context->fetchAll<TKProperty>("Property");
        std::map<std::uint64_t, Record> found;
        std::map<std::uint64_t, Record> expected;
        for (const auto& each : other.context->fetchAll<TKTenure>("Tenure"))
            found.emplace(each->creationNumber(), Desk::read(*each, flats));
        for (const auto& [number, row] : stored_) expected.emplace(number, row.values);
        EXPECT_EQ(found, expected);
    }

    Ref<Store> store_;
    std::mt19937_64 random_;
    Table stored_;
    std::array<std::unique_ptr<Desk>, 2> desks_{std::make_unique<Desk>(store_),
                                                std::make_unique<Desk>(store_)};
};

class MergeTwinTest : public testing::TestWithParam<StoreKind> {};

TEST_P(MergeTwinTest, EveryPropertyEndsAsThePolicySays) {
    const int scripts = GetParam().name == "InMemory" ? 3'000 : 200;
    std::random_device entropy;
    const std::uint64_t first = (std::uint64_t{entropy()} << 32) | entropy();
    std::printf("seeds from %llu\n", static_cast<unsigned long long>(first));
    for (int number = 0; number < scripts && !HasFailure(); ++number) {
        const std::uint64_t seed = first + static_cast<std::uint64_t>(number);
        SCOPED_TRACE("seed " + std::to_string(seed));
        const auto place = GetParam().place();
        MergeScript(Ref<Store>(&place->store()), seed).run(40);
    }
}

INSTANTIATE_TEST_SUITE_P(Stores, MergeTwinTest, testing::ValuesIn(storeKinds()),
                         [](const auto& kind) { return kind.param.name; });

} // namespace
} // namespace estatebook::platform
