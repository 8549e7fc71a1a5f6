// SPDX-License-Identifier: MIT
#pragma once

/// What each class is to declare of its keys, written down by hand: these dependencies and no others.

#include <map>
#include <set>
#include <string>

namespace estatebook::testkit {

/// A key, and the key paths that affect it.
using Dependencies = std::map<std::string, std::set<std::string>>;

inline Dependencies with(Dependencies inherited, const Dependencies& own) {
    inherited.insert(own.begin(), own.end());
    return inherited;
}

/// By the name of the class.
inline const Dependencies& dependenciesOf(const std::string& className) {
    static const Dependencies ofAccounts{{"tagNames", {"tags"}}};
    static const Dependencies ofTransactions{{"categoryName", {"what"}}, {"details", {"what"}}};
    static const std::map<std::string, Dependencies> all{
        {"TKAccount", ofAccounts},
        {"TKProperty", with(ofAccounts, {{"aggregateTransactions", {"tenures", "transactions"}},
                                         {"balance", {"tenureIncome", "totalIncome"}},
                                         {"tenureIncome", {"tenures"}},
                                         {"totalIncome", {"transactions"}},
                                         {"tenureBalance", {"tenures"}},
                                         {"currentTenures", {"currentDate"}}})},
        {"TKTenant", with(ofAccounts, {{"isActive", {"currentDate"}}})},
        {"TKTenure",
         {{"rentalPeriodicBilling", {"rentalBillingCycle", "rentalPeriod", "advancePeriod"}},
          {"advancePeriodicBilling", {"advanceBillingCycle", "advancePeriod"}},
          {"endDate", {"currentDate"}},
          {"name", {"tenant", "property"}},
          {"maximumChargableDays", {"startDate", "endDate", "rentalPeriodicBilling"}},
          {"chargableDays", {"maximumChargableDays", "chargeFullDuration", "advancePeriodicBilling"}},
          {"chargablePeriods", {"chargableDays", "rentalPeriod", "rentalAmount", "chargeBehaviour"}},
          {"numberOfDays", {"startDate", "endDate"}},
          {"numberOfPeriods", {"numberOfDays", "rentalPeriod", "rentalPeriodicBilling"}},
          {"totalCost", {"rentalAmount", "chargablePeriods"}},
          {"totalIncome", {"transactions"}},
          {"totalAdjustment", {"transactions", "bondAmount"}},
          {"balance", {"totalCost", "totalIncome", "totalAdjustment", "chargeBehaviour", "currencyCode"}},
          {"periods", {"chargablePeriods"}}}},
        {"TKTransaction", ofTransactions},
        {"TKPropertyTransaction", ofTransactions},
        {"TKTenureTransaction", with(ofTransactions, {{"property", {"tenure"}}})},
        {"TKTag", {}},
        {"TKState", {}},
    };
    return all.at(className);
}

} // namespace estatebook::testkit
