// SPDX-License-Identifier: MIT

// Random registrations, removals, deaths and changes against a plain list of who is registered: everybody is told who is on
// the list, in its order. ESTATEBOOK_SEED=n runs one more script with that seed.

#include "support/ObservedPerson.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using test::Person;

struct Told {
    std::size_t who;
    const void* context;
    friend bool operator==(const Told&, const Told&) = default;
};

std::ostream& operator<<(std::ostream& stream, const Told& told) {
    return stream << told.who << " with " << told.context;
}

class Listener final : public ObservableObject {
public:
    Listener(std::size_t number, std::vector<Told>& told) : number_(number), told_(told) {}
    void observeValueForKeyPathOfObjectChangeContext(std::string_view, ObservableObject&,
                                                     const KeyValueChange&, const void* context) override {
        told_.push_back({number_, context});
    }

private:
    ~Listener() override = default;
    std::size_t number_;
    std::vector<Told>& told_;
};

class Script {
public:
    explicit Script(std::uint64_t seed) : random_(seed) {}

    void run() {
        const std::size_t most = 1 + below(120);
        for (int step = 0; step < 1500 && !testing::Test::HasFatalFailure(); ++step) {
            const std::size_t choice = below(20);
            if (choice < 7 && entries_.size() < most)
                add();
            else if (choice < 9 && entries_.size() < most)
                addFunction();
            else if (choice < 13 && !entries_.empty())
                remove();
            else if (choice == 13)
                endToken();
            else if (choice == 14 && !listeners_.empty())
                letDie();
            else if (choice == 15 && !entries_.empty())
                clear();
            else
                change();
        }
    }

private:
    struct Entry {
        std::size_t who;
        const void* context;
        bool isOnDependent;
        std::size_t token; // 0: none
    };

    std::size_t below(std::size_t limit) { return random_() % limit; }
    const void* context() { return contexts_ + below(3); }
    static const char* path(bool isOnDependent) { return isOnDependent ? "balance" : "amount"; }

    void add() {
        if (listeners_.empty() || below(4) == 0) {
            listeners_.push_back(makeRef<Listener>(++made_, told_));
            numbers_.push_back(made_);
        }
        const std::size_t which = below(listeners_.size());
        const Entry entry{numbers_[which], context(), below(3) == 0, 0};
        person_->addObserverForKeyPathOptionsContext(
            *listeners_[which], path(entry.isOnDependent),
            below(4) == 0 ? ObservingOld | ObservingNew : ObservingNothing, entry.context);
        entries_.push_back(entry);
    }

    void addFunction() {
        const std::size_t number = ++made_;
        const Entry entry{number, nullptr, below(3) == 0, tokens_.size() + 1};
        tokens_.push_back(person_->observe(path(entry.isOnDependent), [this, number] {
            told_.push_back({number, nullptr});
        }));
        entries_.push_back(entry);
    }

    /// The latest that matches goes; with none, removing raises.
    void remove() {
        if (listeners_.empty()) return;
        const std::size_t which = below(listeners_.size());
        const bool isOnDependent = below(3) == 0;
        const void* wanted = below(2) == 0 ? context() : nullptr;
        const auto found = std::find_if(entries_.rbegin(), entries_.rend(), [&](const Entry& each) {
            return each.who == numbers_[which] && each.isOnDependent == isOnDependent &&
                   (!wanted || each.context == wanted);
        });
        const auto removeIt = [&] {
            if (wanted)
                person_->removeObserverForKeyPathContext(*listeners_[which], path(isOnDependent), wanted);
            else
                person_->removeObserverForKeyPath(*listeners_[which], path(isOnDependent));
        };
        if (found == entries_.rend()) {
            ASSERT_THROW(removeIt(), RangeException);
        } else {
            removeIt();
            entries_.erase(std::next(found).base());
        }
    }

    void endToken() {
        if (tokens_.empty()) return;
        const std::size_t which = below(tokens_.size());
        tokens_[which].end();
        std::erase_if(entries_, [&](const Entry& each) { return each.token == which + 1; });
    }

    void letDie() {
        const auto which = static_cast<std::ptrdiff_t>(below(listeners_.size()));
        const std::size_t number = numbers_[static_cast<std::size_t>(which)];
        listeners_.erase(listeners_.begin() + which);
        numbers_.erase(numbers_.begin() + which);
        std::erase_if(entries_, [&](const Entry& each) { return each.who == number; });
    }

    /// Takes every registration of a listener away.
    void clear() {
        if (listeners_.empty()) return;
        const std::size_t which = below(listeners_.size());
        for (const Entry& each : entries_)
            if (each.who == numbers_[which])
                person_->removeObserverForKeyPath(*listeners_[which], path(each.isOnDependent));
        std::erase_if(entries_, [&](const Entry& each) { return each.who == numbers_[which]; });
    }

    void change() {
        told_.clear();
        person_->setAmount(Decimal(below(100)));
        std::vector<Told> expected;
        for (const bool isOnDependent : {false, true})
            for (const Entry& each : entries_)
                if (each.isOnDependent == isOnDependent) expected.push_back({each.who, each.context});
        ASSERT_EQ(told_, expected);
    }

    std::mt19937_64 random_;
    const char contexts_[3] = {};
    Ref<Person> person_ = makeRef<Person>();
    std::vector<Ref<Listener>> listeners_;
    std::vector<std::size_t> numbers_;
    std::vector<ObservationToken> tokens_;
    std::vector<Entry> entries_;
    std::vector<Told> told_;
    std::size_t made_ = 0;
};

void runScript(std::uint64_t seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Script(seed).run();
}

TEST(ObserverTwinTest, ThoseAreToldWhoAreRegisteredInTheirOrder) {
    std::cout << "seeds 1 to 300\n";
    for (std::uint64_t seed = 1; seed <= 300 && !HasFatalFailure(); ++seed) runScript(seed);
    if (const char* seed = std::getenv("ESTATEBOOK_SEED")) runScript(std::strtoull(seed, nullptr, 10));
}

} // namespace
} // namespace estatebook::platform
