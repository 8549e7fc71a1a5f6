// SPDX-License-Identifier: MIT
#include "store/TKPropertyTransaction.hpp"

#include "store/OpenedOwners.hpp"
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
    if (key == keys::amount || key == keys::adjustment)
        OpenedOwners::willChange(*this, property(), keys::totalIncome);
}

void TKPropertyTransaction::didChangeValueForKey(Key key) {
    TKTransaction::didChangeValueForKey(key);
    if (key == keys::amount || key == keys::adjustment)
        OpenedOwners::didChange(*this, property(), keys::totalIncome);
}

} // namespace estatebook
