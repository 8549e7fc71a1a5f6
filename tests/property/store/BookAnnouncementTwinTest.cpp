// SPDX-License-Identifier: MIT

// A random book, observed on every key of every object or on a few, against a twin that follows the declared dependencies by
// brute force: who is told of what, how often, and every will before its did.

#include "billing/TKPeriodicBilling.hpp"
#include "model/Keys.hpp"
#include "store/TKCurrentDateController.hpp"
#include "store/TKPropertyTransaction.hpp"
#include "store/TKState.hpp"
#include "store/TKTenureTransaction.hpp"
#include "support/Book.hpp"
#include "support/DeclaredDependencies.hpp"
#include "support/HeldClock.hpp"
#include "tags/TKTagNames.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::onDay;
using bookkit::text;

const testkit::Dependencies& dependenciesOf(const ManagedObject& object) {
    return testkit::dependenciesOf(std::string(object.entity().managedObjectClassName()));
}

using Told = std::pair<const ManagedObject*, std::string>;
using Counts = std::map<Told, int>;

std::string shown(const Told& told) {
    return told.first->description() + " " + told.second;
}

struct Objection {
    Told told;
    bool isPrior;
};

/// Hears of the coming and the happening of every change.
class Recorder final : public ObservableObject {
public:
    static std::set<std::string> keysOf(ManagedObject& object) {
        std::set<std::string> keys{"currencyCode", "billingMode"};
        object.forEachModelledProperty(
            [&](const ModelledProperty& property) { keys.emplace(property.key.name()); });
        for (const auto& [dependent, affecting] : dependenciesOf(object)) keys.insert(dependent);
        return keys;
    }
    void observe(ManagedObject& object, const std::string& key) {
        if (observed.insert({&object, key}).second)
            object.addObserverForKeyPathOptionsContext(*this, key, ObservingPrior, nullptr);
    }
    void ignore(ManagedObject& object, const std::string& key) {
        if (observed.erase({&object, key}) > 0) object.removeObserverForKeyPath(*this, key);
    }
    void observeValueForKeyPathOfObjectChangeContext(std::string_view keyPath, ObservableObject& object,
                                                     const KeyValueChange& change, const void*) override {
        const Told told{dynamic_cast<ManagedObject*>(&object), std::string(keyPath)};
        if (change.isPrior) {
            ++coming[told];
        } else {
            ++happened[told];
            EXPECT_LE(happened[told], coming[told]) << shown(told) << " was not announced before";
        }
        if (objects && objects(told)) throw Objection{told, change.isPrior};
    }
    /// Whether the observer raises.
    std::function<bool(const Told&)> objects;
    std::set<Told> observed;
    Counts coming;
    Counts happened;
};

/// Follows a change of a key to everything that must be told of it, each thing once.
class Closure {
public:
    void change(const ManagedObject& object, const std::string& key) {
        reached_.clear();
        reach({&object, key});
        for (const Told& told : reached_) ++expected[told];
        // The tenure hears of its own chargeable periods and sets its schedule.
        const auto reached = reached_;
        for (const Told& told : reached)
            if (told.second == "chargablePeriods") change(*told.first, "periods");
    }
    Counts expected;

private:
    void reach(const Told& told) {
        if (!reached_.insert(told).second) return;
        const auto& [object, key] = told;
        for (const auto& [dependent, affecting] : dependenciesOf(*object))
            if (affecting.contains(key)) reach({object, dependent});
        if (key == "amount" || key == "adjustment") {
            if (const auto* payment = dynamic_cast<const TKTenureTransaction*>(object)) {
                if (!payment->tenure()) return;
                reach({payment->tenure(), "totalIncome"});
                reach({payment->tenure(), "totalAdjustment"});
            } else if (const auto* cost = dynamic_cast<const TKPropertyTransaction*>(object)) {
                if (cost->property()) reach({cost->property(), "totalIncome"});
            }
        }
        const auto* tenure = dynamic_cast<const TKTenure*>(object);
        if (!tenure || !tenure->property()) return;
        if (key == "balance") reach({tenure->property(), "tenureBalance"});
        if (key == "totalIncome") reach({tenure->property(), "tenureIncome"});
    }
    std::set<Told> reached_;
};

