// SPDX-License-Identifier: MIT
#include "store/TKState.hpp"

#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/system/Log.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Exception.hpp"

namespace estatebook {

using namespace platform;

namespace {

constinit Constant<String> currencyCodeName{std::string_view("CurrencyCode")};
constinit Constant<String> billingModeName{std::string_view("BillingMode")};

/// Null when there is none. Several are told in the log.
Ref<TKState> firstOf(const std::vector<Ref<TKState>>& states, const Ref<String>& name) {
    if (states.empty()) return nullptr;
    if (states.size() > 1)
        Log::write("Warning, several items for state named " + Value(name).description() + ": " +
                   Array::make({states.begin(), states.end()})->description());
    return states.front();
}

Ref<TKState> firstState(const Ref<String>& name, ManagedObjectContext& context) {
    const auto states = TKState::fetchStateForNameInManagedObjectContext(name, context);
    return states ? firstOf(*states, name) : nullptr;
}

std::optional<std::vector<Ref<TKState>>> statesNamed(const Ref<String>& name, ManagedObjectContext& context,
                                                     Ref<Error>* error) {
    const auto found = context.executeFetchRequest(
        {"State", Predicate::predicateWithFormat("name = %@", Value(name))}, error);
    if (!found) return std::nullopt;
    std::vector<Ref<TKState>> states;
    for (const auto& object : *found) states.push_back(refCast<TKState>(object));
    return states;
}

Ref<TKState> insertState(const Ref<String>& name, const Value& value, ManagedObjectContext& context) {
    auto state = context.insertNewObject<TKState>("State");
    state->setName(name);
    state->setValue(value);
    return state;
}

} // namespace

constinit String* const TKCurrencyCodeStateName = currencyCodeName.get();
constinit String* const TKBillingModeStateName = billingModeName.get();

constinit const ClassDescription TKState::Class("TKState", nullptr, {}, {}, noDependents,
                                                announcing<TKState>);

TKState::~TKState() = default;

std::optional<std::vector<Ref<TKState>>>
TKState::fetchStateForNameInManagedObjectContext(const Ref<String>& name, ManagedObjectContext& context) {
    return statesNamed(name, context, nullptr);
}

Ref<TKState> TKState::readStateForNameInManagedObjectContext(const Ref<String>& name,
                                                             ManagedObjectContext& context) {
    Ref<Error> error;
    const auto states = statesNamed(name, context, &error);
    if (!states) throw ObjectInaccessibleException(error->localizedDescription());
    return firstOf(*states, name);
}

Ref<TKState> TKState::stateForKeyInManagedObjectContext(const Ref<String>& name,
                                                        ManagedObjectContext& context) {
    if (auto state = firstState(name, context)) return state;
    const SystemChanges systemChanges(context);
    return insertState(name, Value(), context);
}

Value TKState::valueForNameInManagedObjectContext(const Ref<String>& name, ManagedObjectContext& context) {
    const auto state = firstState(name, context);
    return state ? state->value() : Value();
}

void TKState::updateStateWithNameValueInManagedObjectContext(const Ref<String>& name, const Value& value,
                                                             ManagedObjectContext& context) {
    if (const auto state = firstState(name, context))
        state->setValue(value);
    else
        insertState(name, value, context);
}

} // namespace estatebook
