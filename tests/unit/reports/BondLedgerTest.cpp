// SPDX-License-Identifier: MIT
#include "reports/BondLedger.hpp"

#include "support/HarbourStreet.hpp"

#include <gtest/gtest.h>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::onDay;
using bookkit::recordTagged;

class BondLedgerTest : public testing::Test {
protected:
    void expectEntry(const Ref<TKTenure>& tenure, Date day, const Decimal& paid, const Decimal& released,
                     const Decimal& returned, const Decimal& held, std::string_view tag = "Bond") const {
        const auto entry = BondLedgerEntry::ofTenure(tenure, day, tag);
        EXPECT_EQ(entry.paid, paid);
        EXPECT_EQ(entry.released, released);
        EXPECT_EQ(entry.returned, returned);
        EXPECT_EQ(entry.held(), held);
    }

    const bookkit::DefaultZone zone{"Europe/London"};
    const bookkit::Book book;
    const Ref<TKTenure> tenure = [this] {
        auto made = book.tenure(onDay(2025, 1, 1), 30, 1, 100);
        made->setBondAmount(Decimal(500));
        return made;
    }();
    const Date day = onDay(2025, 6, 1);
};

TEST_F(BondLedgerTest, ABondPaidInTwoPartsIsHeld) {
    const auto jones = bookkit::jonesOfHarbourStreet(book);
    expectEntry(jones, onDay(2025, 2, 20), 650, 0, 0, 650);
    expectEntry(jones, onDay(2026, 6, 30), 1150, 0, 0, 1150);
    EXPECT_EQ(BondLedgerEntry::ofTenure(jones, onDay(2026, 6, 30), "Bond").charged, Decimal(1150));
}

TEST_F(BondLedgerTest, ABondIsReleasedThenPartlyKeptAndReturned) {
    const auto smith = bookkit::smithOfHarbourStreet(book);
    expectEntry(smith, onDay(2024, 12, 31), 1095, 0, 0, 1095);
    expectEntry(smith, onDay(2025, 1, 31), 1095, 1095, 60, 0);
    expectEntry(smith, onDay(2025, 2, 7), 1095, 1095, 1095, 0);
}

TEST_F(BondLedgerTest, ABondReturnedWithoutARelease) {
    recordTagged(book, *tenure, "500", onDay(2025, 1, 1), "Bond", true);
    recordTagged(book, *tenure, "-200", onDay(2025, 5, 1), "Bond", true);
    expectEntry(tenure, day, 500, 0, 200, 300);
}

TEST_F(BondLedgerTest, MoreReturnedThanPaidHoldsNothing) {
    recordTagged(book, *tenure, "-200", onDay(2025, 5, 1), "Bond", true);
    expectEntry(tenure, day, 0, 0, 200, 0);
}

TEST_F(BondLedgerTest, ATenureIsChargedWhenItBegins) {
    EXPECT_EQ(BondLedgerEntry::ofTenure(tenure, onDay(2024, 12, 31), "Bond").charged, Decimal(0));
    EXPECT_EQ(BondLedgerEntry::ofTenure(tenure, onDay(2025, 1, 1), "Bond").charged, Decimal(500));
}

TEST_F(BondLedgerTest, WithoutABondAllThatCameInIsHeld) {
    tenure->setBondAmount(std::nullopt);
    recordTagged(book, *tenure, "300", onDay(2025, 1, 1), "Bond", true);
    expectEntry(tenure, day, 300, 0, 0, 300);
}

TEST_F(BondLedgerTest, ANegativeBondIsShownAsItIs) {
    tenure->setBondAmount(Decimal(-40));
    EXPECT_EQ(BondLedgerEntry::ofTenure(tenure, day, "Bond").charged, Decimal(-40));
    expectEntry(tenure, day, 0, 0, 0, 0);
}

TEST_F(BondLedgerTest, OnlyAdjustmentsOfTheTagCount) {
    recordTagged(book, *tenure, "500", onDay(2025, 1, 1), "Bond");
    recordTagged(book, *tenure, "60", onDay(2025, 1, 1), "bond", true);
    recordTagged(book, *tenure, "70", onDay(2025, 1, 1), "", true);
    expectEntry(tenure, day, 0, 0, 0, 0);
    recordTagged(book, *tenure, "80", onDay(2025, 1, 1), "Cash, Bond", true);
    expectEntry(tenure, day, 80, 0, 0, 80);
}

TEST_F(BondLedgerTest, SpellingsOfTheTagAreOne) {
    recordTagged(book, *tenure, "60", onDay(2025, 1, 1), "Da\u0301n", true);
    expectEntry(tenure, day, 60, 0, 0, 60, "D\u00e1n");
}

TEST_F(BondLedgerTest, WithoutANameEveryAdjustmentCounts) {
    recordTagged(book, *tenure, "60", onDay(2025, 1, 1), "", true);
    book.record(*tenure, Decimal(7), std::nullopt, true);
    book.record(*tenure, std::nullopt, std::nullopt, true);
    expectEntry(tenure, day, 67, 0, 0, 67, "");
}

TEST_F(BondLedgerTest, ALedgerLeavesOutWhoHasNoBond) {
    const auto without = book.tenure(onDay(2025, 1, 1), 30, 1, 100);
    const auto ledger = bondLedger(std::vector{without, tenure}, day, "Bond");
    ASSERT_EQ(ledger.size(), 1u);
    EXPECT_EQ(ledger[0].tenure, tenure);
}

} // namespace
} // namespace estatebook
