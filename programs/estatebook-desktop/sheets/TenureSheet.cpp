// SPDX-License-Identifier: MIT
#include "estatebook-desktop/sheets/TenureSheet.hpp"

#include "estatebook-desktop/sheets/Cycles.hpp"

#include "platform/calendar/Calendar.hpp"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDateEdit>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QTableWidget>

#include <array>
#include <utility>

namespace estatebook::desktop {

using platform::Decimal;
using platform::ManagedObject;
using platform::Number;
using platform::Ref;
using platform::String;

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(TenureSheet)
};

struct Card {
    const char* button;
    TKChargeBehaviour behaviour;
};
constexpr std::array Cards{Card{"chargeStart", TKChargeBehaviourStart},
                           Card{"chargePartial", TKChargeBehaviourPartial},
                           Card{"chargeEnd", TKChargeBehaviourEnd}};

/// Parts of periods are shown to so many digits.
constexpr short DigitsOfPeriods = 4;

/// The place of the object in a list of choices.
constexpr int ObjectRole = Qt::UserRole;

template <class Object>
void fillChoices(QComboBox& list, const std::vector<Ref<Object>>& objects, const ManagedObject* chosen,
                 QString (*nameOf)(const Object&)) {
    list.setInsertPolicy(QComboBox::NoInsert);
    list.setCurrentIndex(-1);
    for (const auto& object : objects) {
        ManagedObject* each = object.get();
        list.addItem(nameOf(*object), QVariant::fromValue(static_cast<void*>(each)));
        if (each == chosen) list.setCurrentIndex(list.count() - 1);
    }
    if (!chosen) list.setCurrentIndex(-1);
}

QString nameOfProperty(const TKProperty& property) {
    return textOf(property.fullName());
}

QString nameOfTenant(const TKTenant& tenant) {
    return textOf(tenant.name());
}

class Showing {
public:
    explicit Showing(bool& flag) : flag_(flag), former_(std::exchange(flag, true)) {}
    ~Showing() { flag_ = former_; }
    Showing(const Showing&) = delete;
    Showing& operator=(const Showing&) = delete;

private:
    bool& flag_;
    bool former_;
};

} // namespace

Ref<String> TenureSheet::nibName() const {
    return String::make("TenureSheet");
}

void TenureSheet::prepareControls() {
    setTitle(isNew_ ? Words::tr("New Letting") : Words::tr("Letting"));
    const Showing showing(isShowing_);
    prepareParties();
    prepareDates();
    prepareLength();
    prepareRent();
    prepareCards();
    preparePreview();
    showTerms();
    find<QComboBox>("property").setFocus();
}

// -- Controls -------------------------------------------------------------------------------------------------

void TenureSheet::prepareParties() {
    auto& property = find<QComboBox>("property");
    auto& tenant = find<QComboBox>("tenant");
    fillChoices(property, session().properties(), tenure_ ? tenure_->property() : nullptr, nameOfProperty);
    fillChoices(tenant, session().tenants(), tenure_ ? tenure_->tenant() : nullptr, nameOfTenant);
    property.lineEdit()->setPlaceholderText(Words::tr("choose one, or write the name of a new one"));
    tenant.lineEdit()->setPlaceholderText(Words::tr("choose one, or write the name of a new one"));
    for (QComboBox* list : {&property, &tenant})
        QObject::connect(list, &QComboBox::editTextChanged, list, [this] { showAdded(); });
    QObject::connect(&property, &QComboBox::activated, &property, [this] { takeUsualTerms(); });
}

void TenureSheet::prepareDates() {
    starts_ = makeDates("hasStart", "start");
    ends_ = makeDates("hasEnd", "end");
    const auto today = platform::Calendar::current().startOfDay(session().today());
    starts_->setInitialDate(draft_.terms()->startDate().value_or(today));
    starts_->bindToObjectWithKeyPath("currentDate", draft_.terms(), "startDate");
    ends_->setInitialDate(draft_.terms()->endDate().value_or(today));
    ends_->bindToObjectWithKeyPath("currentDate", draft_.terms(), "endDate");
    for (const char* key : {"startDate", "endDate"})
        announcements_.push_back(draft_.terms()->observe(key, [this] {
            if (!std::exchange(isShowing_, true)) {
                isShowing_ = false;
                showTerms();
            } else {
                isShowing_ = true;
            }
        }));
}

