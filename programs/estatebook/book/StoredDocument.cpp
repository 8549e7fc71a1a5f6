// SPDX-License-Identifier: MIT
#include "estatebook/book/StoredDocument.hpp"

#include "estatebook/book/Identifiers.hpp"
#include "estatebook/book/ImpliedSettings.hpp"
#include "estatebook/book/StoredValues.hpp"
#include "estatebook/document/BookMembers.hpp"
#include "estatebook/document/BookPlace.hpp"
#include "estatebook/document/JsonText.hpp"

#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectModel.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace estatebook {

using document::BookPlace;
using document::forMessage;
using document::pathStep;
using platform::Key;
using platform::NoRow;
using platform::Row;
using platform::RowKey;
using platform::Store;
using platform::StoreError;
using platform::StoreResult;
using platform::Value;

namespace {

/// A row by the names of what it holds.
class Fields {
public:
    Fields(const Row& row, const platform::RowShape& shape) : row_(row), shape_(shape) {}

    [[nodiscard]] RowKey key() const noexcept { return row_.key; }
    [[nodiscard]] std::string_view entity() const noexcept { return row_.entity->name(); }
    // An attribute that there is not raises.
    [[nodiscard]] const Value& value(Key name) const {
        return row_.values.at(shape_.attribute(name).value_or(row_.values.size()));
    }
    [[nodiscard]] platform::RowLink link(Key name) const {
        return row_.links.at(shape_.link(name).value_or(row_.links.size()));
    }
    [[nodiscard]] std::optional<std::string> text(Key name) const {
        const auto text = value(name).string();
        return text ? std::optional(text->string()) : std::nullopt;
    }
    [[nodiscard]] std::optional<platform::Decimal> amount(Key name) const { return value(name).decimal(); }
    [[nodiscard]] std::optional<platform::Date> date(Key name) const { return value(name).date(); }

private:
    const Row& row_;
    const platform::RowShape& shape_;
};

/// The objects of one kind, in the order in which they were made.
struct Kind {
    std::string_view name;
    std::vector<RowKey> keys{};
    std::vector<BookPlace> places{};
    std::vector<std::optional<std::string>> identifiers{};
};

class DocumentMaker {
public:
    DocumentMaker(const Store& store, ImpliedSettings implied)
        : store_(store), implied_(std::move(implied)) {}

    StoredDocument make() {
        forEach("State", [&](const Fields& row) { addSetting(row); });
        forEach("Account", [&](const Fields& row) {
            if (row.entity() == "Property")
                addProperty(row);
            else
                addTenant(row);
        });
        forEach("Tenure", [&](const Fields& row) { addTenure(row); });
        forEach("Transaction", [&](const Fields& row) { addTransaction(row); });
        forEach("Note", [&](const Fields& row) { addNote(row); });
        for (const std::string_view entity : {"AccountTag", "TransactionTag", "NoteTag"}) addTags(entity);
        forEach("Advertisement",
                [&](const Fields& row) { leaveOut(pathOfRow(row), "a document holds no advertisements"); });
        for (Kind* kind : {&properties_, &tenants_, &tenures_, &transactions_, &notes_}) nameAll(*kind);
        linkTenures();
        return std::move(made_);
    }

private:
    template <class Visit>
    void forEach(std::string_view entity, Visit visit) {
        const auto visited = store_.fetchRows(*store_.model().entityNamed(entity), {}, [&](const Row& row) {
            visit(Fields(row, store_.shapes().of(*row.entity)));
        });
        if (!visited) throw StoreError(visited.error());
    }

    // -- What is left out

    void leaveOut(std::string path, std::string reason) {
        made_.leftOut.push_back({std::move(path), std::move(reason)});
    }
    static std::string pathOfRow(const Fields& row) {
        return fmt::format("row {} of {}", row.key(), row.entity());
    }
    void leaveOutMember(const BookPlace& place, Key member, const Value& value, std::string_view wanted) {
        leaveOut(place.path() + "/" + std::string(member.name()),
                 fmt::format("{} is not {}", kindOfValue(value), wanted));
    }

    // -- Members

