// SPDX-License-Identifier: MIT
#include "store/TKPropertyTransaction.hpp"

#include "store/TKProperty.hpp"

namespace estatebook {

using namespace platform;

namespace {

constexpr auto closure = closureOf(TKTransaction::Dependencies);
constexpr Property properties[] = {derived<&TKPropertyTransaction::name>(keys::name)};

} // namespace

constinit const ClassDescription TKPropertyTransaction::Class("TKPropertyTransaction", &TKTransaction::Class,
                                                              properties, Dependencies, dependentsIn<closure>,
                                                              replacesAnnouncements<TKPropertyTransaction>);

TKPropertyTransaction::~TKPropertyTransaction() = default;

Ref<String> TKPropertyTransaction::name() const {
    const TKProperty* owner = property();
    return owner ? owner->name() : nullptr;
}

void TKPropertyTransaction::willChangeValueForKey(Key key) {
    TKTransaction::willChangeValueForKey(key);
    TKProperty* owner = property();
    if (owner && (key == keys::amount || key == keys::adjustment))
        owner->willChangeValueForKey(keys::totalIncome);
}

void TKPropertyTransaction::didChangeValueForKey(Key key) {
    TKTransaction::didChangeValueForKey(key);
    TKProperty* owner = property();
    if (owner && (key == keys::amount || key == keys::adjustment))
        owner->didChangeValueForKey(keys::totalIncome);
}

} // namespace estatebook
