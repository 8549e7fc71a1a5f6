// SPDX-License-Identifier: MIT

// Who is told of a change, when, how often, and what of exceptions on the way.

#include "support/ObservedPerson.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using test::Person;
using test::RecordingPerson;
using test::text;
using test::unwatch;
using test::watch;
using test::Watcher;
using testing::ElementsAre;
using testing::IsEmpty;

const char firstToken = 0;
const char secondToken = 0;

// Registration and delivery

TEST(ObservableObjectTest, AnObserverIsToldOnceAfterTheStore) {
    const auto anna = makeRef<Person>();
    std::optional<Decimal> seen;
    const auto watcher = makeRef<Watcher>([&](const auto&) { seen = anna->amount(); });
    watch(*anna, *watcher, "amount");
    anna->setAmount(Decimal(5));
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_EQ(seen, Decimal(5));
    EXPECT_EQ(watcher->heard[0].object, anna.get());
    EXPECT_EQ(watcher->heard[0].change.kind, ChangeKind::Setting);
    EXPECT_TRUE(watcher->heard[0].change.newValue.isAbsent()) << "it did not ask for values";
    EXPECT_TRUE(watcher->heard[0].change.oldValue.isAbsent());
}

TEST(ObservableObjectTest, NewAndOldValuesComeToThoseWhoAsk) {
    const auto anna = makeRef<Person>();
    anna->setAmount(Decimal(1));
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "amount", ObservingNew | ObservingOld);
    anna->setAmount(Decimal(2));
    anna->setAmount(std::nullopt);
    EXPECT_EQ(watcher->heard[0].change.oldValue.decimal(), Decimal(1));
    EXPECT_EQ(watcher->heard[0].change.newValue.decimal(), Decimal(2));
    EXPECT_TRUE(watcher->heard[1].change.newValue.isNullObject()) << "nothing is told as the null object";
}

TEST(ObservableObjectTest, AnEqualValueIsAnnouncedAllTheSame) {
    const auto anna = makeRef<Person>();
    anna->setAmount(Decimal(1));
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "amount");
    anna->setAmount(Decimal(1));
    EXPECT_EQ(watcher->timesTold("amount"), 1u);
}

TEST(ObservableObjectTest, InitialTellsAtOnceAndPriorTellsBefore) {
    const auto anna = makeRef<Person>();
    anna->setAmount(Decimal(1));
    std::vector<std::optional<Decimal>> seen;
    const auto watcher = makeRef<Watcher>([&](const auto&) { seen.push_back(anna->amount()); });
    watch(*anna, *watcher, "amount", ObservingInitial | ObservingNew | ObservingOld | ObservingPrior);
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_EQ(watcher->heard[0].change.newValue.decimal(), Decimal(1));
    anna->setAmount(Decimal(2));
    ASSERT_EQ(watcher->heard.size(), 3u);
    EXPECT_TRUE(watcher->heard[1].change.isPrior);
    EXPECT_TRUE(watcher->heard[1].change.newValue.isAbsent());
    EXPECT_EQ(watcher->heard[1].change.oldValue.decimal(), Decimal(1));
    EXPECT_FALSE(watcher->heard[2].change.isPrior);
    EXPECT_EQ(seen, (std::vector<std::optional<Decimal>>{Decimal(1), Decimal(1), Decimal(2)}));
}

TEST(ObservableObjectTest, TheContextIsHandedBackAsItIs) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    anna->addObserverForKeyPathOptionsContext(*watcher, "amount", ObservingNothing, &firstToken);
    anna->addObserverForKeyPathOptionsContext(*watcher, "amount", ObservingNothing, nullptr);
    anna->setAmount(Decimal(1));
    EXPECT_EQ(watcher->heard[0].context, &firstToken);
    EXPECT_EQ(watcher->heard[1].context, nullptr);
}

TEST(ObservableObjectTest, WhoRegistersTwiceIsToldTwiceAndEachRemovalTakesOne) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    for (int times = 0; times < 3; ++times) watch(*anna, *watcher, "amount");
    for (std::size_t left = 3; left > 0; --left) {
        watcher->heard.clear();
        anna->setAmount(Decimal(1));
        EXPECT_EQ(watcher->timesTold("amount"), left);
        unwatch(*anna, *watcher, "amount");
    }
    EXPECT_THROW(unwatch(*anna, *watcher, "amount"), RangeException);
}

