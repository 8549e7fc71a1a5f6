// SPDX-License-Identifier: MIT
#include "estatebook/ValuesDocument.hpp"

#include "estatebook/DayMembers.hpp"
#include "estatebook/JsonWriter.hpp"
#include "estatebook/document/DateText.hpp"

#include "billing/TKDuePeriods.hpp"
#include "statement/TKStatement.hpp"
#include "tags/TKTagNames.hpp"

#include <algorithm>
#include <type_traits>

namespace estatebook {

using platform::ArrayOf;
using platform::Date;
using platform::Decimal;
using platform::Error;
using platform::ManagedObject;
using platform::Number;
using platform::Ref;
using platform::Set;
using platform::String;
using Layout = JsonWriter::Layout;

namespace {

constexpr std::string_view ValuesSchema = "estatebook/values/1";

class ValuesWriter {
public:
    ValuesWriter(const OpenBook& book, std::ostream& out) : book_(book), json_(out) {}

    void write() {
        json_.beginObject();
        json_.key("schema").text(ValuesSchema);
        writeDayMembers(json_, book_);
        json_.key("properties");
        list(book_.properties(), [&](const auto& entry) { property(entry); });
        json_.key("tenants");
        list(book_.tenants(), [&](const auto& entry) { tenant(entry); });
        json_.key("tenures");
        list(book_.lettings(), [&](const auto& entry) { tenure(entry); });
        json_.endObject();
        json_.finish();
    }

private:
    // -- Objects ----------------------------------------------------------------------------------------------

    void property(const OpenBook::Entry<TKProperty>& entry) {
        const TKProperty& property = *entry.object;
        json_.beginObject();
        json_.key("id").text(entry.id);
        member("fullName", [&] { return property.fullName(); });
        member("currentTenures", [&] { return property.currentTenures(); });
        member("currentTenuresNames", [&] { return property.currentTenuresNames(); });
        member("tenureIncome", [&] { return property.tenureIncome(); });
        member("tenureBalance", [&] { return property.tenureBalance(); });
        member("totalIncome", [&] { return property.totalIncome(); });
        member("balance", [&] { return property.balance(); });
        member("aggregateTransactions", [&] { return property.aggregateTransactions(); });
        member("periodicNameForRentalBillingCycle",
               [&] { return property.periodicNameForRentalBillingCycle(); });
        member("isBalanced", [&] { return property.isBalanced(); });
        member("isActive", [&] { return property.isActive(); });
        json_.endObject();
    }

    void tenant(const OpenBook::Entry<TKTenant>& entry) {
        const TKTenant& tenant = *entry.object;
        json_.beginObject();
        json_.key("id").text(entry.id);
        member("balance", [&] { return tenant.balance(); });
        member("totalIncome", [&] { return tenant.totalIncome(); });
        member("totalCost", [&] { return tenant.totalCost(); });
        member("transactions", [&] { return tenant.transactions(); });
        member("isActive", [&] { return tenant.isActive(); });
        member("isBalanced", [&] { return tenant.isBalanced(); });
        json_.endObject();
    }

    void tenure(const OpenBook::Letting& entry) {
        TKTenure& tenure = *entry.object;
        const Schedule schedule(tenure);
        json_.beginObject();
        json_.key("id").text(entry.id);
        member("name", [&] { return tenure.name(); });
        member("isActive", [&] { return tenure.isActive(); });
        member("validateDuration", [&] { return durationFault(tenure); });
        member("functionalNameForChargeBehaviour", [&] { return tenure.functionalNameForChargeBehaviour(); });
        member("periodicNameForRentalBillingCycle",
               [&] { return tenure.periodicNameForRentalBillingCycle(); });
        member("periodicNameForAdvanceBillingCycle",
               [&] { return tenure.periodicNameForAdvanceBillingCycle(); });
        member("periodBillingMode", [&] { return tenure.rentalPeriodicBilling()->periodBillingMode(); });
        member("maximumChargableDays", [&] { return tenure.maximumChargableDays(); });
        member("chargableDays", [&] { return std::optional(tenure.chargableDays()); });
        member("chargablePeriods", [&] { return tenure.chargablePeriods(); });
        member("numberOfDays", [&] { return tenure.numberOfDays(); });
        member("numberOfPeriods", [&] { return tenure.numberOfPeriods(); });
        member("totalCost", [&] { return tenure.totalCost(); });
        member("totalIncome", [&] { return tenure.totalIncome(); });
        member("totalAdjustment", [&] { return tenure.totalAdjustment(); });
        member("balance", [&] { return tenure.balance(); });
        member("isBalanced", [&] { return tenure.isBalanced(); });
        json_.key("periods");
        if (schedule.row())
            list(**schedule.row(), [&](const TKPeriod& period) { value(period); });
        else
            value(schedule.row().error());
        member("statement", [&] { return tenure.statement(); });
        member("duePeriods", [&] { return tenure.duePeriods(); });
        json_.endObject();
    }

