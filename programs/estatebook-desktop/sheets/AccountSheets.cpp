// SPDX-License-Identifier: MIT
#include "estatebook-desktop/sheets/AccountSheets.hpp"

#include "estatebook-desktop/sheets/Cycles.hpp"

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

} // namespace

// -- Properties -----------------------------------------------------------------------------------------------

Ref<String> PropertySheet::nibName() const {
    return String::make("PropertySheet");
}

void PropertySheet::prepareControls() {
    setTitle(isNew_ ? Words::tr("New Property") : Words::tr("Property"));
    SheetFields& fields = bindFields("Property", property_.get());
    fields.bindText("name", "name");
    fields.bindText("sublease", "sublease");
    fields.bindAmount("rent", "rentalAmount",
                      Words::tr("The usual rent is no amount; write it like 1050.00."));
    fields.bindCount("period", "rentalPeriod");
    fields.bindCycle("cycle", "rentalBillingCycle");
    fields.bindAmount("bond", "bondAmount", Words::tr("The usual bond is no amount; write it like 1050.00."));
    fields.bindFlag("available", "available");
    showTags(property_.get());
}

QString PropertySheet::fault() {
    QString unreadable = fields().commit();
    if (fields().value("name").isAbsent()) return Words::tr("The property needs a name.");
    return unreadable;
}

QString PropertySheet::stepName() const {
    return isNew_ ? Words::tr("New Property") : Words::tr("Change of Property");
}

void PropertySheet::apply() {
    if (isNew_) property_ = session().context().insertNewObject<TKProperty>("Property");
    // A rent is one of a period, also when the fields were left as they stood.
    const auto fill = [this](const char* key, const Number& usual) {
        if (fields().value(key).isAbsent()) fields().setValue(usual, key);
    };
    if (!fields().value("rentalAmount").isAbsent() || !fields().value("rentalPeriod").isAbsent()) {
        fill("rentalPeriod", Number(find<QSpinBox>("period").value()));
        fill("rentalBillingCycle", cycleIn(find<QComboBox>("cycle")));
    }
    fields().applyTo(*property_);
    setTags(*property_, find<QLineEdit>("tags").text());
}

// -- Tenants --------------------------------------------------------------------------------------------------

Ref<String> TenantSheet::nibName() const {
    return String::make("TenantSheet");
}

void TenantSheet::prepareControls() {
    setTitle(isNew_ ? Words::tr("New Tenant") : Words::tr("Tenant"));
    bindFields("Tenant", tenant_.get()).bindText("name", "name");
    showTags(tenant_.get());
}

QString TenantSheet::fault() {
    QString unreadable = fields().commit();
    return fields().value("name").isAbsent() ? Words::tr("The tenant needs a name.") : unreadable;
}

QString TenantSheet::stepName() const {
    return isNew_ ? Words::tr("New Tenant") : Words::tr("Change of Tenant");
}

void TenantSheet::apply() {
    if (isNew_) tenant_ = session().context().insertNewObject<TKTenant>("Tenant");
    fields().applyTo(*tenant_);
    setTags(*tenant_, find<QLineEdit>("tags").text());
}

} // namespace estatebook::desktop