TEST(ObservableObjectTest, ARemovalTakesTheLatestRegistrationOfItsContext) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    const auto add = [&](unsigned options, const void* context) {
        anna->addObserverForKeyPathOptionsContext(*watcher, "amount", options, context);
    };
    add(ObservingNothing, &firstToken);
    add(ObservingNew, &firstToken);
    add(ObservingNothing, &secondToken);
    anna->removeObserverForKeyPathContext(*watcher, "amount", &firstToken);
    anna->setAmount(Decimal(1));
    ASSERT_EQ(watcher->heard.size(), 2u);
    EXPECT_EQ(watcher->heard[0].context, &firstToken);
    EXPECT_TRUE(watcher->heard[0].change.newValue.isAbsent()) << "the later one, which wanted values, went";
    anna->removeObserverForKeyPath(*watcher, "amount");
    watcher->heard.clear();
    anna->setAmount(Decimal(1));
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_EQ(watcher->heard[0].context, &firstToken) << "without a context the latest of all went";
}

TEST(ObservableObjectTest, RemovingWhatIsNotRegisteredRaises) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    EXPECT_THROW(anna->removeObserverForKeyPath(*watcher, "amount"), RangeException);
    watch(*anna, *watcher, "amount");
    watch(*anna, *watcher, "owner.amount");
    EXPECT_THROW(anna->removeObserverForKeyPathContext(*watcher, "amount", &firstToken), RangeException);
    EXPECT_THROW(unwatch(*anna, *watcher, "name"), RangeException);
    EXPECT_THROW(unwatch(*anna, *watcher, "owner.name"), RangeException);
    EXPECT_THROW(unwatch(*anna, *makeRef<Watcher>(), "amount"), RangeException);
    try {
        unwatch(*anna, *watcher, "name");
        FAIL();
    } catch (const RangeException& exception) {
        EXPECT_EQ(exception.name(), "NSRangeException");
        EXPECT_NE(exception.reason().find("because it is not registered as an observer"),
                  std::string_view::npos);
    }
}

TEST(ObservableObjectTest, AContextThatNobodyKnowsRaisesAtTheRoot) {
    const auto anna = makeRef<Person>();
    const auto bert = makeRef<Person>(); // a person handles no notification
    anna->addObserverForKeyPathOptionsContext(*bert, "amount", ObservingNothing, &firstToken);
    EXPECT_THROW(anna->setAmount(Decimal(5)), InternalInconsistencyException);
    EXPECT_EQ(anna->amount(), Decimal(5)) << "the value is set all the same";
}

TEST(ObservableObjectTest, ObserversAreToldInTheOrderOfRegistration) {
    const auto anna = makeRef<Person>();
    std::vector<int> order;
    std::vector<Ref<Watcher>> watchers;
    for (int number = 0; number < 4; ++number) {
        watchers.push_back(makeRef<Watcher>([&order, number](const auto&) { order.push_back(number); }));
        watch(*anna, *watchers.back(), "amount");
    }
    anna->setAmount(Decimal(1));
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3));
}

// Coming and going

TEST(ObservableObjectTest, WhoIsRemovedDuringANotificationHearsNothingMore) {
    const auto anna = makeRef<Person>();
    const auto second = makeRef<Watcher>();
    const auto first = makeRef<Watcher>([&](const auto&) { unwatch(*anna, *second, "amount"); });
    watch(*anna, *first, "amount");
    watch(*anna, *second, "amount");
    anna->setAmount(Decimal(1));
    EXPECT_EQ(second->heard.size(), 0u);
    first->reaction = nullptr;
    anna->setAmount(Decimal(2));
    EXPECT_EQ(first->heard.size(), 2u);
    EXPECT_EQ(second->heard.size(), 0u);
}

TEST(ObservableObjectTest, WhoIsAddedDuringANotificationHearsOfTheNextChange) {
    const auto anna = makeRef<Person>();
    std::vector<Ref<Watcher>> added;
    const auto first = makeRef<Watcher>([&](const auto&) {
        // Many, so that every list has to grow while it is walked.
        for (int count = 0; count < 40; ++count) {
            added.push_back(makeRef<Watcher>());
            watch(*anna, *added.back(), "amount");
            watch(*anna, *added.back(), count % 2 ? "name" : "billingMode");
        }
    });
    watch(*anna, *first, "amount");
    anna->setAmount(Decimal(1));
    for (const auto& each : added) EXPECT_EQ(each->heard.size(), 0u);
    first->reaction = nullptr;
    anna->setAmount(Decimal(2));
    for (const auto& each : added) EXPECT_EQ(each->heard.size(), 1u);
}

