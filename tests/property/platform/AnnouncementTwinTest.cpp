// SPDX-License-Identifier: MIT

// Random graphs of dependent keys and random observers against a twin that follows the declared rows by brute
// force: who is told, once each, and every will before its did.

#include "platform/observation/ObservableObject.hpp"
#include "platform/values/Exception.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

constexpr int KeyCount = 12;

const std::vector<Key>& graphKeys() {
    static const std::vector<Key> keys = [] {
        std::vector<Key> all;
        for (int number = 0; number < KeyCount; ++number)
            all.push_back(Key::named("announcementTwin" + std::to_string(number)));
        return all;
    }();
    return keys;
}

/// An object of a class that is made for one round; it writes down the pair as it passes.
class Node final : public ObservableObject {
public:
    explicit Node(const ClassDescription& description) : description_(description) {}
    [[nodiscard]] const ClassDescription& classDescription() const noexcept override { return description_; }

    void willChangeValueForKey(Key key) override {
        passed.emplace_back(key, false);
        ObservableObject::willChangeValueForKey(key);
    }
    void didChangeValueForKey(Key key) override {
        passed.emplace_back(key, true);
        ObservableObject::didChangeValueForKey(key);
    }
    void set(Key key) {
        change(key, [] {});
    }
    std::vector<std::pair<Key, bool>> passed;

private:
    ~Node() override = default;
    const ClassDescription& description_;
};

class Listener final : public ObservableObject {
public:
    Listener() = default;
    std::vector<std::string> told;
    void observeValueForKeyPathOfObjectChangeContext(std::string_view path, ObservableObject&,
                                                     const KeyValueChange&, const void*) override {
        told.emplace_back(path);
    }

private:
    ~Listener() override = default;
};

/// What the rows say, followed until nothing is new.
class Rows {
public:
    void add(int dependent, int affecting) { rows_.emplace_back(dependent, affecting); }
    [[nodiscard]] std::set<int> closure(int start) const {
        std::set<int> found;
        for (bool grows = true; grows;) {
            grows = false;
            for (const auto& [dependent, affecting] : rows_)
                if ((affecting == start || found.contains(affecting)) && dependent != start)
                    grows = found.insert(dependent).second || grows;
        }
        return found;
    }

private:
    std::vector<std::pair<int, int>> rows_;
};

class AnnouncementTwinTest : public testing::Test {
protected:
    AnnouncementTwinTest() {
        const std::uint64_t seed = std::random_device{}();
        std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
        random_.seed(seed);
    }
    int below(int bound) { return std::uniform_int_distribution(0, bound - 1)(random_); }

    std::mt19937_64 random_;
};

TEST_F(AnnouncementTwinTest, ARandomGraphTellsJustThoseWhomTheRowsReachAndEachOnce) {
    const auto& keys = graphKeys();
    // Descriptions live as long as the program does.
    static auto& classes = *new std::vector<std::unique_ptr<ClassDescription>>;
    for (int round = 0; round < 150; ++round) {
        const auto& description = *classes.emplace_back(std::make_unique<ClassDescription>(
            "Node", nullptr, std::span<const Property>(), std::span<const DependencyRow>(), noDependents,
            Announces::Always));
        Rows rows;
        for (int count = below(2 * KeyCount); count > 0; --count) {
            const int dependent = below(KeyCount);
            const int affecting = below(KeyCount); // cycles and rows that lead to themselves included
            rows.add(dependent, affecting);
            description.addDependency(keys[static_cast<std::size_t>(dependent)],
                                      keys[static_cast<std::size_t>(affecting)].name());
        }
        const auto node = makeRef<Node>(description);
        std::vector<Ref<Listener>> listeners;
        std::multiset<std::pair<std::size_t, int>> registered; // of which listener, for which key
        for (int step = 0; step < 30; ++step) {
            if (below(3) == 0) {
                listeners.push_back(makeRef<Listener>());
                const int key = below(KeyCount);
                for (int times = 1 + below(2); times > 0; --times) {
                    node->addObserverForKeyPathOptionsContext(
                        *listeners.back(), keys[static_cast<std::size_t>(key)].name(),
                        below(2) ? ObservingNew | ObservingOld : ObservingNothing, nullptr);
                    registered.emplace(listeners.size() - 1, key);
                }
            } else if (below(4) == 0 && !registered.empty()) {
                const auto gone = std::next(registered.begin(), below(static_cast<int>(registered.size())));
                node->removeObserverForKeyPath(*listeners[gone->first],
                                               keys[static_cast<std::size_t>(gone->second)].name());
                registered.erase(gone);
            }
            const int changed = below(KeyCount);
            std::set<int> reached = rows.closure(changed);
            reached.insert(changed);
            node->passed.clear();
            for (const auto& listener : listeners) listener->told.clear();
            node->set(keys[static_cast<std::size_t>(changed)]);

            for (std::size_t index = 0; index < listeners.size(); ++index) {
                std::multiset<std::string> expected;
                for (const auto& [listener, key] : registered)
                    if (listener == index && reached.contains(key))
                        expected.insert(std::string(keys[static_cast<std::size_t>(key)].name()));
                const auto& told = listeners[index]->told;
                ASSERT_EQ(std::multiset<std::string>(told.begin(), told.end()), expected)
                    << "round " << round;
            }
            std::vector<Key> wills;
            std::vector<Key> dids;
            for (const auto& [key, isDid] : node->passed) {
                (isDid ? dids : wills).push_back(key);
                ASSERT_FALSE(!isDid && !dids.empty()) << "a will after a did";
            }
            ASSERT_EQ(wills, dids);
            ASSERT_EQ(wills.size(), reached.size());
            ASSERT_EQ(wills.front(), keys[static_cast<std::size_t>(changed)]);
            for (const int key : reached)
                ASSERT_EQ(std::ranges::count(wills, keys[static_cast<std::size_t>(key)]), 1)
                    << "round " << round;
        }
    }
}

} // namespace
} // namespace estatebook::platform
