// SPDX-License-Identifier: MIT

// Random work on a whole book: days pass, objects are edited, moved and deleted, steps are undone, saves land or fail or leave
// nobody knowing, objects become faults, the book is closed and opened again. The same script is given to a book in a file,
// to one in memory, and to a third whose objects never leave it; all of them must be the same book at all times, and be the same
// after they were closed.

#include "store/TKCurrentDateController.hpp"
#include "support/BookDescription.hpp"
#include "support/Effort.hpp"
#include "support/HeldClock.hpp"
#include "support/RandomEditor.hpp"
#include "support/StoreKinds.hpp"
#include "support/WatchedStore.hpp"
#include "tags/TKTag.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <random>
#include <set>
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
using estatebook::test::SQLitePlace;
using estatebook::test::StorePlace;
using estatebook::test::WatchedStore;
using Part = BookDescription::Part;

/// What a script may do.
enum class Freedom {
    /// Everything.
    Full,
    /// Only what comes to the same whether objects are faults or not: terms that can be reckoned with, and as many tag names
    /// as before.
    Measured,
};

EditLicence licenceOf(Freedom freedom) {
    const bool isFull = freedom == Freedom::Full;
    return {.unreckonableTerms = isFull, .tags = isFull};
}

/// Whether a book is ever let go of.
enum class Ending { Closed, Kept };

class BookScript {
public:
    BookScript(std::unique_ptr<StorePlace> place, Freedom freedom, Ending ending, std::uint64_t seed)
        : place_(std::move(place)), freedom_(freedom), ending_(ending), editor_(seed, licenceOf(freedom)) {
        TKCurrentDateController::sharedInstance().dailyUpdate();
        open();
    }

    /// What came of it; every book of one script must tell the same.
    const std::vector<std::string>& run(std::size_t steps) {
        for (std::size_t step = 0; step < steps && !testing::Test::HasFailure(); ++step) doOnce();
        note("end", description(Part::Lasting));
        return log_;
    }

private:
    // The book

    static Ref<ManagedObjectContext> contextOn(Ref<Store> store) {
        auto coordinator = makeRef<PersistentStoreCoordinator>(bookModel());
        coordinator->addPersistentStore(std::move(store));
        auto context = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
        context->setPersistentStoreCoordinator(std::move(coordinator));
        return context;
    }
    void open() {
        store_ = makeRef<WatchedStore>(Ref<Store>(&place_->store()));
        // Tags are kept or made anew by which object their name is.
        store_->readsTextsAnew = true;
        context_ = contextOn(Ref<Store>(store_));
        editor_.open(context_);
        makeSettings();
    }
    /// Whoever looks for a setting first makes it, and an undo leaves it.
    void makeSettings() {
        if (freedom_ == Freedom::Full) return;
        for (String* name : {TKCurrencyCodeStateName, TKBillingModeStateName})
            static_cast<void>(TKState::stateForKeyInManagedObjectContext(Ref<String>(name), *context_));
    }
    void close() {
        editor_.close();
        context_ = nullptr;
        store_ = nullptr;
    }
    void note(std::string_view what, const std::string& result = {}) {
        log_.push_back(std::string(what) + " " + result);
    }
    std::string description(Part part) { return BookDescription(*context_, part).text(); }
    /// As somebody else reads it.
    std::string stored() {
        return BookDescription(*contextOn(Ref<Store>(&place_->store())), Part::Stored).text();
    }
    void expectStored(std::string_view when) { EXPECT_EQ(description(Part::Stored), stored()) << when; }

    /// The exception's name, if there was one.
    template <class Action>
    static std::string attempt(Action action) {
        try {
            action();
            return {};
        } catch (const Exception& exception) {
            return std::string(exception.name());
        }
    }

    // Steps

