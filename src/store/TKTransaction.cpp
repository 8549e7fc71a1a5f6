// SPDX-License-Identifier: MIT
#include "store/TKTransaction.hpp"

#include "tags/TKTag.hpp"
#include "tags/TKTagNames.hpp"

namespace estatebook {

using namespace platform;

namespace {

constexpr auto closure = closureOf(TKTransaction::Dependencies);
// Read through the virtual accessor, since a generated line makes its text when it is first asked for.
constexpr Property properties[] = {writable<&TKTransaction::what, &TKTransaction::setWhat>(keys::what)};

} // namespace

constinit const ClassDescription TKTransaction::Class("TKTransaction", nullptr, properties, Dependencies,
                                                      dependentsIn<closure>, announcing<TKTransaction>);

bool TKTransaction::isAdjustment() const {
    const auto flag = adjustment();
    return flag && flag->boolValue();
}

std::weak_ordering TKTransaction::compare(const TKTransaction& other) const {
    const auto mine = when();
    const auto theirs = other.when();
    if (!mine) return theirs ? std::weak_ordering::less : std::weak_ordering::equivalent;
    if (!theirs) return std::weak_ordering::equivalent;
    if (*mine < *theirs) return std::weak_ordering::less;
    return *mine > *theirs ? std::weak_ordering::greater : std::weak_ordering::equivalent;
}

TKTag* TKTransaction::createTagWithName(const Ref<String>& name) {
    return insertTag("TransactionTag", *this, name);
}

void TKTransaction::willSave() {
    ManagedObject::willSave();
    if (!isDeleted()) TKTag::updateTagNamesForTaggableObject(tagNames(), *this);
}

void TKTransaction::awakeFromFetch() {
    ManagedObject::awakeFromFetch();
    setTagNames(TKTag::fetchTagNamesFromTaggableObject(*this));
}

} // namespace estatebook
