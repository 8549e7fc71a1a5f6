// SPDX-License-Identifier: MIT

// Registrations that end with a token, for observers and for functions.

#include "support/ObservedPerson.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace estatebook::platform {
namespace {

using test::Person;
using test::text;
using test::watch;
using test::Watcher;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<ObservationToken>);
static_assert(!std::is_copy_assignable_v<ObservationToken>);
static_assert(std::is_nothrow_move_constructible_v<ObservationToken>);
static_assert(std::is_nothrow_move_assignable_v<ObservationToken>);

const char firstToken = 0;
const char secondToken = 0;

TEST(ObservationTokenTest, AnObserverIsToldAsLongAsItsTokenLives) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    {
        const auto token = anna->observe("amount", *watcher, ObservingNew, &firstToken);
        EXPECT_TRUE(token);
        anna->setAmount(Decimal(5));
        ASSERT_EQ(watcher->heard.size(), 1u);
        EXPECT_EQ(watcher->heard[0].context, &firstToken);
        EXPECT_EQ(watcher->heard[0].change.newValue.decimal(), Decimal(5));
    }
    anna->setAmount(Decimal(6));
    EXPECT_EQ(watcher->heard.size(), 1u);
}

TEST(ObservationTokenTest, AFunctionIsCalledWithAsMuchAsItTakes) {
    const auto anna = makeRef<Person>();
    std::vector<std::string> told;
    const auto whole = anna->observe(
        "amount",
        [&](ObservableObject& object, const KeyValueChange& change) {
            EXPECT_EQ(&object, anna.get());
            told.push_back("whole " + change.newValue.description());
        },
        ObservingNew);
    const auto change = anna->observe("amount", [&](const KeyValueChange& each) {
        EXPECT_TRUE(each.newValue.isAbsent()) << "it did not ask for values";
        told.push_back("change");
    });
    const auto nothing = anna->observe("amount", [&] { told.push_back("nothing"); });
    anna->setAmount(Decimal(5));
    EXPECT_THAT(told, ElementsAre("whole 5", "change", "nothing"));
}

TEST(ObservationTokenTest, AFunctionMayOwnWhatItNeeds) {
    const auto anna = makeRef<Person>();
    auto token = anna->observe("amount", [count = std::make_unique<int>(0)] { ++*count; });
    anna->setAmount(Decimal(5));
    token.end();
    anna->setAmount(Decimal(6));
}

TEST(ObservationTokenTest, ObserversAndFunctionsAreToldInTheOrderOfRegistration) {
    const auto anna = makeRef<Person>();
    std::vector<int> order;
    const auto watcher = makeRef<Watcher>([&](const auto&) { order.push_back(2); });
    const auto first = anna->observe("amount", [&] { order.push_back(1); });
    watch(*anna, *watcher, "amount");
    const auto third = anna->observe("amount", [&] { order.push_back(3); });
    anna->setAmount(Decimal(5));
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST(ObservationTokenTest, OnlyTheTokenThatHoldsItEndsARegistration) {
    const auto anna = makeRef<Person>();
    int told = 0;
    ObservationToken outer;
    EXPECT_FALSE(outer);
    {
        ObservationToken inner = anna->observe("amount", [&] { ++told; });
        outer = std::move(inner);
        EXPECT_FALSE(inner); // NOLINT(bugprone-use-after-move)
        inner.end();
    }
    anna->setAmount(Decimal(1));
    EXPECT_EQ(told, 1);
    ObservationToken moved(std::move(outer));
    EXPECT_TRUE(moved);
    moved.end();
    EXPECT_FALSE(moved);
    moved.end();
    anna->setAmount(Decimal(2));
    EXPECT_EQ(told, 1);
}

TEST(ObservationTokenTest, AnotherTokenInItsPlaceEndsARegistration) {
    const auto anna = makeRef<Person>();
    const auto bert = makeRef<Person>();
    std::vector<std::string> told;
    ObservationToken token = anna->observe("amount", [&] { told.push_back("anna"); });
    token = bert->observe("amount", [&] { told.push_back("bert"); });
    anna->setAmount(Decimal(1));
    bert->setAmount(Decimal(1));
    EXPECT_THAT(told, ElementsAre("bert"));
    ObservationToken& itself = token;
    token = std::move(itself);
    EXPECT_TRUE(token) << "moved into itself";
}

TEST(ObservationTokenTest, ATokenThatOutlivesItsObjectEndsWithoutAWord) {
    auto anna = makeRef<Person>();
    auto token = anna->observe("amount", [] {});
    auto path = anna->observe("owner.amount", [] {});
    anna = nullptr;
    EXPECT_FALSE(token);
    EXPECT_FALSE(path);
    token.end();
}

TEST(ObservationTokenTest, ATokenKeepsNobodyAlive) {
    const auto anna = makeRef<Person>();
    auto watcher = makeRef<Watcher>();
    const auto token = anna->observe("amount", *watcher);
    EXPECT_EQ(watcher->referenceCount(), 1u);
    EXPECT_EQ(anna->referenceCount(), 1u);
    watcher = nullptr;
    anna->setAmount(Decimal(1));
}

TEST(ObservationTokenTest, ARegistrationTakenAwayOtherwiseIsNotTakenTwice) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    auto token = anna->observe("amount", *watcher, ObservingNothing, &firstToken);
    anna->removeObserverForKeyPathContext(*watcher, "amount", &firstToken);
    anna->addObserverForKeyPathOptionsContext(*watcher, "amount", ObservingNothing, &secondToken);
    token.end();
    anna->setAmount(Decimal(1));
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_EQ(watcher->heard[0].context, &secondToken);
}

