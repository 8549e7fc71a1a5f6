// SPDX-License-Identifier: MIT
#include "estatebook-desktop/sheets/PaymentSheet.hpp"

#include "platform/calendar/Calendar.hpp"

#include <QCheckBox>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>

namespace estatebook::desktop {

using platform::Date;
using platform::Ref;
using platform::String;

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(PaymentSheet)
};

} // namespace

PaymentSheet::PaymentSheet(BookSession& session, TKTransaction& transaction)
    : BookSheet(session), transaction_(&transaction), isNew_(false) {
    if (auto* ofTenure = dynamic_cast<TKTenureTransaction*>(&transaction))
        tenure_ = Ref<TKTenure>(ofTenure->tenure());
    else if (auto* ofProperty = dynamic_cast<TKPropertyTransaction*>(&transaction))
        property_ = Ref<TKProperty>(ofProperty->property());
}

Ref<String> PaymentSheet::nibName() const {
    return String::make("PaymentSheet");
}

void PaymentSheet::prepareControls() {
    setTitle(isNew_ ? Words::tr("New Payment") : Words::tr("Payment"));
    find<QLabel>("owner").setText(tenure_     ? textOf(tenure_->name())
                                  : property_ ? textOf(property_->fullName())
                                              : QString());
    find<QCheckBox>("adjustment").setVisible(tenure_ != nullptr);
    const char* entity = tenure_ ? "TenureTransaction" : "PropertyTransaction";
    SheetFields& fields = bindFields(entity, transaction_.get());
    const Date today = platform::Calendar::current().startOfDay(session().today());
    dates_ = makeDates("hasDate", "date");
    dates_->setInitialDate(today);
    fields.bindDate(*dates_, "when");
    fields.bindText("what", "what");
    fields.bindText("receipt", "receipt");
    fields.bindFlag("adjustment", "adjustment");
    if (isNew_) {
        fields.setValue(today, "when");
        if (tenure_) fields.setValue(tenure_->rentalAmount(), "amount");
    }
    fields.bindAmount("amount", "amount", Words::tr("The amount cannot be read; write it like 1050.00."));
    showTags(transaction_.get());

    auto& amount = find<QLineEdit>("amount");
    QObject::connect(&amount, &QLineEdit::textChanged, &amount, [this] { showDirection(); });
    amount.setFocus();
    amount.selectAll();
    showDirection();
}

void PaymentSheet::showDirection() const {
    const auto amount = amountIn("amount").amount;
    const bool isNegative = amount && amount->isNegative();
    const QString received = Words::tr("Received. Write a minus sign before what is charged or given back.");
    const QString spent =
        tenure_ ? Words::tr("Charged to the tenant, or given back.") : Words::tr("Spent on the property.");
    find<QLabel>("direction").setText(isNegative ? spent : received);
}

QString PaymentSheet::fault() {
    QString unreadable = fields().commit();
    if (!unreadable.isEmpty()) return unreadable;
    return fields().value("amount").isAbsent() ? Words::tr("The payment needs an amount.") : QString();
}

QString PaymentSheet::stepName() const {
    return isNew_ ? Words::tr("Payment") : Words::tr("Change of Payment");
}

void PaymentSheet::apply() {
    if (isNew_)
        transaction_ = tenure_ ? Ref<TKTransaction>(tenure_->createTransaction())
                               : Ref<TKTransaction>(property_->createTransaction());
    fields().applyTo(*transaction_);
    setTags(*transaction_, find<QLineEdit>("tags").text());
}

} // namespace estatebook::desktop
