// SPDX-License-Identifier: MIT

// Random work on a book whose store cannot be read now and then. What fails – an undo, a redo, a rollback, a refresh – must leave the
// book as it was, and must work when the store can be read again. The twin is the same book in a store that never fails.

#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/values/Exception.hpp"
#include "store/TKCurrentDateController.hpp"
#include "support/BookDescription.hpp"
#include "support/Effort.hpp"
#include "support/HeldClock.hpp"
#include "support/RandomEditor.hpp"
#include "support/StoreKinds.hpp"
#include "support/WatchedStore.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace estatebook::platform {
namespace {

using estatebook::test::BookDescription;
using estatebook::test::bookModel;
using estatebook::test::EditLicence;
using estatebook::test::InMemoryPlace;
using estatebook::test::RandomEditor;
using estatebook::test::WatchedStore;
using Part = BookDescription::Part;

/// What comes to the same whether objects are faults or not.
constexpr EditLicence Reckonable{.unreckonableTerms = false, .tagNames = false, .tags = false};

/// A book, and who edits it.
class Desk {
public:
    explicit Desk(std::uint64_t seed) : editor(seed, Reckonable) {
        auto coordinator = makeRef<PersistentStoreCoordinator>(bookModel());
        coordinator->addPersistentStore(Ref<Store>(store));
        context->setPersistentStoreCoordinator(std::move(coordinator));
        context->undoManager()->setGroupsByEvent(true);
        editor.open(context);
        for (String* name : {TKCurrencyCodeStateName, TKBillingModeStateName})
            static_cast<void>(TKState::stateForKeyInManagedObjectContext(Ref<String>(name), *context));
        EXPECT_TRUE(context->save());
    }

    /// Line by line, with what is to be saved.
    [[nodiscard]] std::vector<std::string> description() const {
        const BookDescription book(*context, Part::Lasting);
        std::istringstream text(book.text());
        std::vector<std::string> lines;
        for (std::string line; std::getline(text, line);) lines.push_back(std::move(line));
        const auto add = [&](std::string what, const std::vector<Ref<ManagedObject>>& objects) {
            for (const auto& object : objects) what += " " + book.nameOf(*object);
            lines.push_back(std::move(what));
        };
        add("inserted", context->insertedObjects());
        add("updated", context->updatedObjects());
        add("deleted", context->deletedObjects());
        return lines;
    }
    /// Which objects are to be saved how, and what can be undone.
    [[nodiscard]] std::string changes() const {
        const auto numbers = [](const std::vector<Ref<ManagedObject>>& objects) {
            std::string all;
            for (const auto& object : objects) all += " " + object->description();
            return all;
        };
        const auto undo = context->undoManager();
        return "inserted" + numbers(context->insertedObjects()) + "\nupdated" +
               numbers(context->updatedObjects()) + "\ndeleted" + numbers(context->deletedObjects()) +
               "\nundo " + std::to_string(undo->canUndo()) + " redo " + std::to_string(undo->canRedo()) +
               "\n";
    }
    /// The exception's name, if there was one.
    template <class Action>
    static std::string attempt(Action action) {
        try {
            action();
            return {};
        } catch (const Exception& exception) {
            return std::string(exception.name()) + " " + std::string(exception.reason());
        }
    }
    /// What is not changed is read again when it is next needed.
    void forgetUnchanged() const {
        for (const char* entity : {"Account", "Tenure", "Transaction", "Note"})
            for (const auto& object : context->fetchAll<ManagedObject>(entity))
                if (!object->hasChanges()) context->refreshObjectMergeChanges(*object, false);
    }

    InMemoryPlace place;
    Ref<WatchedStore> store = makeRef<WatchedStore>(Ref<Store>(&place.store()));
    Ref<ManagedObjectContext> context = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
    RandomEditor editor;
};

class UnreadableScript {
public:
    explicit UnreadableScript(std::uint64_t seed) : random_(~seed, Reckonable), book_(seed), twin_(seed) {
        TKCurrentDateController::sharedInstance().dailyUpdate();
    }

