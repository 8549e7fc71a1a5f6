// SPDX-License-Identifier: MIT
#include "store/TKTenant.hpp"

#include "store/OwnedObjects.hpp"
#include "tenure/TKTenure.hpp"

#include <algorithm>

namespace estatebook {

using namespace platform;

namespace {

constexpr auto closure = closureOf(TKTenant::Dependencies);
constexpr Property properties[] = {
    derived<&TKTenant::balance>(keys::balance),
    derived<&TKTenant::totalIncome>(keys::totalIncome),
    derived<&TKTenant::totalCost>(keys::totalCost),
    derived<&TKTenant::transactions>(keys::transactions),
};

} // namespace

constinit const ClassDescription TKTenant::Class("TKTenant", &TKAccount::Class, properties, Dependencies,
                                                 dependentsIn<closure>, announcing<TKTenant>);

TKTenant::~TKTenant() = default;

Decimal TKTenant::balance() const {
    return valueForKeyPath("tenures.@sum.balance").decimal().value_or(Decimal::zero());
}

Decimal TKTenant::totalIncome() const {
    return valueForKeyPath("tenures.@sum.totalIncome").decimal().value_or(Decimal::zero());
}

Decimal TKTenant::totalCost() const {
    return valueForKeyPath("tenures.@sum.totalCost").decimal().value_or(Decimal::zero());
}

Ref<Set> TKTenant::transactions() const {
    return valueForKeyPath("tenures.@unionOfSets.transactions").as<Set>();
}

bool TKTenant::isActiveAtDate(const std::optional<Date>& date) const {
    const auto all = tenures();
    return std::any_of(all.begin(), all.end(),
                       [&](const TKTenure& tenure) { return tenure.isActiveAtDate(date); });
}

bool TKTenant::isActive() const {
    return isActiveAtDate(currentDate());
}

bool TKTenant::isBalanced() const {
    return balance() >= Decimal::zero();
}

TKTenantNote* TKTenant::createNote() {
    return insertOwned<TKTenantNote>("TenantNote", *this, keys::tenant);
}

ToManyView<TKNote> TKTenant::notes() const {
    return TKTenantProperties::notes();
}

} // namespace estatebook