TEST(ObservableObjectTest, AnObserverMayRemoveItselfWhileItIsTold) {
    const auto anna = makeRef<Person>();
    Ref<Watcher> watcher = makeRef<Watcher>();
    watcher->reaction = [&](const auto&) { unwatch(*anna, *watcher, "amount"); };
    const auto last = makeRef<Watcher>();
    watch(*anna, *watcher, "amount");
    watch(*anna, *last, "amount");
    anna->setAmount(Decimal(1));
    anna->setAmount(Decimal(2));
    EXPECT_EQ(watcher->heard.size(), 1u);
    EXPECT_EQ(last->heard.size(), 2u);
}

TEST(ObservableObjectTest, AnObserverMayDieWhileItIsTold) {
    const auto anna = makeRef<Person>();
    Ref<Watcher> watcher = makeRef<Watcher>();
    Watcher* const whileItLives = watcher.get();
    whileItLives->reaction = [&](const auto&) { watcher = nullptr; };
    watch(*anna, *watcher, "amount");
    watch(*anna, *watcher, "owner.amount");
    anna->setAmount(Decimal(1));
    EXPECT_FALSE(watcher);
    anna->setAmount(Decimal(2));
}

TEST(ObservableObjectTest, AnObserverThatDiedIsPassedOver) {
    const auto anna = makeRef<Person>();
    const auto last = makeRef<Watcher>();
    {
        const auto dying = makeRef<Watcher>();
        watch(*anna, *dying, "amount");
        watch(*anna, *dying, "owner.amount");
        watch(*anna, *last, "amount");
    }
    anna->setAmount(Decimal(1));
    anna->setOwner(makeRef<Person>());
    EXPECT_EQ(last->heard.size(), 1u);
}

TEST(ObservableObjectTest, WhatWasRegisteredOnAnObjectDiesWithIt) {
    const auto watcher = makeRef<Watcher>();
    auto anna = makeRef<Person>();
    auto bert = makeRef<Person>();
    anna->setOwner(bert);
    watch(*anna, *watcher, "amount");
    watch(*anna, *watcher, "owner.amount");
    anna = nullptr;
    bert->setAmount(Decimal(1));
    EXPECT_EQ(watcher->heard.size(), 0u);
}

TEST(ObservableObjectTest, TheObservedMayLoseItsLastReferenceWhileItTells) {
    auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>([&](const auto&) { anna = nullptr; });
    watch(*anna, *watcher, "amount");
    anna->setAmount(Decimal(1));
    EXPECT_FALSE(anna);
    EXPECT_EQ(watcher->heard.size(), 1u);
}

TEST(ObservableObjectTest, NeitherObserverNorObservedIsKeptAlive) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "amount");
    EXPECT_EQ(anna->referenceCount(), 1u);
    EXPECT_EQ(watcher->referenceCount(), 1u);
}

// Nesting

TEST(ObservableObjectTest, AnObserverMayChangeTheSameKeyAgain) {
    const auto anna = makeRef<Person>();
    const auto clamp = makeRef<Watcher>([&](const auto&) {
        if (anna->amount() > Decimal(10)) anna->setAmount(Decimal(10));
    });
    const auto last = makeRef<Watcher>();
    watch(*anna, *clamp, "amount");
    watch(*anna, *last, "balance", ObservingNew);
    anna->setAmount(Decimal(99));
    EXPECT_EQ(anna->amount(), Decimal(10));
    ASSERT_GE(last->heard.size(), 1u);
    EXPECT_EQ(last->heard.back().change.newValue.decimal(), Decimal(30));
}

TEST(ObservableObjectTest, ManualPairsNestAcrossKeys) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "name");
    watch(*anna, *watcher, "amount");
    anna->willChangeValueForKey(keys::name);
    anna->willChangeValueForKey(keys::amount);
    anna->didChangeValueForKey(keys::name);
    EXPECT_THAT(watcher->paths(), ElementsAre("name"));
    anna->didChangeValueForKey(keys::amount);
    EXPECT_THAT(watcher->paths(), ElementsAre("name", "amount"));
}

TEST(ObservableObjectTest, PairsOfOneKeyNestAndItsObserversHearAtTheLatestWhenTheOutermostCloses) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "amount", ObservingNew);
    anna->willChangeValueForKey(keys::amount);
    anna->setAmount(Decimal(4));
    anna->didChangeValueForKey(keys::amount);
    ASSERT_GE(watcher->heard.size(), 1u);
    EXPECT_EQ(watcher->heard.back().change.newValue.decimal(), Decimal(4));
}

TEST(ObservableObjectTest, ADidWithoutItsWillIsTolerated) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "amount");
    anna->didChangeValueForKey(keys::amount);
    EXPECT_EQ(watcher->heard.size(), 0u);
    anna->setAmount(Decimal(1));
    EXPECT_EQ(watcher->heard.size(), 1u);
}

// Membership

