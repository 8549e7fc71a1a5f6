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

QString words(const char* text) {
    return QCoreApplication::translate("BookLists", text);
}

Cell textCell(QString text) {
    return {std::move(text)};
}

Cell amountCell(const Figures& figures, const Reckoned<Decimal>& amount) {
    if (!amount) return {figures.amount(amount)};
    return {figures.amount(amount), amount->doubleValue(), *amount};
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
             textCell(isActive ? words("Tenant now") : words("Not a tenant now")),
             amountCell(figures, reckon([&] { return tenant.totalIncome(); })),
             amountCell(figures, reckon([&] { return tenant.totalCost(); })),
             amountCell(figures, reckon([&] { return tenant.balance(); }))}};
    row.isFaded = !isActive;
    return row;
}

} // namespace

QString standingOf(const TKTenure& tenure) {
    if (tenure.isActive()) return words("Let");
    const auto start = tenure.startDate();
    const auto today = tenure.currentDate();
    return start && today && *start > *today ? words("To come") : words("Ended");
}

QString partiesOf(const TKTenure& tenure) {
    const QString property = tenure.property() ? textOf(tenure.property()->fullName()) : words("no property");
    const QString tenant = tenure.tenant() ? textOf(tenure.tenant()->name()) : words("no tenant");
    return QStringLiteral("%1 - %2").arg(property, tenant);
}

std::unique_ptr<ListModel> makeTenureList(const FiguresSource& figures, std::function<void(TKTenure&)> wake) {
    return std::make_unique<ListModel>(std::vector<ListModel::Column>{{words("Letting")},
                                                                      {words("Standing")},
                                                                      {words("Balance"), true, true},
                                                                      {words("Paid to")},
                                                                      {words("Next due")}},
                                       [figures, wake = std::move(wake)](ManagedObject& object) {
                                           wake(as<TKTenure>(object));
                                           return rowOfTenure(figures(), as<TKTenure>(object));
                                       });
}

std::unique_ptr<ListModel> makePropertyList(const FiguresSource& figures) {
    return std::make_unique<ListModel>(
        std::vector<ListModel::Column>{{words("Property")},
                                       {words("Tenants now")},
                                       {words("Rent received"), true, true},
                                       {words("Own income and costs"), true, true},
                                       {words("Net"), true, true},
                                       {words("Tenants' balance"), true, true}},
        [figures](ManagedObject& object) { return rowOfProperty(figures(), as<TKProperty>(object)); });
}

std::unique_ptr<ListModel> makeTenantList(const FiguresSource& figures) {
    return std::make_unique<ListModel>(
        std::vector<ListModel::Column>{{words("Tenant")},
                                       {words("Standing")},
                                       {words("Paid"), true, true},
                                       {words("Charged"), true, true},
                                       {words("Balance"), true, true}},
        [figures](ManagedObject& object) { return rowOfTenant(figures(), as<TKTenant>(object)); });
}

std::unique_ptr<ListModel> makeArrearsList() {
    return std::make_unique<ListModel>(std::vector<ListModel::Column>{{words("Letting")},
                                                                      {words("Since")},
                                                                      {words("Owed"), true, true},
                                                                      {words("Due today"), true, true},
                                                                      {words("1–30 days"), true, true},
                                                                      {words("31–60 days"), true, true},
                                                                      {words("61–90 days"), true, true},
                                                                      {words("Over 90 days"), true, true},
                                                                      {words("Not yet due"), true, true}},
                                       [](ManagedObject&) { return Row(); });
}

} // namespace estatebook::desktop
