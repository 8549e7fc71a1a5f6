// SPDX-License-Identifier: MIT
#include "estatebook/BookObjects.hpp"

#include "platform/values/AttributedString.hpp"
#include "store/TKState.hpp"
#include "tags/TKTagNames.hpp"

#include <fmt/format.h>

#include <cstdint>
#include <unordered_set>

namespace estatebook {

using platform::AttributedString;
using platform::Dictionary;
using platform::ManagedObjectContext;
using platform::Number;
using platform::Ref;
using platform::String;
using platform::Value;

namespace {

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

/// A text as it is, or one with attributes.
Value valueOf(const std::optional<document::RichText>& text) {
    if (!text) return {};
    if (const auto plain = text->plain()) return String::make(*plain);
    std::string whole;
    std::vector<AttributedString::Run> runs;
    for (const document::TextPiece& piece : text->pieces) {
        std::vector<Dictionary::Entry> attributes;
        attributes.reserve(piece.attributes.size());
        for (const document::Setting& attribute : piece.attributes)
            attributes.emplace_back(attribute.name, valueOf(attribute.value));
        runs.push_back({whole.size(), piece.text.size(), Dictionary::make(std::move(attributes))});
        whole += piece.text;
    }
    return AttributedString::make(String::make(whole), std::move(runs));
}

/// Gives identifiers to objects that came without one: the first of KIND-1, KIND-2 … that is free.
class Identifiers {
public:
    explicit Identifiers(std::string_view kind) : kind_(kind) {}

    template <class Document>
    void take(const Document& document) {
        if (document.id) taken_.insert(*document.id);
    }
    template <class Document>
    void takeAll(const std::vector<Document>& documents) {
        for (const Document& document : documents) take(document);
    }
    template <class Document>
    std::string of(const Document& document) {
        if (document.id) return *document.id;
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

void fill(TKTransaction& object, const document::Transaction& transaction) {
    object.setAmount(transaction.amount);
    object.setWhat(textOf(transaction.what));
    object.setWhen(transaction.when);
    object.setProcessedOn(transaction.processedOn);
    object.setReceipt(textOf(transaction.receipt));
    object.setAdjustment(numberOf(transaction.adjustment));
    object.setTagNames(tagNamesOf(transaction.tags));
}

void fill(TKNote& object, const document::Note& note) {
    object.setSubject(textOf(note.subject));
    object.setContent(valueOf(note.content));
    object.setCreatedDate(note.createdDate);
    object.setCreatedBy(textOf(note.createdBy));
    object.setTagNames(tagNamesOf(note.tags));
}

void fill(TKProperty& object, const document::Property& property) {
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

void fill(TKTenant& object, const document::Tenant& tenant) {
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
void fill(TKTenure& object, const document::Tenure& tenure) {
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

/// Makes the objects of one document.
class Maker {
public:
    Maker(const document::BookDocument& document, ManagedObjectContext& context, BookObjects& made)
        : document_(document), context_(context), made_(made) {
        for (const auto& property : document.properties) {
            propertyIds_.take(property);
            transactionIds_.takeAll(property.transactions);
            noteIds_.takeAll(property.notes);
        }
        for (const auto& tenant : document.tenants) {
            tenantIds_.take(tenant);
            noteIds_.takeAll(tenant.notes);
        }
        for (const auto& tenure : document.tenures) {
            tenureIds_.take(tenure);
            transactionIds_.takeAll(tenure.transactions);
            noteIds_.takeAll(tenure.notes);
        }
    }

    void make() {
        // Each tenure looks for the settings it follows, and finds them at once as long as there are no others.
        addSettings(true);
        for (const auto& property : document_.properties) {
            auto& object = add(made_.properties, "Property", property, propertyIds_);
            const auto setOwner = [&](auto& part) { part.setProperty(&object); };
            addParts<TKPropertyTransaction>("PropertyTransaction", property.transactions, transactionIds_,
                                            setOwner);
            addParts<TKPropertyNote>("PropertyNote", property.notes, noteIds_, setOwner);
            if (property.id) properties_.emplace(*property.id, &object);
        }
        for (const auto& tenant : document_.tenants) {
            auto& object = add(made_.tenants, "Tenant", tenant, tenantIds_);
            const auto setOwner = [&](auto& part) { part.setTenant(&object); };
            addParts<TKTenantNote>("TenantNote", tenant.notes, noteIds_, setOwner);
            if (tenant.id) tenants_.emplace(*tenant.id, &object);
        }
        for (const auto& tenure : document_.tenures) {
            auto& object = add(made_.lettings, "Tenure", tenure, tenureIds_);
            if (tenure.property) object.setProperty(properties_.at(*tenure.property));
            if (tenure.tenant) object.setTenant(tenants_.at(*tenure.tenant));
            const auto setOwner = [&](auto& part) { part.setTenure(&object); };
            addParts<TKTenureTransaction>("TenureTransaction", tenure.transactions, transactionIds_,
                                          setOwner);
            addParts<TKTenureNote>("TenureNote", tenure.notes, noteIds_, setOwner);
        }
        addSettings(false);
    }

private:
    /// The settings that tenures follow, or all others. No name is given twice in a document, so that none has to be
    /// looked for.
    void addSettings(bool areFollowed) {
        const auto add = [&](std::string_view name, const Value& value) {
            const auto state = context_.insertNewObject<TKState>("State");
            state->setName(String::make(name));
            state->setValue(value);
        };
        for (const document::Setting& setting : document_.settings) {
            const bool isFollowed = setting.name == TKCurrencyCodeStateName->view() ||
                                    setting.name == TKBillingModeStateName->view();
            if (isFollowed == areFollowed) add(setting.name, valueOf(setting.value));
        }
        if (document_.timeZone && !areFollowed) add("TimeZone", Value(String::make(*document_.timeZone)));
    }

    template <class Object, class Document>
    Ref<Object> make(std::string_view entity, const Document& document, Identifiers& ids) {
        Ref<Object> object = context_.insertNewObject<Object>(entity);
        fill(*object, document);
        made_.identifiers.emplace(object.get(), ids.of(document));
        return object;
    }

    template <class Object, class Document>
    Object& add(std::vector<BookObjects::Entry<Object>>& entries, std::string_view entity,
                const Document& document, Identifiers& ids) {
        const auto object = make<Object>(entity, document, ids);
        entries.push_back({made_.identifiers.at(object.get()), object});
        return *object;
    }

    template <class Object, class Document, class SetOwner>
    void addParts(std::string_view entity, const std::vector<Document>& parts, Identifiers& ids,
                  SetOwner setOwner) {
        for (const Document& part : parts) setOwner(*make<Object>(entity, part, ids));
    }

    const document::BookDocument& document_;
    ManagedObjectContext& context_;
    BookObjects& made_;
    Identifiers propertyIds_{"property"};
    Identifiers tenantIds_{"tenant"};
    Identifiers tenureIds_{"tenure"};
    Identifiers transactionIds_{"transaction"};
    Identifiers noteIds_{"note"};
    std::unordered_map<std::string_view, TKProperty*> properties_;
    std::unordered_map<std::string_view, TKTenant*> tenants_;
};

} // namespace

BookObjects BookObjects::ofDocument(const document::BookDocument& document, ManagedObjectContext& context) {
    BookObjects made;
    Maker(document, context, made).make();
    return made;
}

} // namespace estatebook
