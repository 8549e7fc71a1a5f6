// SPDX-License-Identifier: MIT

// Classes that pass announcements on to another object: what is announced where somebody hears of it, and what is left out.

#include "support/ObservedPerson.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

/// Its "amount" announces the owner's "totalIncome", and its "balance" the owner's "details".
class Child : public Person {
public:
    static const ClassDescription Class;
    [[nodiscard]] const ClassDescription& classDescription() const noexcept override { return Class; }

    std::vector<std::string> announced;

    void willChangeValueForKey(Key key) override {
        announced.push_back("+" + std::string(key.name()));
        Person::willChangeValueForKey(key);
        if (const Key there = ofOwner(key); owner() && there != Key()) owner()->willChangeValueForKey(there);
    }
    void didChangeValueForKey(Key key) override {
        announced.push_back("-" + std::string(key.name()));
        Person::didChangeValueForKey(key);
        if (const Key there = ofOwner(key); owner() && there != Key()) owner()->didChangeValueForKey(there);
    }
    [[nodiscard]] bool passesOn(const KeySet& changed) const override {
        const auto passes = [&](Key key) {
            return changed.mayContain(key) && owner()->mustAnnounce(ofOwner(key));
        };
        return owner() && (passes(keys::amount) || passes(keys::balance));
    }

protected:
    ~Child() override = default;

private:
    static Key ofOwner(Key key) {
        if (key == keys::amount) return keys::totalIncome;
        return key == keys::balance ? keys::details : Key();
    }
};
constinit const ClassDescription Child::Class("Child", &Person::Class, {}, Person::Dependencies,
                                              dependentsIn<test::detail::personClosure>, announcing<Child>);

/// Replaces the pair again and says nothing of it.
class LoudChild final : public Child {
public:
    static const ClassDescription Class;
    [[nodiscard]] const ClassDescription& classDescription() const noexcept override { return Class; }

    void willChangeValueForKey(Key key) override { Child::willChangeValueForKey(key); }
    void didChangeValueForKey(Key key) override { Child::didChangeValueForKey(key); }

private:
    ~LoudChild() override = default;
};
constinit const ClassDescription LoudChild::Class("LoudChild", &Child::Class, {}, Person::Dependencies,
                                                  dependentsIn<test::detail::personClosure>,
                                                  announcing<LoudChild>);

/// Replaces one half of it.
class HalfLoudChild : public Child {
public:
    void didChangeValueForKey(Key key) override { Child::didChangeValueForKey(key); }
};

static_assert(announcing<Person> == Announces::ToObservers);
static_assert(announcing<RecordingPerson> == Announces::Always);
static_assert(announcing<Child> == Announces::AsItSays);
static_assert(announcing<LoudChild> == Announces::Always);
static_assert(announcing<HalfLoudChild> == Announces::Always);

class PassingOnTest : public testing::Test {
protected:
    PassingOnTest() { child->setOwner(owner); }

    Ref<Person> owner = makeRef<Person>();
    Ref<Child> child = makeRef<Child>();
    Ref<Watcher> watcher = makeRef<Watcher>();
};

TEST_F(PassingOnTest, WhatNobodyHearsIsStoredAndNotAnnounced) {
    child->setAmount(Decimal(5));
    child->setName(text("Ann"));
    EXPECT_EQ(child->amount(), Decimal(5));
    EXPECT_THAT(child->announced, IsEmpty());
}

TEST_F(PassingOnTest, WhoObservesTheOwnerHearsOfTheChildAndOfNoOtherKey) {
    watch(*owner, *watcher, "totalIncome");
    child->setName(text("Ann"));
    EXPECT_THAT(child->announced, IsEmpty());
    child->setAmount(Decimal(5));
    EXPECT_THAT(watcher->paths(), ElementsAre("totalIncome"));
    unwatch(*owner, *watcher, "totalIncome");
    child->announced.clear();
    child->setAmount(Decimal(6));
    EXPECT_THAT(child->announced, IsEmpty());
}

TEST_F(PassingOnTest, WhoObservesWhatDependsOnTheOwnersKeyHearsIt) {
    watch(*owner, *watcher, "balanced");
    child->setAmount(Decimal(5));
    EXPECT_THAT(watcher->paths(), ElementsAre("balanced"));
}

