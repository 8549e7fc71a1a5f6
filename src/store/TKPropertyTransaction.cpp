// SPDX-License-Identifier: MIT
#include "store/TKPropertyTransaction.hpp"

#include "store/OpenedOwners.hpp"
#include "store/TKProperty.hpp"

namespace estatebook {

using namespace platform;

namespace {

constexpr auto closure = closureOf(TKTransaction::Dependencies);
constexpr Property properties[] = {derived<&TKPropertyTransaction::name>(keys::name)};

constexpr KeySet passedOn = KeySet::of(keys::amount, keys::adjustment);

} // namespace

constinit const ClassDescription TKPropertyTransaction::Class("TKPropertyTransaction", &TKTransaction::Class,
                                                              properties, Dependencies, dependentsIn<closure>,
                                                              announcing<TKPropertyTransaction>);

TKPropertyTransaction::~TKPropertyTransaction() = default;

Ref<String> TKPropertyTransaction::name() const {
    const TKProperty* owner = property();
    return owner ? owner->name() : nullptr;
}

void TKPropertyTransaction::willChangeValueForKey(Key key) {
    TKTransaction::willChangeValueForKey(key);
    if (passedOn.mayContain(key)) OpenedOwners::willChange(*this, property(), keys::totalIncome);
}

void TKPropertyTransaction::didChangeValueForKey(Key key) {
    TKTransaction::didChangeValueForKey(key);
    if (passedOn.mayContain(key)) OpenedOwners::didChange(*this, property(), keys::totalIncome);
}

bool TKPropertyTransaction::passesOn(const KeySet& changed) const {
    return !(changed & passedOn).empty() && OpenedOwners::isHeard(property(), keys::totalIncome);
}

} // namespace estatebook
