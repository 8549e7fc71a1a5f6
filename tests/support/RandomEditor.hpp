// SPDX-License-Identifier: MIT
#pragma once

/// Random edits of a whole book: flats, tenants, lettings, payments, costs, notes, tags and settings are made, changed, moved and
/// deleted. The same seed makes the same edits of books that are the same.

#include "billing/TKPeriodicBilling.hpp"
#include "model/Advertisement.hpp"
#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/MutableOrderedSet.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/AttributedString.hpp"
#include "platform/values/Set.hpp"
#include "store/TKProperty.hpp"
#include "store/TKPropertyNote.hpp"
#include "store/TKPropertyTransaction.hpp"
#include "store/TKState.hpp"
#include "store/TKTenant.hpp"
#include "store/TKTenantNote.hpp"
#include "store/TKTenureNote.hpp"
#include "store/TKTenureTransaction.hpp"
#include "support/BookDescription.hpp"
#include "tags/TKTag.hpp"
#include "tags/TKTagNames.hpp"
#include "tenure/TKTenure.hpp"

#include <cstdint>
#include <iterator>
#include <optional>
#include <random>
#include <string_view>
#include <utility>
#include <vector>

namespace estatebook::test {

/// What a random editor may do beside what always comes to the same.
struct EditLicence {
    /// Terms that cannot be reckoned with.
    bool unreckonableTerms = true;
    /// Tag names, which stand in the tags only after a save.
    bool tagNames = true;
    /// Other tag names than as many as before, and the tags themselves.
    bool tags = true;
    /// Deletions that are refused while others depend on the object.
    bool refusedDeletions = true;
};

class RandomEditor {
    template <class T>
    using Ref = platform::Ref<T>;
    using AttributedString = platform::AttributedString;
    using Array = platform::Array;
    using Date = platform::Date;
    using Decimal = platform::Decimal;
    using ManagedObject = platform::ManagedObject;
    using ManagedObjectContext = platform::ManagedObjectContext;
    using Number = platform::Number;
    using Object = platform::Object;
    using Set = platform::Set;
    using String = platform::String;
    using Value = platform::Value;

public:
    RandomEditor(std::uint64_t seed, EditLicence licence) : random_(seed), licence_(licence) {}

    /// From now on it edits this book.
    void open(Ref<ManagedObjectContext> context) { context_ = std::move(context); }
    void close() noexcept { context_ = nullptr; }

    [[nodiscard]] std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
    }
    [[nodiscard]] bool isOneIn(std::size_t bound) { return below(bound) == 0; }
    /// Null when there is none.
    template <class T>
    Ref<T> any(std::string_view entity) {
        const auto all = context_->fetchAll<T>(entity);
        return all.empty() ? nullptr : all[below(all.size())];
    }
    /// Null when there is none of the kind that chance has picked.
    Ref<ManagedObject> anything() {
        static constexpr const char* Entities[] = {"Account",    "Tenure",         "Transaction",  "Note",
                                                   "AccountTag", "TransactionTag", "Advertisement"};
        return any<ManagedObject>(Entities[below(std::size(Entities))]);
    }

    static constexpr std::size_t Edits = 20;
    /// One of the edits, of whatever chance picks.
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
                if (licence_.tagNames) account->setTagNames(someTagNames());
                account->setName(someText());
            }
            break;
        case 14:
            if (const auto note = awake(any<TKNote>("Note"))) {
                if (licence_.tagNames && isOneIn(2)) note->setTagNames(someTagNames());
                note->setContent(someContent());
            }
            break;
        case 15:
            if (licence_.tags)
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

private:
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
        return TKTagNames::initWithEditableString(licence_.tags && isOneIn(2) ? Others[below(3)]
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
            return tenure.setRentalPeriod(licence_.unreckonableTerms ? someNumber(3)
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
            if (licence_.tagNames) transaction.setTagNames(someTagNames());
            return;
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
            object->valueForKey(keys::tenures).as<Set>()->count() > 0 &&
            !(licence_.refusedDeletions && isOneIn(6)))
            return;
        if (!licence_.tags && object->modelledProperty(keys::owner)) return;
        context_->deleteObject(*object);
    }
    std::mt19937_64 random_;
    EditLicence licence_;
    Ref<ManagedObjectContext> context_;
};

} // namespace estatebook::test
