// SPDX-License-Identifier: MIT
#include "store/TKProperty.hpp"
#include "tenure/TKTenure.hpp"

namespace estatebook {

using namespace platform;

namespace {

struct PassedOn {
    Key key;
    Key ofProperty;
};
constexpr PassedOn passedOn[] = {{keys::balance, keys::tenureBalance},
                                 {keys::totalIncome, keys::tenureIncome}};

} // namespace

void TKTenure::willChangeValueForKey(Key key) {
    ManagedObject::willChangeValueForKey(key);
    TKProperty* let = property();
    if (!let) return;
    for (const PassedOn& each : passedOn)
        if (key == each.key) let->willChangeValueForKey(each.ofProperty);
}

void TKTenure::didChangeValueForKey(Key key) {
    ManagedObject::didChangeValueForKey(key);
    TKProperty* let = property();
    if (!let) return;
    for (const PassedOn& each : passedOn)
        if (key == each.key) let->didChangeValueForKey(each.ofProperty);
}

} // namespace estatebook