    void doOnce() {
        switch (editor_.below(14)) {
        default: {
            const std::size_t count = 1 + editor_.below(4);
            for (std::size_t each = 0; each < count; ++each) {
                const std::size_t what = editor_.below(RandomEditor::Edits);
                // Whom a change reaches who cannot reckon with it depends on who is awake, and so on what was read by chance.
                const std::string raised = attempt([&] { editor_.edit(what); });
                note("edit " + std::to_string(what), freedom_ == Freedom::Measured ? raised : "");
            }
            if (!editor_.isOneIn(4)) context_->undoManager()->endEvent();
            break;
        }
        case 5:
            if (editor_.isOneIn(2)) return undo();
            clock_.pass(static_cast<double>(86400 * (1 + editor_.below(40))));
            note("days pass", attempt([] { TKCurrentDateController::sharedInstance().dailyUpdate(); }));
            break;
        case 6:
            return undo();
        case 7:
            note("redo", attempt([&] { context_->redo(); }));
            break;
        case 8:
            if (editor_.isOneIn(2)) rollback();
            break;
        case 9:
            refresh();
            break;
        case 10:
        case 11:
            save();
            break;
        case 12:
            fetch();
            break;
        case 13:
            if (editor_.isOneIn(2)) return reopen();
            // A look at everything has everything read.
            if (editor_.isOneIn(2)) note("look", description(Part::Lasting));
            break;
        }
    }
    void undo() {
        note("undo", attempt([&] { context_->undo(); }));
    }

    // The store

    void save() {
        enum Fate : std::size_t { Refused, LandedUnknown, LostUnknown, Landed };
        const Fate fate = editor_.isOneIn(3) ? static_cast<Fate>(editor_.below(3)) : Landed;
        const bool isBlind =
            freedom_ == Freedom::Full && (fate == LandedUnknown || fate == LostUnknown) && editor_.isOneIn(2);
        // What cannot be read cannot be taken back.
        if (isBlind) static_cast<void>(description(Part::Stored));
        if (fate != Landed)
            store_->onSave = [&](Store& inner, const StoreChanges& changes) -> StoreResult<SaveOutcome> {
                if (fate == Refused) return StoreError{StoreErrorCode::Full, "", "There is no room left"};
                if (fate == LandedUnknown) {
                    EXPECT_TRUE(inner.save(changes)->landed());
                }
                return unknown();
            };
        Ref<Error> error;
        bool isSaved = false;
        const std::string raised = attempt([&] { isSaved = context_->save(&error); });
        store_->onSave = nullptr;
        // What has nothing to save is not refused, and a book that was closed may have less to save than one that was not.
        const bool isInvalid = error && error->code() < 134000;
        note("save " + std::to_string(fate) + raised, isInvalid ? std::to_string(error->code()) : "valid");
        if (isSaved) expectStored("saved");
        if (isInvalid && editor_.isOneIn(2)) rollback();
        if (isBlind) workBlindly();
    }
    static StoreError unknown() {
        return {StoreErrorCode::OutcomeUnknown, "", "Whether it was saved is unknown"};
    }
    /// While the store cannot tell what became of the last save.
    void workBlindly() {
        store_->outcomeUnknown = unknown();
        for (std::size_t count = 1 + editor_.below(3); count > 0; --count) {
            switch (editor_.below(4)) {
            default:
                undo();
                break;
            case 2:
                note("redo", attempt([&] { context_->redo(); }));
                break;
            case 3:
                note("blind rollback", attempt([&] { context_->rollback(); }));
                break;
            }
        }
        store_->outcomeUnknown.reset();
    }
    void rollback() {
        note("rollback", attempt([&] { context_->rollback(); }));
        expectStored("rolled back");
    }
    void refresh() {
        const auto object = editor_.anything();
        // The names of an owner that stays as it is would be others than those of its tags.
        if (!object || object->modelledProperty(keys::owner)) return;
        const bool keepsChanges = editor_.isOneIn(2);
        note("refresh " + std::to_string(keepsChanges),
             attempt([&] { context_->refreshObjectMergeChanges(*object, keepsChanges); }));
    }
    void fetch() {
        static const std::pair<const char*, const char*> Questions[] = {
            {"Property", "name"},      {"Account", "name"},           {"Transaction", "amount"},
            {"Transaction", "what"},   {"TenureTransaction", "when"}, {"Tenure", "rentalPeriod"},
            {"Tenure", "totalIncome"}, {"Property", "available"},     {"TransactionTag", "name"}};
        const auto& [entity, key] = Questions[editor_.below(std::size(Questions))];
        const auto model = editor_.any<ManagedObject>(entity);
        if (!model) return;
        std::string found;
        const std::string raised = attempt([&] {
            const Value wanted = editor_.isOneIn(5) ? Value() : model->valueForKey(std::string_view(key));
            const auto predicate = Predicate::predicateWithFormat(std::string(key) + " = %@", wanted);
            const auto objects = context_->executeFetchRequest({entity, predicate});
            const auto all = context_->fetchAll<ManagedObject>(entity);
            std::vector<Ref<ManagedObject>> matching;
            for (std::size_t rank = 0; rank < all.size(); ++rank) {
                if (!predicate.evaluateWithObject(*all[rank])) continue;
                matching.push_back(all[rank]);
                found += std::to_string(rank) + " ";
            }
            EXPECT_EQ(objects.value(), matching) << "fetched by " << key;
        });
        note("fetch " + raised, found);
    }