TEST(ObservationTokenTest, ATokenEndsARegistrationWithItsOwnOptions) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    auto plain = anna->observe("amount", *watcher);
    const auto curious = anna->observe("amount", *watcher, ObservingNew);
    plain.end();
    anna->setAmount(Decimal(1));
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_FALSE(watcher->heard[0].change.newValue.isAbsent());
}

TEST(ObservationTokenTest, AFunctionMayEndItsOwnToken) {
    const auto anna = makeRef<Person>();
    int told = 0;
    ObservationToken token;
    std::string held = "the function's own, and long enough to stand elsewhere";
    token = anna->observe("amount", [&token, &told, held] {
        token.end();
        told += held.empty() ? 0 : 1;
    });
    anna->setAmount(Decimal(1));
    anna->setAmount(Decimal(2));
    EXPECT_EQ(told, 1);
}

TEST(ObservationTokenTest, AFunctionThatEndsItsTokenInACallWithinACallLastsUntilTheFirstReturns) {
    for (const bool isAlone : {true, false}) {
        const auto anna = makeRef<Person>();
        const auto alongside = isAlone ? ObservationToken() : anna->observe("amount", [] {});
        const auto life = std::make_shared<int>(0);
        std::vector<long> holders;
        ObservationToken token;
        token = anna->observe("amount", [&token, &anna, &holders, life] {
            if (++*life == 1)
                anna->setAmount(Decimal(2));
            else
                token.end();
            holders.push_back(life.use_count());
        });
        anna->setAmount(Decimal(1));
        EXPECT_THAT(holders, ElementsAre(2, 2)) << "alone: " << isAlone;
        EXPECT_EQ(life.use_count(), 1) << "alone: " << isAlone;
        anna->setAmount(Decimal(3));
        EXPECT_EQ(*life, 2) << "alone: " << isAlone;
    }
}

TEST(ObservationTokenTest, AFunctionMayEndItsTokenAndItsObject) {
    for (const bool isAlone : {true, false}) {
        auto anna = makeRef<Person>();
        const auto alongside = isAlone ? ObservationToken() : anna->observe("amount", [] {});
        const auto life = std::make_shared<int>(0);
        ObservationToken token;
        token = anna->observe("amount", [&token, &anna, life] {
            anna = nullptr;
            token.end();
            ++*life;
        });
        Person* held = anna.get();
        held->setAmount(Decimal(1));
        EXPECT_EQ(*life, 1);
        EXPECT_EQ(life.use_count(), 1) << "alone: " << isAlone;
    }
}

TEST(ObservationTokenTest, AFunctionMayEndTheNextOne) {
    const auto anna = makeRef<Person>();
    std::vector<int> told;
    ObservationToken second;
    const auto first = anna->observe("amount", [&] {
        told.push_back(1);
        second.end();
    });
    second = anna->observe("amount", [&] { told.push_back(2); });
    const auto third = anna->observe("amount", [&] { told.push_back(3); });
    anna->setAmount(Decimal(1));
    EXPECT_THAT(told, ElementsAre(1, 3));
}

TEST(ObservationTokenTest, AFunctionMayObserveMoreWhileItIsCalled) {
    const auto anna = makeRef<Person>();
    std::vector<int> told;
    std::vector<ObservationToken> more;
    const auto first = anna->observe("amount", [&] {
        told.push_back(1);
        more.push_back(anna->observe("amount", [&] { told.push_back(2); }));
    });
    anna->setAmount(Decimal(1));
    EXPECT_THAT(told, ElementsAre(1));
    anna->setAmount(Decimal(2));
    EXPECT_THAT(told, ElementsAre(1, 1, 2));
}

TEST(ObservationTokenTest, InitialAndPriorReachFunctionsToo) {
    const auto anna = makeRef<Person>();
    anna->setAmount(Decimal(1));
    std::vector<std::string> told;
    const auto token = anna->observe(
        "amount",
        [&](const KeyValueChange& change) {
            told.push_back(std::string(change.isPrior ? "prior " : "") + change.oldValue.description() + " " +
                           change.newValue.description());
        },
        ObservingInitial | ObservingPrior | ObservingOld | ObservingNew);
    EXPECT_THAT(told, ElementsAre("(null) 1"));
    anna->setAmount(Decimal(2));
    EXPECT_THAT(told, ElementsAre("(null) 1", "prior 1 (null)", "1 2"));
}

