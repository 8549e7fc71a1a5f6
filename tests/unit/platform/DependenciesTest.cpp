// SPDX-License-Identifier: MIT
#include "platform/observation/Dependencies.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>

namespace estatebook::platform {
namespace {

constexpr Key A{1}, B{2}, C{3}, D{4}, E{5}, Unnamed{6};

constexpr bool are(std::span<const Key> found, std::initializer_list<Key> expected) {
    return std::ranges::equal(found, expected);
}

// A -> B -> C -> D
constexpr std::array chain{DependencyRow{D, {C}}, DependencyRow{C, {B}}, DependencyRow{B, {A}}};
constexpr auto closureOfChain = closureOf(chain);
static_assert(are(closureOfChain.dependentsOf(A), {B, C, D}), "transitive, nearest first");
static_assert(are(closureOfChain.dependentsOf(B), {C, D}));
static_assert(are(closureOfChain.dependentsOf(C), {D}));
static_assert(closureOfChain.dependentsOf(D).empty(), "the end of the chain");
static_assert(closureOfChain.dependentsOf(Unnamed).empty());
static_assert(closureOfChain.dependentsOf(Key{500}).empty(), "a key of an application");

// A -> B, C -> D -> E
constexpr std::array diamond{DependencyRow{B, {A}}, DependencyRow{C, {A}}, DependencyRow{D, {B, C}},
                             DependencyRow{E, {D, A}}};
constexpr auto closureOfDiamond = closureOf(diamond);
static_assert(are(closureOfDiamond.dependentsOf(A), {B, C, E, D}),
              "each once, in the order in which they are reached");
static_assert(are(closureOfDiamond.dependentsOf(B), {D, E}));

// A key may be described in several rows, and several keys may lead to one.
constexpr std::array severalRows{DependencyRow{C, {A}}, DependencyRow{C, {B}}};
static_assert(are(closureOf(severalRows).dependentsOf(A), {C}));
static_assert(are(closureOf(severalRows).dependentsOf(B), {C}));

// Rows of a class behind those it inherits.
constexpr std::array inherited{DependencyRow{B, {A}}};
constexpr std::array own{DependencyRow{C, {B}}, DependencyRow{B, {D}}};
constexpr auto both = withInherited(inherited, own);
static_assert(both.size() == 3 && both[0].dependent == B && both[1].dependent == C);
static_assert(are(closureOf(both).dependentsOf(A), {B, C}));
static_assert(are(closureOf(both).dependentsOf(D), {B, C}));

static_assert(closureOf(std::array<DependencyRow, 0>{}).dependentsOf(A).empty(), "no rows");

TEST(DependenciesTest, ARowKnowsWhatItIsComputedFrom) {
    constexpr DependencyRow row{D, {B, C}};
    EXPECT_TRUE(row.isAffectedBy(B));
    EXPECT_TRUE(row.isAffectedBy(C));
    EXPECT_FALSE(row.isAffectedBy(D));
    EXPECT_FALSE(row.isAffectedBy(Key())) << "unused places count for nothing";
    EXPECT_EQ(row.affecting().size(), 2u);
}

TEST(DependenciesTest, ARowWithoutRoomForAllItsKeysIsRefused) {
    EXPECT_ANY_THROW((DependencyRow{A, {B, B, B, B, B, B, B}}));
}

TEST(DependenciesTest, ACycleIsFoundOutWhileTheClosureIsMade) {
    // For rows that the compiler sees, the same exception stops the compilation.
    constexpr std::array cycle{DependencyRow{B, {A}}, DependencyRow{A, {B}}};
    std::array<Key, 2> found{};
    EXPECT_ANY_THROW(detail::followDependencies(cycle.data(), cycle.size(), A, found));
}

} // namespace
} // namespace estatebook::platform
