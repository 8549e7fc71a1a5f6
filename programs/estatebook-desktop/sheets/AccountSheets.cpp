// SPDX-License-Identifier: MIT
#include "estatebook-desktop/sheets/AccountSheets.hpp"

#include "estatebook-desktop/sheets/Cycles.hpp"
#include "estatebook-desktop/sheets/Tags.hpp"

#include <QCheckBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QSpinBox>

namespace estatebook::desktop {

using platform::Number;
using platform::Ref;
using platform::String;

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(AccountSheets)
};

/// Sets what is another, so that nothing else counts as edited.
template <class Value, class Set>
void setIfOther(const Value& now, const Value& wanted, const Set& set) {
    if (now != wanted) set(wanted);
}

template <class Set>
void setText(const Ref<String>& now, const QString& wanted, const Set& set) {
    if (textOf(now) != wanted.trimmed()) set(textFrom(wanted));
}

} // namespace

// -- Properties -----------------------------------------------------------------------------------------------

Ref<String> PropertySheet::nibName() const {
    return String::make("PropertySheet");
}

void PropertySheet::prepareControls() {
    setTitle(isNew_ ? Words::tr("New Property") : Words::tr("Property"));
    completeTags(find<QLineEdit>("tags"));
    find<QSpinBox>("period").setValue(1);
    showCycle(find<QComboBox>("cycle"), std::nullopt);
    if (isNew_) return;
    find<QLineEdit>("name").setText(textOf(property_->name()));
    find<QLineEdit>("sublease").setText(textOf(property_->sublease()));
    find<QLineEdit>("rent").setText(figures().plain(property_->rentalAmount()));
    if (const auto period = property_->rentalPeriod())
        find<QSpinBox>("period").setValue(static_cast<int>(period->unsignedIntegerValue()));
    showCycle(find<QComboBox>("cycle"), property_->rentalBillingCycle());
    find<QLineEdit>("bond").setText(figures().plain(property_->bondAmount()));
    find<QLineEdit>("tags").setText(tagsOf(*property_));
    find<QCheckBox>("available").setChecked(isTrue(property_->available()));
}

QString PropertySheet::fault() {
    if (find<QLineEdit>("name").text().trimmed().isEmpty()) return Words::tr("The property needs a name.");
    if (!amountIn("rent").isReadable) return Words::tr("The usual rent is no amount; write it like 1050.00.");
    if (!amountIn("bond").isReadable) return Words::tr("The usual bond is no amount; write it like 1050.00.");
    return {};
}

QString PropertySheet::stepName() const {
    return isNew_ ? Words::tr("New Property") : Words::tr("Change of Property");
}

void PropertySheet::apply() {
    if (isNew_) property_ = session().context().insertNewObject<TKProperty>("Property");
    TKProperty& property = *property_;
    setText(property.name(), find<QLineEdit>("name").text(),
            [&](const auto& text) { property.setName(text); });
    setText(property.sublease(), find<QLineEdit>("sublease").text(),
            [&](const auto& text) { property.setSublease(text); });
    const auto rent = amountIn("rent").amount;
    if (rent || property.rentalPeriod()) {
        setIfOther(property.rentalBillingCycle(), std::optional(cycleIn(find<QComboBox>("cycle"))),
                   [&](const auto& cycle) { property.setRentalBillingCycle(cycle); });
        setIfOther(property.rentalPeriod(), std::optional(Number(find<QSpinBox>("period").value())),
                   [&](const auto& period) { property.setRentalPeriod(period); });
    }
    setIfOther(property.rentalAmount(), rent, [&](const auto& amount) { property.setRentalAmount(amount); });
    setIfOther(property.bondAmount(), amountIn("bond").amount,
               [&](const auto& amount) { property.setBondAmount(amount); });
    const bool isAvailable = find<QCheckBox>("available").isChecked();
    if (isAvailable != isTrue(property.available())) property.setAvailable(Number(isAvailable));
    setTags(property, find<QLineEdit>("tags").text());
}

// -- Tenants --------------------------------------------------------------------------------------------------

Ref<String> TenantSheet::nibName() const {
    return String::make("TenantSheet");
}

void TenantSheet::prepareControls() {
    setTitle(isNew_ ? Words::tr("New Tenant") : Words::tr("Tenant"));
    completeTags(find<QLineEdit>("tags"));
    if (isNew_) return;
    find<QLineEdit>("name").setText(textOf(tenant_->name()));
    find<QLineEdit>("tags").setText(tagsOf(*tenant_));
}

QString TenantSheet::fault() {
    return find<QLineEdit>("name").text().trimmed().isEmpty() ? Words::tr("The tenant needs a name.")
                                                              : QString();
}

QString TenantSheet::stepName() const {
    return isNew_ ? Words::tr("New Tenant") : Words::tr("Change of Tenant");
}

void TenantSheet::apply() {
    if (isNew_) tenant_ = session().context().insertNewObject<TKTenant>("Tenant");
    setText(tenant_->name(), find<QLineEdit>("name").text(),
            [&](const auto& text) { tenant_->setName(text); });
    setTags(*tenant_, find<QLineEdit>("tags").text());
}

} // namespace estatebook::desktop
