// SPDX-License-Identifier: MIT
#include "desktop/program/DesktopTestCase.hpp"

#include "estatebook-desktop/sheets/TenureDraft.hpp"

namespace estatebook::desktop::test {

namespace {

using platform::Decimal;
using platform::Number;
using Fault = TenureDraft::Fault;

class TenureDraftTest : public DesktopTestCase {
protected:
    platform::RunLoop loop_;
    std::unique_ptr<BookSession> session_ = BookSession::open(makeExample(), loop_);
};

TEST_F(TenureDraftTest, EachLettingIsReckonedAsInTheBook) {
    const auto tenures = session_->tenures();
    for (const auto& tenure : tenures) {
        const TenureDraft draft(*session_, tenure.get());
        const auto preview = draft.preview();
        ASSERT_TRUE(preview);
        EXPECT_EQ(preview->balance, tenure->balance()) << tenure->name()->view();
        EXPECT_EQ(preview->cost, tenure->totalCost()) << tenure->name()->view();
        EXPECT_EQ(draft.fault(), Fault::None);
    }
}

TEST_F(TenureDraftTest, WhatFallsDueNextComesTrue) {
    const auto tenure = tenureOf(*session_, "M. Jones");
    const TenureDraft draft(*session_, tenure.get());
    const auto preview = draft.preview();
    ASSERT_TRUE(preview);
    ASSERT_EQ(preview->next.size(), TenureDraft::PreviewLines);
    session_->setAsOf(platform::Date{preview->next.back().when->secondsSinceReferenceDate + 1});
    const auto statement = session_->statementOf(*tenure);
    ASSERT_TRUE(statement);
    for (const TenureDraft::Line& line : preview->next) {
        int found = 0;
        for (const TKStatementItem& item : *(*statement)->items())
            if (item.transaction()->when() == line.when && item.transaction()->what()->view() == line.what &&
                item.transaction()->amount() == line.amount)
                ++found;
        EXPECT_EQ(found, 1) << line.what;
    }
}

TEST_F(TenureDraftTest, ADraftLeavesTheBookAlone) {
    const auto tenure = tenureOf(*session_, "M. Jones");
    const Decimal balance = tenure->balance();
    {
        const TenureDraft draft(*session_, tenure.get());
        draft.set([](TKTenure& terms) { terms.setRentalAmount(Decimal(9999)); });
        EXPECT_NE(draft.preview()->balance, balance);
    }
    EXPECT_EQ(tenure->balance(), balance);
    EXPECT_EQ(session_->condition(), BookSession::Condition::Saved);
    EXPECT_FALSE(session_->context().hasChanges());
}

TEST_F(TenureDraftTest, TermsAreTakenOverAsOneStep) {
    const auto tenure = tenureOf(*session_, "M. Jones");
    const Decimal balance = tenure->balance();
    const TenureDraft draft(*session_, tenure.get());
    draft.set([](TKTenure& terms) {
        terms.setRentalBillingCycle(Number(TKBillingCycleWeek));
        terms.setRentalPeriod(Number(2U));
        terms.setRentalAmount(Decimal(500));
        terms.setAdvanceBillingCycle(Number(TKBillingCycleWeek));
        terms.setAdvancePeriod(Number(2U));
    });
    const Decimal wanted = draft.preview()->balance;
    session_->perform("Change of Letting", [&] { draft.applyTo(*tenure); });
    EXPECT_EQ(tenure->balance(), wanted);
    session_->undo();
    EXPECT_EQ(tenure->balance(), balance);
}

TEST_F(TenureDraftTest, TermsThatCannotBeReckonedAreToldOfAndKept) {
    const TenureDraft draft(*session_, tenureOf(*session_, "M. Jones").get());
    draft.set([](TKTenure& terms) { terms.setRentalBillingCycle(Number(5)); });
    EXPECT_EQ(draft.fault(), Fault::Unreckonable);
    EXPECT_FALSE(draft.preview());
    draft.set([](TKTenure& terms) { terms.setRentalBillingCycle(Number(TKBillingCycleMonth)); });
    EXPECT_EQ(draft.fault(), Fault::None);
    draft.set([](TKTenure& terms) { terms.setEndDate(day(2020, 1, 1)); });
    EXPECT_EQ(draft.fault(), Fault::EndBeforeStart);
    draft.set([](TKTenure& terms) {
        terms.setEndDate(std::nullopt);
        terms.setStartDate(std::nullopt);
    });
    EXPECT_EQ(draft.fault(), Fault::NoStart);
}

TEST_F(TenureDraftTest, AnEndADayBeforeAWholeNumberOfPeriods) {
    const TenureDraft draft(*session_, nullptr);
    const auto short_ = [&](platform::Date start, platform::Date end) {
        draft.set([&](TKTenure& terms) {
            terms.setStartDate(start);
            terms.setEndDate(end);
        });
        return draft.dayShort();
    };
    const auto found = short_(day(2024, 3, 1), day(2024, 8, 31));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->periods, 5U);
    EXPECT_EQ(found->days, 30U);
    EXPECT_EQ(found->next, day(2024, 9, 1));
    EXPECT_FALSE(short_(day(2024, 3, 1), day(2024, 9, 1)));
    EXPECT_FALSE(short_(day(2024, 3, 1), day(2024, 8, 30)));
    EXPECT_FALSE(short_(day(2024, 3, 1), day(2024, 3, 1)));
    const auto oneDay = short_(day(2024, 3, 1), day(2024, 3, 31));
    ASSERT_TRUE(oneDay);
    EXPECT_EQ(oneDay->periods, 0U);
    // Over the day on which clocks are set back.
    const auto autumn = short_(day(2024, 10, 15), day(2024, 11, 14));
    ASSERT_TRUE(autumn);
    EXPECT_EQ(autumn->days, 30U);
}

TEST_F(TenureDraftTest, ANewLettingIsBilledAsTheBookSays) {
    EXPECT_TRUE(TenureDraft(*session_, nullptr).terms()->advancePeriod());
    session_->perform("Change", [&] {
        TKState::updateStateWithNameValueInManagedObjectContext(
            platform::Ref<platform::String>(TKBillingModeStateName), std::int64_t{1}, session_->context());
    });
    EXPECT_FALSE(TenureDraft(*session_, nullptr).terms()->advancePeriod());
}

} // namespace

} // namespace estatebook::desktop::test