TEST(ObservableObjectTest, MembersThatComeAndGoAreToldWithTheirKind) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "tenures", ObservingNew | ObservingOld);
    const auto members = Set::make({makeRef<Person>()});
    const auto pair = [&](ChangeKind kind) {
        anna->willChangeValueForKeyWithSetMutationUsingObjects(keys::tenures, kind, members);
        anna->didChangeValueForKeyWithSetMutationUsingObjects(keys::tenures, kind, members);
    };
    pair(ChangeKind::Insertion);
    pair(ChangeKind::Removal);
    ASSERT_EQ(watcher->heard.size(), 2u);
    EXPECT_EQ(watcher->heard[0].change.kind, ChangeKind::Insertion);
    EXPECT_EQ(watcher->heard[0].change.newValue.object(), Ref<Object>(members));
    EXPECT_TRUE(watcher->heard[0].change.oldValue.isNullObject());
    EXPECT_EQ(watcher->heard[1].change.kind, ChangeKind::Removal);
    EXPECT_EQ(watcher->heard[1].change.oldValue.object(), Ref<Object>(members));
    EXPECT_TRUE(watcher->heard[1].change.newValue.isNullObject());
}

TEST(ObservableObjectTest, PlacesInAListAreToldWithWhatStandsThere) {
    const auto anna = makeRef<Person>();
    anna->setValue(Array::make({text("a"), text("b"), text("c")}));
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "value", ObservingNew | ObservingOld);
    anna->willChangeValuesAtIndexesForKey(ChangeKind::Removal, {0, 2}, keys::value);
    anna->didChangeValuesAtIndexesForKey(ChangeKind::Removal, {0, 2}, keys::value);
    anna->willChangeValuesAtIndexesForKey(ChangeKind::Insertion, {1}, keys::value);
    anna->didChangeValuesAtIndexesForKey(ChangeKind::Insertion, {1}, keys::value);
    ASSERT_EQ(watcher->heard.size(), 2u);
    EXPECT_THAT(watcher->heard[0].change.indexes, ElementsAre(0u, 2u));
    EXPECT_EQ(watcher->heard[0].change.oldValue, Value(Array::make({text("a"), text("c")})));
    EXPECT_TRUE(watcher->heard[0].change.newValue.isNullObject());
    EXPECT_EQ(watcher->heard[1].change.newValue, Value(Array::make({text("b")})));
    EXPECT_TRUE(watcher->heard[1].change.oldValue.isNullObject());
}

TEST(ObservableObjectTest, AMembershipChangeThatClosesAsAPlainOneIsToldAsASetting) {
    const auto anna = makeRef<Person>();
    anna->setTenures(Set::make({}));
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "tenures", ObservingNew);
    anna->willChangeValueForKeyWithSetMutationUsingObjects(keys::tenures, ChangeKind::Insertion,
                                                           Set::make({Value(1)}));
    anna->didChangeValueForKey(keys::tenures);
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_EQ(watcher->heard[0].change.kind, ChangeKind::Setting);
    EXPECT_EQ(watcher->heard[0].change.newValue, Value(Set::make({})));
}

// Paths

TEST(ObservableObjectTest, APathIsFollowedThroughReplacedMiddleObjects) {
    const auto anna = makeRef<Person>();
    const auto bert = makeRef<Person>();
    const auto cleo = makeRef<Person>();
    bert->setAmount(Decimal(1));
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "owner.amount", ObservingNew | ObservingOld);
    anna->setOwner(bert);
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_EQ(watcher->heard[0].path, "owner.amount");
    EXPECT_EQ(watcher->heard[0].object, anna.get());
    EXPECT_TRUE(watcher->heard[0].change.oldValue.isNullObject());
    EXPECT_EQ(watcher->heard[0].change.newValue.decimal(), Decimal(1));
    bert->setAmount(Decimal(2));
    EXPECT_EQ(watcher->heard.size(), 2u);
    EXPECT_EQ(watcher->heard[1].change.oldValue.decimal(), Decimal(1));
    anna->setOwner(cleo);
    EXPECT_EQ(watcher->heard.size(), 3u);
    bert->setAmount(Decimal(3));
    EXPECT_EQ(watcher->heard.size(), 3u) << "the replaced one is let go";
    cleo->setAmount(Decimal(4));
    EXPECT_EQ(watcher->heard.size(), 4u);
    EXPECT_EQ(watcher->heard[3].change.newValue.decimal(), Decimal(4));
    unwatch(*anna, *watcher, "owner.amount");
    cleo->setAmount(Decimal(5));
    anna->setOwner(nullptr);
    EXPECT_EQ(watcher->heard.size(), 4u);
}

