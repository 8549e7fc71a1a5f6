// SPDX-License-Identifier: MIT
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/FirstException.hpp"
#include "store/OpenedOwners.hpp"
#include "store/TKCurrentDateController.hpp"
#include "store/TKProperty.hpp"
#include "tenure/TKTenure.hpp"

#include <algorithm>

namespace estatebook {

using namespace platform;

namespace {

constinit Constant<String> chargablePeriodsChanged{std::string_view("TKChargablePeriodsChanged")};

struct PassedOn {
    Key key;
    Key ofProperty;
};
constexpr PassedOn passedOn[] = {{keys::balance, keys::tenureBalance},
                                 {keys::totalIncome, keys::tenureIncome}};

} // namespace

constinit String* const TKChargablePeriodsChanged = chargablePeriodsChanged.get();

// Whom the tenure hears

Ref<TKState> TKTenure::observedState(String* name) {
    ManagedObjectContext* context = managedObjectContext();
    if (!context)
        throw InvalidArgumentException(description() + " is in no context and has no settings to follow");
    // What it had when it was last awake serves when it is taken back, which has to work without reading. A store that cannot be
    // read must not lead to a second setting.
    Ref<TKState> state = name == TKCurrencyCodeStateName ? currencyCodeState() : billingModeState();
    const bool isKept = state && state->managedObjectContext() == context && !state->isDeleted() &&
                        state->name() && state->name()->view() == name->view();
    if (!isKept) state = TKState::readStateForNameInManagedObjectContext(Ref<String>(name), *context);
    if (!state) state = TKState::stateForKeyInManagedObjectContext(Ref<String>(name), *context);
    state->addObserverForKeyPathOptionsContext(*this, "value", ObservingNew, name);
    return state;
}

void TKTenure::addObservers() {
    TKCurrentDateController::startTrackingChangesToDate(*this);
    setCurrencyCodeState(observedState(TKCurrencyCodeStateName));
    setCurrencyCode(currencyCodeState()->value().string());
    setBillingModeState(observedState(TKBillingModeStateName));
    setBillingMode(billingModeState()->value().unsignedIntegerValue());
    addObserverForKeyPathOptionsContext(*this, "chargablePeriods", ObservingNew, TKChargablePeriodsChanged);
}

// An awakening that raised half way has begun less than what ends here; all the rest ends all the same.
void TKTenure::removeObservers() {
    FirstException exceptions;
    const auto letGo = [&](ObservableObject* object, std::string_view keyPath, const void* context) {
        if (object)
            exceptions.keep([&] { object->removeObserverForKeyPathContext(*this, keyPath, context); });
    };
    exceptions.keep([&] { TKCurrentDateController::stopTrackingChangesToDate(*this); });
    letGo(currencyCodeState().get(), "value", TKCurrencyCodeStateName);
    letGo(billingModeState().get(), "value", TKBillingModeStateName);
    letGo(this, "chargablePeriods", TKChargablePeriodsChanged);
    exceptions.rethrow();
}

void TKTenure::observeValueForKeyPathOfObjectChangeContext(std::string_view keyPath, ObservableObject& object,
                                                           const KeyValueChange& change,
                                                           const void* context) {
    if (context == TKCurrentDateChanged)
        setCurrentDate(object.valueForKey(keys::currentDate).date());
    else if (context == TKCurrencyCodeStateName)
        setCurrencyCode(currencyCodeState()->value().string());
    else if (context == TKBillingModeStateName)
        setBillingMode(billingModeState()->value().unsignedIntegerValue());
    else if (context == TKChargablePeriodsChanged)
        updatePeriods();
    else
        ManagedObject::observeValueForKeyPathOfObjectChangeContext(keyPath, object, change, context);
}

void TKTenure::awakeFromInsert() {
    ManagedObject::awakeFromInsert();
    addObservers();
    updatePeriods();
}

void TKTenure::awakeFromFetch() {
    ManagedObject::awakeFromFetch();
    addObservers();
    updatePeriods();
}

void TKTenure::willTurnIntoFault() {
    removeObservers();
    ManagedObject::willTurnIntoFault();
}

// Who hears the tenure

void TKTenure::willChangeValueForKey(Key key) {
    ManagedObject::willChangeValueForKey(key);
    for (const PassedOn& each : passedOn)
        if (key == each.key) OpenedOwners::willChange(*this, property(), each.ofProperty);
}

void TKTenure::didChangeValueForKey(Key key) {
    ManagedObject::didChangeValueForKey(key);
    for (const PassedOn& each : passedOn)
        if (key == each.key) OpenedOwners::didChange(*this, property(), each.ofProperty);
}

bool TKTenure::passesOn(const KeySet& changed) const {
    return std::ranges::any_of(passedOn, [&](const PassedOn& each) {
        return changed.mayContain(each.key) && OpenedOwners::isHeard(property(), each.ofProperty);
    });
}

} // namespace estatebook
