// SPDX-License-Identifier: MIT

// Random work on a whole book: days pass, objects are edited, moved and deleted, steps are undone, saves land or fail or leave
// nobody knowing, objects become faults, the book is closed and opened again. The same script is given to a book in a file,
// to one in memory, and to a third whose objects never leave it; all of them must be the same book at all times, and be the same
// after they were closed.

#include "billing/TKPeriodicBilling.hpp"
#include "model/Advertisement.hpp"
#include "platform/persistence/MutableOrderedSet.hpp"
#include "platform/values/AttributedString.hpp"
#include "store/TKCurrentDateController.hpp"
#include "store/TKProperty.hpp"
#include "store/TKPropertyNote.hpp"
#include "store/TKPropertyTransaction.hpp"
#include "store/TKTenant.hpp"
#include "store/TKTenantNote.hpp"
#include "store/TKTenureNote.hpp"
#include "store/TKTenureTransaction.hpp"
#include "support/BookDescription.hpp"
#include "support/Effort.hpp"
#include "support/HeldClock.hpp"
#include "support/StoreKinds.hpp"
#include "support/WatchedStore.hpp"
#include "tags/TKTag.hpp"
#include "tenure/TKTenure.hpp"

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
using estatebook::test::InMemoryPlace;
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

/// Whether a book is ever let go of.
enum class Ending { Closed, Kept };

class BookScript {
public:
    BookScript(std::unique_ptr<StorePlace> place, Freedom freedom, Ending ending, std::uint64_t seed)
        : place_(std::move(place)), freedom_(freedom), ending_(ending), random_(seed) {
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
        makeSettings();
    }
    /// Whoever looks for a setting first makes it, and an undo leaves it.
    void makeSettings() {
        if (freedom_ == Freedom::Full) return;
        for (String* name : {TKCurrencyCodeStateName, TKBillingModeStateName})
            static_cast<void>(TKState::stateForKeyInManagedObjectContext(Ref<String>(name), *context_));
    }
    void close() {
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

    // Chance

    std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
    }
    bool isOneIn(std::size_t bound) { return below(bound) == 0; }
    template <class T>
    Ref<T> any(std::string_view entity) {
        const auto all = context_->fetchAll<T>(entity);
        return all.empty() ? nullptr : all[below(all.size())];
    }
    /// Reached through its owners, who alone are fetched.
    Ref<TKTenure> anyLetting() {
        if (isOneIn(2)) return any<TKTenure>("Tenure");
        const auto flat = any<TKProperty>("Property");
        if (!flat || flat->tenures().empty()) return nullptr;
        return Ref<TKTenure>(&flat->tenures()[below(flat->tenures().count())]);
    }
    Ref<TKTransaction> anyTransaction() {
        if (isOneIn(2)) return any<TKTransaction>("Transaction");
        const auto tenure = anyLetting();
        if (!tenure || tenure->transactions().empty()) return nullptr;
        return Ref<TKTransaction>(&tenure->transactions()[below(tenure->transactions().count())]);
    }
    Ref<ManagedObject> anything() {
        static constexpr const char* Entities[] = {"Account",    "Tenure",         "Transaction",  "Note",
                                                   "AccountTag", "TransactionTag", "Advertisement"};
        return any<ManagedObject>(Entities[below(std::size(Entities))]);
    }
    Ref<String> someText() {
        static constexpr const char* Texts[] = {"Elm", "Oak", "Ash", "Yew"};
        return isOneIn(5) ? nullptr : String::make(Texts[below(4)]);
    }
    std::optional<Decimal> someAmount() {
        if (isOneIn(6)) return std::nullopt;
        return Decimal(static_cast<std::int64_t>(below(2000)) - 700);
    }
    std::optional<Number> someNumber(std::size_t bound) {
        if (isOneIn(8)) return std::nullopt;
        const std::size_t number = below(bound);
        return isOneIn(2) ? Number(std::uint64_t{number}) : Number(static_cast<double>(number));
    }
    std::optional<Date> someDate(std::size_t from = 7000) {
        if (isOneIn(6)) return std::nullopt;
        return Date{static_cast<double>(86400 * (from + below(300)))};
    }
    Ref<TKTagNames> someTagNames() {
        static constexpr const char* Pairs[] = {"Rent, Repairs", "Water, Rent", "Garden, Lift"};
        static constexpr const char* Others[] = {"", "Rent", "Rent, Repairs, Water"};
        return TKTagNames::initWithEditableString(freedom_ == Freedom::Full && isOneIn(2) ? Others[below(3)]
                                                                                          : Pairs[below(3)]);
    }
    Value someContent() {
        switch (below(4)) {
        case 0:
            return Value(AttributedString::make(String::make("A letter")));
        case 1:
            return Value(Array::make({Value(String::make("one")), Value(Number(2.5))}));
        case 2:
            return Value(Decimal(7));
        default:
            return {};
        }
    }
    /// Who is awake raises what it cannot reckon with once, and not when it is next touched.
    template <class T>
    static Ref<T> awake(Ref<T> object) {
        if (object) BookDescription::awake(*object);
        return object;
    }

