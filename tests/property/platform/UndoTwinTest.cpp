// SPDX-License-Identifier: MIT

// Random edits of a book, taken back and done again step by step. The twin is a plain memory: a full description of
// the book, derived values included, written down after each step and compared on the way back and forth.

#include "billing/TKPeriodicBilling.hpp"
#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/MutableOrderedSet.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Set.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKProperty.hpp"
#include "store/TKPropertyTransaction.hpp"
#include "store/TKState.hpp"
#include "store/TKTenant.hpp"
#include "store/TKTenureNote.hpp"
#include "store/TKTenureTransaction.hpp"
#include "tags/TKTag.hpp"
#include "tags/TKTagNames.hpp"
#include "tenure/TKTenure.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

/// A book that is edited at random.
class Script {
public:
    Script(std::uint64_t seed, bool saves) : random_(seed), saves_(saves) {
        // The first look-up would make them, and an undo would leave them.
        for (String* name : {TKCurrencyCodeStateName, TKBillingModeStateName})
            static_cast<void>(TKState::stateForKeyInManagedObjectContext(Ref<String>(name), *context_));
    }

    void edit() {
        // A step is there to be undone even when its edits come to nothing.
        undo_->registerUndo(&mark_, mark_);
        for (std::size_t count = 1 + below(4); count > 0; --count) {
            try {
                editOnce();
            } catch (const Exception&) {
                // Terms that cannot be reckoned with; they stay set.
            }
        }
        undo_->endEvent();
    }
    void undo() {
        swallow([&] { undo_->undo(); });
    }
    void redo() {
        swallow([&] { undo_->redo(); });
    }
    [[nodiscard]] bool canUndo() const { return undo_->canUndo(); }
    [[nodiscard]] bool canRedo() const { return undo_->canRedo(); }

    [[nodiscard]] std::string description() {
        std::string text;
        for (const char* entity :
             {"Property", "Tenant", "Tenure", "Transaction", "Note", "AccountTag", "State"}) {
            // A save makes tags of names, and an undo leaves them to the next save.
            if (saves_ && std::string_view(entity) == "AccountTag") continue;
            const auto found = context_->executeFetchRequest({entity});
            for (const auto& object : *found) describe(*object, text);
        }
        return text;
    }

private:
    template <class Action>
    static void swallow(Action action) {
        try {
            action();
        } catch (const Exception&) {
            // An observer could not reckon with the terms that came back; they came back all the same.
        }
    }