    /// Closes the book and opens it again, after a save, after a rollback or just so.
    void reopen() {
        bool isSaved = false;
        switch (editor_.below(3)) {
        case 0:
            rollback();
            break;
        case 1:
            note("save", attempt([&] { isSaved = context_->save(); }));
            if (isSaved) break;
            [[fallthrough]];
        default:
            if (ending_ == Ending::Kept) context_->rollback();
        }
        // A setting that was looked for while nothing could be read may be there twice.
        const Part part = hasEachSettingOnce() ? Part::Lasting : Part::Stored;
        const std::string before = isSaved ? description(part) : std::string();
        const std::string kept = stored();
        if (ending_ == Ending::Closed) {
            close();
            place_->reopen();
            if (place_->store().type() == "SQLite") {
                const auto findings = static_cast<SQLiteStore&>(place_->store()).check();
                EXPECT_TRUE(findings && findings->empty()) << (findings ? findings->front() : "unreadable");
            }
            open();
        } else {
            beAsOpened();
        }
        note("reopen", kept);
        if (editor_.isOneIn(2)) return; // it is read as it is needed
        if (isSaved) {
            EXPECT_EQ(description(part), before) << "reopened";
        }
        expectStored("reopened");
    }
    bool hasEachSettingOnce() {
        std::set<std::string> names;
        const auto settings = context_->fetchAll<TKState>("State");
        for (const auto& setting : settings) names.insert(setting->name()->string());
        return names.size() == settings.size();
    }
    /// What was derived before is derived anew, and nothing can be undone.
    void beAsOpened() {
        context_->undoManager()->removeAllActions();
        makeSettings();
        for (const char* entity : {"Account", "Transaction", "Note"})
            for (const auto& object : context_->fetchAll<ManagedObject>(entity))
                object->setPrimitiveValueForKey(
                    Value(TKTag::fetchTagNamesFromTaggableObject(dynamic_cast<TKTaggable&>(*object))),
                    keys::tagNames);
    }

    std::unique_ptr<StorePlace> place_;
    Freedom freedom_;
    Ending ending_;
    RandomEditor editor_;
    testkit::HeldClock clock_{Date{86400.0 * 7400}};
    Ref<WatchedStore> store_;
    Ref<ManagedObjectContext> context_;
    std::vector<std::string> log_;
};

/// Tells where two tellings of one script part.
void expectAlike(const std::vector<std::string>& one, const std::vector<std::string>& other) {
    for (std::size_t place = 0; place < std::min(one.size(), other.size()); ++place)
        ASSERT_EQ(one[place], other[place]) << "at " << place << " of " << one.size();
    ASSERT_EQ(one.size(), other.size());
}

class StoredBookTwinTest : public testing::TestWithParam<Freedom> {};

TEST_P(StoredBookTwinTest, EveryKindOfStoreKeepsTheBookAsItIs) {
    constexpr int Scripts = 1'000;
    const std::uint64_t first = estatebook::test::anySeed();
    std::printf("seeds from %llu\n", static_cast<unsigned long long>(first));
    for (int number = 0; number < Scripts && !HasFailure(); ++number) {
        const std::uint64_t seed = first + static_cast<std::uint64_t>(number);
        SCOPED_TRACE("seed " + std::to_string(seed));
        const auto run = [&](std::unique_ptr<StorePlace> place, Ending ending) {
            return BookScript(std::move(place), GetParam(), ending, seed).run(40);
        };
        const auto file = run(std::make_unique<SQLitePlace>(), Ending::Closed);
        expectAlike(run(std::make_unique<InMemoryPlace>(), Ending::Closed), file);
        if (GetParam() == Freedom::Measured)
            expectAlike(run(std::make_unique<InMemoryPlace>(), Ending::Kept), file);
    }
}

INSTANTIATE_TEST_SUITE_P(Freedoms, StoredBookTwinTest, testing::Values(Freedom::Full, Freedom::Measured),
                         [](const auto& freedom) {
                             return freedom.param == Freedom::Full ? "Full" : "Measured";
                         });

} // namespace
} // namespace estatebook::platform
