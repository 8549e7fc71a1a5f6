// SPDX-License-Identifier: MIT
#include "desktop/program/DesktopTestCase.hpp"

#include "estatebook/Failure.hpp"

#include <algorithm>
#include <filesystem>

namespace estatebook::desktop::test {

namespace {

using platform::Decimal;
using platform::Number;
using platform::String;
using testing::HasSubstr;
using Condition = BookSession::Condition;

class BookSessionTest : public DesktopTestCase {
protected:
    static void rename(BookSession& session, std::string_view name) {
        const auto property = session.properties().front();
        session.perform("Change of Name", [&] { property->setName(String::make(name)); });
    }
    /// What somebody finds in the file.
    [[nodiscard]] std::string savedName(const std::string& book) {
        const auto session = BookSession::openForReading(book, loop_);
        return session->properties().front()->name()->string();
    }

    platform::RunLoop loop_;
};

TEST_F(BookSessionTest, AnEditIsSavedTwoSecondsLater) {
    const auto book = makeExample();
    const auto session = BookSession::open(book, loop_);
    rename(*session, "Quay House");
    EXPECT_EQ(session->condition(), Condition::Edited);
    pass(1.9, loop_);
    EXPECT_EQ(session->condition(), Condition::Edited);
    EXPECT_EQ(savedName(book), "12 Harbour Street");
    pass(0.2, loop_);
    EXPECT_EQ(session->condition(), Condition::Saved);
    EXPECT_EQ(savedName(book), "Quay House");
}

TEST_F(BookSessionTest, WhoGoesOnEditingIsSavedTenSecondsAfterTheFirstEdit) {
    const auto book = makeExample();
    const auto session = BookSession::open(book, loop_);
    int edits = 0;
    for (; session->condition() != Condition::Saved || edits == 0; ++edits) {
        rename(*session, "Edit " + std::to_string(edits));
        pass(1, loop_);
        ASSERT_LT(edits, 20);
    }
    EXPECT_EQ(edits, 10);
    EXPECT_EQ(savedName(book), "Edit 9");
}

TEST_F(BookSessionTest, ACrashLosesTenSecondsAtMost) {
    const auto book = makeExample();
    auto* lost = BookSession::open(book, loop_).release();
    for (int edit = 0; edit < 15; ++edit) {
        rename(*lost, "Edit " + std::to_string(edit));
        pass(1, loop_);
    }
    EXPECT_EQ(savedName(book), "Edit 9");
    delete lost; // what a crash does not do
}

TEST_F(BookSessionTest, EndingSavesAtOnce) {
    const auto book = makeExample();
    auto session = BookSession::open(book, loop_);
    rename(*session, "Quay House");
    session.reset();
    EXPECT_EQ(savedName(book), "Quay House");
}

TEST_F(BookSessionTest, AnEditIsOneStepUnderItsName) {
    const auto session = BookSession::open(makeExample(), loop_);
    EXPECT_FALSE(session->canUndo());
    const auto jones = tenureOf(*session, "M. Jones");
    const Decimal before = jones->balance();
    session->perform("Payment", [&] {
        auto* payment = jones->createTransaction();
        payment->setAmount(Decimal(400));
        payment->setWhat(String::make("Cash"));
    });
    EXPECT_EQ(session->undoName(), "Payment");
    EXPECT_EQ(jones->balance(), before + 400);
    session->undo();
    EXPECT_EQ(jones->balance(), before);
    EXPECT_FALSE(session->canUndo());
    EXPECT_EQ(session->redoName(), "Payment");
    session->redo();
    EXPECT_EQ(jones->balance(), before + 400);
}

TEST_F(BookSessionTest, WhatWasSavedCanBeUndoneAndIsSavedAnew) {
    const auto book = makeExample();
    const auto session = BookSession::open(book, loop_);
    rename(*session, "Quay House");
    ASSERT_TRUE(session->save());
    session->undo();
    EXPECT_EQ(session->properties().front()->name()->view(), "12 Harbour Street");
    ASSERT_TRUE(session->save());
    EXPECT_EQ(savedName(book), "12 Harbour Street");
    session->redo();
    ASSERT_TRUE(session->save());
    EXPECT_EQ(savedName(book), "Quay House");
}

TEST_F(BookSessionTest, WhatIsMadeAndDeletedBeforeItIsSavedIsToldOf) {
    const auto book = makeEmpty();
    const auto session = BookSession::open(book, loop_);
    platform::Ref<TKProperty> property;
    session->perform("New Property",
                     [&] { property = session->context().insertNewObject<TKProperty>("Property"); });
    int told = 0;
    session->whenChanged([&] { ++told; });
    session->perform("Deletion of Property", [&] { session->context().deleteObject(*property); });
    EXPECT_EQ(told, 1) << "whoever shows it has to take it away";
    EXPECT_EQ(session->undoName(), "Deletion of Property");
    pass(2.1, loop_);
    EXPECT_EQ(session->condition(), Condition::Saved);
    session->undo();
    ASSERT_EQ(session->properties().size(), 1U);
    pass(2.1, loop_);
    EXPECT_EQ(BookSession::openForReading(book, loop_)->properties().size(), 1U);
}

TEST_F(BookSessionTest, AnEditThatRaisesLeavesNothing) {
    const auto session = BookSession::open(makeExample(), loop_);
    const auto property = session->properties().front();
    EXPECT_THROW(session->perform("Change",
                                  [&] {
                                      property->setName(String::make("Half"));
                                      throw platform::InvalidArgumentException("no");
                                  }),
                 platform::InvalidArgumentException);
    EXPECT_EQ(property->name()->view(), "12 Harbour Street");
    EXPECT_FALSE(session->canUndo());
}

TEST_F(BookSessionTest, ALettingThatEndsBeforeItStartsKeepsTheEditsBesideTheBook) {
    const auto book = makeExample();
    const auto session = BookSession::open(book, loop_);
    const auto jones = tenureOf(*session, "M. Jones");
    rename(*session, "Quay House");
    session->perform("Change of Letting", [&] { jones->setEndDate(day(2025, 1, 1)); });
    pass(2.1, loop_);
    EXPECT_EQ(session->condition(), Condition::Stuck);
    EXPECT_THAT(session->trouble(), HasSubstr("M. Jones"));
    EXPECT_THAT(session->trouble(), HasSubstr("correct its dates"));
    EXPECT_THAT(session->trouble(), HasSubstr(book + ".edits.json"));
    EXPECT_TRUE(std::filesystem::exists(book + ".edits.json"));
    EXPECT_EQ(savedName(book), "12 Harbour Street");

    session->perform("Change of Letting", [&] { jones->setEndDate(day(2027, 1, 1)); });
    pass(2.1, loop_);
    EXPECT_EQ(session->condition(), Condition::Saved);
    EXPECT_EQ(session->trouble(), "");
    EXPECT_FALSE(std::filesystem::exists(book + ".edits.json"));
    EXPECT_EQ(savedName(book), "Quay House");
}

TEST_F(BookSessionTest, EditsThatWerePutAsideAreOfferedAndTakenUp) {
    const auto book = makeExample();
    auto session = BookSession::open(book, loop_);
    const auto counts = [](const BookSession& of) {
        return std::array{of.tenures().size(), of.properties().size(), of.tenants().size(),
                          of.context().fetchAll<TKTransaction>("Transaction").size(),
                          of.context().fetchAll<TKNote>("Note").size()};
    };
    const auto countsBefore = counts(*session);
    const Decimal balance = tenureOf(*session, "R. Green")->balance();
    rename(*session, "Quay House");
    const auto jones = tenureOf(*session, "M. Jones");
    session->perform("Change of Letting", [&] { jones->setEndDate(day(2025, 1, 1)); });
    ASSERT_FALSE(session->save());
    session.reset();

    session = BookSession::open(book, loop_);
    ASSERT_TRUE(session->putAsideOn());
    EXPECT_EQ(session->properties().front()->name()->view(), "12 Harbour Street");
    session->takePutAside();
    EXPECT_EQ(counts(*session), countsBefore);
    EXPECT_EQ(session->properties().front()->name()->view(), "Quay House");
    EXPECT_EQ(tenureOf(*session, "R. Green")->balance(), balance);
    EXPECT_TRUE(session->save()) << session->trouble();
    EXPECT_FALSE(session->putAsideOn());
    EXPECT_EQ(savedName(book), "Quay House");
}

TEST_F(BookSessionTest, EditsThatWerePutAsideCanBeDiscarded) {
    const auto book = makeExample();
    testkit::writeFile(book + ".edits.json", "{}");
    const auto session = BookSession::open(book, loop_);
    ASSERT_TRUE(session->putAsideOn());
    EXPECT_THROW(session->takePutAside(), Failure);
    EXPECT_EQ(session->properties().size(), 4U);
    session->discardPutAside();
    EXPECT_FALSE(session->putAsideOn());
}

TEST_F(BookSessionTest, TwoProgramsDoNotEditOneBook) {
    const auto book = makeExample();
    const auto first = BookSession::open(book, loop_);
    try {
        static_cast<void>(BookSession::open(book, loop_));
        FAIL() << "opened twice";
    } catch (const Refusal& refusal) {
        EXPECT_THAT(refusal.what(), HasSubstr("harbour.estatebook"));
        EXPECT_THAT(refusal.what(), HasSubstr("estatebook-desktop"));
        EXPECT_TRUE(refusal.canBeRead());
    }
    const auto second = BookSession::openForReading(book, loop_);
    EXPECT_EQ(second->condition(), Condition::ReadOnly);
    EXPECT_FALSE(second->canEdit());
    EXPECT_EQ(second->tenures().size(), first->tenures().size());
    rename(*first, "Quay House");
    EXPECT_TRUE(first->save()) << "whoever looks at a book holds nobody up";
    EXPECT_EQ(second->properties().front()->name()->view(), "12 Harbour Street");
}

TEST_F(BookSessionTest, WhatIsNoBookIsRefusedInOneSentence) {
    const auto refusalOf = [&](const std::string& book) -> std::string {
        try {
            static_cast<void>(BookSession::open(book, loop_));
        } catch (const Refusal& refusal) {
            EXPECT_FALSE(refusal.canBeRead());
            return refusal.what();
        }
        return {};
    };
    EXPECT_THAT(refusalOf(path("gone.estatebook")), HasSubstr("gone.estatebook: "));
    testkit::writeFile(path("list.txt"), "bread, milk");
    EXPECT_THAT(refusalOf(path("list.txt")), HasSubstr("this is no book file"));
    const auto book = makeExample();
    std::filesystem::resize_file(book, std::filesystem::file_size(book) / 2);
    const std::string damaged = refusalOf(book);
    EXPECT_THAT(damaged, HasSubstr("harbour.estatebook: "));
    EXPECT_EQ(std::ranges::count(damaged, '\n'), 0);
}

TEST_F(BookSessionTest, WhoeverFollowsIsToldOfWhatATenureAnnounces) {
    const auto session = BookSession::open(makeExample(), loop_);
    const auto jones = tenureOf(*session, "M. Jones");
    int told = 0;
    session->whenChanged([&] { ++told; });
    session->wake(*jones);
    EXPECT_EQ(told, 0) << "to be read is no change";
    jones->setRentalAmount(Decimal(1100));
    EXPECT_GT(told, 0);
}

TEST_F(BookSessionTest, ATenureThatIsMadeIsFollowed) {
    const auto session = BookSession::open(makeEmpty(), loop_);
    platform::Ref<TKTenure> tenure;
    session->perform("New Letting", [&] { tenure = session->context().insertNewObject<TKTenure>("Tenure"); });
    int told = 0;
    session->whenChanged([&] { ++told; });
    tenure->setBondAmount(Decimal(100));
    EXPECT_GT(told, 0);
}

TEST_F(BookSessionTest, MidnightMovesTheFiguresOn) {
    const auto session = BookSession::open(makeExample(), loop_);
    loop_.addTimer(TKCurrentDateController::sharedInstance().timer());
    const auto green = tenureOf(*session, "R. Green");
    int told = 0;
    session->whenChanged([&] { ++told; });
    const Decimal before = green->balance();
    EXPECT_EQ(london().civilDay(session->today()), london().civilDay(day(2026, 6, 30)));
    pass(12 * 3600 + 2, loop_);
    EXPECT_EQ(london().civilDay(session->today()), london().civilDay(day(2026, 7, 1)));
    EXPECT_GT(told, 0);
    EXPECT_LT(green->balance(), before) << "rent that is charged by its days grows each day";
}

TEST_F(BookSessionTest, AnotherDayCountsUntilItIsLeft) {
    const auto session = BookSession::open(makeExample(), loop_);
    const auto jones = tenureOf(*session, "M. Jones");
    const Decimal today = jones->balance();
    session->setAsOf(day(2026, 1, 1));
    EXPECT_EQ(session->today(), day(2026, 1, 1));
    EXPECT_NE(jones->balance(), today);
    TKCurrentDateController::sharedInstance().dailyUpdate();
    EXPECT_EQ(session->today(), day(2026, 1, 1)) << "midnight does not end it";
    session->setAsOf(std::nullopt);
    EXPECT_EQ(jones->balance(), today);
    EXPECT_EQ(session->condition(), Condition::Saved) << "a look at another day is no edit";
}

TEST_F(BookSessionTest, AStatementThatCannotBeReckonedLeavesUndoingAlone) {
    const auto session = BookSession::open(makeExample(), loop_);
    const auto jones = tenureOf(*session, "M. Jones");
    session->perform("Change of Letting", [&] {
        static_cast<void>(reckon([&] { return jones->setRentalBillingCycle(Number(5)), true; }));
    });
    EXPECT_FALSE(session->statementOf(*jones));
    rename(*session, "Quay House");
    EXPECT_EQ(session->undoName(), "Change of Name");
    session->undo();
    session->undo();
    EXPECT_TRUE(session->statementOf(*jones));
}

TEST_F(BookSessionTest, AnEmptyBookHasItsSettings) {
    const auto session = BookSession::open(makeEmpty(), loop_);
    EXPECT_EQ(session->currencyCode()->view(), "GBP");
    EXPECT_TRUE(session->tenures().empty());
    EXPECT_EQ(session->condition(), Condition::Saved);
    EXPECT_FALSE(session->canUndo());
}

} // namespace

} // namespace estatebook::desktop::test