TEST(ObservableObjectTest, ReplacingAMiddleObjectTellsOnceEvenIfTheEndIsEqual) {
    const auto anna = makeRef<Person>();
    anna->setOwner(makeRef<Person>());
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "owner.owner.amount");
    anna->setOwner(makeRef<Person>());
    EXPECT_EQ(watcher->heard.size(), 1u);
    anna->owner()->setOwner(makeRef<Person>());
    EXPECT_EQ(watcher->heard.size(), 2u);
    anna->owner()->owner()->setAmount(Decimal(1));
    EXPECT_EQ(watcher->heard.size(), 3u);
}

TEST(ObservableObjectTest, APathMayLeadBackToItsStart) {
    const auto anna = makeRef<Person>();
    anna->setOwner(anna);
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "owner.owner.amount");
    anna->setAmount(Decimal(1));
    EXPECT_EQ(watcher->heard.size(), 1u);
    anna->setOwner(nullptr);
    EXPECT_GE(watcher->heard.size(), 2u);
    unwatch(*anna, *watcher, "owner.owner.amount");
}

TEST(ObservableObjectTest, APathMayEndInAKeyWithoutAValue) {
    const auto anna = makeRef<Person>();
    anna->setOwner(makeRef<Person>());
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "owner.details", ObservingNew | ObservingInitial);
    anna->owner()->setName(text("x"));
    ASSERT_EQ(watcher->heard.size(), 2u);
    EXPECT_TRUE(watcher->heard[0].change.newValue.isNullObject());
    EXPECT_TRUE(watcher->heard[1].change.newValue.isNullObject());
}

TEST(ObservableObjectTest, APathThroughACollectionCannotBeObserved) {
    const auto anna = makeRef<Person>();
    anna->setTenures(Set::make({makeRef<Person>()}));
    const auto watcher = makeRef<Watcher>();
    EXPECT_THROW(watch(*anna, *watcher, "tenures.amount"), InvalidArgumentException);
    EXPECT_THROW(unwatch(*anna, *watcher, "tenures.amount"), RangeException) << "nothing was left behind";
    anna->setTenures(nullptr);
}

// Dependencies

TEST(ObservableObjectTest, DependentsAreToldTransitivelyAndAtTheTipOfADiamondOnce) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    for (const char* path : {"amount", "totalIncome", "totalAdjustment", "balance", "balanced"})
        watch(*anna, *watcher, path, ObservingNew);
    anna->setAmount(Decimal(5));
    EXPECT_THAT(watcher->paths(),
                ElementsAre("amount", "totalIncome", "totalAdjustment", "balance", "balanced"));
    EXPECT_EQ(watcher->heard[3].change.newValue.decimal(), Decimal(15));
}

TEST(ObservableObjectTest, SiblingPairsThatReachOneDependentLeaveItsFinalValueReadable) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "balance", ObservingNew);
    anna->willChangeValueForKey(keys::totalIncome);
    anna->willChangeValueForKey(keys::totalAdjustment);
    anna->didChangeValueForKey(keys::totalIncome);
    anna->didChangeValueForKey(keys::totalAdjustment);
    EXPECT_GE(watcher->heard.size(), 1u);
}

TEST(ObservableObjectTest, EveryKeyPassesThroughTheOverridablePairOnceAndTheDidsMirrorTheWills) {
    const std::vector<std::string> expected{
        "+amount", "+totalIncome", "+totalAdjustment", "+balance", "+balanced",
        "-amount", "-totalIncome", "-totalAdjustment", "-balance", "-balanced"};
    const auto unobserved = makeRef<RecordingPerson>();
    unobserved->setAmount(Decimal(1));
    EXPECT_EQ(unobserved->announced, expected) << "whether or not anybody observes";

    const auto observed = makeRef<RecordingPerson>();
    const auto watcher = makeRef<Watcher>();
    watch(*observed, *watcher, "balance", ObservingNew | ObservingOld | ObservingPrior);
    observed->setAmount(Decimal(1));
    EXPECT_EQ(observed->announced, expected);
}

TEST(ObservableObjectTest, ADeclaredKeyWithoutAValueCanBeObserved) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "details", ObservingNew | ObservingOld | ObservingInitial);
    anna->setName(text("Anna"));
    ASSERT_EQ(watcher->heard.size(), 2u);
    for (const auto& each : watcher->heard) EXPECT_TRUE(each.change.newValue.isNullObject());
}

