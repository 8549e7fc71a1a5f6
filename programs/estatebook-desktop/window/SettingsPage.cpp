// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/SettingsPage.hpp"

#include "estatebook-desktop/session/BookSession.hpp"
#include "estatebook-desktop/window/Figures.hpp"

#include "billing/TKPeriodicBilling.hpp"
#include "store/TKState.hpp"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace estatebook::desktop {

using platform::Ref;
using platform::String;

namespace {

constexpr int Width = 560;

QLabel* selectable() {
    auto* label = new QLabel;
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

} // namespace

SettingsPage::SettingsPage(BookSession& session)
    : session_(session), file_(selectable()), zone_(selectable()), currency_(new QComboBox),
      billingMode_(new QComboBox), holds_(selectable()) {
    currency_->setEditable(true);
    currency_->addItems({QStringLiteral("GBP"), QStringLiteral("EUR"), QStringLiteral("USD"),
                         QStringLiteral("CHF"), QStringLiteral("AUD"), QStringLiteral("NZD"),
                         QStringLiteral("CAD"), QStringLiteral("JPY")});
    currency_->setInsertPolicy(QComboBox::NoInsert);
    currency_->lineEdit()->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[A-Z]{3}|")), currency_));
    currency_->setAccessibleName(tr("Currency"));
    billingMode_->addItem(tr("at the start of each period"),
                          QVariant::fromValue<quint64>(TKPeriodBillingModeStart));
    billingMode_->addItem(tr("at the end of each period"),
                          QVariant::fromValue<quint64>(TKPeriodBillingModeEnd));
    billingMode_->setAccessibleName(tr("New lettings are billed"));

    auto* form = new QWidget;
    form->setMaximumWidth(Width);
    auto* fields = new QFormLayout(form);
    fields->setVerticalSpacing(12);
    fields->setHorizontalSpacing(16);
    fields->setLabelAlignment(Qt::AlignRight | Qt::AlignTop);
    fields->addRow(tr("Book"), file_);
    fields->addRow(tr("It holds"), holds_);
    fields->addRow(tr("Time zone"), zone_);
    fields->addRow(tr("&Currency"), currency_);
    fields->addRow(tr("New lettings are &billed"), billingMode_);
    auto* advice = selectable();
    advice->setText(
        tr("Amounts are rounded to the currency. A book keeps its time zone: all its days are those of that "
           "place."));
    advice->setForegroundRole(QPalette::PlaceholderText);
    fields->addRow(QString(), advice);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(24, 24, 24, 24);
    column->addWidget(form, 0, Qt::AlignTop);
    column->addStretch();

    connect(currency_, &QComboBox::activated, this, &SettingsPage::takeCurrency);
    connect(currency_->lineEdit(), &QLineEdit::editingFinished, this, &SettingsPage::takeCurrency);
    connect(billingMode_, &QComboBox::activated, this, &SettingsPage::takeBillingMode);
}

void SettingsPage::refresh() {
    const QSignalBlocker currencyQuiet(currency_);
    const QSignalBlocker modeQuiet(billingMode_);
    file_->setText(QString::fromStdString(session_.path()));
    zone_->setText(QString::fromStdString(std::string(platform::TimeZone::defaultTimeZone()->name())));
    if (!currency_->lineEdit()->hasFocus()) currency_->setEditText(textOf(session_.currencyCode()));
    const auto mode =
        TKState::valueForNameInManagedObjectContext(Ref<String>(TKBillingModeStateName), session_.context())
            .unsignedIntegerValue();
    billingMode_->setCurrentIndex(mode == TKPeriodBillingModeEnd ? 1 : 0);
    const auto count = [&](const char* entity) {
        const auto objects = session_.context().executeFetchRequest({entity});
        return objects ? objects->size() : 0;
    };
    holds_->setText(tr("Lettings: %1, properties: %2, tenants: %3")
                        .arg(count("Tenure"))
                        .arg(count("Property"))
                        .arg(count("Tenant")));
    currency_->setEnabled(session_.canEdit());
    billingMode_->setEnabled(session_.canEdit());
}

void SettingsPage::takeCurrency() {
    const QString code = currency_->currentText();
    if (code == textOf(session_.currencyCode()) || !currency_->lineEdit()->hasAcceptableInput()) return;
    session_.perform(tr("Change of Currency").toStdString(), [&] {
        TKState::updateStateWithNameValueInManagedObjectContext(Ref<String>(TKCurrencyCodeStateName),
                                                                textFrom(code), session_.context());
    });
}

void SettingsPage::takeBillingMode() {
    const auto mode = static_cast<std::int64_t>(billingMode_->currentData().toULongLong());
    const auto former =
        TKState::valueForNameInManagedObjectContext(Ref<String>(TKBillingModeStateName), session_.context());
    if (!former.isAbsent() && former.unsignedIntegerValue() == static_cast<std::uint64_t>(mode)) return;
    session_.perform(tr("Change of Billing").toStdString(), [&] {
        TKState::updateStateWithNameValueInManagedObjectContext(Ref<String>(TKBillingModeStateName), mode,
                                                                session_.context());
    });
}

} // namespace estatebook::desktop