    template <class Count>
    void setCount(std::optional<Count>& field, const Fields& row, Key name, const BookPlace& place) {
        const Value& value = row.value(name);
        if (const auto count = documentCount(value))
            field = static_cast<Count>(*count);
        else if (!value.isAbsent())
            leaveOutMember(place, name, value, "a whole number of 0 or more");
    }
    void setFlag(std::optional<bool>& field, const Fields& row, Key name, const BookPlace& place) {
        const Value& value = row.value(name);
        field = documentFlag(value);
        if (!field && !value.isAbsent()) leaveOutMember(place, name, value, "true or false");
    }

    // -- Objects

    BookPlace add(Kind& kind, const Fields& row, BookPlace place) {
        kind.keys.push_back(row.key());
        kind.places.push_back(place);
        places_.emplace(row.key(), place);
        return place;
    }
    /// The object in a list of the book at which the row is to stand.
    static BookPlace placeIn(BookPlace::List list, std::size_t index) {
        BookPlace place;
        place.list = list;
        place.index = static_cast<std::uint32_t>(index);
        return place;
    }

    void addSetting(const Fields& row) {
        const auto name = row.text(keys::name);
        if (!name) return leaveOut(pathOfRow(row), "the setting has no name");
        const std::string path = "/settings" + pathStep(forMessage(*name));
        if (!settingNames_.insert(*name).second)
            return leaveOut(path, "the setting is there twice; the first one counts");
        const Value& value = row.value(keys::value);
        if (value.isAbsent()) return; // somebody looked for it, and there was none
        auto setting = documentSetting(value);
        if (!setting) return leaveOut(path, fmt::format("a document does not hold {}", kindOfValue(value)));
        const bool isZone = *name == document::TimeZoneSettingName;
        if (implied_.has(*name, *setting)) {
            made_.isZoneImplied |= isZone;
            return;
        }
        if (!isZone)
            made_.document.settings.push_back({*name, *std::move(setting)});
        else if (auto* zone = std::get_if<std::string>(&*setting))
            made_.document.timeZone = std::move(*zone);
        else if (!value.isNullObject())
            leaveOut(path, "a zone is named by a text");
    }

    void addProperty(const Fields& row) {
        const BookPlace place =
            add(properties_, row, placeIn(BookPlace::List::Properties, made_.document.properties.size()));
        document::Property& property = made_.document.properties.emplace_back();
        property.name = row.text(keys::name);
        property.sublease = row.text(keys::sublease);
        property.addressBookID = row.text(keys::addressBookID);
        property.rentalAmount = row.amount(keys::rentalAmount);
        property.bondAmount = row.amount(keys::bondAmount);
        setCount(property.rentalPeriod, row, keys::rentalPeriod, place);
        setCount(property.rentalBillingCycle, row, keys::rentalBillingCycle, place);
        setFlag(property.available, row, keys::available, place);
    }

    void addTenant(const Fields& row) {
        add(tenants_, row, placeIn(BookPlace::List::Tenants, made_.document.tenants.size()));
        document::Tenant& tenant = made_.document.tenants.emplace_back();
        tenant.name = row.text(keys::name);
        tenant.addressBookID = row.text(keys::addressBookID);
    }

    void addTenure(const Fields& row) {
        const BookPlace place =
            add(tenures_, row, placeIn(BookPlace::List::Tenures, made_.document.tenures.size()));
        document::Tenure& tenure = made_.document.tenures.emplace_back();
        lettings_.push_back({row.link(keys::property).target, row.link(keys::tenant).target});
        tenure.startDate = row.date(keys::startDate);
        tenure.endDate = row.date(keys::endDate);
        if (tenure.endDate && (!tenure.startDate || *tenure.endDate < *tenure.startDate)) {
            leaveOut(place.path() + "/endDate",
                     tenure.startDate ? "it is before the start date" : "there is no start date");
            tenure.endDate.reset();
        }
        tenure.rentalAmount = row.amount(keys::rentalAmount);
        setCount(tenure.rentalPeriod, row, keys::rentalPeriod, place);
        setCount(tenure.rentalBillingCycle, row, keys::rentalBillingCycle, place);
        setCount(tenure.advancePeriod, row, keys::advancePeriod, place);
        setCount(tenure.advanceBillingCycle, row, keys::advanceBillingCycle, place);
        setCount(tenure.chargeBehaviour, row, keys::chargeBehaviour, place);
        setFlag(tenure.chargeFullDuration, row, keys::chargeFullDuration, place);
        tenure.bondAmount = row.amount(keys::bondAmount);
        tenure.lastBalancedDate = row.date(keys::lastBalancedDate);
    }