void TenureSheet::prepareLength() {
    auto& periods = find<QLineEdit>("periods");
    auto& days = find<QSpinBox>("days");
    // No days are shown of a letting without an end.
    days.setSpecialValueText(QStringLiteral(" "));
    QObject::connect(&periods, &QLineEdit::textEdited, &periods, [this](const QString& text) {
        const auto number = figures().amountOf(text);
        if (number && !number->isNegative())
            edit([&](TKTenure& terms) { terms.setNumberOfPeriods(Number(*number)); });
    });
    QObject::connect(&days, &QSpinBox::valueChanged, &days, [this](int number) {
        edit([&](TKTenure& terms) { terms.setNumberOfDays(Number(static_cast<std::uint64_t>(number))); });
    });
}

void TenureSheet::prepareRent() {
    const auto amountOf = [this](const char* name, auto set) {
        auto& line = find<QLineEdit>(name);
        QObject::connect(&line, &QLineEdit::textEdited, &line, [this, name, set] {
            const Amount amount = amountIn(name);
            if (amount.isReadable) edit([&](TKTenure& terms) { set(terms, amount.amount); });
        });
    };
    amountOf("rent", [](TKTenure& terms, const auto& amount) { terms.setRentalAmount(amount); });
    amountOf("bond", [](TKTenure& terms, const auto& amount) { terms.setBondAmount(amount); });

    auto& cycle = find<QComboBox>("cycle");
    auto& period = find<QSpinBox>("period");
    QObject::connect(&cycle, &QComboBox::currentIndexChanged, &cycle, [this, &cycle] {
        edit([&](TKTenure& terms) { terms.setRentalBillingCycle(cycleIn(cycle)); });
    });
    QObject::connect(&period, &QSpinBox::valueChanged, &period, [this](int number) {
        edit([&](TKTenure& terms) { terms.setRentalPeriod(Number(static_cast<std::uint64_t>(number))); });
    });

    auto& advance = find<QRadioButton>("advance");
    QObject::connect(&advance, &QRadioButton::toggled, &advance, [this] { takePaidInAdvance(); });
    auto& ahead = find<QSpinBox>("advancePeriod");
    auto& aheadCycle = find<QComboBox>("advanceCycle");
    QObject::connect(&ahead, &QSpinBox::valueChanged, &ahead, [this] { takePaidInAdvance(); });
    QObject::connect(&aheadCycle, &QComboBox::currentIndexChanged, &aheadCycle,
                     [this] { takePaidInAdvance(); });

    auto& full = find<QCheckBox>("full");
    QObject::connect(&full, &QCheckBox::toggled, &full, [this](bool isFull) {
        edit([&](TKTenure& terms) { terms.setChargeFullDuration(Number(isFull)); });
    });
}

void TenureSheet::prepareCards() {
    auto* group = new QButtonGroup(qtWindow().widget());
    for (const auto& [name, behaviour] : Cards) {
        auto& button = find<QRadioButton>(name);
        QFont font = button.font();
        font.setBold(true);
        button.setFont(font);
        group->addButton(&button);
        QObject::connect(&button, &QRadioButton::toggled, &button,
                         [this, behaviour = behaviour](bool isChosen) {
                             if (isChosen)
                                 edit([&](TKTenure& terms) { terms.setChargeBehaviour(Number(behaviour)); });
                         });
    }
}

void TenureSheet::preparePreview() {
    auto& table = find<QTableWidget>("next");
    table.setColumnCount(3);
    table.setRowCount(static_cast<int>(TenureDraft::PreviewLines));
    table.setHorizontalHeaderLabels({Words::tr("Due"), Words::tr("Rent"), Words::tr("Amount")});
    for (int column = 0; column < table.columnCount(); ++column)
        table.horizontalHeaderItem(column)->setTextAlignment((column == 2 ? Qt::AlignRight : Qt::AlignLeft) |
                                                             Qt::AlignVCenter);
    table.verticalHeader()->hide();
    table.setShowGrid(false);
    table.setWordWrap(false);
    table.setSelectionMode(QAbstractItemView::NoSelection);
    table.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table.horizontalHeader()->setHighlightSections(false);
    table.horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table.horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    for (const char* name : {"nextTitle", "partsTitle", "cost", "balance"}) {
        auto& label = find<QLabel>(name);
        QFont font = label.font();
        font.setBold(true);
        label.setFont(font);
    }
}

// -- Editing --------------------------------------------------------------------------------------------------

void TenureSheet::edit(const std::function<void(TKTenure&)>& change) {
    if (isShowing_) return;
    {
        const Showing showing(isShowing_);
        draft_.set(change);
    }
    showTerms();
}