// Classes to which tests add rows, so that no other class is touched.
#define FRESH_CLASS(Name)                                                                                    \
    class Name final : public Person {                                                                       \
    public:                                                                                                  \
        static const ClassDescription Class;                                                                 \
        [[nodiscard]] const ClassDescription& classDescription() const noexcept override {                   \
            return Class;                                                                                    \
        }                                                                                                    \
                                                                                                             \
    private:                                                                                                 \
        ~Name() override = default;                                                                          \
    };                                                                                                       \
    constinit const ClassDescription Name::Class(#Name, &Person::Class, {}, Person::Dependencies,            \
                                                 dependentsIn<test::detail::personClosure>,                  \
                                                 announcing<Name>)

FRESH_CLASS(WithAddedRows);
TEST(ObservableObjectTest, RowsAddedWhileObjectsLiveServeObserversThatWereThereBefore) {
    static int runs = 0; // rows stay for as long as the program runs
    const std::string dependent = "addedDependent" + std::to_string(++runs);
    const auto anna = makeRef<WithAddedRows>();
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, dependent);
    anna->setName(text("a"));
    EXPECT_EQ(watcher->heard.size(), 0u);
    WithAddedRows::Class.addDependency(Key::named(dependent), "fullName");
    anna->setName(text("b"));
    EXPECT_EQ(watcher->heard.size(), 1u) << "name, fullName, addedDependent";
    EXPECT_THAT(WithAddedRows::Class.keyPathsForValuesAffecting(Key::named(dependent)),
                ElementsAre("fullName"));
    EXPECT_THAT(Person::Class.keyPathsForValuesAffecting(Key::named(dependent)), IsEmpty());
    EXPECT_THAT(WithAddedRows::Class.keyPathsForValuesAffecting(keys::balance),
                ElementsAre("totalIncome", "totalAdjustment"));
}

FRESH_CLASS(WithCycle);
TEST(ObservableObjectTest, CyclesAmongAddedRowsEndAndEachKeyIsToldOnce) {
    const Key one = Key::named("cycleOne");
    const Key two = Key::named("cycleTwo");
    WithCycle::Class.addDependency(one, "amount");
    WithCycle::Class.addDependency(two, "cycleOne");
    WithCycle::Class.addDependency(one, "cycleTwo");
    WithCycle::Class.addDependency(keys::amount, "cycleTwo");
    WithCycle::Class.addDependency(one, "cycleOne");
    const auto anna = makeRef<WithCycle>();
    const auto watcher = makeRef<Watcher>();
    for (const char* path : {"amount", "cycleOne", "cycleTwo", "balance"}) watch(*anna, *watcher, path);
    anna->setAmount(Decimal(1));
    for (const char* path : {"amount", "cycleOne", "cycleTwo", "balance"})
        EXPECT_EQ(watcher->timesTold(path), 1u) << path;
    anna->willChangeValueForKey(two);
    anna->didChangeValueForKey(two);
    EXPECT_EQ(watcher->timesTold("amount"), 2u);
}

FRESH_CLASS(WithRowsDuringAChange);
TEST(ObservableObjectTest, ARowMayBeAddedWhileAChangeIsAnnounced) {
    const auto anna = makeRef<WithRowsDuringAChange>();
    WithRowsDuringAChange::Class.addDependency(Key::named("duringZero"), "amount");
    int added = 0;
    const auto adder = makeRef<Watcher>([&](const auto&) {
        const Key key = Key::named("during" + std::to_string(++added));
        WithRowsDuringAChange::Class.addDependency(key, "amount");
        WithRowsDuringAChange::Class.addProperty({.key = key});
    });
    watch(*anna, *adder, "amount", ObservingPrior);
    watch(*anna, *adder, "totalIncome", ObservingPrior);
    const auto last = makeRef<Watcher>();
    watch(*anna, *last, "balanced");
    anna->setAmount(Decimal(1));
    anna->setAmount(Decimal(2));
    EXPECT_EQ(last->heard.size(), 2u);
}

// Dotted dependencies

FRESH_CLASS(WithLabel);
const Key label = Key::named("label");
void addLabel() {
    static const bool added = [] {
        WithLabel::Class.addDependency(label, "owner.name");
        WithLabel::Class.addDependency(Key::named("badge"), "label");
        return true;
    }();
    static_cast<void>(added);
}

TEST(ObservableObjectTest, ADottedDependencyIsFollowedThroughReplacedMiddleObjects) {
    addLabel();
    const auto anna = makeRef<WithLabel>();
    const auto bert = makeRef<Person>();
    const auto cleo = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "badge");
    anna->setOwner(bert);
    EXPECT_EQ(watcher->heard.size(), 1u);
    bert->setName(text("Bert"));
    EXPECT_EQ(watcher->heard.size(), 2u);
    anna->setOwner(cleo);
    EXPECT_EQ(watcher->heard.size(), 3u);
    bert->setName(text("Bruno"));
    EXPECT_EQ(watcher->heard.size(), 3u);
    cleo->setName(text("Cleo"));
    EXPECT_EQ(watcher->heard.size(), 4u);
    unwatch(*anna, *watcher, "badge");
    cleo->setName(text("Clara"));
    anna->setOwner(nullptr);
    EXPECT_EQ(watcher->heard.size(), 4u);
}

