// SPDX-License-Identifier: MIT
#include "billing/TKPeriod.hpp"

#include "billing/RoundingExtensions.hpp"
#include "platform/system/HostOperations.hpp"
#include "platform/text/Locale.hpp"
#include "platform/values/Exception.hpp"
#include "support/Dates.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <thread>
#include <type_traits>
#include <vector>

namespace estatebook {
namespace {

using platform::Calendar;
using platform::Date;
using platform::Decimal;
using platform::DivideByZeroException;
using platform::Locale;
using platform::Number;
using platform::Ref;
using platform::TimeZone;
using testkit::calendarOf;
using testkit::wallDate;

static_assert(!std::is_copy_constructible_v<TKPeriod>);

class TKPeriodTest : public ::testing::Test {
protected:
    void SetUp() override { TimeZone::setDefaultTimeZone(TimeZone::named("Europe/Berlin")); }
    void TearDown() override {
        TimeZone::setDefaultTimeZone(nullptr);
        Locale::setCurrent(locale_);
    }
    Ref<TKPeriod> period(Date start, Date end) { return TKPeriod::periodWithStartDateEndDate(start, end); }
    Date at(int year, int month, int day, int hour = 0) { return wallDate(berlin_, year, month, day, hour); }

private:
    Calendar berlin_ = calendarOf("Europe/Berlin");
    Locale locale_ = Locale::current();
};

TEST_F(TKPeriodTest, TheBillingDateOfANewPeriodIsTheVerySameAsItsStartDate) {
    const Date start{at(2024, 3, 1).secondsSinceReferenceDate + 0.1};
    const Ref<TKPeriod> made = period(start, at(2024, 4, 1));
    EXPECT_EQ(made->startDate(), start);
    EXPECT_EQ(made->endDate(), at(2024, 4, 1));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(made->billingDate()->secondsSinceReferenceDate),
              std::bit_cast<std::uint64_t>(start.secondsSinceReferenceDate));
}

TEST_F(TKPeriodTest, MarchHas31DaysAlthoughAnHourIsMissing) {
    EXPECT_EQ(period(at(2024, 3, 1), at(2024, 4, 1))->days(), 31u);
}

TEST_F(TKPeriodTest, APeriodThatEndsWhereItStartsHasNoDays) {
    EXPECT_EQ(period(at(2024, 3, 1), at(2024, 3, 1))->days(), 0u);
}

TEST_F(TKPeriodTest, DaysAreNotMovedToMidnightFirst) {
    EXPECT_EQ(period(at(2024, 3, 1, 23), at(2024, 3, 3, 1))->days(), 2u);
}

TEST_F(TKPeriodTest, AReversedPeriodHasWhateverTheHostCounts) {
    EXPECT_EQ(period(at(2024, 4, 1), at(2024, 3, 1))->days(), 0u);
    auto& host = platform::hostOperations().daysUntil;
    const auto saved = host;
    host = [](Date, Date) { return std::uint64_t{42}; };
    EXPECT_EQ(period(at(2024, 4, 1), at(2024, 3, 1))->days(), 42u);
    host = saved;
}

TEST_F(TKPeriodTest, AbsentDatesCountNoDays) {
    EXPECT_EQ(TKPeriod::periodWithStartDateEndDate(std::nullopt, at(2024, 3, 1))->days(), 0u);
    EXPECT_EQ(TKPeriod::periodWithStartDateEndDate(at(2024, 3, 1), std::nullopt)->days(), 0u);
    EXPECT_FALSE(TKPeriod::periodWithStartDateEndDate(std::nullopt, at(2024, 3, 1))->billingDate());
}

TEST_F(TKPeriodTest, AnyDateMayBeSetToAnything) {
    const Ref<TKPeriod> made = period(at(2024, 3, 1), at(2024, 4, 1));
    made->setEndDate(at(2024, 2, 1));
    made->setStartDate(std::nullopt);
    made->setBillingDate(at(1999, 1, 1));
    EXPECT_FALSE(made->startDate());
    EXPECT_EQ(made->endDate(), at(2024, 2, 1));
    EXPECT_EQ(made->billingDate(), at(1999, 1, 1));
}

TEST_F(TKPeriodTest, HalfOfThirtyDaysIsOneHalf) {
    EXPECT_EQ(period(at(2024, 3, 1), at(2024, 3, 16))->fractionOfDuration(30), Decimal::parse("0.5"));
    EXPECT_EQ(period(at(2024, 3, 1), at(2024, 3, 16))->fractionOfDuration(Decimal(30)),
              Decimal::parse("0.5"));
    EXPECT_EQ(period(at(2024, 3, 1), at(2024, 3, 16))->fractionOfDuration(Number(7.5)), Decimal(2));
}

TEST_F(TKPeriodTest, FifteenDaysOfThirtyOneAreAnUnroundedQuotient) {
    EXPECT_EQ(period(at(2024, 3, 1), at(2024, 3, 16))->fractionOfDuration(31).toString(),
              "0.48387096774193548387096774193548387097");
}

TEST_F(TKPeriodTest, AFractionOfNothingOrOfAnAbsentDurationDividesByZero) {
    const Ref<TKPeriod> made = period(at(2024, 3, 1), at(2024, 3, 16));
    EXPECT_THROW((void)made->fractionOfDuration(0), DivideByZeroException);
    EXPECT_THROW((void)made->fractionOfDuration(std::nullopt), DivideByZeroException);
    const Ref<TKPeriod> empty = period(at(2024, 3, 1), at(2024, 3, 1));
    EXPECT_THROW((void)empty->fractionOfDuration(0), DivideByZeroException);
    EXPECT_EQ(empty->fractionOfDuration(31), Decimal::zero());
}

TEST_F(TKPeriodTest, TheDescriptionHasBothDatesAndTheNumberOfDays) {
    Locale::setCurrent(Locale::named("en_US"));
    EXPECT_EQ(period(at(2024, 3, 1), at(2024, 4, 1))->description(),
              "<Period Mar 1, 2024 -> Apr 1, 2024 (31)>");
    Locale::setCurrent(Locale::named("de_DE"));
    EXPECT_EQ(period(at(2024, 3, 1), at(2024, 4, 1))->description(),
              "<Period 01.03.2024 -> 01.04.2024 (31)>");
}

TEST_F(TKPeriodTest, AnAbsentDateIsDescribedAsNull) {
    Locale::setCurrent(Locale::named("en_US"));
    EXPECT_EQ(TKPeriod::periodWithStartDateEndDate(std::nullopt, at(2024, 4, 1))->description(),
              "<Period (null) -> Apr 1, 2024 (0)>");
    EXPECT_EQ(platform::makeRef<TKPeriod>()->description(), "<Period (null) -> (null) (0)>");
}

class SeasonPeriod : public TKPeriod {
public:
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "SeasonPeriod"; }
    std::vector<int> notes{1, 2, 3};
};

