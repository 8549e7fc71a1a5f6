// SPDX-License-Identifier: MIT
#include "store/TKAccount.hpp"

#include "tags/TKTag.hpp"
#include "tags/TKTagNames.hpp"
#include "tenure/TKTenure.hpp"

namespace estatebook {

using namespace platform;

namespace {

constexpr auto closure = closureOf(TKAccount::Dependencies);
constexpr Property properties[] = {
    derived<&TKAccount::accountBalance>(keys::accountBalance), derived<&TKAccount::isBalanced>(keys::balanced),
    derived<&TKAccount::isBalanced>(keys::isBalanced),         derived<&TKAccount::isActive>(keys::active),
    derived<&TKAccount::isActive>(keys::isActive),
};

} // namespace

constinit const ClassDescription TKAccount::Class("TKAccount", nullptr, properties, Dependencies, dependentsIn<closure>,
                                                  replacesAnnouncements<TKAccount>);

TKAccount::~TKAccount() = default;

std::vector<Ref<TKTenure>> TKAccount::tenuresActiveAtDate(const std::optional<Date>& date) const {
    std::vector<Ref<TKTenure>> active;
    const auto tenures = valueForKey(keys::tenures).as<Set>();
    for (const Value& member : tenures->members())
        if (auto tenure = member.as<TKTenure>(); tenure->isActiveAtDate(date)) active.push_back(std::move(tenure));
    return active;
}

TKTag* TKAccount::createTagWithName(const Ref<String>& name) { return insertTag("AccountTag", *this, name); }

void TKAccount::willSave() {
    ManagedObject::willSave();
    if (!isDeleted()) TKTag::updateTagNamesForTaggableObject(tagNames(), *this);
}

void TKAccount::awakeFromFetch() {
    ManagedObject::awakeFromFetch();
    setTagNames(TKTag::fetchTagNamesFromTaggableObject(*this));
}

} // namespace estatebook
