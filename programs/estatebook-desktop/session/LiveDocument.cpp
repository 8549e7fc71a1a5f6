// SPDX-License-Identifier: MIT
#include "estatebook-desktop/session/LiveDocument.hpp"

#include "estatebook/book/Identifiers.hpp"
#include "estatebook/book/StoredValues.hpp"
#include "estatebook/document/BookMembers.hpp"

#include "platform/values/Exception.hpp"
#include "store/TKProperty.hpp"
#include "store/TKState.hpp"
#include "store/TKTenant.hpp"
#include "tags/TKTagNames.hpp"
#include "tenure/TKTenure.hpp"

#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace estatebook::desktop {

using platform::ManagedObject;
using platform::ManagedObjectContext;
using platform::Number;
using platform::Ref;
using platform::String;

namespace {

std::optional<std::string> textOf(const Ref<String>& text) {
    return text ? std::optional(text->string()) : std::nullopt;
}

template <class Count>
std::optional<Count> countOf(const std::optional<Number>& number) {
    const auto count = number ? documentCount(*number) : std::nullopt;
    return count ? std::optional(static_cast<Count>(*count)) : std::nullopt;
}

std::optional<bool> flagOf(const std::optional<Number>& number) {
    return number ? documentFlag(*number) : std::nullopt;
}

std::vector<std::string> tagsOf(const Ref<TKTagNames>& names) {
    std::vector<std::string> tags;
    if (!names) return tags;
    const auto items = names->items();
    for (std::size_t i = 0; i < items->count(); ++i)
        if (const auto name = items->at(i).string()) tags.push_back(name->string());
    return tags;
}

/// What documents call the objects of an entity.
class Names {
public:
    Names(ManagedObjectContext& context, std::string_view entity) {
        Ref<platform::Error> error;
        const auto objects = context.executeFetchRequest({std::string(entity)}, &error);
        if (!objects) throw platform::ObjectInaccessibleException(error->localizedDescription());
        objects_ = *objects;
        const auto own = context.identifiers(objects_, &error);
        if (!own) throw platform::ObjectInaccessibleException(error->localizedDescription());
        own_ = *own;
    }
    /// Has everything named.
    void nameAll(std::string_view kind) {
        Identifiers ids(kind);
        for (const auto& name : own_) ids.take(name);
        for (auto& name : own_) name = ids.of(name);
    }
    [[nodiscard]] std::unordered_map<const ManagedObject*, std::optional<std::string>> byObject() const {
        std::unordered_map<const ManagedObject*, std::optional<std::string>> names;
        for (std::size_t i = 0; i < objects_.size(); ++i) names.emplace(objects_[i].get(), own_[i]);
        return names;
    }

private:
    std::vector<Ref<ManagedObject>> objects_;
    std::vector<std::optional<std::string>> own_;
};

class Maker {
public:
    explicit Maker(ManagedObjectContext& context) : context_(context) {
        for (const auto& [entity, kind] :
             {std::pair("Property", "property"), std::pair("Tenant", "tenant")}) {
            Names names(context, entity);
            names.nameAll(kind);
            names_.merge(names.byObject());
        }
        for (const char* entity : {"Tenure", "Transaction", "Note"})
            names_.merge(Names(context, entity).byObject());
    }

    document::BookDocument make() {
        addSettings();
        for (const auto& property : context_.fetchAll<TKProperty>("Property")) addProperty(*property);
        for (const auto& tenant : context_.fetchAll<TKTenant>("Tenant")) addTenant(*tenant);
        for (const auto& tenure : context_.fetchAll<TKTenure>("Tenure")) addTenure(*tenure);
        return std::move(made_);
    }

private:
    [[nodiscard]] std::optional<std::string> nameOf(const ManagedObject* object) const {
        const auto found = names_.find(object);
        return found == names_.end() ? std::nullopt : found->second;
    }

