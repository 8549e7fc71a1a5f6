// SPDX-License-Identifier: MIT
#include "store/TKProperty.hpp"

#include "billing/TKPeriodicBilling.hpp"
#include "platform/values/Exception.hpp"
#include "store/OwnedObjects.hpp"
#include "store/TKTenant.hpp"
#include "tenure/TKTenure.hpp"

#include <utility>

namespace estatebook {

using namespace platform;

namespace {

constexpr auto closure = closureOf(TKProperty::Dependencies);
constexpr Property properties[] = {
    derived<&TKProperty::fullName>(keys::fullName),
    derived<&TKProperty::currentTenures>(keys::currentTenures),
    derived<&TKProperty::currentTenuresNames>(keys::currentTenuresNames),
    derived<&TKProperty::tenureIncome>(keys::tenureIncome),
    derived<&TKProperty::tenureBalance>(keys::tenureBalance),
    derived<&TKProperty::totalIncome>(keys::totalIncome),
    derived<&TKProperty::balance>(keys::balance),
    derived<&TKProperty::aggregateTransactions>(keys::aggregateTransactions),
    derived<&TKProperty::periodicNameForRentalBillingCycle>(keys::periodicNameForRentalBillingCycle),
};

} // namespace

constinit const ClassDescription TKProperty::Class("TKProperty", &TKAccount::Class, properties, Dependencies,
                                                   dependentsIn<closure>, announcing<TKProperty>);

TKProperty::~TKProperty() = default;

Ref<String> TKProperty::fullName() const {
    const auto qualifier = sublease();
    auto plain = name();
    if (!qualifier || qualifier->empty()) return plain;
    return String::make(Value(plain).description() + " - " + qualifier->string());
}

std::vector<Ref<TKTenure>> TKProperty::activeTenuresAtDate(const std::optional<Date>& date) const {
    std::vector<Ref<TKTenure>> active;
    for (TKTenure& tenure : tenures())
        if (tenure.isActiveAtDate(date)) active.emplace_back(&tenure);
    return active;
}

Ref<Set> TKProperty::currentTenures() const {
    const auto active = activeTenuresAtDate(currentDate());
    return Set::make({active.begin(), active.end()});
}

Ref<String> TKProperty::currentTenuresNames() const {
    std::string names;
    bool isFirst = true;
    for (const auto& tenure : activeTenuresAtDate(currentDate())) {
        const TKTenant* tenant = tenure->tenant();
        const Ref<String> name = tenant ? tenant->name() : nullptr;
        if (!name)
            throw InvalidArgumentException(
                "a current tenure has no tenant, or one without a name, and cannot be listed");
        if (!std::exchange(isFirst, false)) names += ", ";
        names += name->view();
    }
    return String::make(names);
}

Decimal TKProperty::tenureIncome() const {
    return valueForKeyPath("tenures.@sum.totalIncome").decimal().value_or(Decimal::zero());
}

Decimal TKProperty::tenureBalance() const {
    return valueForKeyPath("tenures.@sum.balance").decimal().value_or(Decimal::zero());
}

Decimal TKProperty::totalIncome() const {
    return valueForKeyPath("transactions.@sum.amount").decimal().value_or(Decimal::zero());
}

Decimal TKProperty::balance() const {
    return tenureIncome().decimalNumberByAdding(totalIncome());
}

Ref<Set> TKProperty::aggregateTransactions() const {
    std::vector<Value> all;
    for (TKTransaction& transaction : transactions()) all.emplace_back(Ref<TKTransaction>(&transaction));
    for (const TKTenure& tenure : tenures())
        for (TKTransaction& transaction : tenure.transactions())
            if (!transaction.isAdjustment()) all.emplace_back(Ref<TKTransaction>(&transaction));
    return Set::make(std::move(all));
}

Ref<String> TKProperty::periodicNameForRentalBillingCycle() const {
    return TKPeriodicBilling::periodicNameForBillingCycle(unsignedValue(rentalBillingCycle()));
}

TKPropertyTransaction* TKProperty::createTransaction() {
    return insertOwned<TKPropertyTransaction>("PropertyTransaction", *this, keys::property);
}

ToManyView<TKTransaction> TKProperty::transactions() const {
    return TKPropertyProperties::transactions();
}

TKPropertyNote* TKProperty::createNote() {
    return insertOwned<TKPropertyNote>("PropertyNote", *this, keys::property);
}

ToManyView<TKNote> TKProperty::notes() const {
    return TKPropertyProperties::notes();
}

} // namespace estatebook
