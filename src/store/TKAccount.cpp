// SPDX-License-Identifier: MIT
#include "store/TKAccount.hpp"

#include "platform/system/HostOperations.hpp"
#include "store/TKCurrentDateController.hpp"
#include "tags/TKTag.hpp"
#include "tags/TKTagNames.hpp"
#include "tenure/TKTenure.hpp"

namespace estatebook {

using namespace platform;

namespace {

constexpr auto closure = closureOf(TKAccount::Dependencies);
constexpr Property properties[] = {
    derived<&TKAccount::accountBalance>(keys::accountBalance),
    derived<&TKAccount::isBalanced>(keys::balanced),
    derived<&TKAccount::isBalanced>(keys::isBalanced),
    derived<&TKAccount::isActive>(keys::active),
    derived<&TKAccount::isActive>(keys::isActive),
};

} // namespace

constinit const ClassDescription TKAccount::Class("TKAccount", nullptr, properties, Dependencies,
                                                  dependentsIn<closure>, announcing<TKAccount>);

TKAccount::~TKAccount() = default;

Ref<Set> TKAccount::tenuresActiveAtDate(const std::optional<Date>& date) const {
    const auto isActive = [](const Object& tenure, const Value& on) {
        return dynamic_cast<const TKTenure&>(tenure).isActiveAtDate(on.date());
    };
    return hostOperations().subsetConformingToWithObject(*valueForKey(keys::tenures).as<Set>(), isActive,
                                                         Value(date));
}

TKTag* TKAccount::createTagWithName(const Ref<String>& name) {
    return insertTag("AccountTag", *this, name);
}

// Following the current day

void TKAccount::addObservers() {
    TKCurrentDateController::startTrackingChangesToDate(*this);
}

void TKAccount::removeObservers() {
    TKCurrentDateController::stopTrackingChangesToDate(*this);
}

void TKAccount::observeValueForKeyPathOfObjectChangeContext(std::string_view keyPath,
                                                            ObservableObject& object,
                                                            const KeyValueChange& change,
                                                            const void* context) {
    if (context == TKCurrentDateChanged)
        setCurrentDate(object.valueForKey(keys::currentDate).date());
    else
        ManagedObject::observeValueForKeyPathOfObjectChangeContext(keyPath, object, change, context);
}

// Awakening, saving, going

void TKAccount::awakeFromInsert() {
    ManagedObject::awakeFromInsert();
    addObservers();
}

void TKAccount::awakeFromFetch() {
    ManagedObject::awakeFromFetch();
    addObservers();
    setTagNames(TKTag::fetchTagNamesFromTaggableObject(*this));
}

void TKAccount::awakeFromSnapshotEvents(unsigned events) {
    ManagedObject::awakeFromSnapshotEvents(events);
    addObservers();
}

void TKAccount::willTurnIntoFault() {
    removeObservers();
    ManagedObject::willTurnIntoFault();
}

void TKAccount::willSave() {
    ManagedObject::willSave();
    if (!isDeleted()) TKTag::updateTagNamesForTaggableObject(tagNames(), *this);
}

} // namespace estatebook