    static Ref<String> durationFault(const TKTenure& tenure) {
        Ref<Error> error;
        return tenure.validateDuration(&error) ? nullptr : String::make(error->localizedDescription());
    }

    // -- Members and lists ------------------------------------------------------------------------------------

    /// The value is read before any of it is written, so that an error stands in its place alone.
    template <class Function>
    void member(std::string_view name, Function function) {
        json_.key(name);
        const auto reckoned = reckon(function);
        if (reckoned)
            value(*reckoned);
        else
            value(reckoned.error());
    }

    template <class Range, class Function>
    void list(const Range& range, Function each) {
        json_.beginList();
        for (const auto& entry : range) each(entry);
        json_.endList();
    }

    // -- Values -----------------------------------------------------------------------------------------------

    void value(ReckoningError error) {
        json_.beginObject(Layout::Line);
        json_.key("error").text(error.name);
        json_.endObject();
    }
    void value(bool flag) { json_.boolean(flag); }
    void value(std::uint64_t number) { json_.integer(number); }
    void value(const std::optional<Number>& number) {
        if (!number)
            json_.null();
        else if (number->kind() == Number::Kind::Unsigned)
            json_.integer(number->unsignedIntegerValue());
        else
            json_.integer(number->integerValue());
    }
    void value(const Decimal& number) { json_.decimal(number); }
    void value(const std::optional<Decimal>& number) { json_.decimal(number); }
    void value(const std::optional<Date>& date) {
        json_.textOrNull(date ? document::dateText(*date, book_.calendar()) : std::nullopt);
    }
    void value(const Ref<String>& text) {
        if (text)
            json_.text(text->view());
        else
            json_.null();
    }

    /// The identifiers of the members, in the book's order.
    void value(const Ref<Set>& set) {
        std::vector<const ManagedObject*> objects;
        objects.reserve(set->count());
        for (const platform::Value& member : set->members())
            objects.push_back(static_cast<const ManagedObject*>(member.as<ManagedObject>().get()));
        std::ranges::sort(objects, {}, &ManagedObject::creationNumber);
        json_.beginList(Layout::Line);
        for (const ManagedObject* object : objects) json_.text(book_.identifierOf(*object));
        json_.endList();
    }

    void value(const Ref<TKTagNames>& names) {
        json_.beginList(Layout::Line);
        if (names)
            for (const platform::Value& name : names->items()->members()) value(name.string());
        json_.endList();
    }

    void value(const TKPeriod& period) {
        json_.beginObject(Layout::Line);
        member("startDate", [&] { return period.startDate(); });
        member("endDate", [&] { return period.endDate(); });
        member("billingDate", [&] { return period.billingDate(); });
        member("days", [&] { return period.days(); });
        json_.key("description").text(period.description());
        json_.endObject();
    }

    void value(const TKStatementItem& item) {
        const TKLedgerTransaction& transaction = *item.transaction();
        json_.beginObject(Layout::Line);
        member("what", [&] { return transaction.what(); });
        member("when", [&] { return transaction.when(); });
        member("amount", [&] { return transaction.amount(); });
        member("balance", [&] { return item.balance(); });
        member("tagNames", [&] { return transaction.tagNames(); });
        member("primaryTag", [&] { return item.primaryTag(); });
        json_.endObject();
    }

    template <class T>
    void value(const Ref<ArrayOf<T>>& members) {
        list(*members, [&](const T& each) { value(each); });
    }

    void statementMembers(const TKStatement& statement) {
        member("items", [&] { return statement.items(); });
        member("amount", [&] { return statement.amount(); });
        member("what", [&] { return statement.what(); });
        member("when", [&] { return statement.when(); });
        member("tagNames", [&] { return statement.tagNames(); });
        member("primaryTag", [&] { return statement.primaryTag(); });
        member("isEmpty", [&] { return statement.isEmpty(); });
    }
    /// One tag's part of another statement.
    void value(const TKStatement& statement) {
        json_.beginObject();
        statementMembers(statement);
        json_.endObject();
    }
    void value(const Ref<TKStatement>& statement) {
        json_.beginObject();
        statementMembers(*statement);
        member("outstandingItems", [&] { return statement->outstandingItems(); });
        member("byPrimaryTag", [&] { return statement->byPrimaryTag(); });
        json_.endObject();
    }

    void value(const Ref<TKDuePeriods>& due) {
        json_.beginObject();
        json_.key("outstanding");
        json_.beginObject(Layout::Line);
        json_.key("location").integer(due->outstanding().location);
        json_.key("length").integer(due->outstanding().length);
        json_.endObject();
        json_.key("next");
        if (due->next())
            value(*due->next());
        else
            json_.null();
        member("balance", [&] { return due->balance(); });
        member("hasOutstandingBalance", [&] { return due->hasOutstandingBalance(); });
        json_.endObject();
    }

    const OpenBook& book_;
    JsonWriter json_;
};

} // namespace

void writeValues(const OpenBook& book, std::ostream& out) {
    ValuesWriter(book, out).write();
}

} // namespace estatebook
