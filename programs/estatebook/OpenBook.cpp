// SPDX-License-Identifier: MIT
#include "estatebook/OpenBook.hpp"

#include "estatebook/document/BookReader.hpp"
#include "estatebook/document/DateText.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/system/Clock.hpp"
#include "platform/text/Text.hpp"
#include "store/TKCurrentDateController.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKState.hpp"
#include "tags/TKTagNames.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <unordered_set>

namespace estatebook {

using document::forMessage;
using platform::Date;
using platform::Number;
using platform::Ref;
using platform::String;
using platform::TimeZone;
using platform::Value;

namespace {

constexpr std::size_t MaximalChoices = 20;

document::BookReading readBook(const std::string& file) {
    return file == "-" ? document::BookReader::readStream(stdin, "standard input")
                       : document::BookReader::readFile(file);
}

/// None for an empty text.
std::optional<Date> dateOf(std::string_view text, const platform::Calendar& calendar) {
    if (text.empty()) return std::nullopt;
    const auto reading = document::readDate(text, calendar);
    if (!reading.date)
        throw Failure(ExitCode::WrongUsage, fmt::format("--as-of: \"{}\" {}; give a day such as 2025-03-31",
                                                        forMessage(text), document::describe(reading.fault)));
    return reading.date;
}

Ref<String> textOf(const std::optional<std::string>& text) {
    return text ? String::make(*text) : nullptr;
}

template <class Integer>
std::optional<Number> numberOf(const std::optional<Integer>& number) {
    if (!number) return std::nullopt;
    if constexpr (std::is_same_v<Integer, bool>)
        return Number(*number);
    else
        return Number(static_cast<std::uint64_t>(*number));
}

Ref<TKTagNames> tagNamesOf(const std::vector<std::string>& tags) {
    if (tags.empty()) return nullptr;
    std::vector<Value> names;
    names.reserve(tags.size());
    for (const std::string& tag : tags) names.emplace_back(String::make(tag));
    return TKTagNames::initWithArray(platform::Array::make(std::move(names)));
}

Value valueOf(const document::SettingValue& setting) {
    struct Visitor {
        Value operator()(std::monostate) const { return {}; }
        Value operator()(bool flag) const { return flag; }
        Value operator()(std::int64_t number) const { return number; }
        Value operator()(const platform::Decimal& number) const { return number; }
        Value operator()(const std::string& text) const { return String::make(text); }
    };
    return std::visit(Visitor{}, setting);
}

/// Gives identifiers to objects that came without one: the first of KIND-1, KIND-2 … that is free.
class Identifiers {
public:
    explicit Identifiers(std::string_view kind) : kind_(kind) {}

