// SPDX-License-Identifier: MIT
#include "store/TKAccount.hpp"

#include "platform/values/Exception.hpp"
#include "store/TKCurrentDateController.hpp"
#include "support/Book.hpp"
#include "support/HeldClock.hpp"
#include "tags/TKTag.hpp"
#include "tags/TKTagNames.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::DefaultZone;
using bookkit::HostOperationsGuard;
using bookkit::Listener;
using bookkit::onDay;
using bookkit::text;

class TKAccountTest : public testing::Test {
protected:
    TKAccountTest() { moveTo(onDay(2025, 2, 16)); }
    void moveTo(Date now) {
        clock.set(now);
        TKCurrentDateController::sharedInstance().dailyUpdate();
    }
    static std::vector<Value> membersOf(const Ref<Set>& set) {
        return {set->members().begin(), set->members().end()};
    }
    /// How often an account is given the date by one update.
    std::size_t timesToldOnce(TKAccount& account) {
        const auto listener = makeRef<Listener>();
        listener->listenTo(account, "currentDate");
        TKCurrentDateController::sharedInstance().dailyUpdate();
        return listener->times("currentDate");
    }

    const DefaultZone zone{"Europe/Berlin"};
    testkit::HeldClock clock{onDay(2025, 2, 16)};
    const Book book;
};

// Balance and activity

/// An account with a balance of its own.
class Debtor final : public TKPropertyProperties {
public:
    using TKPropertyProperties::TKPropertyProperties;
    float accountBalance() const override { return amount; }
    float amount = 0;
};

TEST_F(TKAccountTest, ItsBalanceIsTheZeroOfSinglePrecision) {
    for (const Ref<TKAccount>& account :
         {Ref<TKAccount>(book.property("Elm Street")), Ref<TKAccount>(book.tenant("A. Smith"))}) {
        EXPECT_EQ(account->accountBalance(), 0.0F);
        const auto number = account->valueForKey("accountBalance").number();
        ASSERT_TRUE(number);
        EXPECT_EQ(number->kind(), Number::Kind::Single);
        EXPECT_EQ(*number, Number(0.0F));
    }
}

TEST_F(TKAccountTest, ItIsBalancedWithABalanceOfZeroOrMore) {
    const auto birth = ManagedObjectBirth::withoutContext(book.property("Elm Street")->entity());
    const auto debtor = makeRef<Debtor>(birth);
    for (const float amount : {0.0F, -0.0F, 0.01F, std::numeric_limits<float>::infinity()}) {
        debtor->amount = amount;
        EXPECT_TRUE(debtor->isBalanced()) << amount;
    }
    for (const float amount : {-0.01F, -std::numeric_limits<float>::denorm_min(), std::nanf("")}) {
        debtor->amount = amount;
        EXPECT_FALSE(debtor->isBalanced()) << amount;
        EXPECT_FALSE(debtor->valueForKey("balanced").boolValue());
        EXPECT_FALSE(debtor->valueForKey("isBalanced").boolValue());
    }
    EXPECT_TRUE(debtor->isActive());
}

TEST_F(TKAccountTest, APropertyIsBalancedAndActiveWhateverItOwes) {
    const auto house = book.property("Elm Street");
    book.record(*house, -5000);
    const auto tenure = book.tenure(onDay(2020, 1, 1), 30, 1, 1000);
    tenure->setEndDate(onDay(2021, 1, 1));
    tenure->setProperty(house.get());
    ASSERT_LT(house->balance(), Decimal::zero());
    ASSERT_LT(house->tenureBalance(), Decimal::zero());
    EXPECT_TRUE(house->isBalanced());
    EXPECT_TRUE(house->isActive());
    for (const char* key : {"balanced", "isBalanced", "active", "isActive"})
        EXPECT_TRUE(house->valueForKey(key).boolValue()) << key;
}

TEST_F(TKAccountTest, ActiveAndIsActiveAreTwoKeysOfWhichOneFollowsTheDay) {
    const auto smith = book.tenant("A. Smith");
    const auto listener = makeRef<Listener>();
    listener->listenTo(*smith, "active");
    listener->listenTo(*smith, "isActive");
    EXPECT_TRUE(smith->valueForKey("active").isIdentical(smith->valueForKey("isActive")));
    moveTo(onDay(2025, 2, 17));
    EXPECT_EQ(listener->times("isActive"), 1u);
    EXPECT_EQ(listener->times("active"), 0u);
}