    void run(std::size_t steps) {
        for (std::size_t step = 0; step < 20; ++step) edit();
        for (std::size_t step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            doOnce();
        }
        expectAlike("end");
    }
    [[nodiscard]] std::size_t failures() const noexcept { return failures_; }

private:
    /// One and the same of both books.
    void both(std::string_view what, const std::function<void(Desk&)>& act) {
        const std::string told = Desk::attempt([&] { act(book_); });
        EXPECT_EQ(told, Desk::attempt([&] { act(twin_); })) << what;
    }
    void expectAlike(std::string_view when) {
        const auto lines = book_.description();
        const auto expected = twin_.description();
        EXPECT_EQ(lines.size(), expected.size()) << when;
        for (std::size_t place = 0; place < std::min(lines.size(), expected.size()); ++place)
            EXPECT_EQ(lines[place], expected[place]) << when;
    }

    void doOnce() {
        switch (random_.below(12)) {
        default:
            edit();
            break;
        case 3:
        case 4:
            both("save", [](Desk& desk) { static_cast<void>(desk.context->save()); });
            break;
        case 5:
        case 6:
        case 7:
            tried("undo", [](Desk& desk) { desk.context->undo(); });
            break;
        case 8:
        case 9:
            tried("redo", [](Desk& desk) { desk.context->redo(); });
            break;
        case 10:
            tried("rollback", [](Desk& desk) { desk.context->rollback(); });
            break;
        case 11:
            refresh();
            break;
        }
    }
    void edit() {
        for (std::size_t count = 1 + random_.below(4); count > 0; --count) {
            const std::size_t what = random_.below(RandomEditor::Edits);
            both("edit", [&](Desk& desk) { desk.editor.edit(what); });
        }
        if (!random_.isOneIn(4))
            both("end of step", [](Desk& desk) { desk.context->undoManager()->endEvent(); });
    }
    void refresh() {
        const bool keepsChanges = random_.isOneIn(2);
        const auto object = book_.editor.anything();
        const auto twin = twin_.editor.anything();
        if (!object || object->modelledProperty(keys::owner)) return;
        tried("refresh", [&](Desk& desk) {
            desk.context->refreshObjectMergeChanges(&desk == &book_ ? *object : *twin, keepsChanges);
        });
    }

    /// At first some of what it needs cannot be read.
    void tried(const std::string& what, const std::function<void(Desk&)>& act) {
        // Looking has what is pending processed, which is not to be done before all of them.
        const bool isPending = random_.isOneIn(3);
        std::string before;
        if (!isPending) {
            book_.forgetUnchanged();
            before = book_.changes();
        }
        const std::size_t readable = random_.below(random_.isOneIn(2) ? 2 : 12);
        const bool failsOnce = random_.isOneIn(3);
        std::size_t asked = 0;
        book_.store->isReadable = [&] {
            const std::size_t number = asked++;
            return failsOnce ? number != readable : number < readable;
        };
        std::string told = Desk::attempt([&] { act(book_); });
        book_.store->isReadable = nullptr;
        const bool isUnreadable = told.starts_with("NSObjectInaccessibleException");
        EXPECT_EQ(isUnreadable, asked > readable) << what << " told: " << told;
        if (isUnreadable) {
            ++failures_;
            if (!isPending) {
                EXPECT_EQ(book_.changes(), before) << what << " failed at read " << readable;
            }
            if (random_.isOneIn(2)) expectAlike("after a failed " + what);
            told = Desk::attempt([&] { act(book_); });
        }
        EXPECT_EQ(told, Desk::attempt([&] { act(twin_); })) << what;
        if (random_.isOneIn(2)) expectAlike(what);
    }

    testkit::HeldClock clock_{Date{86400.0 * 7400}};
    RandomEditor random_;
    Desk book_;
    Desk twin_;
    std::size_t failures_ = 0;
};

TEST(UnreadableBookTwinTest, WhatCannotBeReadIsDoneLaterOrNotAtAll) {
    const std::uint64_t scripts = test::effort("ESTATEBOOK_UNREADABLE_SCRIPTS", 1'000, 100);
    const std::uint64_t first = test::anySeed();
    std::printf("seeds from %llu\n", static_cast<unsigned long long>(first));
    std::size_t failures = 0;
    for (std::uint64_t number = 0; number < scripts && !HasFailure(); ++number) {
        SCOPED_TRACE("seed " + std::to_string(first + number));
        UnreadableScript script(first + number);
        script.run(40);
        failures += script.failures();
    }
    EXPECT_GT(failures, scripts);
}

} // namespace
} // namespace estatebook::platform
