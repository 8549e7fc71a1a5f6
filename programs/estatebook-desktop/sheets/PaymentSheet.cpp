// SPDX-License-Identifier: MIT
#include "estatebook-desktop/sheets/PaymentSheet.hpp"

#include "estatebook-desktop/sheets/Tags.hpp"

#include "platform/calendar/Calendar.hpp"

#include <QCheckBox>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>

namespace estatebook::desktop {

using platform::Date;
using platform::Number;
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
    completeTags(find<QLineEdit>("tags"));
    dates_ = makeDates("hasDate", "date");
    const Date today = platform::Calendar::current().startOfDay(session().today());
    dates_->setInitialDate(today);

    auto& amount = find<QLineEdit>("amount");
    QObject::connect(&amount, &QLineEdit::textChanged, &amount, [this] { showDirection(); });
    if (isNew_) {
        dates_->setCurrentDate(today);
        amount.setText(tenure_ ? figures().plain(tenure_->rentalAmount()) : QString());
    } else {
        dates_->setCurrentDate(transaction_->when());
        amount.setText(figures().plain(transaction_->amount()));
        find<QLineEdit>("what").setText(textOf(transaction_->what()));
        find<QLineEdit>("receipt").setText(textOf(transaction_->receipt()));
        find<QLineEdit>("tags").setText(tagsOf(*transaction_));
        find<QCheckBox>("adjustment").setChecked(transaction_->isAdjustment());
    }
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
    const Amount amount = amountIn("amount");
    if (!amount.isReadable) return Words::tr("The amount cannot be read; write it like 1050.00.");
    if (!amount.amount) return Words::tr("The payment needs an amount.");
    return {};
}

QString PaymentSheet::stepName() const {
    return isNew_ ? Words::tr("Payment") : Words::tr("Change of Payment");
}

void PaymentSheet::apply() {
    if (isNew_)
        transaction_ = tenure_ ? Ref<TKTransaction>(tenure_->createTransaction())
                               : Ref<TKTransaction>(property_->createTransaction());
    TKTransaction& transaction = *transaction_;
    const auto amount = amountIn("amount").amount;
    if (transaction.amount() != amount) transaction.setAmount(amount);
    const auto setText = [](const Ref<String>& now, const QString& wanted, const auto& set) {
        if (textOf(now) != wanted.trimmed()) set(textFrom(wanted));
    };
    setText(transaction.what(), find<QLineEdit>("what").text(),
            [&](const auto& text) { transaction.setWhat(text); });
    setText(transaction.receipt(), find<QLineEdit>("receipt").text(),
            [&](const auto& text) { transaction.setReceipt(text); });
    if (transaction.when() != dates_->currentDate()) transaction.setWhen(dates_->currentDate());
    const bool isAdjustment = find<QCheckBox>("adjustment").isChecked();
    if (transaction.isAdjustment() != isAdjustment) transaction.setAdjustment(Number(isAdjustment));
    setTags(transaction, find<QLineEdit>("tags").text());
}

} // namespace estatebook::desktop