    /// Adds a part to the list of it that its owner has; null, and named, when it has none.
    template <class Part>
    Part* addPart(Kind& kind, const Fields& row, RowKey owner,
                  std::vector<Part> document::Property::*ofProperty,
                  std::vector<Part> document::Tenure::*ofTenure,
                  std::vector<Part> document::Tenant::*ofTenant = nullptr) {
        const auto found = places_.find(owner);
        if (found == places_.end()) {
            leaveOut(pathOfRow(row), "it belongs to nothing");
            return nullptr;
        }
        BookPlace place = found->second;
        std::vector<Part>* parts = nullptr;
        document::visitObject(made_.document, place, [&](auto& object) {
            using Owner = std::remove_cvref_t<decltype(object)>;
            if constexpr (std::is_same_v<Owner, document::Property>) parts = &(object.*ofProperty);
            if constexpr (std::is_same_v<Owner, document::Tenure>) parts = &(object.*ofTenure);
            if constexpr (std::is_same_v<Owner, document::Tenant>)
                if (ofTenant) parts = &(object.*ofTenant);
        });
        if (!parts) {
            leaveOut(pathOfRow(row), "it belongs to something that has none of its kind");
            return nullptr;
        }
        place.inner =
            std::is_same_v<Part, document::Note> ? BookPlace::Inner::Notes : BookPlace::Inner::Transactions;
        place.innerIndex = static_cast<std::uint32_t>(parts->size());
        add(kind, row, place);
        return &parts->emplace_back();
    }

    void addTransaction(const Fields& row) {
        const Key owner = row.entity() == "PropertyTransaction" ? keys::property : keys::tenure;
        auto* transaction = addPart(transactions_, row, row.link(owner).target,
                                    &document::Property::transactions, &document::Tenure::transactions);
        if (!transaction) return;
        transaction->amount = row.amount(keys::amount);
        transaction->what = row.text(keys::what);
        transaction->when = row.date(keys::when);
        transaction->processedOn = row.date(keys::processedOn);
        transaction->receipt = row.text(keys::receipt);
        setFlag(transaction->adjustment, row, keys::adjustment, transactions_.places.back());
    }

    void addNote(const Fields& row) {
        const Key owner = row.entity() == "PropertyNote" ? keys::property
                          : row.entity() == "TenantNote" ? keys::tenant
                                                         : keys::tenure;
        auto* note = addPart(notes_, row, row.link(owner).target, &document::Property::notes,
                             &document::Tenure::notes, &document::Tenant::notes);
        if (!note) return;
        note->subject = row.text(keys::subject);
        const Value& content = row.value(keys::content);
        note->content = documentText(content);
        if (!note->content && !content.isAbsent())
            leaveOut(notes_.places.back().path() + "/content",
                     fmt::format("a document does not hold {}, or not with all its attributes",
                                 kindOfValue(content)));
        note->createdDate = row.date(keys::createdDate);
        note->createdBy = row.text(keys::createdBy);
    }

    // -- Tags

    struct Tag {
        RowKey owner = NoRow;
        std::int64_t place = 0;
        RowKey key = NoRow;
        std::string name;
    };

