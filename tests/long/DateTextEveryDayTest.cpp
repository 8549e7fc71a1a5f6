// SPDX-License-Identifier: MIT

// Every day of three centuries in every locale, ours against ICU. Takes minutes.

#include "platform/text/DateFormatter.hpp"

#include <gtest/gtest.h>
#include <unicode/datefmt.h>

#include <memory>
#include <string>

namespace estatebook::platform {
namespace {

class DateTextEveryDayTest : public testing::TestWithParam<std::string> {};

TEST_P(DateTextEveryDayTest, IsWrittenAsIcuWritesIt) {
    const std::unique_ptr<icu::DateFormat> peer(
        icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, icu::Locale(GetParam().c_str())));
    peer->adoptTimeZone(icu::TimeZone::createTimeZone("UTC"));
    const auto formatter = DateFormatter::mediumFor(Locale::named(GetParam()), TimeZone::utc());
    icu::UnicodeString formatted;
    std::string expected;
    char text[DateFormatter::RoomNeeded];
    const CivilDay last = CivilDay::fromYearMonthDay(2200, 12, 31);
    for (CivilDay day = CivilDay::fromYearMonthDay(1900, 1, 1); day <= last; day = day + 1) {
        formatted.remove();
        expected.clear();
        peer->format(static_cast<double>(day.number) * 86400e3, formatted).toUTF8String(expected);
        ASSERT_EQ(std::string_view(text, formatter->writeDay(text, day)), expected) << GetParam();
    }
}

INSTANTIATE_TEST_SUITE_P(Locales, DateTextEveryDayTest, testing::ValuesIn([] {
                             const auto identifiers = Locale::availableIdentifiers();
                             return std::vector<std::string>(identifiers.begin(), identifiers.end());
                         }()),
                         [](const auto& row) { return row.param; });

} // namespace
} // namespace estatebook::platform