class BookAnnouncementTwinTest : public testing::Test {
protected:
    BookAnnouncementTwinTest() {
        std::random_device entropy;
        const std::uint64_t seed = (std::uint64_t{entropy()} << 32) | entropy();
        std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
        random_.seed(seed);
        TKCurrentDateController::sharedInstance().dailyUpdate();
        currency_ =
            TKState::stateForKeyInManagedObjectContext(Ref<String>(TKCurrencyCodeStateName), book_.context());
        mode_ =
            TKState::stateForKeyInManagedObjectContext(Ref<String>(TKBillingModeStateName), book_.context());
        for (const char* name : {"Elm", "Oak", "Ash"}) {
            flats_.push_back(book_.property(name));
            tenants_.push_back(book_.tenant(name));
        }
        for (int count = 0; count < 5; ++count) {
            tenures_.push_back(
                book_.tenure(onDay(2024, 1 + count, 31), TKBillingCycleMonth, 1, Decimal(900)));
            tenures_.back()->setProperty(flats_[below(3)].get());
            tenures_.back()->setTenant(tenants_[below(3)].get());
            for (int each = 0; each < 2; ++each) payments_.emplace_back(tenures_.back()->createTransaction());
            costs_.emplace_back(flats_[below(3)]->createTransaction());
        }
    }

    /// One of so many keys of every object.
    void observeOneOf(std::size_t share) {
        share_ = share;
        for (const auto& list : {all(flats_), all(tenants_), all(tenures_), all(payments_), all(costs_)})
            for (ManagedObject* object : list) observeSomeOf(*object);
        observeSomeOf(*currency_);
    }
    void observeSomeOf(ManagedObject& object) {
        for (const std::string& key : Recorder::keysOf(object))
            if (below(share_) == 0) recorder_->observe(object, key);
    }
    /// An observer comes to some object, and one goes.
    void comeAndGo() {
        ManagedObject& object = below(2) == 0 ? static_cast<ManagedObject&>(*any(payments_)) : *any(tenures_);
        const auto keys = Recorder::keysOf(object);
        recorder_->observe(object, *std::next(keys.begin(), static_cast<std::ptrdiff_t>(below(keys.size()))));
        for (const std::string& key : keys)
            if (below(share_) == 0) recorder_->ignore(object, key);
    }

    template <class T>
    static std::vector<ManagedObject*> all(const std::vector<Ref<T>>& objects) {
        std::vector<ManagedObject*> all;
        for (const auto& object : objects) all.push_back(object.get());
        return all;
    }
    std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
    }
    template <class T>
    const Ref<T>& any(const std::vector<Ref<T>>& objects) {
        return objects[below(objects.size())];
    }
    Decimal someAmount() { return Decimal(static_cast<std::int64_t>(below(3000)) - 1000); }

    /// Where a link of a letting or a payment leads is told by both ends.
    void expectMove(const ManagedObject& object, const char* key, const ManagedObject* from,
                    const ManagedObject* to, const char* inverse) {
        closure_.change(object, key);
        if (from == to) return;
        if (from) closure_.change(*from, inverse);
        if (to) closure_.change(*to, inverse);
    }

    std::string editOnce() { return editOnce(below(14)); }
    std::string editOnce(std::size_t what);
    void expectAgreement() {
        for (const auto& [told, count] : closure_.expected) {
            if (!recorder_->observed.contains(told)) continue;
            EXPECT_EQ(recorder_->happened[told], count) << shown(told);
            EXPECT_EQ(recorder_->coming[told], count) << shown(told);
        }
        for (const auto& [told, count] : recorder_->happened)
            EXPECT_TRUE(count == 0 || closure_.expected.contains(told)) << shown(told) << " was told in vain";
    }
    void forget() {
        recorder_->coming.clear();
        recorder_->happened.clear();
        closure_.expected.clear();
    }

    std::mt19937_64 random_;
    testkit::HeldClock clock_{onDay(2025, 3, 30)};
    const Book book_;
    Ref<TKState> currency_;
    Ref<TKState> mode_;
    std::vector<Ref<TKProperty>> flats_;
    std::vector<Ref<TKTenant>> tenants_;
    std::vector<Ref<TKTenure>> tenures_;
    std::vector<Ref<TKTenureTransaction>> payments_;
    std::vector<Ref<TKPropertyTransaction>> costs_;
    Ref<Recorder> recorder_ = makeRef<Recorder>();
    std::size_t share_ = 1;
    Closure closure_;
};

