// SPDX-License-Identifier: MIT

// Random scripts that link, move, order and delete, against a twin that knows only who belongs to whom.

#include "platform/persistence/MutableOrderedSet.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Set.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKProperty.hpp"
#include "store/TKPropertyNote.hpp"
#include "store/TKTenant.hpp"
#include "tags/TKTag.hpp"
#include "tenure/TKTenure.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <random>
#include <vector>

namespace estatebook::platform {
namespace {

class RelationshipTwinTest : public testing::Test {
protected:
    RelationshipTwinTest() {
        const std::uint64_t seed = std::random_device{}();
        std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
        random_.seed(seed);
    }
    std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
    }
    /// A place in the list, or one beyond it.
    std::size_t maybe(std::size_t bound) { return below(bound + 1); }
    template <class T>
    const T& any(const std::vector<T>& all) {
        return all[below(all.size())];
    }

    std::mt19937_64 random_;
    Ref<ManagedObjectContext> context_ = TKManagedObjectModel::inMemoryManagedObjectContext();
};

template <class View>
std::vector<const ManagedObject*> listed(const View& view) {
    std::vector<const ManagedObject*> all;
    for (const auto& each : view) all.push_back(&each);
    return all;
}

TEST_F(RelationshipTwinTest, BothSidesAgreeAndMembersStandInTheOrderOfCreation) {
    std::vector<Ref<TKProperty>> flats;
    std::vector<Ref<TKTenant>> tenants;
    std::vector<Ref<TKTenure>> lets;
    std::map<const TKTenure*, TKProperty*> flatOf;
    std::map<const TKTenure*, TKTenant*> tenantOf;
    for (int step = 0; step < 4000; ++step) {
        switch (below(9)) {
        case 0:
            if (flats.size() < 6) flats.push_back(context_->insertNewObject<TKProperty>("Property"));
            break;
        case 1:
            if (tenants.size() < 6) tenants.push_back(context_->insertNewObject<TKTenant>("Tenant"));
            break;
        case 2:
            if (lets.size() < 40) lets.push_back(context_->insertNewObject<TKTenure>("Tenure"));
            break;
        case 3:
        case 4: {
            if (lets.empty()) break;
            TKTenure* let = any(lets).get();
            const std::size_t flat = maybe(flats.size());
            const std::size_t tenant = maybe(tenants.size());
            flatOf[let] = flat < flats.size() ? flats[flat].get() : nullptr;
            tenantOf[let] = tenant < tenants.size() ? tenants[tenant].get() : nullptr;
            let->setProperty(flatOf[let]);
            let->setValueForKey(Value(Ref<Object>(tenantOf[let])), keys::tenant);
            break;
        }
        case 5: {
            // The whole value at once.
            if (flats.empty()) break;
            TKProperty* flat = any(flats).get();
            std::vector<Value> members;
            for (auto& [let, owner] : flatOf)
                if (owner == flat) owner = nullptr;
            for (const auto& let : lets)
                if (below(4) == 0) {
                    members.emplace_back(let);
                    flatOf[let.get()] = flat;
                }
            std::ranges::shuffle(members, random_);
            flat->setTenures(Set::make(std::move(members)));
            break;
        }
        case 6: {
            if (lets.empty()) break;
            const std::size_t place = below(lets.size());
            context_->deleteObject(*lets[place]);
            flatOf.erase(lets[place].get());
            tenantOf.erase(lets[place].get());
            lets.erase(lets.begin() + static_cast<std::ptrdiff_t>(place));
            context_->processPendingChanges();
            break;
        }
        case 7: {
            // An owner is let go only once it is empty.
            if (flats.size() < 3) break;
            const std::size_t place = below(flats.size());
            TKProperty* flat = flats[place].get();
            flat->setTenures(nullptr);
            for (auto& [let, owner] : flatOf)
                if (owner == flat) owner = nullptr;
            context_->deleteObject(*flat);
            context_->processPendingChanges();
            flats.erase(flats.begin() + static_cast<std::ptrdiff_t>(place));
            break;
        }
        default:
            if (below(20) != 0) break;
            ASSERT_TRUE(context_->save());
        }
        for (const auto& let : lets) {
            ASSERT_EQ(let->property(), flatOf[let.get()]) << "step " << step;
            ASSERT_EQ(let->tenant(), tenantOf[let.get()]) << "step " << step;
        }
        for (const auto& flat : flats) {
            std::vector<const ManagedObject*> expected;
            for (const auto& let : lets) // in the order of their creation
                if (flatOf[let.get()] == flat.get()) expected.push_back(let.get());
            ASSERT_EQ(flat->tenures().count(), expected.size());
            ASSERT_EQ(listed(flat->tenures()), expected) << "step " << step;
        }
        for (const auto& tenant : tenants) {
            std::vector<const ManagedObject*> expected;
            for (const auto& let : lets)
                if (tenantOf[let.get()] == tenant.get()) expected.push_back(let.get());
            ASSERT_EQ(listed(tenant->tenures()), expected) << "step " << step;
        }
    }
}

TEST_F(RelationshipTwinTest, OrderedMembersStandWhereTheyWerePut) {
    std::vector<Ref<TKPropertyNote>> notes;
    for (int count = 0; count < 3; ++count)
        notes.push_back(context_->insertNewObject<TKPropertyNote>("PropertyNote"));
    std::vector<Ref<TKTag>> tags;
    using List = std::vector<const ManagedObject*>;
    std::map<const TKPropertyNote*, List> listOf;
    const auto takeOut = [&](const ManagedObject* tag) {
        for (auto& [note, list] : listOf) std::erase(list, tag);
    };
    for (int step = 0; step < 4000; ++step) {
        TKPropertyNote& note = *any(notes);
        List& list = listOf[&note];
        auto proxy = note.mutableOrderedSetValueForKey(keys::tags);
        if (tags.size() < 12 || (tags.size() < 24 && below(4) == 0))
            tags.push_back(context_->insertNewObject<TKTag>("NoteTag"));
        TKTag& tag = *any(tags);
        const bool isMember = std::ranges::find(list, &tag) != list.end();
        switch (below(9)) {
        case 0:
            proxy.addObject(tag);
            if (isMember) break;
            takeOut(&tag);
            list.push_back(&tag);
            break;
        case 1:
        case 2: {
            const std::size_t place = maybe(list.size());
            proxy.insertObjectAtIndex(tag, place);
            if (isMember) break;
            takeOut(&tag);
            list.insert(list.begin() + static_cast<std::ptrdiff_t>(place), &tag);
            break;
        }
        case 3:
            proxy.removeObject(tag);
            std::erase(list, &tag);
            break;
        case 4:
            if (list.empty()) break;
            {
                const std::size_t place = below(list.size());
                proxy.removeObjectAtIndex(place);
                list.erase(list.begin() + static_cast<std::ptrdiff_t>(place));
            }
            break;
        case 5:
            if (below(8) != 0) break;
            proxy.removeAllObjects();
            list.clear();
            break;
        case 6: {
            std::vector<Value> members;
            List expected;
            for (const auto& each : tags)
                if (below(3) == 0) {
                    members.emplace_back(each);
                    expected.push_back(each.get());
                }
            note.setValueForKey(Array::make(std::move(members)), keys::tags);
            list.clear();
            for (const ManagedObject* each : expected) takeOut(each);
            list = expected;
            break;
        }
        case 7:
            if (below(2) == 0) {
                tag.setOwner(&note);
                if (isMember) break;
                takeOut(&tag);
                list.push_back(&tag);
            } else {
                tag.setOwner(nullptr);
                takeOut(&tag);
            }
            break;
        default:
            if (below(3) != 0) break;
            takeOut(&tag);
            context_->deleteObject(tag);
            std::erase(tags, Ref<TKTag>(&tag));
            context_->processPendingChanges();
        }
        for (const auto& each : notes) {
            ASSERT_EQ(listed(each->tags()), listOf[each.get()]) << "step " << step;
            for (const TKTag& member : each->tags()) ASSERT_EQ(member.owner(), each.get());
        }
        for (const auto& each : tags) {
            const auto owner = std::ranges::find_if(listOf, [&](const auto& entry) {
                return std::ranges::find(entry.second, each.get()) != entry.second.end();
            });
            ASSERT_EQ(each->owner(), owner == listOf.end() ? nullptr : owner->first) << "step " << step;
        }
    }
}

} // namespace
} // namespace estatebook::platform