TEST_F(TKAccountTest, WithoutTenuresNoneIsActive) {
    const Ref<TKAccount> house = book.property("Elm Street");
    const Ref<TKAccount> smith = book.tenant("A. Smith");
    EXPECT_TRUE(house->tenuresActiveAtDate(onDay(2025, 1, 1))->empty());
    EXPECT_TRUE(smith->tenuresActiveAtDate(onDay(2025, 1, 1))->empty());
    EXPECT_TRUE(smith->tenuresActiveAtDate({})->empty());
}

TEST_F(TKAccountTest, TheActiveTenuresAreThoseThatSaySoOfTheDate) {
    const auto house = book.property("Elm Street");
    const auto smith = book.tenant("A. Smith");
    const auto past = book.tenure();
    past->setEndDate(onDay(2025, 3, 31));
    const auto future = book.tenure();
    future->setStartDate(onDay(2025, 3, 31));
    for (const auto& tenure : {past, future}) {
        tenure->setProperty(house.get());
        tenure->setTenant(smith.get());
    }
    for (const TKAccount* account :
         {static_cast<TKAccount*>(house.get()), static_cast<TKAccount*>(smith.get())}) {
        EXPECT_EQ(membersOf(account->tenuresActiveAtDate(onDay(2025, 3, 30))), std::vector{Value(past)});
        EXPECT_EQ(membersOf(account->tenuresActiveAtDate(onDay(2025, 4, 1))), std::vector{Value(future)});
        EXPECT_EQ(account->tenuresActiveAtDate(onDay(2025, 3, 31))->count(), 2u);
        EXPECT_EQ(account->tenuresActiveAtDate({})->count(), 2u);
    }
}

TEST_F(TKAccountTest, TheHostMayFilterTheTenures) {
    const HostOperationsGuard guard;
    hostOperations().subsetConformingToWithObject = [](const Set&, bool (*)(const Object&, const Value&),
                                                       const Value& date) { return Set::make({date}); };
    EXPECT_EQ(membersOf(book.property("Elm Street")->tenuresActiveAtDate(Date{5})),
              std::vector{Value(Date{5})});
}

// Following the current day

TEST_F(TKAccountTest, ANewAccountHasTheControllersDateAsSoonAsItIsInserted) {
    clock.pass(3600);
    EXPECT_EQ(book.property("Elm Street")->currentDate(), onDay(2025, 2, 16))
        << "of the last update, not of this moment";
    EXPECT_EQ(book.tenant("A. Smith")->currentDate(), onDay(2025, 2, 16));
}

TEST_F(TKAccountTest, ADailyUpdateReachesEveryAwakeAccount) {
    std::vector<Ref<TKAccount>> accounts;
    for (int number = 0; number < 5; ++number) {
        accounts.emplace_back(book.property("Elm Street"));
        accounts.emplace_back(book.tenant("A. Smith"));
    }
    moveTo(onDay(2025, 2, 17, 8));
    for (const auto& account : accounts)
        EXPECT_EQ(account->currentDate(), TKCurrentDateController::sharedInstance().currentDate());
}

TEST_F(TKAccountTest, TheDateIsAnnouncedWithWhatDependsOnIt) {
    const auto house = book.property("Elm Street");
    const auto listener = makeRef<Listener>();
    listener->listenTo(*house, "currentDate");
    listener->listenTo(*house, "currentTenures");
    moveTo(onDay(2025, 2, 17));
    EXPECT_EQ(listener->times("currentDate"), 1u);
    EXPECT_EQ(listener->times("currentTenures"), 1u);
}

TEST_F(TKAccountTest, FollowingTheDayIsNoEdit) {
    const auto house = book.property("Elm Street");
    ASSERT_TRUE(book->save());
    moveTo(onDay(2025, 2, 17));
    EXPECT_FALSE(house->hasChanges());
    EXPECT_FALSE(book->hasChanges());
}

