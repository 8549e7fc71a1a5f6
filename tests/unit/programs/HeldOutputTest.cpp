// SPDX-License-Identifier: MIT

// What is printed and held until it may be seen, in memory and beyond it.

#include "estatebook/HeldOutput.hpp"

#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <string>

namespace estatebook {
namespace {

TEST(HeldOutputTest, NothingIsSeenBeforeItIsReleased) {
    HeldOutput held;
    std::ostream out(&held);
    std::ostringstream seen;
    out << "Rent" << ' ' << 1050 << '\n';
    EXPECT_EQ(seen.str(), "");
    held.release(seen);
    EXPECT_EQ(seen.str(), "Rent 1050\n");
    held.release(seen);
    EXPECT_EQ(seen.str(), "Rent 1050\n") << "it is held no more";
}

TEST(HeldOutputTest, WhatIsTooMuchForMemoryComesBackInItsOrder) {
    HeldOutput held;
    std::ostream out(&held);
    std::string written;
    for (int line = 0; written.size() < std::size_t{11} << 20; ++line) {
        const std::string text =
            std::to_string(line) + (line % 1000 == 0 ? std::string(100'000, 'x') : " lines\n");
        out << text;
        written += text;
    }
    std::ostringstream seen;
    held.release(seen);
    EXPECT_TRUE(seen.str() == written);
    out << "more";
    held.release(seen);
    EXPECT_TRUE(seen.str() == written + "more");
}

} // namespace
} // namespace estatebook
