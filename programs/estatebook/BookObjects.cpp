// SPDX-License-Identifier: MIT
#include "estatebook/BookObjects.hpp"

#include "estatebook/book/Identifiers.hpp"
#include "estatebook/document/BookMembers.hpp"

#include "platform/values/AttributedString.hpp"
#include "platform/values/Exception.hpp"
#include "store/TKState.hpp"
#include "tags/TKTagNames.hpp"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <ranges>
#include <utility>

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

} // namespace

/// Makes the objects of one document.
class BookObjects::Maker {
public:
    enum class Purpose : std::uint8_t { Reckoning, Keeping };

    Maker(const document::BookDocument& document, ManagedObjectContext& context, Purpose purpose,
          BookObjects& made)
        : document_(document), context_(context), isKept_(purpose == Purpose::Keeping), made_(made) {
        for (const auto& property : document.properties) {
            propertyIds_.take(property.id);
            takeAll(transactionIds_, property.transactions);
            takeAll(noteIds_, property.notes);
        }
        for (const auto& tenant : document.tenants) {
            tenantIds_.take(tenant.id);
            takeAll(noteIds_, tenant.notes);
        }
        for (const auto& tenure : document.tenures) {
            tenureIds_.take(tenure.id);
            takeAll(transactionIds_, tenure.transactions);
            takeAll(noteIds_, tenure.notes);
        }
    }

    void make() {
        // Each tenure looks through all settings for those it follows, so that there are no others yet.
        const auto [first, others] = settingsAround();
        std::vector<Ref<TKState>> standIns;
        for (const document::Setting* setting : first)
            standIns.push_back(addSetting(setting->name, setting->value));
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
        for (const document::Setting* setting : others) {
            const auto state = addSetting(setting->name, setting->value);
            if (isFollowed(*setting)) replaceStandIn(standIns, state);
        }
        if (document_.timeZone) addSetting(document::TimeZoneSettingName, *document_.timeZone);
    }

private:
    template <class Document>
    static void takeAll(Identifiers& ids, const std::vector<Document>& documents) {
        for (const Document& document : documents) ids.take(document.id);
    }

    static bool isFollowed(const document::Setting& setting) {
        return setting.name == TKCurrencyCodeStateName->view() ||
               setting.name == TKBillingModeStateName->view();
    }

    using Settings = std::vector<const document::Setting*>;
    /// Those to be made before the tenures, and those behind. Settings that are kept stay in their order: where it is not this one,
    /// the first ones stand in for the followed ones among all that are behind.
    [[nodiscard]] std::pair<Settings, Settings> settingsAround() const {
        Settings all;
        for (const document::Setting& setting : document_.settings) all.push_back(&setting);
        Settings followed;
        std::ranges::copy_if(all, std::back_inserter(followed),
                             [](const document::Setting* setting) { return isFollowed(*setting); });
        const bool isInOrder = std::ranges::equal(followed, all | std::views::take(followed.size()));
        if (isInOrder || !isKept_)
            std::erase_if(all, [](const document::Setting* setting) { return isFollowed(*setting); });
        return {std::move(followed), std::move(all)};
    }

    /// Has all tenures follow the setting in place of the one that stood in for it, which goes.
    void replaceStandIn(const std::vector<Ref<TKState>>& standIns, const Ref<TKState>& state) {
        const auto standIn = std::ranges::find_if(
            standIns, [&](const auto& each) { return each->name()->view() == state->name()->view(); });
        if (standIn == standIns.end()) return;
        const bool isCurrency = state->name()->view() == TKCurrencyCodeStateName->view();
        String* const context = isCurrency ? TKCurrencyCodeStateName : TKBillingModeStateName;
        for (const auto& [id, tenure] : made_.lettings) {
            (*standIn)->removeObserverForKeyPathContext(*tenure, "value", context);
            state->addObserverForKeyPathOptionsContext(*tenure, "value", platform::ObservingNew, context);
            isCurrency ? tenure->setCurrencyCodeState(state) : tenure->setBillingModeState(state);
        }
        context_.deleteObject(**standIn);
    }

