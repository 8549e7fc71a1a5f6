// SPDX-License-Identifier: MIT

// A program that is killed amid edits, again and again: what is older than ten seconds by its clock is in the book, or beside it while
// it cannot be saved; each step is there as a whole or not at all; and the book is sound.

#include "desktop/program/DesktopTestCase.hpp"
#include "desktop/program/OtherProgram.hpp"
#include "support/Effort.hpp"

#include "estatebook/book/StoredBook.hpp"

#include <charconv>
#include <random>

namespace estatebook::desktop::test {

namespace {

/// With what sums of seconds may differ by.
constexpr double MostLost = BookSession::SecondsUnsaved + 0.001;

class KilledEditorTest : public DesktopTestCase {
protected:
    /// Edits the book until it is killed, with what time passes between as it comes.
    void editAndKill(const std::string& book, bool isStuck) {
        Editor editor(book);
        if (isStuck) {
            ASSERT_EQ(editor.tell("break"), "edited");
        }
        times_.clear();
        now_ = acknowledged_ = 0;
        // A busy one is never at rest for as long as it takes to be saved.
        longestRest_ = random_() % 2 == 0 ? BookSession::SecondsOfRest - 0.1 : 2 * BookSession::SecondsOfRest;
        for (auto steps = 5 + random_() % 60; steps > 0; --steps) {
            const std::string step = nextStep();
            ASSERT_NE(editor.tell(step), "") << step;
            acknowledged_ = now_;
        }
        editor.tellOnly(nextStep());
        for (auto idle = random_() % 300'000; idle > 0; --idle) static_cast<void>(random_());
        editor.kill();
    }
    /// An edit, or some time between two of them.
    std::string nextStep() {
        if (times_.empty() || times_.back() < now_ || random_() % 2 == 0) {
            times_.push_back(now_);
            return "rename Edit " + std::to_string(times_.size());
        }
        const double seconds = longestRest_ * static_cast<double>(1 + random_() % 10) / 10;
        now_ += seconds;
        return "pass " + std::to_string(seconds);
    }
    /// The number of the edit that the book holds; 0 for none.
    [[nodiscard]] static std::size_t editIn(const BookSession& session) {
        const std::string property = session.properties().front()->name()->string();
        const std::string tenant = session.tenants().front()->name()->string();
        std::size_t number = 0;
        if (!property.starts_with("Edit ")) return 0;
        EXPECT_EQ(property, tenant) << "half of a step";
        std::from_chars(property.data() + 5, property.data() + property.size(), number);
        return number;
    }
    /// How many edits are older than what may be lost, by the time that it has told last.
    [[nodiscard]] std::size_t editsToBeThere() const {
        std::size_t count = 0;
        while (count < times_.size() && times_[count] <= acknowledged_ - MostLost) ++count;
        return count;
    }
    static void expectSound(const std::string& book) {
        const auto found = StoredBook::openForReading(book).store->check();
        ASSERT_TRUE(found);
        EXPECT_THAT(*found, testing::IsEmpty());
    }

    const std::uint64_t seed_ = estatebook::test::anySeed();
    std::mt19937_64 random_{seed_};
    platform::RunLoop loop_;
    /// When each edit was made, by the editor's clock.
    std::vector<double> times_;
    double now_ = 0;
    double acknowledged_ = 0;
    double longestRest_ = 0;
};

TEST_F(KilledEditorTest, TenSecondsOfEditsAreLostAtMost) {
    for (auto kills = estatebook::test::effort("ESTATEBOOK_KILLS", 15, 4); kills > 0; --kills) {
        SCOPED_TRACE("seed " + std::to_string(seed_) + ", kills to go " + std::to_string(kills));
        const auto book = makeExample(std::to_string(kills) + ".estatebook");
        editAndKill(book, false);
        if (HasFatalFailure()) return;
        expectSound(book);
        const auto session = BookSession::open(book, loop_);
        EXPECT_FALSE(session->putAsideOn());
        EXPECT_GE(editIn(*session), editsToBeThere());
        EXPECT_LE(editIn(*session), times_.size());
    }
}

TEST_F(KilledEditorTest, TenSecondsAreLostAtMostOfEditsThatCannotBeSaved) {
    for (auto kills = estatebook::test::effort("ESTATEBOOK_KILLS", 15, 4); kills > 0; --kills) {
        SCOPED_TRACE("seed " + std::to_string(seed_) + ", kills to go " + std::to_string(kills));
        const auto book = makeExample(std::to_string(kills) + ".estatebook");
        editAndKill(book, true);
        if (HasFatalFailure()) return;
        expectSound(book);
        const auto session = BookSession::open(book, loop_);
        EXPECT_EQ(editIn(*session), 0U) << "the book is as it was";
        const std::size_t toBeThere = editsToBeThere();
        if (toBeThere > 0) {
            ASSERT_TRUE(session->putAsideOn());
        }
        if (!session->putAsideOn()) continue;
        session->takePutAside();
        EXPECT_GE(editIn(*session), toBeThere);
        EXPECT_LE(editIn(*session), times_.size());
        EXPECT_TRUE(session->save()) << session->trouble();
        expectSound(book);
    }
}

} // namespace

} // namespace estatebook::desktop::test