    // Steps

    void doOnce() {
        switch (below(14)) {
        default: {
            const std::size_t count = 1 + below(4);
            for (std::size_t each = 0; each < count; ++each) {
                const std::size_t what = below(20);
                // Whom a change reaches who cannot reckon with it depends on who is awake, and so on what was read by chance.
                const std::string raised = attempt([&] { edit(what); });
                note("edit " + std::to_string(what), freedom_ == Freedom::Measured ? raised : "");
            }
            if (!isOneIn(4)) context_->undoManager()->endEvent();
            break;
        }
        case 5:
            if (isOneIn(2)) return undo();
            clock_.pass(static_cast<double>(86400 * (1 + below(40))));
            note("days pass", attempt([] { TKCurrentDateController::sharedInstance().dailyUpdate(); }));
            break;
        case 6:
            return undo();
        case 7:
            note("redo", attempt([&] { context_->redo(); }));
            break;
        case 8:
            if (isOneIn(2)) rollback();
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
            if (isOneIn(2)) return reopen();
            // A look at everything has everything read.
            if (isOneIn(2)) note("look", description(Part::Lasting));
            break;
        }
    }
    void undo() {
        note("undo", attempt([&] { context_->undo(); }));
    }

    void edit(std::size_t what) {
        switch (what) {
        case 0:
            if (context_->fetchAll<TKProperty>("Property").size() < 4)
                context_->insertNewObject<TKProperty>("Property")->setName(someText());
            break;
        case 1:
            if (context_->fetchAll<TKTenant>("Tenant").size() < 3)
                context_->insertNewObject<TKTenant>("Tenant")->setName(someText());
            break;
        case 2:
            if (context_->fetchAll<TKTenure>("Tenure").size() < 5) {
                const auto tenure = context_->insertNewObject<TKTenure>("Tenure");
                tenure->setStartDate(someDate());
                tenure->setRentalBillingCycle(Number(std::uint64_t{TKBillingCycleMonth}));
                tenure->setProperty(any<TKProperty>("Property").get());
                tenure->setTenant(any<TKTenant>("Tenant").get());
            }
            break;
        case 3:
        case 4:
            if (const auto tenure = awake(anyLetting())) tenure->createTransaction()->setAmount(someAmount());
            break;
        case 5:
            if (const auto flat = awake(any<TKProperty>("Property")))
                flat->createTransaction()->setAmount(someAmount());
            break;
        case 6:
            makeNote();
            break;
        case 7:
        case 8:
            if (const auto tenure = awake(anyLetting())) editTerms(*tenure);
            break;
        case 9:
        case 10:
            if (const auto transaction = awake(anyTransaction())) editTransaction(*transaction);
            break;
        case 11:
            if (const auto tenure = awake(anyLetting())) {
                if (isOneIn(2))
                    tenure->setProperty(isOneIn(4) ? nullptr : any<TKProperty>("Property").get());
                else
                    tenure->setTenant(isOneIn(4) ? nullptr : any<TKTenant>("Tenant").get());
            }
            break;
        case 12:
            if (const auto payment = awake(any<TKTenureTransaction>("TenureTransaction")))
                payment->setTenure(isOneIn(5) ? nullptr : any<TKTenure>("Tenure").get());
            break;
        case 13:
            if (const auto account = awake(any<TKAccount>("Account"))) {
                account->setTagNames(someTagNames());
                account->setName(someText());
            }
            break;
        case 14:
            if (const auto note = awake(any<TKNote>("Note"))) {
                if (isOneIn(2)) note->setTagNames(someTagNames());
                note->setContent(someContent());
            }
            break;
        case 15:
            if (freedom_ == Freedom::Full)
                if (const auto account = awake(any<TKAccount>("Account"))) editTags(*account);
            break;
        case 16:
            TKState::updateStateWithNameValueInManagedObjectContext(
                Ref<String>(TKCurrencyCodeStateName), Value(String::make(isOneIn(2) ? "EUR" : "JPY")),
                *context_);
            break;
        case 17:
        case 18:
            deleteSomething();
            break;
        case 19:
            if (const auto flat = awake(any<TKProperty>("Property"))) editFlat(*flat);
            break;
        default:
            break;
        }
    }
    void makeNote() {
        switch (below(3)) {
        case 0:
            if (const auto tenure = awake(anyLetting())) tenure->createNote()->setSubject(someText());
            break;
        case 1:
            if (const auto tenant = awake(any<TKTenant>("Tenant"))) tenant->createNote();
            break;
        default:
            if (const auto flat = awake(any<TKProperty>("Property"))) flat->createNote();
            break;
        }
    }
    void editTerms(TKTenure& tenure) {
        switch (below(7)) {
        case 0:
            return tenure.setRentalAmount(someAmount());
        case 1:
            return tenure.setRentalPeriod(freedom_ == Freedom::Full ? someNumber(3)
                                                                    : Number(std::uint64_t{1 + below(3)}));
        case 2:
            return tenure.setStartDate(someDate());
        case 3:
            return tenure.setEndDate(someDate(isOneIn(8) ? 7000 : 7300));
        case 4:
            return tenure.setChargeBehaviour(someNumber(4));
        case 5:
            return tenure.setBondAmount(someAmount());
        case 6:
            return tenure.setAdvancePeriod(someNumber(2));
        }
    }
    void editTransaction(TKTransaction& transaction) {
        switch (below(5)) {
        case 0:
            return transaction.setAmount(someAmount());
        case 1:
            return transaction.setAdjustment(isOneIn(4) ? std::nullopt : std::optional(Number(isOneIn(2))));
        case 2:
            return transaction.setWhen(someDate());
        case 3:
            return transaction.setWhat(someText());
        case 4:
            return transaction.setTagNames(someTagNames());
        }
    }
    void editFlat(TKProperty& flat) {
        switch (below(4)) {
        case 0:
            return flat.setAdvertisement(isOneIn(2)
                                             ? context_->insertNewObject<Advertisement>("Advertisement").get()
                                             : any<Advertisement>("Advertisement").get());
        case 1:
            return flat.setRentalAmount(someAmount());
        case 2: {
            // Some of all costs, whoever has them now.
            std::vector<Value> costs;
            for (const auto& each : context_->fetchAll<TKPropertyTransaction>("PropertyTransaction"))
                if (isOneIn(2)) costs.emplace_back(Ref<Object>(each));
            return flat.setValueForKey(Value(Set::make(std::move(costs))), keys::transactions);
        }
        case 3:
            return flat.setAvailable(isOneIn(3) ? std::nullopt : std::optional(Number(isOneIn(2))));
        }
    }
    void editTags(TKAccount& account) {
        auto tags = account.mutableOrderedSetValueForKey(keys::tags);
        if (tags.count() > 0 && isOneIn(2)) {
            tags.removeObjectAtIndex(below(tags.count()));
        } else if (const auto stray = any<TKTag>("AccountTag"); stray && isOneIn(2)) {
            if (const auto owner = stray->valueForKey(keys::owner).as<ManagedObject>()) awake(owner);
            tags.removeObject(*stray);
            tags.insertObjectAtIndex(*stray, below(tags.count() + 1));
        } else {
            tags.insertObjectAtIndex(*account.createTagWithName(String::make("Water")),
                                     below(tags.count() + 1));
        }
    }
    void deleteSomething() {
        const auto object = awake(anything());
        if (!object) return;
        // A refused deletion stands in the way of every save until it is taken back.
        if (object->modelledProperty(keys::tenures) &&
            object->valueForKey(keys::tenures).as<Set>()->count() > 0 && !isOneIn(6))
            return;
        if (freedom_ == Freedom::Measured && object->modelledProperty(keys::owner)) return;
        context_->deleteObject(*object);
    }

