// SPDX-License-Identifier: MIT
#include "estatebook-desktop/lists/BookLists.hpp"

#include "estatebook-desktop/window/Figures.hpp"
#include "estatebook/Reckoned.hpp"

#include "reports/RentRoll.hpp"
#include "store/TKProperty.hpp"
#include "store/TKTenant.hpp"
#include "tenure/TKTenure.hpp"

#include <QCoreApplication>
#include <QStringList>

#include <utility>

namespace estatebook::desktop {

using platform::Date;
using platform::Decimal;
using platform::ManagedObject;
using platform::Ref;
using Cell = ListModel::Cell;
using Row = ListModel::Row;

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(BookLists)
};

Cell textCell(QString text) {
    return {std::move(text)};
}

/// Rounded to the currency, since a charge by days has any number of digits; so that a column adds up as it stands there.
Cell amountCell(const Figures& figures, const Reckoned<Decimal>& amount) {
    const auto shown = amount ? reckon([&] { return figures.rounded(*amount); }) : amount;
    if (!shown) return {figures.amount(shown)};
    return {figures.amount(shown), shown->doubleValue(), *shown};
}

Cell dayCell(const Figures& figures, const std::optional<Date>& date) {
    return {figures.day(date), date ? date->secondsSinceReferenceDate : -1e18};
}

template <class T>
T& as(ManagedObject& object) {
    return static_cast<T&>(object);
}

Row rowOfTenure(const Figures& figures, TKTenure& tenure) {
    const Ref<TKTenure> held(&tenure);
    const auto entry = reckon([&] { return RentRollEntry::ofTenure(held); });
    const auto balance = reckon([&] { return tenure.balance(); });
    Row row{{textCell(textOf(tenure.name())), textCell(standingOf(tenure)), amountCell(figures, balance),
             dayCell(figures, entry ? entry->paidTo : std::nullopt),
             dayCell(figures, entry ? entry->nextDue : std::nullopt)}};
    row.isFaded = !tenure.isActive();
    return row;
}

QString currentTenantsOf(const TKProperty& property) {
    QStringList names;
    const auto tenures = property.activeTenuresAtDate(property.currentDate());
    for (const auto& tenure : tenures)
        if (tenure->tenant()) names << textOf(tenure->tenant()->name());
    return names.join(QStringLiteral(", "));
}

Row rowOfProperty(const Figures& figures, TKProperty& property) {
    return {{textCell(textOf(property.fullName())), textCell(currentTenantsOf(property)),
             amountCell(figures, reckon([&] { return property.tenureIncome(); })),
             amountCell(figures, reckon([&] { return property.totalIncome(); })),
             amountCell(figures, reckon([&] { return property.balance(); })),
             amountCell(figures, reckon([&] { return property.tenureBalance(); }))}};
}

Row rowOfTenant(const Figures& figures, TKTenant& tenant) {
    const bool isActive = tenant.isActive();
    Row row{{textCell(textOf(tenant.name())),
             textCell(isActive ? Words::tr("Tenant now") : Words::tr("Not a tenant now")),
             amountCell(figures, reckon([&] { return tenant.totalIncome(); })),
             amountCell(figures, reckon([&] { return tenant.totalCost(); })),
             amountCell(figures, reckon([&] { return tenant.balance(); }))}};
    row.isFaded = !isActive;
    return row;
}

} // namespace

QString standingOf(const TKTenure& tenure) {
    if (tenure.isActive()) return Words::tr("Let");
    const auto start = tenure.startDate();
    const auto today = tenure.currentDate();
    return start && today && *start > *today ? Words::tr("To come") : Words::tr("Ended");
}

QString partiesOf(const TKTenure& tenure) {
    const QString property =
        tenure.property() ? textOf(tenure.property()->fullName()) : Words::tr("no property");
    const QString tenant = tenure.tenant() ? textOf(tenure.tenant()->name()) : Words::tr("no tenant");
    return QStringLiteral("%1 - %2").arg(property, tenant);
}

std::unique_ptr<ListModel> makeTenureList(const FiguresSource& figures, std::function<void(TKTenure&)> wake) {
    return std::make_unique<ListModel>(std::vector<ListModel::Column>{{Words::tr("Letting")},
                                                                      {Words::tr("Standing")},
                                                                      {Words::tr("Balance"), true, true},
                                                                      {Words::tr("Paid to")},
                                                                      {Words::tr("Next due")}},
                                       [figures, wake = std::move(wake)](ManagedObject& object) {
                                           wake(as<TKTenure>(object));
                                           return rowOfTenure(figures(), as<TKTenure>(object));
                                       });
}

std::unique_ptr<ListModel> makePropertyList(const FiguresSource& figures) {
    return std::make_unique<ListModel>(
        std::vector<ListModel::Column>{{Words::tr("Property")},
                                       {Words::tr("Tenants now")},
                                       {Words::tr("Rent received"), true, true},
                                       {Words::tr("Own income and costs"), true, true},
                                       {Words::tr("Net"), true, true},
                                       {Words::tr("Tenants' balance"), true, true}},
        [figures](ManagedObject& object) { return rowOfProperty(figures(), as<TKProperty>(object)); });
}

std::unique_ptr<ListModel> makeTenantList(const FiguresSource& figures) {
    return std::make_unique<ListModel>(
        std::vector<ListModel::Column>{{Words::tr("Tenant")},
                                       {Words::tr("Standing")},
                                       {Words::tr("Paid"), true, true},
                                       {Words::tr("Charged"), true, true},
                                       {Words::tr("Balance"), true, true}},
        [figures](ManagedObject& object) { return rowOfTenant(figures(), as<TKTenant>(object)); });
}

std::unique_ptr<ListModel> makeArrearsList() {
    return std::make_unique<ListModel>(std::vector<ListModel::Column>{{Words::tr("Letting")},
                                                                      {Words::tr("Since")},
                                                                      {Words::tr("Owed"), true, true},
                                                                      {Words::tr("Due today"), true, true},
                                                                      {Words::tr("1–30 days"), true, true},
                                                                      {Words::tr("31–60 days"), true, true},
                                                                      {Words::tr("61–90 days"), true, true},
                                                                      {Words::tr("Over 90 days"), true, true},
                                                                      {Words::tr("Not yet due"), true, true}},
                                       [](ManagedObject&) { return Row(); });
}

} // namespace estatebook::desktop
