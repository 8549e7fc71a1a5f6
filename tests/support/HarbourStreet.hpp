// SPDX-License-Identifier: MIT
#pragma once

/// Two tenures of the example book, with what was recorded on them. REQUIRES: London as the default zone.

#include "support/Book.hpp"

#include "tags/TKTagNames.hpp"

#include <string_view>

namespace estatebook::bookkit {

/// Records an amount on a ledger with its tags; an amount is written in digits.
template <class Ledger>
void recordTagged(const Book& book, Ledger& ledger, std::string_view amount, platform::Date when,
                  std::string_view tags, bool isAdjustment = false) {
    book.record(ledger, platform::Decimal::parse(amount), when, isAdjustment)
        ->setTagNames(TKTagNames::initWithEditableString(tags));
}

/// 12 Harbour Street let to M. Jones on 30 June 2026: 1050 a month in arrears from 15 February 2025, charged pro rata, paid late
/// and in part since the autumn.
inline platform::Ref<TKTenure> jonesOfHarbourStreet(const Book& book) {
    auto tenure = book.tenure(onDay(2025, 2, 15), 30, 1, 1050);
    const auto property = book.property("12 Harbour Street");
    const auto tenant = book.tenant("M. Jones");
    tenure->setProperty(property.get());
    tenure->setTenant(tenant.get());
    tenure->setChargeBehaviour(platform::Number(std::uint64_t{TKChargeBehaviourPartial}));
    tenure->setBondAmount(platform::Decimal(1150));
    tenure->setCurrentDate(onDay(2026, 6, 30));

    const auto record = [&](std::string_view amount, platform::Date when, std::string_view tags,
                            bool isAdjustment = false) {
        recordTagged(book, *tenure, amount, when, tags, isAdjustment);
    };
    record("650", onDay(2025, 2, 14), "Bond", true);
    record("500", onDay(2025, 2, 28), "Bond", true);
    record("1050", onDay(2025, 3, 17), "Rent");
    record("1050", onDay(2025, 4, 15), "Rent");
    record("1050", onDay(2025, 5, 15), "Rent");
    record("1050", onDay(2025, 6, 16), "Rent");
    record("1050", onDay(2025, 7, 15), "Rent");
    record("1050", onDay(2025, 8, 18), "Rent");
    record("1050", onDay(2025, 9, 15), "Rent");
    record("1050", onDay(2025, 10, 20), "Rent, Late");
    record("600", onDay(2025, 11, 24), "Rent, Part payment");
    record("75.5", onDay(2025, 11, 28), "Allowance, Heating", true);
    record("700", onDay(2025, 12, 22), "Rent, Part payment");
    record("-25", onDay(2026, 1, 30), "Bank", true);
    record("1050", onDay(2026, 2, 27), "Rent, Late");
    record("500", onDay(2026, 3, 20), "Rent, Part payment");
    record("400", onDay(2026, 5, 18), "Rent, Part payment");
    tenure->updatePeriods();
    return tenure;
}

/// The year of A. Smith before, 985 a month ahead: all was paid; the bond was released on the last day, a chimney sweep kept from it
/// and the rest returned a week later. Rent payments are left out.
inline platform::Ref<TKTenure> smithOfHarbourStreet(const Book& book) {
    auto tenure = book.tenure(onDay(2024, 1, 31), 30, 1, 985);
    tenure->setEndDate(onDay(2025, 1, 31));
    tenure->setBondAmount(platform::Decimal(1095));
    recordTagged(book, *tenure, "1095", onDay(2024, 1, 31), "Bond", true);
    recordTagged(book, *tenure, "1095", onDay(2025, 1, 31), "Bond", true);
    recordTagged(book, *tenure, "-60", onDay(2025, 1, 31), "Bond, Cleaning", true);
    recordTagged(book, *tenure, "-1035", onDay(2025, 2, 7), "Bond", true);
    return tenure;
}

} // namespace estatebook::bookkit