/// Makes a change and works out who is to hear of it; tells what it was.
std::string BookAnnouncementTwinTest::editOnce(std::size_t what) {
    switch (what) {
    case 0: {
        const auto& payment = any(payments_);
        closure_.change(*payment, "amount");
        payment->setAmount(someAmount());
        return "amount of a payment";
    }
    case 1: {
        const auto& payment = any(payments_);
        closure_.change(*payment, "adjustment");
        payment->setAdjustment(Number(below(2) == 0));
        return "adjustment of a payment";
    }
    case 2: {
        const auto& cost = any(costs_);
        closure_.change(*cost, "amount");
        cost->setAmount(someAmount());
        return "amount of a cost";
    }
    case 3: {
        const auto& payment = any(payments_);
        closure_.change(*payment, "what");
        payment->setWhat(text("Rent"));
        return "what of a payment";
    }
    case 4: {
        const auto& tenure = any(tenures_);
        static constexpr std::array Terms{"rentalAmount",      "bondAmount",    "rentalPeriod",
                                          "chargeBehaviour",   "advancePeriod", "advanceBillingCycle",
                                          "chargeFullDuration"};
        const char* key = Terms[below(Terms.size())];
        closure_.change(*tenure, key);
        if (key == std::string_view("advanceBillingCycle"))
            tenure->setAdvanceBillingCycle(Number(std::uint64_t{TKBillingCycleMonth}));
        else
            tenure->setValueForKey(Value(Number(std::uint64_t{1 + below(2)})), key);
        return "term " + std::string(key);
    }
    case 5: {
        const auto& tenure = any(tenures_);
        closure_.change(*tenure, "startDate");
        tenure->setStartDate(onDay(2024, 1 + static_cast<int>(below(12)), 31 - 3));
        return "start of a tenure";
    }
    case 6: {
        const auto& tenure = any(tenures_);
        closure_.change(*tenure, "endDate");
        tenure->setEndDate(below(3) == 0 ? std::nullopt : std::optional(onDay(2025, 6, 15)));
        return "end of a tenure";
    }
    case 7: {
        const auto& tenure = any(tenures_);
        TKProperty* to = below(4) == 0 ? nullptr : any(flats_).get();
        expectMove(*tenure, "property", tenure->property(), to, "tenures");
        tenure->setProperty(to);
        return "property of a tenure";
    }
    case 8: {
        const auto& tenure = any(tenures_);
        TKTenant* to = below(4) == 0 ? nullptr : any(tenants_).get();
        expectMove(*tenure, "tenant", tenure->tenant(), to, "tenures");
        tenure->setTenant(to);
        return "tenant of a tenure";
    }
    case 9: {
        const auto& payment = any(payments_);
        TKTenure* to = below(5) == 0 ? nullptr : any(tenures_).get();
        expectMove(*payment, "tenure", payment->tenure(), to, "transactions");
        payment->setTenure(to);
        return "tenure of a payment";
    }
    case 10: {
        clock_.pass(86400);
        for (const auto& list : {all(flats_), all(tenants_), all(tenures_)})
            for (const ManagedObject* object : list) closure_.change(*object, "currentDate");
        TKCurrentDateController::sharedInstance().dailyUpdate();
        return "the day";
    }
    case 11: {
        closure_.change(*currency_, "value");
        for (const auto& tenure : tenures_) closure_.change(*tenure, "currencyCode");
        currency_->setValue(Value(text(below(2) == 0 ? "EUR" : "JPY")));
        return "the currency";
    }
    case 12: {
        for (const auto& tenure : tenures_) closure_.change(*tenure, "billingMode");
        mode_->setValue(Value(std::uint64_t{below(2)}));
        return "the billing mode";
    }
    default: {
        const auto& tenure = any(tenures_);
        const Ref<TKTenureTransaction> made(tenure->createTransaction());
        closure_.change(*tenure, "transactions");
        closure_.change(*made, "amount");
        // Nobody observed the newcomer yet.
        closure_.expected.erase({made.get(), "amount"});
        observeSomeOf(*made);
        payments_.push_back(made);
        return "a new payment";
    }
    }
}

TEST_F(BookAnnouncementTwinTest, WhoeverIsTouchedByAChangeIsToldOnceAndNobodyElse) {
    observeOneOf(1);
    for (int step = 0; step < 1500 && !HasFailure(); ++step) {
        forget();
        SCOPED_TRACE(editOnce());
        expectAgreement();
    }
}

TEST_F(BookAnnouncementTwinTest, WhoeverObservesFewKeysIsToldOfThemAllTheSame) {
    observeOneOf(12);
    for (int step = 0; step < 3000 && !HasFailure(); ++step) {
        forget();
        comeAndGo();
        SCOPED_TRACE(editOnce());
        expectAgreement();
    }
}

TEST_F(BookAnnouncementTwinTest, WhoRaisesKeepsNobodyElseFromBeingToldAndTheFirstExceptionLeaves) {
    observeOneOf(1);
    for (int step = 0; step < 1500 && !HasFailure(); ++step) {
        forget();
        std::optional<Told> first;
        recorder_->objects = [&](const Told& told) {
            if (below(20) != 0) return false;
            if (!first) first = told;
            return true;
        };
        // All but the making of an object, which is several changes.
        const std::size_t what = below(13);
        SCOPED_TRACE("edit " + std::to_string(what));
        std::optional<Told> left;
        try {
            editOnce(what);
        } catch (const Objection& objection) {
            left = objection.told;
        }
        EXPECT_EQ(left, first);
        expectAgreement();
    }
}

} // namespace
} // namespace estatebook