TEST_F(TKAccountTest, TheContextIsComparedByIdentity) {
    const auto house = book.property("Elm Street");
    auto& controller = TKCurrentDateController::sharedInstance();
    const auto same = text("TKCurrentDateChanged");
    EXPECT_THROW(
        house->observeValueForKeyPathOfObjectChangeContext("currentDate", controller, {}, same.get()),
        InternalInconsistencyException)
        << "a context that nobody knows is passed up";
    clock.pass(60);
    house->setCurrentDate({});
    house->observeValueForKeyPathOfObjectChangeContext("whatever", controller, {}, TKCurrentDateChanged);
    EXPECT_EQ(house->currentDate(), controller.currentDate()) << "the change itself is not read";
}

TEST_F(TKAccountTest, AnAccountOutsideEveryContextFollowsNothing) {
    const auto loose = refCast<TKAccount>(ManagedObject::initWithEntityInsertIntoManagedObjectContext(
        book.property("Elm Street")->entity(), nullptr));
    EXPECT_FALSE(loose->currentDate());
    moveTo(onDay(2025, 2, 17));
    EXPECT_FALSE(loose->currentDate());
    EXPECT_THROW(loose->removeObservers(), RangeException);
}

TEST_F(TKAccountTest, AwakeningFromAFetchFollowsTheDayAndRebuildsTheTagNames) {
    const auto house = book.property("Elm Street");
    house->setTagNames(TKTagNames::initWithArray(Array::make({Value(text("city"))})));
    ASSERT_TRUE(book->save());
    house->willTurnIntoFault();
    house->setTagNames(nullptr);
    house->setCurrentDate({});
    house->awakeFromFetch();
    EXPECT_EQ(house->currentDate(), onDay(2025, 2, 16));
    ASSERT_TRUE(house->tagNames());
    EXPECT_EQ(house->tagNames()->items()->count(), 1u);
    EXPECT_EQ(timesToldOnce(*house), 1u);
}

TEST_F(TKAccountTest, EachSnapshotEventAddsARegistrationOfWhichAFaultTakesOne) {
    const auto house = book.property("Elm Street");
    EXPECT_EQ(timesToldOnce(*house), 1u);
    house->setCurrentDate({});
    house->awakeFromSnapshotEvents(SnapshotUndoUpdate);
    EXPECT_EQ(house->currentDate(), onDay(2025, 2, 16));
    EXPECT_EQ(timesToldOnce(*house), 2u);
    house->awakeFromSnapshotEvents(SnapshotRefresh | SnapshotRollback);
    EXPECT_EQ(timesToldOnce(*house), 3u);
    house->willTurnIntoFault();
    EXPECT_EQ(timesToldOnce(*house), 2u);
    house->awakeFromFetch();
}

TEST_F(TKAccountTest, AnUndoneUpdateIsSuchAnEvent) {
    const auto house = book.property("Elm Street");
    book->undoManager()->endEvent();
    house->setName(text("Oak Street"));
    book->undo();
    EXPECT_EQ(timesToldOnce(*house), 2u);
    book->redo();
    EXPECT_EQ(timesToldOnce(*house), 3u);
}

TEST_F(TKAccountTest, AnAccountThatLeftAndReturnsFollowsTheDayAgain) {
    const auto smith = book.tenant("A. Smith");
    book->undo();
    moveTo(onDay(2025, 2, 17));
    EXPECT_FALSE(smith->currentDate());
    book->redo();
    EXPECT_EQ(smith->currentDate(), onDay(2025, 2, 17));
    moveTo(onDay(2025, 2, 18));
    EXPECT_EQ(smith->currentDate(), onDay(2025, 2, 18));
}

TEST_F(TKAccountTest, AFaultAwakesWithTheNewDayWhenItIsRead) {
    const auto house = book.property("Elm Street");
    ASSERT_TRUE(book->save());
    book->refreshObjectMergeChanges(*house, false);
    moveTo(onDay(2025, 2, 17));
    EXPECT_EQ(house->currentDate(), onDay(2025, 2, 17));
    EXPECT_EQ(timesToldOnce(*house), 1u);
    EXPECT_FALSE(book->hasChanges());
}

// Lives that end