TEST(ObservationTokenTest, AnExceptionOfAFunctionThatIsToldAtOnceLeavesNoRegistration) {
    const auto anna = makeRef<Person>();
    int told = 0;
    const auto fail = [&] {
        ++told;
        throw RangeException("no");
    };
    EXPECT_THROW(static_cast<void>(anna->observe("amount", fail, ObservingInitial)), RangeException);
    anna->setAmount(Decimal(1));
    EXPECT_EQ(told, 1);
}

TEST(ObservationTokenTest, AnExceptionOfAFunctionLeavesTheSetterAfterAllOthersWereTold) {
    const auto anna = makeRef<Person>();
    int told = 0;
    const auto first = anna->observe("amount", [] { throw RangeException("first"); });
    const auto second = anna->observe("amount", [] { throw OverflowException("second"); });
    const auto third = anna->observe("amount", [&] { ++told; });
    EXPECT_THROW(anna->setAmount(Decimal(1)), RangeException);
    EXPECT_EQ(anna->amount(), Decimal(1));
    EXPECT_EQ(told, 1);
}

TEST(ObservationTokenTest, TheOnlyFunctionsExceptionLeavesTheSetter) {
    const auto anna = makeRef<Person>();
    auto token = anna->observe("balance", [] { throw RangeException("only"); });
    EXPECT_THROW(anna->setAmount(Decimal(1)), RangeException);
    EXPECT_EQ(anna->amount(), Decimal(1));
    token.end();
    EXPECT_NO_THROW(anna->setAmount(Decimal(2)));
}

TEST(ObservationTokenTest, APathIsFollowedUntilItsTokenEnds) {
    const auto anna = makeRef<Person>();
    const auto bert = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    int told = 0;
    auto ofFunction = anna->observe("owner.amount", [&] { ++told; });
    auto ofObserver = anna->observe("owner.amount", *watcher);
    anna->setOwner(bert);
    bert->setAmount(Decimal(1));
    EXPECT_EQ(told, 2);
    EXPECT_EQ(watcher->heard.size(), 2u);
    ofFunction.end();
    bert->setAmount(Decimal(2));
    EXPECT_EQ(told, 2);
    EXPECT_EQ(watcher->heard.size(), 3u);
    ofObserver.end();
    bert->setAmount(Decimal(3));
    anna->setOwner(nullptr);
    EXPECT_EQ(watcher->heard.size(), 3u);
}

TEST(ObservationTokenTest, TheLatestOfSeveralPathsOfAnObserverIsRemovedFirst) {
    const auto anna = makeRef<Person>();
    const auto watcher = makeRef<Watcher>();
    for (const char* token : {&firstToken, &secondToken, &firstToken})
        anna->addObserverForKeyPathOptionsContext(*watcher, "owner.amount", ObservingNothing, token);
    anna->removeObserverForKeyPath(*watcher, "owner.amount");
    anna->removeObserverForKeyPath(*watcher, "owner.amount");
    anna->setOwner(makeRef<Person>());
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_EQ(watcher->heard[0].context, &firstToken);
}

TEST(ObservationTokenTest, AnObjectThatNobodyObservesAnyMoreAnnouncesNothing) {
    const auto anna = makeRef<test::Person>();
    for (int round = 0; round < 3; ++round) {
        int told = 0;
        {
            const auto one = anna->observe("amount", [&] { ++told; });
            const auto other = anna->observe("name", [&] { ++told; });
            anna->setAmount(Decimal(round));
            anna->setName(text("Anna"));
        }
        anna->setAmount(Decimal(-1));
        EXPECT_EQ(told, 2);
    }
}

TEST(ObservationTokenTest, VeryManyTokensEndInAnyOrder) {
    const auto anna = makeRef<Person>();
    constexpr std::size_t Count = 20000;
    std::size_t told = 0;
    std::vector<ObservationToken> tokens;
    for (std::size_t number = 0; number < Count; ++number)
        tokens.push_back(anna->observe("amount", [&] { ++told; }));
    for (std::size_t number = 0; number < Count; number += 2) tokens[number].end();
    anna->setAmount(Decimal(1));
    EXPECT_EQ(told, Count / 2);
    for (std::size_t number = Count; number-- > 0;) tokens[number].end();
    anna->setAmount(Decimal(2));
    EXPECT_EQ(told, Count / 2);
}

TEST(ObservationTokenTest, VeryManyObserversAreRemovedByThemselves) {
    const auto anna = makeRef<Person>();
    constexpr std::size_t Count = 20000;
    std::vector<Ref<Watcher>> watchers;
    for (std::size_t number = 0; number < Count; ++number) {
        watchers.push_back(makeRef<Watcher>());
        watch(*anna, *watchers.back(), "amount");
    }
    for (const auto& watcher : watchers) test::unwatch(*anna, *watcher, "amount");
    EXPECT_THROW(test::unwatch(*anna, *watchers.front(), "amount"), RangeException);
    anna->setAmount(Decimal(1));
    for (const auto& watcher : watchers) ASSERT_THAT(watcher->heard, IsEmpty());
}

} // namespace
} // namespace estatebook::platform