    // The store

    void save() {
        enum Fate : std::size_t { Refused, LandedUnknown, LostUnknown, Landed };
        const Fate fate = isOneIn(3) ? static_cast<Fate>(below(3)) : Landed;
        const bool isBlind =
            freedom_ == Freedom::Full && (fate == LandedUnknown || fate == LostUnknown) && isOneIn(2);
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
        if (isInvalid && isOneIn(2)) rollback();
        if (isBlind) workBlindly();
    }
    static StoreError unknown() {
        return {StoreErrorCode::OutcomeUnknown, "", "Whether it was saved is unknown"};
    }
    /// While the store cannot tell what became of the last save.
    void workBlindly() {
        store_->outcomeUnknown = unknown();
        for (std::size_t count = 1 + below(3); count > 0; --count) {
            switch (below(4)) {
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
        const auto object = anything();
        // The names of an owner that stays as it is would be others than those of its tags.
        if (!object || object->modelledProperty(keys::owner)) return;
        const bool keepsChanges = isOneIn(2);
        note("refresh " + std::to_string(keepsChanges),
             attempt([&] { context_->refreshObjectMergeChanges(*object, keepsChanges); }));
    }
    void fetch() {
        static const std::pair<const char*, const char*> Questions[] = {
            {"Property", "name"},      {"Account", "name"},           {"Transaction", "amount"},
            {"Transaction", "what"},   {"TenureTransaction", "when"}, {"Tenure", "rentalPeriod"},
            {"Tenure", "totalIncome"}, {"Property", "available"},     {"TransactionTag", "name"}};
        const auto& [entity, key] = Questions[below(std::size(Questions))];
        const auto model = any<ManagedObject>(entity);
        if (!model) return;
        std::string found;
        const std::string raised = attempt([&] {
            const Value wanted = isOneIn(5) ? Value() : model->valueForKey(std::string_view(key));
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
        switch (below(3)) {
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
        if (isOneIn(2)) return; // it is read as it is needed
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
    std::mt19937_64 random_;
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