TEST_F(PassingOnTest, AKeyThatDependsOnTheChangedOneIsPassedOn) {
    watch(*owner, *watcher, "details");
    child->setAmount(Decimal(5));
    EXPECT_THAT(watcher->paths(), ElementsAre("details")) << "amount, balance, and the owner's details";
    EXPECT_THAT(child->announced, ElementsAre("+amount", "+balance", "-amount", "-balance"))
        << "nobody would hear of the others";
}

TEST_F(PassingOnTest, AnObserverOfTheChildItselfHearsIt) {
    watch(*child, *watcher, "name");
    child->setAmount(Decimal(5));
    EXPECT_THAT(child->announced, IsEmpty());
    child->setName(text("Ann"));
    EXPECT_THAT(watcher->paths(), ElementsAre("name"));
    const auto other = makeRef<Watcher>();
    watch(*child, *other, "balance", ObservingNew | ObservingOld);
    child->setAmount(Decimal(7));
    ASSERT_EQ(other->heard.size(), 1u);
    EXPECT_EQ(other->heard[0].change.oldValue, Value(Decimal(15)));
    EXPECT_EQ(other->heard[0].change.newValue, Value(Decimal(21)));
}

TEST_F(PassingOnTest, ChangesGoOnThroughAnyNumberOfOwners) {
    const auto above = makeRef<Child>();
    child->setOwner(above);
    above->setOwner(owner);
    watch(*owner, *watcher, "details");
    child->setAmount(Decimal(5));
    EXPECT_THAT(watcher->paths(), ElementsAre("details"))
        << "amount, the totalIncome and so the balance of the one above, and its owner's details";
}

TEST_F(PassingOnTest, AClassThatReplacesThePairAgainIsAlwaysTold) {
    const auto loud = makeRef<LoudChild>();
    loud->setName(text("Ann"));
    EXPECT_THAT(loud->announced,
                ElementsAre("+name", "+fullName", "+details", "-name", "-fullName", "-details"));
    watch(*owner, *watcher, "totalIncome");
    loud->setOwner(owner);
    loud->setAmount(Decimal(5));
    EXPECT_THAT(watcher->paths(), ElementsAre("totalIncome"));
}

TEST_F(PassingOnTest, WhatIsAnnouncedByHandPassesThroughThePairOfAnObjectThatNeverChangedBefore) {
    const auto fresh = makeRef<RecordingPerson>();
    fresh->willChangeValueForKey(keys::totalIncome);
    fresh->didChangeValueForKey(keys::totalIncome);
    EXPECT_THAT(fresh->announced, ElementsAre("+totalIncome", "+balance", "+balanced", "-totalIncome",
                                              "-balance", "-balanced"));
}

/// Cannot tell whether it passes its "balance" on.
class Unreadable final : public Child {
public:
    [[nodiscard]] bool passesOn(const KeySet& changed) const override {
        if (changed.mayContain(keys::balance)) throw RangeException("there is no owner to be read");
        return false;
    }

private:
    ~Unreadable() override = default;
};

TEST_F(PassingOnTest, WhoCannotTellChangesNothingOrWhatIsToldIsToldBeforeTheExceptionLeaves) {
    const auto unreadable = makeRef<Unreadable>();
    EXPECT_THROW(unreadable->setAmount(Decimal(5)), RangeException);
    EXPECT_FALSE(unreadable->amount());
    watch(*unreadable, *watcher, "amount");
    EXPECT_THROW(unreadable->setAmount(Decimal(5)), RangeException);
    EXPECT_EQ(unreadable->amount(), Decimal(5));
    EXPECT_THAT(watcher->paths(), ElementsAre("amount"));
    unreadable->setName(text("Ann"));
    const auto other = makeRef<Person>();
    watch(*other, *watcher, "name");
    other->setName(text("Bea"));
    EXPECT_THAT(watcher->paths(), ElementsAre("amount", "name")) << "nothing is left open";
}

TEST_F(PassingOnTest, AKeyThatIsOpenAlreadyIsToldOnceAllIsClosed) {
    watch(*child, *watcher, "balance");
    child->willChangeValueForKey(keys::balance);
    child->setAmount(Decimal(5));
    EXPECT_THAT(watcher->paths(), IsEmpty());
    child->didChangeValueForKey(keys::balance);
    EXPECT_THAT(watcher->paths(), ElementsAre("balance"));
}

} // namespace
} // namespace estatebook::platform