TEST_F(TKPeriodTest, ASubclassThatIsAskedMakesOneOfItsOwn) {
    const Ref<SeasonPeriod> season =
        TKPeriod::periodWithStartDateEndDate<SeasonPeriod>(at(2024, 3, 1), at(2024, 6, 1));
    EXPECT_EQ(season->runtimeClassName(), "SeasonPeriod");
    EXPECT_EQ(season->billingDate(), at(2024, 3, 1));
    EXPECT_EQ(season->days(), 92u);
    const Ref<TKPeriod> asPeriod = season;
    EXPECT_EQ(asPeriod->referenceCount(), 2u);
}

TEST_F(TKPeriodTest, APeriodOutlivesTheRowItWasMadeIn) {
    TKPeriodRow::Builder builder(2);
    builder.emplace(at(2024, 3, 1), at(2024, 4, 1), at(2024, 3, 1));
    builder.emplace(at(2024, 4, 1), at(2024, 5, 1), at(2024, 4, 1));
    Ref<TKPeriodRow> row = std::move(builder).finish();
    const Ref<TKPeriod> april(&(*row)[1]);
    row = nullptr;
    EXPECT_EQ(april->days(), 30u);
    EXPECT_EQ(april->referenceCount(), 1u);
}

TEST_F(TKPeriodTest, ThreadsMayShareARow) {
    TKPeriodRow::Builder builder(1);
    builder.emplace(at(2024, 3, 1), at(2024, 4, 1), at(2024, 3, 1));
    const Ref<TKPeriodRow> row = std::move(builder).finish();
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([row] {
                for (int n = 0; n < 1000; ++n) {
                    const Ref<TKPeriod> held(&(*row)[0]);
                    if (held->days() != 31) std::abort();
                }
            });
        }
    }
    EXPECT_EQ((*row)[0].referenceCount(), 1u);
}

} // namespace
} // namespace estatebook
