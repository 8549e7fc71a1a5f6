// SPDX-License-Identifier: MIT
#include "store/TKTenureTransaction.hpp"

#include "store/OpenedOwners.hpp"
#include "store/TKProperty.hpp"
#include "store/TKTenant.hpp"
#include "tenure/TKTenure.hpp"

namespace estatebook {

using namespace platform;

namespace {

constexpr auto closure = closureOf(TKTenureTransaction::Dependencies);
constexpr Property properties[] = {
    derived<&TKTenureTransaction::name>(keys::name),
    {.key = keys::property,
     .get = [](const ObservableObject& object) -> Value {
         return Value(Ref<TKProperty>(static_cast<const TKTenureTransaction&>(object).property()));
     }},
};

constexpr Key totals[] = {keys::totalIncome, keys::totalAdjustment};

constexpr KeySet passedOn = KeySet::of(keys::amount, keys::adjustment);

} // namespace

constinit const ClassDescription TKTenureTransaction::Class("TKTenureTransaction", &TKTransaction::Class,
                                                            properties, Dependencies, dependentsIn<closure>,
                                                            announcing<TKTenureTransaction>);

Ref<String> TKTenureTransaction::name() const {
    const TKTenure* owner = tenure();
    const TKTenant* tenant = owner ? owner->tenant() : nullptr;
    return tenant ? tenant->name() : nullptr;
}

TKProperty* TKTenureTransaction::property() const {
    const TKTenure* owner = tenure();
    return owner ? owner->property() : nullptr;
}

void TKTenureTransaction::willChangeValueForKey(Key key) {
    TKTransaction::willChangeValueForKey(key);
    if (!passedOn.mayContain(key)) return;
    for (const Key ofOwner : totals) OpenedOwners::willChange(*this, tenure(), ofOwner);
}

void TKTenureTransaction::didChangeValueForKey(Key key) {
    TKTransaction::didChangeValueForKey(key);
    if (!passedOn.mayContain(key)) return;
    for (const Key ofOwner : totals) OpenedOwners::didChange(*this, tenure(), ofOwner);
}

bool TKTenureTransaction::passesOn(const KeySet& changed) const {
    if ((changed & passedOn).empty()) return false;
    const TKTenure* owner = tenure();
    return owner && owner->mustAnnounceAnyOf(totals);
}

} // namespace estatebook