    std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
    }
    template <class T>
    Ref<T> any(std::string_view entity) {
        const auto all = context_->fetchAll<T>(entity);
        return all.empty() ? nullptr : all[below(all.size())];
    }
    Ref<String> someText() {
        static constexpr const char* Texts[] = {"Elm", "Oak", "Ash", "Yew"};
        return below(5) == 0 ? nullptr : String::make(Texts[below(4)]);
    }
    std::optional<Decimal> someAmount() {
        if (below(6) == 0) return std::nullopt;
        return Decimal(static_cast<std::int64_t>(below(2000)) - 700);
    }
    std::optional<Number> someNumber(std::size_t bound) {
        if (below(8) == 0) return std::nullopt;
        return Number(static_cast<std::uint64_t>(below(bound)));
    }
    std::optional<Date> someDate() {
        if (below(6) == 0) return std::nullopt;
        return Date{static_cast<double>(86400 * (7000 + below(400)))};
    }

    void editOnce() {
        switch (below(16)) {
        case 0:
            if (count("Property") < 4) context_->insertNewObject<TKProperty>("Property")->setName(someText());
            break;
        case 1:
            if (count("Tenant") < 3) context_->insertNewObject<TKTenant>("Tenant")->setName(someText());
            break;
        case 2:
            if (count("Tenure") < 4) {
                const auto tenure = context_->insertNewObject<TKTenure>("Tenure");
                tenure->setStartDate(someDate());
                tenure->setRentalBillingCycle(Number(std::uint64_t{TKBillingCycleMonth}));
                tenure->setProperty(any<TKProperty>("Property").get());
                tenure->setTenant(any<TKTenant>("Tenant").get());
            }
            break;
        case 3:
            if (const auto tenure = any<TKTenure>("Tenure"))
                tenure->createTransaction()->setAmount(someAmount());
            break;
        case 4:
            if (const auto flat = any<TKProperty>("Property"))
                flat->createTransaction()->setAmount(someAmount());
            break;
        case 5:
            if (const auto tenure = any<TKTenure>("Tenure")) tenure->createNote();
            break;
        case 6:
            if (const auto tenure = any<TKTenure>("Tenure")) editTerms(*tenure);
            break;
        case 7:
            if (const auto transaction = any<TKTransaction>("Transaction")) {
                transaction->setAmount(someAmount());
                transaction->setAdjustment(someNumber(2));
                transaction->setWhen(someDate());
            }
            break;
        case 8:
            if (const auto tenure = any<TKTenure>("Tenure"))
                tenure->setProperty(below(4) == 0 ? nullptr : any<TKProperty>("Property").get());
            break;
        case 9:
            if (const auto payment = any<TKTenureTransaction>("TenureTransaction"))
                payment->setTenure(any<TKTenure>("Tenure").get());
            break;
        case 10:
            if (const auto account = any<TKAccount>("Account")) {
                account->setTagNames(TKTagNames::initWithEditableString("Rent, Repairs"));
                account->setName(someText());
            }
            break;
        case 11:
            if (const auto account = any<TKAccount>("Account"); account && !saves_) editTags(*account);
            break;
        case 12:
            TKState::updateStateWithNameValueInManagedObjectContext(
                Ref<String>(TKCurrencyCodeStateName), Value(String::make(below(2) == 0 ? "EUR" : "JPY")),
                *context_);
            break;
        case 13:
        case 14: {
            static constexpr const char* Entities[] = {"Transaction", "Note", "Tenure", "Account"};
            const auto object = any<ManagedObject>(Entities[below(4)]);
            if (object && !hasTenures(*object)) context_->deleteObject(*object);
            break;
        }
        case 15:
            if (saves_) context_->save();
            break;
        }
    }
    void editTerms(TKTenure& tenure) {
        switch (below(6)) {
        case 0:
            return tenure.setRentalAmount(someAmount());
        case 1:
            return tenure.setRentalPeriod(someNumber(3));
        case 2:
            return tenure.setStartDate(someDate());
        case 3:
            return tenure.setEndDate(someDate());
        case 4:
            return tenure.setChargeBehaviour(someNumber(4));
        case 5:
            return tenure.setBondAmount(someAmount());
        }
    }
    void editTags(TKAccount& account) {
        auto tags = account.mutableOrderedSetValueForKey(keys::tags);
        if (tags.count() > 0 && below(2) == 0)
            tags.removeObjectAtIndex(below(tags.count()));
        else if (const auto stray = any<TKTag>("AccountTag"); stray && below(2) == 0)
            tags.insertObjectAtIndex(*stray, below(tags.count() + 1));
        else
            tags.insertObjectAtIndex(*account.createTagWithName(String::make("Water")),
                                     below(tags.count() + 1));
    }

    /// Its deletion would be refused.
    static bool hasTenures(const ManagedObject& object) {
        return object.modelledProperty(keys::tenures) &&
               object.valueForKey(keys::tenures).as<Set>()->count() > 0;
    }

    std::size_t count(std::string_view entity) {
        return context_->executeFetchRequest({std::string(entity)}).value().size();
    }

    static std::string shown(const Value& value) {
        if (const auto object = value.as<ManagedObject>())
            return "#" + std::to_string(object->creationNumber());
        if (const auto names = value.as<TKTagNames>()) return "(" + names->editableString() + ")";
        if (const auto members = value.as<DistinctValues>()) {
            std::string all = "{";
            for (const Value& each : members->members()) all += shown(each) + " ";
            return all + "}";
        }
        return value.description();
    }
    static std::string shown(const ManagedObject& object, Key key) {
        if (!object.hasValueForKey(key)) return {};
        try {
            return shown(object.valueForKey(key));
        } catch (const Exception& exception) {
            return std::string(exception.name());
        }
    }
    void describe(const ManagedObject& object, std::string& text) const {
        text += std::string(object.entity().name()) + " #" + std::to_string(object.creationNumber());
        // With terms that cannot be reckoned with, the schedule stays as it last was.
        const bool hasSchedule = !shown(object, keys::chargablePeriods).starts_with("NS");
        const auto add = [&](Key key) {
            if ((saves_ && key == keys::tags) || (key == keys::periods && !hasSchedule)) return;
            const std::string value = shown(object, key);
            text += " " + std::string(key.name()) + "=" + value;
        };
        object.forEachModelledProperty([&](const ModelledProperty& property) { add(property.key); });
        for (const Key key : {keys::balance, keys::totalIncome, keys::totalCost, keys::totalAdjustment,
                              keys::tenureIncome, keys::tenureBalance, keys::chargablePeriods,
                              keys::aggregateTransactions, keys::fullName, keys::regarding})
            if (object.hasValueForKey(key)) add(key);
        text += "\n";
    }

    std::mt19937_64 random_;
    bool saves_;
    Ref<ManagedObjectContext> context_ = TKManagedObjectModel::inMemoryManagedObjectContext();
    Ref<UndoManager> undo_ = context_->undoManager();
    UndoManager::Action mark_ = [this] { undo_->registerUndo(&mark_, mark_); };
};

void runScript(std::uint64_t seed, bool saves) {
    Script script(seed, saves);
    std::vector<std::string> memory{script.description()};
    for (int step = 0; step < 8; ++step) {
        script.edit();
        memory.push_back(script.description());
    }
    for (int round = 0; round < 2; ++round) {
        for (std::size_t step = memory.size() - 1; step-- > 0;) {
            ASSERT_TRUE(script.canUndo());
            script.undo();
            ASSERT_EQ(script.description(), memory[step]) << "undone to step " << step;
        }
        ASSERT_FALSE(script.canUndo());
        for (std::size_t step = 1; step < memory.size(); ++step) {
            ASSERT_TRUE(script.canRedo());
            script.redo();
            ASSERT_EQ(script.description(), memory[step]) << "redone to step " << step;
        }
        ASSERT_FALSE(script.canRedo());
    }
}

class UndoTwinTest : public testing::TestWithParam<bool> {};

TEST_P(UndoTwinTest, EveryStepBackAndForthFindsTheBookAsItWas) {
    constexpr int Scripts = 5'000;
    std::random_device entropy;
    const std::uint64_t first = (std::uint64_t{entropy()} << 32) | entropy();
    std::printf("seeds from %llu\n", static_cast<unsigned long long>(first));
    for (int number = 0; number < Scripts && !HasFatalFailure(); ++number) {
        SCOPED_TRACE("seed " + std::to_string(first + static_cast<std::uint64_t>(number)));
        runScript(first + static_cast<std::uint64_t>(number), GetParam());
    }
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutSaves, UndoTwinTest, testing::Bool());

} // namespace
} // namespace estatebook::platform