// Ahead of the rent by as much as is set, or by one rent period.
void TenureSheet::takePaidInAdvance() {
    edit([&](TKTenure& terms) {
        if (!find<QRadioButton>("advance").isChecked()) return terms.setAdvancePeriod(std::nullopt);
        const bool wasInArrears = !isTrue(terms.advancePeriod());
        terms.setAdvanceBillingCycle(wasInArrears ? terms.rentalBillingCycle()
                                                  : std::optional(cycleIn(find<QComboBox>("advanceCycle"))));
        terms.setAdvancePeriod(
            wasInArrears
                ? terms.rentalPeriod()
                : std::optional(Number(static_cast<std::uint64_t>(find<QSpinBox>("advancePeriod").value()))));
    });
}

void TenureSheet::takeUsualTerms() {
    auto* property = dynamic_cast<TKProperty*>(chosen("property"));
    if (!isNew_ || !property) return;
    {
        const Showing showing(isShowing_);
        draft_.takeUsualTermsOf(*property);
    }
    showTerms();
}

ManagedObject* TenureSheet::chosen(const char* list) const {
    const auto& choices = find<QComboBox>(list);
    const int index = choices.findText(choices.currentText().trimmed(), Qt::MatchExactly);
    const int place =
        choices.currentIndex() >= 0 && choices.currentText() == choices.itemText(choices.currentIndex())
            ? choices.currentIndex()
            : index;
    return place < 0 ? nullptr
                     : static_cast<ManagedObject*>(choices.itemData(place, ObjectRole).value<void*>());
}

// -- Showing --------------------------------------------------------------------------------------------------

void TenureSheet::showTerms() {
    const Showing showing(isShowing_);
    const TKTenure& terms = *draft_.terms();
    const auto showAmount = [&](const char* name, const std::optional<Decimal>& amount) {
        auto& line = find<QLineEdit>(name);
        const Amount typed = amountIn(name);
        // What is half typed stays as it is.
        if (typed.amount != amount && (typed.isReadable || !line.hasFocus()))
            line.setText(figures().plain(amount));
    };
    showAmount("rent", terms.rentalAmount());
    showAmount("bond", terms.bondAmount());
    if (const auto period = terms.rentalPeriod())
        find<QSpinBox>("period").setValue(static_cast<int>(period->unsignedIntegerValue()));
    showCycle(find<QComboBox>("cycle"), terms.rentalBillingCycle());

    const bool isInAdvance = isTrue(terms.advancePeriod());
    find<QRadioButton>(isInAdvance ? "advance" : "arrears").setChecked(true);
    for (const char* name : {"advancePeriod", "advanceCycle", "ahead"})
        find<QWidget>(name).setEnabled(isInAdvance);
    const auto ahead = isInAdvance ? terms.advancePeriod() : terms.rentalPeriod();
    if (ahead) find<QSpinBox>("advancePeriod").setValue(static_cast<int>(ahead->unsignedIntegerValue()));
    showCycle(find<QComboBox>("advanceCycle"),
              isInAdvance ? terms.advanceBillingCycle() : terms.rentalBillingCycle());
    find<QCheckBox>("full").setChecked(isTrue(terms.chargeFullDuration()));
    if (const auto chosen = terms.chargeBehaviour())
        for (const auto& [name, behaviour] : Cards)
            if (chosen->unsignedIntegerValue() == behaviour) find<QRadioButton>(name).setChecked(true);
    showLength();
    showPreview();
    showAdded();
    const QString reason = faultOfDraft();
    showFault(terms.startDate() ? reason : QString());
}

void TenureSheet::showLength() {
    const TKTenure& terms = *draft_.terms();
    const bool ends = terms.endDate().has_value();
    auto& line = find<QLineEdit>("periods");
    auto& days = find<QSpinBox>("days");
    const auto periods = reckon([&] { return terms.numberOfPeriods(); });
    if (!line.hasFocus())
        line.setText(ends && periods && *periods
                         ? figures().plain((*periods)->decimalNumberByRoundingAccordingToBehavior(
                               {.scale = DigitsOfPeriods}))
                         : QString());
    const auto count = terms.numberOfDays();
    if (!days.hasFocus()) days.setValue(ends && count ? static_cast<int>(count->integerValue()) : 0);

    auto& hint = find<QLabel>("dayShort");
    const auto dayShort = draft_.dayShort();
    hint.setVisible(dayShort.has_value());
    if (!dayShort) return;
    const auto rents = [](std::uint64_t number) {
        return number == 1 ? Words::tr("one rent") : Words::tr("%1 rents").arg(number);
    };
    hint.setText(
        Words::tr("%1 to %2 is %3 and %4 days; %5 is %6.")
            .arg(figures().day(terms.startDate()), figures().day(dayShort->end), rents(dayShort->periods))
            .arg(dayShort->days)
            .arg(figures().day(dayShort->next), rents(dayShort->periods + 1)));
}

