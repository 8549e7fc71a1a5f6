// SPDX-License-Identifier: MIT

// Random edits of a book, taken back and done again step by step. The twin is a plain memory: a full description of
// the book, derived values included, written down after each step and compared on the way back and forth.

#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Set.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKState.hpp"
#include "support/Effort.hpp"
#include "support/RandomEditor.hpp"
#include "tags/TKTagNames.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::platform {
namespace {

using estatebook::test::RandomEditor;

/// A book that is edited at random.
class Script {
public:
    Script(std::uint64_t seed, bool saves)
        : editor_(seed, {.tags = !saves, .refusedDeletions = false}), saves_(saves) {
        editor_.open(context_);
        // The first look-up would make them, and an undo would leave them.
        for (String* name : {TKCurrencyCodeStateName, TKBillingModeStateName})
            static_cast<void>(TKState::stateForKeyInManagedObjectContext(Ref<String>(name), *context_));
    }

    void edit() {
        // A step is there to be undone even when its edits come to nothing.
        undo_->registerUndo(&mark_, mark_);
        for (std::size_t count = 1 + editor_.below(4); count > 0; --count) {
            try {
                if (saves_ && editor_.isOneIn(16))
                    context_->save();
                else
                    editor_.edit(editor_.below(RandomEditor::Edits));
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
        for (const char* entity : {"Property", "Tenant", "Tenure", "Transaction", "Note", "Advertisement",
                                   "AccountTag", "TransactionTag", "NoteTag", "State"}) {
            // A save makes tags of names, and an undo leaves them to the next save.
            if (saves_ && std::string_view(entity).ends_with("Tag")) continue;
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

    RandomEditor editor_;
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
    const std::uint64_t first = test::anySeed();
    std::printf("seeds from %llu\n", static_cast<unsigned long long>(first));
    for (int number = 0; number < Scripts && !HasFatalFailure(); ++number) {
        SCOPED_TRACE("seed " + std::to_string(first + static_cast<std::uint64_t>(number)));
        runScript(first + static_cast<std::uint64_t>(number), GetParam());
    }
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutSaves, UndoTwinTest, testing::Bool());

} // namespace
} // namespace estatebook::platform