    /// No name is given twice in a document, so that none has to be looked for.
    Ref<TKState> addSetting(std::string_view name, const document::SettingValue& value) {
        auto state = context_.insertNewObject<TKState>("State");
        state->setName(String::make(name));
        const bool isNull = std::holds_alternative<std::monostate>(value);
        state->setValue(isKept_ && isNull ? Value(platform::NullObject()) : valueOf(value));
        return state;
    }

    template <class Object, class Document>
    Ref<Object> make(std::string_view entity, const Document& document, Identifiers& ids) {
        Ref<Object> object = context_.insertNewObject<Object>(entity);
        fill(*object, document);
        made_.identifiers_.emplace(object.get(), ids.of(document.id));
        if (isKept_ && document.id) context_.setIdentifier(*object, *document.id);
        return object;
    }

    template <class Object, class Document>
    Object& add(std::vector<BookObjects::Entry<Object>>& entries, std::string_view entity,
                const Document& document, Identifiers& ids) {
        const auto object = make<Object>(entity, document, ids);
        entries.push_back({made_.identifiers_.at(object.get()), object});
        return *object;
    }

    template <class Object, class Document, class SetOwner>
    void addParts(std::string_view entity, const std::vector<Document>& parts, Identifiers& ids,
                  SetOwner setOwner) {
        for (const Document& part : parts) setOwner(*make<Object>(entity, part, ids));
    }

    const document::BookDocument& document_;
    ManagedObjectContext& context_;
    bool isKept_;
    BookObjects& made_;
    Identifiers propertyIds_{"property"};
    Identifiers tenantIds_{"tenant"};
    Identifiers tenureIds_{"tenure"};
    Identifiers transactionIds_{"transaction"};
    Identifiers noteIds_{"note"};
    std::unordered_map<std::string_view, TKProperty*> properties_;
    std::unordered_map<std::string_view, TKTenant*> tenants_;
};

BookObjects BookObjects::ofDocument(const document::BookDocument& document, ManagedObjectContext& context) {
    BookObjects made;
    Maker(document, context, Maker::Purpose::Reckoning, made).make();
    return made;
}

BookObjects BookObjects::keptOfDocument(const document::BookDocument& document,
                                        ManagedObjectContext& context) {
    BookObjects made;
    Maker(document, context, Maker::Purpose::Keeping, made).make();
    return made;
}

namespace {

/// The objects of an entity in the order of their creation, each with its own identifier or a new one.
template <class Visit>
void forEachIdentified(ManagedObjectContext& context, std::string_view entity, std::string_view kind,
                       Visit visit) {
    Ref<platform::Error> error;
    const auto objects = context.executeFetchRequest({std::string(entity)}, &error);
    if (!objects) throw platform::ObjectInaccessibleException(error->localizedDescription());
    const auto own = context.identifiers(*objects, &error);
    if (!own) throw platform::ObjectInaccessibleException(error->localizedDescription());
    Identifiers ids(kind);
    for (const auto& identifier : *own) ids.take(identifier);
    for (std::size_t index = 0; index < objects->size(); ++index)
        visit((*objects)[index], ids.of((*own)[index]));
}

} // namespace

BookObjects BookObjects::ofStore(const Ref<ManagedObjectContext>& context) {
    BookObjects made;
    const auto fill = [&](auto& entries, std::string_view entity, std::string_view kind) {
        using T = std::remove_reference_t<decltype(*entries.front().object)>;
        forEachIdentified(*context, entity, kind, [&](const auto& object, std::string id) {
            made.identifiers_.emplace(object.get(), id);
            entries.push_back({std::move(id), platform::refCast<T>(object)});
        });
    };
    fill(made.properties, "Property", "property");
    fill(made.tenants, "Tenant", "tenant");
    fill(made.lettings, "Tenure", "tenure");
    made.unread_ = context;
    return made;
}

void BookObjects::readIdentifiersOfParts() const {
    const auto context = std::exchange(unread_, nullptr);
    for (const auto& [entity, kind] : {std::pair("Transaction", "transaction"), std::pair("Note", "note")})
        forEachIdentified(*context, entity, kind, [&](const auto& object, std::string id) {
            identifiers_.emplace(object.get(), std::move(id));
        });
}

const std::string& BookObjects::identifierOf(const platform::ManagedObject& object) const {
    if (unread_ && !identifiers_.contains(&object)) readIdentifiersOfParts();
    return identifiers_.at(&object);
}

} // namespace estatebook