void TenureSheet::showPreview() {
    auto& table = find<QTableWidget>("next");
    const auto preview = draft_.preview();
    for (int row = 0; row < table.rowCount(); ++row) {
        const auto place = static_cast<std::size_t>(row);
        const TenureDraft::Line line =
            preview && place < preview->next.size() ? preview->next[place] : TenureDraft::Line();
        table.setItem(row, 0, new QTableWidgetItem(figures().day(line.when)));
        table.setItem(row, 1, new QTableWidgetItem(QString::fromStdString(line.what)));
        auto* amount =
            new QTableWidgetItem(line.amount ? figures().amount(figures().rounded(*line.amount)) : QString());
        amount->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        table.setItem(row, 2, amount);
    }
    if (!draft_.terms()->rentalAmount())
        table.item(0, 1)->setText(Words::tr("What falls due shows once there is a rent"));
    else if (preview && preview->next.empty())
        table.item(0, 1)->setText(Words::tr("Nothing falls due any more"));
    find<QLabel>("cost").setText(preview ? figures().amount(figures().rounded(preview->cost)) : QString());
    find<QLabel>("balance").setText(preview ? figures().amount(figures().rounded(preview->balance))
                                            : QString());
}

void TenureSheet::showAdded() {
    QStringList added;
    const auto note = [&](const char* list, const QString& sentence) {
        const QString name = find<QComboBox>(list).currentText().trimmed();
        if (!name.isEmpty() && !chosen(list)) added << sentence.arg(name);
    };
    note("property", Words::tr("The property “%1” is added to the book."));
    note("tenant", Words::tr("The tenant “%1” is added to the book."));
    auto& label = find<QLabel>("added");
    label.setText(added.join(QLatin1Char(' ')));
    label.setVisible(!added.isEmpty());
}

// -- Confirming -----------------------------------------------------------------------------------------------

QString TenureSheet::faultOfDraft() const {
    switch (draft_.fault()) {
    case TenureDraft::Fault::None:
        return {};
    case TenureDraft::Fault::NoStart:
        return Words::tr("The letting needs a first day.");
    case TenureDraft::Fault::EndBeforeStart:
        return Words::tr("The last day is before the first day.");
    case TenureDraft::Fault::Unreckonable:
        return Words::tr(
            "The rent cannot be reckoned with these terms; check the amount, the dates and the advance.");
    }
    return {};
}

QString TenureSheet::fault() {
    if (find<QComboBox>("property").currentText().trimmed().isEmpty())
        return Words::tr("The letting needs a property.");
    if (find<QComboBox>("tenant").currentText().trimmed().isEmpty())
        return Words::tr("The letting needs a tenant.");
    if (!amountIn("rent").isReadable) return Words::tr("The rent is no amount; write it like 1050.00.");
    if (!amountIn("bond").isReadable) return Words::tr("The bond is no amount; write it like 1050.00.");
    return faultOfDraft();
}

QString TenureSheet::stepName() const {
    return isNew_ ? Words::tr("New Letting") : Words::tr("Change of Letting");
}

void TenureSheet::apply() {
    auto& context = session().context();
    const auto partyIn = [&]<class Party>(const char* list, const char* entity, Party*& party) {
        party = dynamic_cast<Party*>(chosen(list));
        if (party) return;
        party = context.insertNewObject<Party>(entity).get();
        party->setName(textFrom(find<QComboBox>(list).currentText()));
    };
    TKProperty* property = nullptr;
    TKTenant* tenant = nullptr;
    partyIn("property", "Property", property);
    partyIn("tenant", "Tenant", tenant);
    if (isNew_) tenure_ = context.insertNewObject<TKTenure>("Tenure");
    if (tenure_->property() != property) tenure_->setProperty(property);
    if (tenure_->tenant() != tenant) tenure_->setTenant(tenant);
    draft_.applyTo(*tenure_);
}

} // namespace estatebook::desktop
