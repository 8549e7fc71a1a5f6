// SPDX-License-Identifier: MIT
#pragma once

/// A day in London at which the clock stands, a folder for books, and a loop that turns when it is told to.

#include "support/HeldClock.hpp"
#include "support/TemporaryFolder.hpp"

#include "estatebook-desktop/session/BookSession.hpp"
#include "platform/calendar/Calendar.hpp"
#include "store/TKCurrentDateController.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace estatebook::desktop::test {

inline platform::Calendar london() {
    return platform::Calendar(platform::TimeZone::named("Europe/London"));
}

inline platform::Date day(int year, int month, int day) {
    return london().startOfCivilDay(platform::CivilDay::fromYearMonthDay(year, month, day));
}

class DesktopTestCase : public testing::Test {
protected:
    DesktopTestCase() {
        platform::TimeZone::setDefaultTimeZone(platform::TimeZone::named("Europe/London"));
        TKCurrentDateController::sharedInstance().dailyUpdate();
    }
    ~DesktopTestCase() override { platform::TimeZone::setDefaultTimeZone(nullptr); }

    [[nodiscard]] std::string path(std::string_view name) const { return (folder_ / name).string(); }

    /// A book file of the example.
    [[nodiscard]] std::string makeExample(std::string_view name = "harbour.estatebook") const {
        std::ifstream file(ESTATEBOOK_EXAMPLES "/harbour-street.json");
        std::ostringstream text;
        text << file.rdbuf();
        BookSession::makeOfDocument(path(name), text.str(), "harbour-street.json");
        return path(name);
    }
    [[nodiscard]] std::string makeEmpty(std::string_view name = "new.estatebook") const {
        BookSession::makeEmpty(path(name), "GBP");
        return path(name);
    }

    /// Time passes, and what is due happens.
    void pass(double seconds, platform::RunLoop& loop) {
        clock_.pass(seconds);
        loop.turn();
    }

    /// The latest letting of which the text is a part of the name.
    static platform::Ref<TKTenure> tenureOf(const BookSession& session, std::string_view text) {
        platform::Ref<TKTenure> found;
        const auto tenures = session.tenures();
        for (const auto& tenure : tenures)
            if (tenure->name()->view().find(text) != std::string_view::npos) found = tenure;
        return found;
    }

    testkit::TemporaryFolder folder_;
    testkit::HeldClock clock_{platform::Date{day(2026, 6, 30).secondsSinceReferenceDate + 43200}};
};

} // namespace estatebook::desktop::test
