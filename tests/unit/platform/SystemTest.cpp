// SPDX-License-Identifier: MIT

// The clock, the log, bundles and the version of the library.

#include "platform/system/Bundle.hpp"
#include "platform/system/Clock.hpp"
#include "platform/system/Log.hpp"
#include "store/EstateBook_ModelVersion.hpp"
#include "store/ModelClasses.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

TEST(ClockTest, AnotherClockStandsInUntilItIsTakenAway) {
    double seconds = 800000000;
    Clock::setNow([&] { return Date{seconds}; });
    EXPECT_EQ(Clock::now(), Date{800000000});
    seconds = 5;
    EXPECT_EQ(Clock::now(), Date{5}) << "it is asked each time";
    Clock::setNow({});
    EXPECT_GT(Clock::now(), Date{700000000}) << "the system's again";
}

TEST(ClockTest, TheSystemsClockDoesNotStandStillAtWholeSeconds) {
    bool sawFraction = false;
    for (int tries = 0; tries < 1000 && !sawFraction; ++tries) {
        const double now = Clock::now().secondsSinceReferenceDate;
        sawFraction = now != static_cast<double>(static_cast<std::int64_t>(now));
    }
    EXPECT_TRUE(sawFraction);
}

TEST(ClockTest, UptimeNeverGoesBackAndMayBeReplacedAsWell) {
    const double before = Clock::uptime();
    EXPECT_GT(before, 0);
    EXPECT_GE(Clock::uptime(), before);
    Clock::setUptime([] { return 5.0; });
    EXPECT_EQ(Clock::uptime(), 5);
    Clock::setUptime({});
    EXPECT_GE(Clock::uptime(), before);
}

TEST(LogTest, EachEntryIsOneLine) {
    std::vector<std::string> lines;
    Log::setSink([&](std::string_view line) { lines.emplace_back(line); });
    Log::write("Daily Update: today");
    Log::write("two\nlines\r\nin one");
    Log::write("");
    Log::write("100%s %n");
    Log::setSink({});
    EXPECT_THAT(lines, testing::ElementsAre("Daily Update: today", "two lines  in one", "", "100%s %n"));
}

TEST(BundleTest, TheBundleIsTheOneThatHoldsTheCode) {
    const Bundle ofLibrary = Bundle::containing(modelClasses().data());
    EXPECT_TRUE(std::filesystem::is_directory(ofLibrary.folder()));
    const auto path = ofLibrary.pathForResourceOfType("EstateBook", "momd");
    ASSERT_TRUE(path);
    EXPECT_TRUE(std::filesystem::is_regular_file(*path));
    EXPECT_EQ(std::filesystem::path(*path).filename(), "EstateBook.momd");

    static const char inThisProgram = 0;
    const auto program = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    EXPECT_EQ(Bundle::containing(&inThisProgram).folder(), program.string());
    EXPECT_EQ(Bundle::containing(nullptr).folder(), program.string())
        << "what belongs to nobody is the program's";
}

TEST(BundleTest, AResourceThatIsNotThereHasNoPath) {
    const Bundle bundle = Bundle::containing(modelClasses().data());
    EXPECT_FALSE(bundle.pathForResourceOfType("EstateBook", "nib"));
    EXPECT_FALSE(bundle.pathForResourceOfType("Castle", "momd"));
    EXPECT_FALSE(bundle.pathForResourceOfType("", "")) << "the folder itself is no resource";
}

TEST(VersionTest, TheTextIsExactToTheByte) {
    const char expected[] = "@(#)PROGRAM:EstateBook_Model  PROJECT:EstateBook-1\n";
    EXPECT_EQ(std::memcmp(EstateBook_ModelVersionString, expected, sizeof expected), 0)
        << "with its zero byte";
    EXPECT_EQ(EstateBook_ModelVersionNumber, 1.0);
}

TEST(VersionTest, BothSymbolsAreFoundByTheirPlainNames) {
    Dl_info info{};
    ASSERT_NE(dladdr(modelClasses().data(), &info), 0);
    void* const library = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    if (!library) GTEST_SKIP() << "the library is part of this program";
    // The program may hold copies of its own, so that the places differ.
    const void* const text = dlsym(library, "EstateBook_ModelVersionString");
    ASSERT_TRUE(text);
    EXPECT_STREQ(static_cast<const char*>(text),
                 reinterpret_cast<const char*>(EstateBook_ModelVersionString));
    const void* const number = dlsym(library, "EstateBook_ModelVersionNumber");
    ASSERT_TRUE(number);
    EXPECT_EQ(*static_cast<const double*>(number), 1.0);
    dlclose(library);
}

} // namespace
} // namespace estatebook::platform