TEST(ObservableObjectTest, ADottedDependencyIsFollowedAsLongAsAnybodyNeedsIt) {
    addLabel();
    const auto anna = makeRef<WithLabel>();
    anna->setOwner(makeRef<Person>());
    const auto first = makeRef<Watcher>();
    const auto second = makeRef<Watcher>();
    watch(*anna, *first, "label");
    watch(*anna, *second, "badge");
    unwatch(*anna, *first, "label");
    anna->owner()->setName(text("x"));
    EXPECT_EQ(second->heard.size(), 1u);
    unwatch(*anna, *second, "badge");
    anna->owner()->setName(text("y"));
    EXPECT_EQ(second->heard.size(), 1u);
}

FRESH_CLASS(WithLateLabel);
TEST(ObservableObjectTest, ADottedDependencyAddedLateServesWhoRegistersThen) {
    const auto anna = makeRef<WithLateLabel>();
    anna->setOwner(makeRef<Person>());
    const auto before = makeRef<Watcher>();
    const auto after = makeRef<Watcher>();
    watch(*anna, *before, "lateLabel");
    WithLateLabel::Class.addDependency(Key::named("lateLabel"), "owner.name");
    watch(*anna, *after, "lateLabel");
    unwatch(*anna, *before, "lateLabel");
    anna->owner()->setName(text("x"));
    EXPECT_EQ(after->heard.size(), 1u) << "the one that left had no part in following";
}

TEST(ObservableObjectTest, WhoStopsObservingADottedDependentBetweenWillAndDidLeavesNoPairOpen) {
    addLabel();
    const auto anna = makeRef<WithLabel>();
    anna->setOwner(makeRef<Person>());
    Ref<Watcher> leaver = makeRef<Watcher>();
    leaver->reaction = [&](const auto&) {
        leaver->reaction = nullptr;
        unwatch(*anna, *leaver, "label");
    };
    watch(*anna, *leaver, "label", ObservingPrior);
    anna->owner()->setName(text("x"));
    EXPECT_EQ(leaver->heard.size(), 1u);

    // Had a pair stayed open, later changes would be taken for inner ones, and exceptions would never leave.
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "label");
    anna->owner()->setName(text("y"));
    EXPECT_EQ(watcher->heard.size(), 1u);
    watcher->reaction = [](const auto&) { throw RangeException("heard"); };
    EXPECT_THROW(anna->owner()->setName(text("z")), RangeException);
}

// Exceptions

TEST(ObservableObjectTest, AnExceptionOfAnObserverLeavesTheSetterAfterAllOthersWereTold) {
    const auto anna = makeRef<Person>();
    const auto first = makeRef<Watcher>([](const auto&) { throw RangeException("first"); });
    const auto second = makeRef<Watcher>([](const auto&) { throw OverflowException("second"); });
    const auto third = makeRef<Watcher>();
    watch(*anna, *first, "amount");
    watch(*anna, *second, "amount");
    watch(*anna, *third, "amount");
    watch(*anna, *third, "balance");
    EXPECT_THROW(anna->setAmount(Decimal(5)), RangeException);
    EXPECT_EQ(anna->amount(), Decimal(5));
    EXPECT_THAT(third->paths(), ElementsAre("amount", "balance"));

    first->reaction = nullptr;
    second->reaction = nullptr;
    third->heard.clear();
    anna->setAmount(Decimal(6));
    EXPECT_THAT(third->paths(), ElementsAre("amount", "balance")) << "no pair stayed open";
}

TEST(ObservableObjectTest, AnExceptionOfTheOnlyObserverLeavesTheSetterAndNothingElseBehind) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>([](const auto&) { throw RangeException("only"); });
    watch(*anna, *watcher, "balance", ObservingNothing);
    EXPECT_THROW(anna->setAmount(Decimal(5)), RangeException);
    EXPECT_EQ(anna->amount(), Decimal(5));
    watcher->reaction = nullptr;
    EXPECT_NO_THROW(anna->setAmount(Decimal(6)));
    EXPECT_EQ(watcher->heard.size(), 2u);
}