    void take(const std::optional<std::string>& id) {
        if (id) taken_.insert(*id);
    }
    std::string of(const std::optional<std::string>& id) {
        if (id) return *id;
        std::string made;
        do made = fmt::format("{}-{}", kind_, ++last_);
        while (taken_.contains(made));
        return made;
    }

private:
    std::string_view kind_;
    std::unordered_set<std::string_view> taken_;
    std::size_t last_ = 0;
};

void fillTransaction(TKTransaction& object, const document::Transaction& transaction) {
    object.setAmount(transaction.amount);
    object.setWhat(textOf(transaction.what));
    object.setWhen(transaction.when);
    object.setProcessedOn(transaction.processedOn);
    object.setReceipt(textOf(transaction.receipt));
    object.setAdjustment(numberOf(transaction.adjustment));
    object.setTagNames(tagNamesOf(transaction.tags));
}

void fillNote(TKNote& object, const document::Note& note) {
    object.setSubject(textOf(note.subject));
    object.setContent(Value(textOf(note.content)));
    object.setCreatedDate(note.createdDate);
    object.setCreatedBy(textOf(note.createdBy));
    object.setTagNames(tagNamesOf(note.tags));
}

void fillProperty(TKProperty& object, const document::Property& property) {
    object.setName(textOf(property.name));
    object.setSublease(textOf(property.sublease));
    object.setAddressBookID(textOf(property.addressBookID));
    object.setRentalBillingCycle(numberOf(property.rentalBillingCycle));
    object.setRentalPeriod(numberOf(property.rentalPeriod));
    object.setRentalAmount(property.rentalAmount);
    object.setBondAmount(property.bondAmount);
    object.setAvailable(numberOf(property.available));
    object.setTagNames(tagNamesOf(property.tags));
}

void fillTenant(TKTenant& object, const document::Tenant& tenant) {
    object.setName(textOf(tenant.name));
    object.setAddressBookID(textOf(tenant.addressBookID));
    object.setTagNames(tagNamesOf(tenant.tags));
}

/// Keeps a tenure from rebuilding its schedule while it lives. Books of long lettings would not fit into memory with all
/// schedules, and terms that cannot be reckoned are to be told of by whoever asks for a figure.
class ScheduleAtRest {
public:
    explicit ScheduleAtRest(TKTenure& tenure) : tenure_(tenure) {
        tenure_.removeObserverForKeyPathContext(tenure_, "chargablePeriods", TKChargablePeriodsChanged);
    }
    ~ScheduleAtRest() {
        tenure_.addObserverForKeyPathOptionsContext(tenure_, "chargablePeriods", platform::ObservingNew,
                                                    TKChargablePeriodsChanged);
    }
    ScheduleAtRest(const ScheduleAtRest&) = delete;
    ScheduleAtRest& operator=(const ScheduleAtRest&) = delete;

private:
    TKTenure& tenure_;
};

/// The start and the cycle before the period and the amount, so that no moment has terms that cannot be reckoned.
void fillTenure(TKTenure& object, const document::Tenure& tenure) {
    const ScheduleAtRest atRest(object);
    object.setStartDate(tenure.startDate);
    object.setRentalBillingCycle(numberOf(tenure.rentalBillingCycle));
    object.setAdvanceBillingCycle(numberOf(tenure.advanceBillingCycle));
    object.setChargeBehaviour(numberOf(tenure.chargeBehaviour));
    object.setChargeFullDuration(numberOf(tenure.chargeFullDuration));
    object.setEndDate(tenure.endDate);
    object.setAdvancePeriod(numberOf(tenure.advancePeriod));
    object.setRentalPeriod(numberOf(tenure.rentalPeriod));
    object.setRentalAmount(tenure.rentalAmount);
    object.setBondAmount(tenure.bondAmount);
    object.setLastBalancedDate(tenure.lastBalancedDate);
}

template <class Object>
Object* named(const std::unordered_map<std::string_view, Object*>& objects,
              const std::optional<std::string>& id) {
    return id ? objects.at(*id) : nullptr;
}

} // namespace

OpenBook OpenBook::open(const std::string& file, std::string_view asOf) {
    const document::BookReading reading = readBook(file);
    if (!reading)
        throw Failure(reading.error->kind == document::BookError::Kind::Unreadable ? ExitCode::CannotRead
                                                                                   : ExitCode::BadData,
                      reading.error->text());
    const document::BookDocument& document = *reading.document;
    const Ref<TimeZone> zone =
        document.timeZone ? TimeZone::named(*document.timeZone) : TimeZone::defaultTimeZone();
    OpenBook book{platform::Calendar(zone)};
    book.file_ = forMessage(file == "-" ? "standard input" : file, 4096);
    if (const auto today = dateOf(asOf, book.calendar_)) platform::Clock::setNow([today] { return *today; });
    for (const document::BookWarning& warning : reading.warnings) std::cerr << warning.text() << '\n';

    TimeZone::setDefaultTimeZone(zone);
    book.asOf_ = TKCurrentDateController::sharedInstance().currentDate().value();
    if (const auto error = TKManagedObjectModel::modelError())
        throw Failure(ExitCode::CannotRead, fmt::format("{}; install the program anew",
                                                        forMessage(error->localizedDescription(), 400)));
    book.context_ = TKManagedObjectModel::inMemoryManagedObjectContext();
    book.addAll(document);
    return book;
}

// No name is given twice in a document, so that none has to be looked for.
void OpenBook::addSettings(const document::BookDocument& book, bool areFollowed) {
    const auto add = [&](std::string_view name, const Value& value) {
        const auto state = context_->insertNewObject<TKState>("State");
        state->setName(String::make(name));
        state->setValue(value);
    };
    for (const document::Setting& setting : book.settings) {
        const bool isFollowed =
            setting.name == TKCurrencyCodeStateName->view() || setting.name == TKBillingModeStateName->view();
        if (isFollowed == areFollowed) add(setting.name, valueOf(setting.value));
    }
    if (book.timeZone && !areFollowed) add("TimeZone", Value(String::make(*book.timeZone)));
}

void OpenBook::addAll(const document::BookDocument& book) {
    Identifiers propertyIds("property"), tenantIds("tenant"), tenureIds("tenure"),
        transactionIds("transaction");
    for (const auto& property : book.properties) {
        propertyIds.take(property.id);
        for (const auto& transaction : property.transactions) transactionIds.take(transaction.id);
    }
    for (const auto& tenant : book.tenants) tenantIds.take(tenant.id);
    for (const auto& tenure : book.tenures) {
        tenureIds.take(tenure.id);
        for (const auto& transaction : tenure.transactions) transactionIds.take(transaction.id);
    }

    const auto addTransactions = [&]<class Object>(std::string_view entity, const auto& transactions,
                                                   auto setOwner, Object*) {
        for (const document::Transaction& transaction : transactions) {
            const auto object = context_->insertNewObject<Object>(entity);
            fillTransaction(*object, transaction);
            setOwner(*object);
            identifiers_.emplace(object.get(), transactionIds.of(transaction.id));
        }
    };
    const auto addNotes = [&]<class Object>(std::string_view entity, const auto& notes, auto setOwner,
                                            Object*) {
        for (const document::Note& note : notes) {
            const auto object = context_->insertNewObject<Object>(entity);
            fillNote(*object, note);
            setOwner(*object);
        }
    };

    // Each tenure looks for the settings it follows, and finds them at once as long as there are no others.
    addSettings(book, true);
    currencyCode_ =
        TKState::valueForNameInManagedObjectContext(Ref<String>(TKCurrencyCodeStateName), *context_).string();

    std::unordered_map<std::string_view, TKProperty*> propertiesById;
    for (const auto& property : book.properties) {
        const auto object = context_->insertNewObject<TKProperty>("Property");
        fillProperty(*object, property);
        if (property.id) propertiesById.emplace(*property.id, object.get());
        const auto setOwner = [&](auto& owned) { owned.setProperty(object.get()); };
        addTransactions("PropertyTransaction", property.transactions, setOwner,
                        static_cast<TKPropertyTransaction*>(nullptr));
        addNotes("PropertyNote", property.notes, setOwner, static_cast<TKPropertyNote*>(nullptr));
        properties_.push_back({propertyIds.of(property.id), object});
    }

    std::unordered_map<std::string_view, TKTenant*> tenantsById;
    for (const auto& tenant : book.tenants) {
        const auto object = context_->insertNewObject<TKTenant>("Tenant");
        fillTenant(*object, tenant);
        if (tenant.id) tenantsById.emplace(*tenant.id, object.get());
        addNotes(
            "TenantNote", tenant.notes, [&](auto& owned) { owned.setTenant(object.get()); },
            static_cast<TKTenantNote*>(nullptr));
        tenants_.push_back({tenantIds.of(tenant.id), object});
    }

    for (const auto& tenure : book.tenures) {
        const auto object = context_->insertNewObject<TKTenure>("Tenure");
        fillTenure(*object, tenure);
        object->setProperty(named(propertiesById, tenure.property));
        object->setTenant(named(tenantsById, tenure.tenant));
        const auto setOwner = [&](auto& owned) { owned.setTenure(object.get()); };
        addTransactions("TenureTransaction", tenure.transactions, setOwner,
                        static_cast<TKTenureTransaction*>(nullptr));
        addNotes("TenureNote", tenure.notes, setOwner, static_cast<TKTenureNote*>(nullptr));
        lettings_.push_back({tenureIds.of(tenure.id), object});
        identifiers_.emplace(object.get(), lettings_.back().id);
    }
    addSettings(book, false);
}

std::string OpenBook::currencyName() const {
    return currencyCode_ && !currencyCode_->empty() ? forMessage(currencyCode_->view(), 20)
                                                    : "no currency set";
}

platform::DecimalBehavior OpenBook::rounding() const {
    return platform::hostOperations().currencyRoundingBehaviourForCurrencyCode(currencyCode_);
}

const OpenBook::Letting& OpenBook::lettingNamed(std::string_view text) const {
    const auto byId = std::ranges::find(lettings_, text, &Letting::id);
    if (byId != lettings_.end()) return *byId;

    const std::string wanted = platform::canonicalForm(text);
    std::vector<const Letting*> whole, part;
    for (const Letting& letting : lettings_) {
        const std::string name = platform::canonicalForm(letting.object->name()->view());
        if (name == wanted) whole.push_back(&letting);
        if (name.find(wanted) != std::string::npos) part.push_back(&letting);
    }
    const auto& found = whole.empty() ? part : whole;
    if (found.size() == 1) return *found.front();
    if (found.empty())
        throw Failure(
            ExitCode::NothingMatched,
            fmt::format(
                "{}: no tenure is called \"{}\"; see what there is with: estatebook tenures --book FILE",
                file_, forMessage(text)));
    std::string lines = fmt::format("{}: \"{}\" fits {} tenures; give one of these identifiers:", file_,
                                    forMessage(text), found.size());
    for (std::size_t i = 0; i < std::min(found.size(), MaximalChoices); ++i)
        lines += fmt::format("\n  {}  {}", forMessage(found[i]->id),
                             forMessage(found[i]->object->name()->view(), 200));
    if (found.size() > MaximalChoices) lines += fmt::format("\n  and {} more", found.size() - MaximalChoices);
    throw Failure(ExitCode::NothingMatched, lines);
}

Failure OpenBook::unreckonable(const Letting& letting, ReckoningError error) const {
    const auto place = static_cast<std::size_t>(&letting - lettings_.data());
    return Failure(
        ExitCode::BadData,
        fmt::format("{}: /tenures/{}: the rent of \"{}\" cannot be reckoned ({}); check its rentalAmount, "
                    "rentalPeriod and rentalBillingCycle, its dates and the amounts",
                    file_, place, forMessage(letting.id), error.words));
}

} // namespace estatebook
