// SPDX-License-Identifier: MIT
#include "store/TKAccount.hpp"

#include "platform/system/HostOperations.hpp"
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
                                                  dependentsIn<closure>, replacesAnnouncements<TKAccount>);

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

void TKAccount::willSave() {
    ManagedObject::willSave();
    if (!isDeleted()) TKTag::updateTagNamesForTaggableObject(tagNames(), *this);
}

void TKAccount::awakeFromFetch() {
    ManagedObject::awakeFromFetch();
    setTagNames(TKTag::fetchTagNamesFromTaggableObject(*this));
}

} // namespace estatebook