TEST(ObservableObjectTest, TheOnlyObserverMayChangeTheKeyAgainAndLeaveAPairOpen) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    watcher->reaction = [&](const auto&) {
        if (anna->amount() < Decimal(3)) anna->setAmount(anna->amount()->decimalNumberByAdding(Decimal(1)));
        anna->willChangeValueForKey(keys::name);
    };
    watch(*anna, *watcher, "balance", ObservingNothing);
    anna->setAmount(Decimal(1));
    EXPECT_EQ(anna->amount(), Decimal(3));
    EXPECT_EQ(watcher->heard.size(), 3u);
    watcher->reaction = nullptr;
    anna->setAmount(Decimal(4));
    EXPECT_EQ(watcher->heard.size(), 4u) << "no pair is left over";
}

TEST(ObservableObjectTest, TheOnlyObserverMayDieOfWhatItIsTold) {
    const auto anna = makeRef<Person>();
    auto watcher = makeRef<Watcher>();
    watcher->reaction = [&](const auto&) { watcher = nullptr; };
    watch(*anna, *watcher, "balance", ObservingNothing);
    anna->setAmount(Decimal(1));
    EXPECT_FALSE(watcher);
    EXPECT_NO_THROW(anna->setAmount(Decimal(2)));
}

TEST(ObservableObjectTest, AnExceptionOfADerivedGetterReadForAnObserverLeavesTheSetter) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "balance", ObservingNew);
    watch(*anna, *watcher, "amount");
    EXPECT_THROW(anna->setAmount(Decimal(-5)), DivideByZeroException);
    EXPECT_EQ(anna->amount(), Decimal(-5));
    EXPECT_THAT(watcher->paths(), ElementsAre("amount", "balance"));
    EXPECT_TRUE(watcher->heard[1].change.newValue.isNullObject());
    watcher->heard.clear();
    anna->setAmount(Decimal(5));
    EXPECT_EQ(watcher->heard[1].change.newValue.decimal(), Decimal(15));
}

TEST(ObservableObjectTest, AnExceptionBeforeTheChangeDoesNotPreventTheStore) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>([](const auto& heard) {
        if (heard.change.isPrior) throw RangeException("before");
    });
    watch(*anna, *watcher, "amount", ObservingPrior);
    EXPECT_THROW(anna->setAmount(Decimal(5)), RangeException);
    EXPECT_EQ(anna->amount(), Decimal(5));
    EXPECT_EQ(watcher->heard.size(), 2u);
}

TEST(ObservableObjectTest, AnExceptionOfANestedSetterReachesWhoCalledThatSetterFirst) {
    const auto anna = makeRef<Person>();
    const auto bert = makeRef<Person>();
    const auto thrower = makeRef<Watcher>([](const auto&) { throw RangeException("inner"); });
    watch(*bert, *thrower, "amount");
    bool caught = false;
    const auto caller = makeRef<Watcher>([&](const auto&) {
        try {
            bert->setAmount(Decimal(1));
        } catch (const RangeException&) {
            caught = true;
        }
    });
    watch(*anna, *caller, "amount");
    anna->setAmount(Decimal(1));
    EXPECT_TRUE(caught) << "it left the inner setter and was dealt with there";

    caller->reaction = [&](const auto&) { bert->setAmount(Decimal(2)); };
    const auto last = makeRef<Watcher>();
    watch(*anna, *last, "amount");
    EXPECT_THROW(anna->setAmount(Decimal(2)), RangeException);
    EXPECT_EQ(last->heard.size(), 1u);
    EXPECT_EQ(bert->amount(), Decimal(2));
}

TEST(ObservableObjectTest, AnExceptionLeavesTheOutermostOfManualPairs) {
    const auto anna = makeRef<Person>();
    const auto thrower = makeRef<Watcher>([](const auto&) { throw RangeException("told"); });
    watch(*anna, *thrower, "amount");
    anna->willChangeValueForKey(keys::name);
    EXPECT_NO_THROW(anna->setAmount(Decimal(1)));
    EXPECT_THROW(anna->didChangeValueForKey(keys::name), RangeException);
}

TEST(ObservableObjectTest, AnExceptionOfTheStoreItselfLeavesNoPairOpen) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    watch(*anna, *watcher, "balance");
    EXPECT_THROW(anna->failToStore(), RangeException);
    watcher->heard.clear();
    anna->setAmount(Decimal(1));
    EXPECT_EQ(watcher->heard.size(), 1u);
    watcher->reaction = [](const auto&) { throw OverflowException("heard"); };
    EXPECT_THROW(anna->setAmount(Decimal(2)), OverflowException);
}

TEST(ObservableObjectTest, AnExceptionOfAnObserverThatIsToldAtOnceLeavesTheRegistering) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>([](const auto&) { throw RangeException("initial"); });
    EXPECT_THROW(watch(*anna, *watcher, "amount", ObservingInitial), RangeException);
}

} // namespace
} // namespace estatebook::platform