TEST_F(TKAccountTest, ADeletedAccountFollowsTheDayNoMore) {
    const auto house = book.property("Elm Street");
    book->deleteObject(*house);
    moveTo(onDay(2025, 2, 17));
    EXPECT_EQ(house->currentDate(), onDay(2025, 2, 16));
    ASSERT_TRUE(book->save());
    moveTo(onDay(2025, 2, 18));
    EXPECT_FALSE(house->currentDate());
}

TEST_F(TKAccountTest, AnAccountWhoseContextEndedFollowsTheDayNoMore) {
    Ref<TKProperty> house;
    Ref<TKTenant> smith;
    {
        const Book shortLived;
        house = shortLived.property("Elm Street");
        smith = shortLived.tenant("A. Smith");
    }
    moveTo(onDay(2025, 2, 17));
    EXPECT_FALSE(house->currentDate());
    EXPECT_FALSE(smith->currentDate());
    EXPECT_THROW(house->removeObservers(), RangeException) << "nothing is left registered";
}

TEST_F(TKAccountTest, AResetContextsAccountsFollowTheDayNoMore) {
    const auto house = book.property("Elm Street");
    book->reset();
    moveTo(onDay(2025, 2, 17));
    EXPECT_FALSE(house->currentDate());
}

TEST_F(TKAccountTest, ALeftoverRegistrationOutlivesItsAccountWithoutHarm) {
    {
        const Book shortLived;
        for (int times = 0; times < 3; ++times)
            shortLived.property("Elm Street")->awakeFromSnapshotEvents(SnapshotUndoUpdate);
    }
    moveTo(onDay(2025, 2, 17));
    EXPECT_EQ(TKCurrentDateController::sharedInstance().currentDate(), onDay(2025, 2, 17));
}

TEST_F(TKAccountTest, ALeftoverRegistrationOfAnAccountThatIsStillHeldOnlySetsItsDate) {
    Ref<TKProperty> house;
    {
        const Book shortLived;
        house = shortLived.property("Elm Street");
        house->awakeFromSnapshotEvents(SnapshotUndoUpdate);
    }
    moveTo(onDay(2025, 2, 17));
    EXPECT_EQ(house->currentDate(), onDay(2025, 2, 17));
}

TEST_F(TKAccountTest, AnObserverOfAnAccountMayDieBeforeIt) {
    const auto house = book.property("Elm Street");
    makeRef<Listener>()->listenTo(*house, "currentTenures");
    const auto other = makeRef<Listener>();
    other->listenTo(*house, "currentTenures");
    moveTo(onDay(2025, 2, 17));
    EXPECT_EQ(other->times("currentTenures"), 1u);
}

TEST_F(TKAccountTest, AnAccountMayDieBeforeItsObserver) {
    const auto listener = makeRef<Listener>();
    {
        const Book shortLived;
        listener->listenTo(*shortLived.property("Elm Street"), "currentTenures");
        moveTo(onDay(2025, 2, 17));
    }
    moveTo(onDay(2025, 2, 18));
    EXPECT_EQ(listener->times("currentTenures"), 1u);
}

TEST_F(TKAccountTest, AnAccountMayBeDeletedWhileTheDayMovesOn) {
    const auto first = book.property("Elm Street");
    const auto second = book.property("Oak Street");
    class Deleter final : public ObservableObject {
    public:
        explicit Deleter(TKProperty& victim) : victim_(&victim) {}
        void observeValueForKeyPathOfObjectChangeContext(std::string_view, ObservableObject&,
                                                         const KeyValueChange&, const void*) override {
            victim_->managedObjectContext()->deleteObject(*victim_);
        }

    private:
        Ref<TKProperty> victim_;
    };
    const auto deleter = makeRef<Deleter>(*second);
    first->addObserverForKeyPathOptionsContext(*deleter, "currentDate", ObservingNothing, nullptr);
    moveTo(onDay(2025, 2, 17));
    EXPECT_EQ(first->currentDate(), onDay(2025, 2, 17));
    EXPECT_EQ(second->currentDate(), onDay(2025, 2, 16)) << "it was gone before its turn";
    EXPECT_TRUE(second->isDeleted());
}

} // namespace
} // namespace estatebook