    void addSettings() {
        std::unordered_set<std::string> seen;
        for (const auto& state : context_.fetchAll<TKState>("State")) {
            const auto name = textOf(state->name());
            if (!name || state->value().isAbsent() || !seen.insert(*name).second) continue;
            auto value = documentSetting(state->value());
            if (!value) continue;
            if (*name != document::TimeZoneSettingName)
                made_.settings.push_back({*name, *std::move(value)});
            else if (auto* zone = std::get_if<std::string>(&*value))
                made_.timeZone = std::move(*zone);
        }
    }

    template <class Owner>
    void addNotes(std::vector<document::Note>& notes, const Owner& owner) {
        for (const TKNote& note : owner.notes())
            notes.push_back({.id = nameOf(&note),
                             .subject = textOf(note.subject()),
                             .content = documentText(note.content()),
                             .createdDate = note.createdDate(),
                             .createdBy = textOf(note.createdBy()),
                             .tags = tagsOf(note.tagNames())});
    }
    template <class Owner>
    void addTransactions(std::vector<document::Transaction>& transactions, const Owner& owner) {
        for (const TKTransaction& transaction : owner.transactions())
            transactions.push_back({.id = nameOf(&transaction),
                                    .amount = transaction.amount(),
                                    .what = textOf(transaction.what()),
                                    .when = transaction.when(),
                                    .processedOn = transaction.processedOn(),
                                    .receipt = textOf(transaction.receipt()),
                                    .adjustment = flagOf(transaction.adjustment()),
                                    .tags = tagsOf(transaction.tagNames())});
    }

    void addProperty(const TKProperty& property) {
        document::Property& made = made_.properties.emplace_back();
        made.id = nameOf(&property);
        made.name = textOf(property.name());
        made.sublease = textOf(property.sublease());
        made.addressBookID = textOf(property.addressBookID());
        made.rentalAmount = property.rentalAmount();
        made.bondAmount = property.bondAmount();
        made.rentalPeriod = countOf<std::uint64_t>(property.rentalPeriod());
        made.rentalBillingCycle = countOf<document::BillingCycle>(property.rentalBillingCycle());
        made.available = flagOf(property.available());
        made.tags = tagsOf(property.tagNames());
        addTransactions(made.transactions, property);
        addNotes(made.notes, property);
    }

    void addTenant(const TKTenant& tenant) {
        document::Tenant& made = made_.tenants.emplace_back();
        made.id = nameOf(&tenant);
        made.name = textOf(tenant.name());
        made.addressBookID = textOf(tenant.addressBookID());
        made.tags = tagsOf(tenant.tagNames());
        addNotes(made.notes, tenant);
    }

    void addTenure(const TKTenure& tenure) {
        document::Tenure& made = made_.tenures.emplace_back();
        made.id = nameOf(&tenure);
        if (tenure.property()) made.property = nameOf(tenure.property());
        if (tenure.tenant()) made.tenant = nameOf(tenure.tenant());
        made.startDate = tenure.startDate();
        if (tenure.validateDuration(nullptr)) made.endDate = tenure.endDate();
        made.rentalAmount = tenure.rentalAmount();
        made.rentalPeriod = countOf<std::uint64_t>(tenure.rentalPeriod());
        made.rentalBillingCycle = countOf<document::BillingCycle>(tenure.rentalBillingCycle());
        made.advancePeriod = countOf<std::uint64_t>(tenure.advancePeriod());
        made.advanceBillingCycle = countOf<document::BillingCycle>(tenure.advanceBillingCycle());
        made.chargeBehaviour = countOf<document::ChargeBehaviour>(tenure.chargeBehaviour());
        made.chargeFullDuration = flagOf(tenure.chargeFullDuration());
        made.bondAmount = tenure.bondAmount();
        made.lastBalancedDate = tenure.lastBalancedDate();
        addTransactions(made.transactions, tenure);
        addNotes(made.notes, tenure);
    }

    ManagedObjectContext& context_;
    std::unordered_map<const ManagedObject*, std::optional<std::string>> names_;
    document::BookDocument made_;
};

} // namespace

document::BookDocument liveDocument(ManagedObjectContext& context) {
    return Maker(context).make();
}

} // namespace estatebook::desktop