    void addTags(std::string_view entity) {
        std::vector<Tag> tags;
        forEach(entity, [&](const Fields& row) {
            const platform::RowLink owner = row.link(keys::owner);
            auto name = row.text(keys::name);
            if (!name) return leaveOut(pathOfRow(row), "the tag has no name");
            if (!places_.contains(owner.target)) return leaveOut(pathOfRow(row), "it belongs to nothing");
            tags.push_back({owner.target, owner.place, row.key(), *std::move(name)});
        });
        std::ranges::sort(tags, {}, [](const Tag& tag) { return std::tuple(tag.owner, tag.place, tag.key); });
        for (auto first = tags.begin(); first != tags.end();) {
            const auto end =
                std::find_if(first, tags.end(), [&](const Tag& tag) { return tag.owner != first->owner; });
            addTagsOf(places_.at(first->owner), first, end);
            first = end;
        }
    }
    void addTagsOf(const BookPlace& place, std::vector<Tag>::iterator first, std::vector<Tag>::iterator end) {
        std::unordered_set<std::string> names;
        document::visitObject(made_.document, place, [&](auto& object) {
            if constexpr (requires { object.tags; })
                for (auto tag = first; tag != end; ++tag) {
                    if (names.insert(tag->name).second)
                        object.tags.push_back(tag->name);
                    else
                        leaveOut(place.path() + "/tags",
                                 fmt::format("the tag \"{}\" is there twice", forMessage(tag->name)));
                }
        });
    }

    // -- Identifiers

    void nameAll(Kind& kind) {
        auto identifiers = store_.identifiers(kind.keys);
        if (!identifiers) throw StoreError(identifiers.error());
        kind.identifiers = *std::move(identifiers);
        std::unordered_set<std::string_view> taken;
        for (std::size_t index = 0; index < kind.keys.size(); ++index) {
            auto& identifier = kind.identifiers[index];
            const BookPlace& place = kind.places[index];
            if (identifier && !taken.insert(*identifier).second) {
                leaveOut(place.path() + "/id", fmt::format("another {} has the identifier \"{}\"", kind.name,
                                                           forMessage(*identifier)));
                identifier.reset();
            }
            document::visitObject(made_.document, place, [&](auto& object) { object.id = identifier; });
        }
    }

    /// The accounts of a kind by their rows, with the identifiers that lists show.
    static std::unordered_map<RowKey, std::string> namesOf(const Kind& kind) {
        Identifiers ids(kind.name);
        for (const auto& identifier : kind.identifiers) ids.take(identifier);
        std::unordered_map<RowKey, std::string> names;
        for (std::size_t index = 0; index < kind.keys.size(); ++index)
            names.emplace(kind.keys[index], ids.of(kind.identifiers[index]));
        return names;
    }

    void linkTenures() {
        const auto properties = namesOf(properties_);
        const auto tenants = namesOf(tenants_);
        const auto refer = [&](const auto& names, RowKey target, auto& accounts, std::string_view member,
                               std::size_t letting) -> std::optional<std::string> {
            if (target == NoRow) return std::nullopt;
            const auto name = names.find(target);
            if (name == names.end()) {
                leaveOut(placeIn(BookPlace::List::Tenures, letting).path() + pathStep(member),
                         fmt::format("it is no {}", member));
                return std::nullopt;
            }
            accounts[places_.at(target).index].id = name->second;
            return name->second;
        };
        document::BookDocument& book = made_.document;
        for (std::size_t index = 0; index < lettings_.size(); ++index) {
            book.tenures[index].property =
                refer(properties, lettings_[index].property, book.properties, "property", index);
            book.tenures[index].tenant =
                refer(tenants, lettings_[index].tenant, book.tenants, "tenant", index);
        }
    }

    struct Letting {
        RowKey property = NoRow;
        RowKey tenant = NoRow;
    };

    const Store& store_;
    ImpliedSettings implied_;
    StoredDocument made_;
    std::unordered_set<std::string> settingNames_;
    std::unordered_map<RowKey, BookPlace> places_;
    std::vector<Letting> lettings_;
    Kind properties_{"property"};
    Kind tenants_{"tenant"};
    Kind tenures_{"tenure"};
    Kind transactions_{"transaction"};
    Kind notes_{"note"};
};

} // namespace

StoreResult<StoredDocument> StoredDocument::of(const Store& store) {
    try {
        auto implied = ImpliedSettings::of(store);
        if (!implied) return implied.error();
        return DocumentMaker(store, *std::move(implied)).make();
    } catch (const StoreError& error) {
        return error;
    }
}

} // namespace estatebook
