// SPDX-License-Identifier: MIT

// What windows and their sheets do, in every toolkit.

#include "toolkit/ToolkitTestCase.hpp"

#include <stdexcept>

namespace estatebook::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WindowTest : public test::ToolkitTestCase {
protected:
    Ref<Window> newWindow() { return bench->toolkit().makeWindow(); }

    /// Begins it with a handler that writes down its name and the code.
    void begin(Window& on, const Ref<Window>& sheet, const std::string& name) {
        on.beginSheetCompletionHandler(
            sheet, [this, name](std::int64_t code) { ends.push_back(name + " " + std::to_string(code)); });
        bench->settle();
    }

    std::vector<std::string> ends;
    Ref<Window> parent = shownWindow();
    Ref<Window> sheet = newWindow();
    Ref<Window> second = newWindow();
    Ref<Window> third = newWindow();
};

TEST_F(WindowTest, AWindowIsSeenOnceItIsShownAndUntilItCloses) {
    const auto window = newWindow();
    EXPECT_FALSE(window->isVisible());
    window->show();
    EXPECT_TRUE(window->isVisible());
    window->close();
    EXPECT_FALSE(window->isVisible());
    window->close();
    window->show();
    EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowTest, BeginningASheetReturnsAtOnceWithTheSheetShown) {
    begin(*parent, sheet, "sheet");
    EXPECT_THAT(ends, IsEmpty());
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_TRUE(sheet->isSheet());
    EXPECT_EQ(sheet->sheetParent(), parent);
    EXPECT_EQ(parent->attachedSheet(), sheet);
    EXPECT_FALSE(parent->isSheet());
}

TEST_F(WindowTest, EndingASheetTellsTheCodeOnceAndTakesItAway) {
    begin(*parent, sheet, "sheet");
    parent->endSheetReturnCode(*sheet, 7);
    EXPECT_THAT(ends, ElementsAre("sheet 7"));
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_FALSE(sheet->isSheet());
    EXPECT_EQ(parent->attachedSheet(), nullptr);
    parent->endSheetReturnCode(*sheet, 8);
    bench->settle();
    EXPECT_THAT(ends, ElementsAre("sheet 7"));
}

TEST_F(WindowTest, ACodeMayBeAnyNumber) {
    for (const std::int64_t code : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{1}, std::int64_t{1} << 40,
                                    std::numeric_limits<std::int64_t>::min()}) {
        begin(*parent, sheet, "sheet");
        parent->endSheetReturnCode(*sheet, code);
        EXPECT_EQ(ends.back(), "sheet " + std::to_string(code));
    }
    EXPECT_EQ(ends.size(), 5u);
}

TEST_F(WindowTest, ASheetThatIsEndedWithoutACodeWasStopped) {
    begin(*parent, sheet, "sheet");
    parent->endSheet(*sheet);
    EXPECT_THAT(ends, ElementsAre("sheet -1000"));
}

TEST_F(WindowTest, ASecondSheetWaitsForTheFirst) {
    begin(*parent, sheet, "first");
    begin(*parent, second, "second");
    begin(*parent, third, "third");
    EXPECT_FALSE(second->isVisible());
    EXPECT_TRUE(second->isSheet());
    EXPECT_THAT(parent->sheets(), ElementsAre(sheet, second, third));
    parent->endSheetReturnCode(*sheet, 1);
    bench->settle();
    EXPECT_TRUE(second->isVisible());
    EXPECT_FALSE(third->isVisible());
    parent->endSheetReturnCode(*second, 2);
    bench->settle();
    EXPECT_TRUE(third->isVisible());
    parent->endSheetReturnCode(*third, 3);
    EXPECT_THAT(ends, ElementsAre("first 1", "second 2", "third 3"));
    EXPECT_THAT(parent->sheets(), IsEmpty());
}

TEST_F(WindowTest, ASheetThatWaitsCanBeEndedAndIsNeverShown) {
    begin(*parent, sheet, "first");
    begin(*parent, second, "second");
    parent->endSheetReturnCode(*second, 2);
    EXPECT_THAT(ends, ElementsAre("second 2"));
    EXPECT_TRUE(sheet->isVisible());
    parent->endSheetReturnCode(*sheet, 1);
    bench->settle();
    EXPECT_FALSE(second->isVisible());
    EXPECT_THAT(ends, ElementsAre("second 2", "first 1"));
}

TEST_F(WindowTest, TheHandlerRunsWithTheSheetTakenAwayAndTheNextNotYetShown) {
    bool wasCalled = false;
    parent->beginSheetCompletionHandler(sheet, [&](std::int64_t) {
        wasCalled = true;
        EXPECT_FALSE(sheet->isSheet());
        EXPECT_FALSE(sheet->isVisible());
        EXPECT_EQ(parent->attachedSheet(), nullptr);
        EXPECT_FALSE(second->isVisible());
        EXPECT_THAT(parent->sheets(), ElementsAre(second));
    });
    begin(*parent, second, "second");
    parent->endSheet(*sheet);
    EXPECT_TRUE(wasCalled);
    EXPECT_TRUE(second->isVisible());
}

TEST_F(WindowTest, TheHandlerMayBeginTheSheetAgain) {
    int showings = 0;
    std::function<void(std::int64_t)> again = [&](std::int64_t) {
        if (++showings < 3) parent->beginSheetCompletionHandler(sheet, again);
    };
    parent->beginSheetCompletionHandler(sheet, again);
    for (int showing = 0; showing < 3; ++showing) {
        bench->settle();
        EXPECT_TRUE(sheet->isVisible());
        parent->endSheetReturnCode(*sheet, 0);
    }
    EXPECT_EQ(showings, 3);
    EXPECT_FALSE(sheet->isSheet());
}

TEST_F(WindowTest, WhatAHandlerBeginsStandsBehindThoseThatWait) {
    parent->beginSheetCompletionHandler(sheet, [&](std::int64_t) { begin(*parent, third, "third"); });
    begin(*parent, second, "second");
    parent->endSheet(*sheet);
    EXPECT_THAT(parent->sheets(), ElementsAre(second, third));
    EXPECT_EQ(parent->attachedSheet(), second);
}

TEST_F(WindowTest, AHandlerMayEndASheetThatWaits) {
    parent->beginSheetCompletionHandler(sheet, [&](std::int64_t) {
        parent->endSheetReturnCode(*second, 2);
        EXPECT_FALSE(third->isVisible());
    });
    begin(*parent, second, "second");
    begin(*parent, third, "third");
    parent->endSheet(*sheet);
    bench->settle();
    EXPECT_THAT(ends, ElementsAre("second 2"));
    EXPECT_TRUE(third->isVisible());
}

TEST_F(WindowTest, WhatAHandlerRaisesLeavesWhoeverEndedTheSheetWithTheNextOneShown) {
    parent->beginSheetCompletionHandler(sheet, [](std::int64_t) { throw std::runtime_error("no room"); });
    begin(*parent, second, "second");
    EXPECT_THROW(parent->endSheet(*sheet), std::runtime_error);
    EXPECT_TRUE(second->isVisible());
    EXPECT_FALSE(sheet->isSheet());
}

TEST_F(WindowTest, ASheetOfAnotherWindowIsNotEnded) {
    const auto other = shownWindow();
    begin(*parent, sheet, "sheet");
    other->endSheetReturnCode(*sheet, 1);
    other->endSheetReturnCode(*parent, 1);
    EXPECT_THAT(ends, IsEmpty());
    EXPECT_TRUE(sheet->isVisible());
}

TEST_F(WindowTest, AWindowThatIsASheetAlreadyCannotBeBegun) {
    const auto other = shownWindow();
    begin(*parent, sheet, "sheet");
    EXPECT_THROW(begin(*parent, sheet, "twice"), InvalidArgumentException);
    EXPECT_THROW(begin(*other, sheet, "elsewhere"), InvalidArgumentException);
    parent->endSheetReturnCode(*sheet, 0);
    EXPECT_THAT(ends, ElementsAre("sheet 0"));
}

TEST_F(WindowTest, AWindowCannotBeASheetOfItselfOrOfItsSheets) {
    EXPECT_THROW(begin(*parent, parent, "itself"), InvalidArgumentException);
    begin(*parent, sheet, "sheet");
    begin(*sheet, second, "nested");
    EXPECT_THROW(begin(*second, parent, "round"), InvalidArgumentException);
    EXPECT_THAT(second->sheets(), IsEmpty());
}

TEST_F(WindowTest, NoSheetAtAllIsNotBegun) {
    begin(*parent, nullptr, "nothing");
    EXPECT_THAT(parent->sheets(), IsEmpty());
    EXPECT_THAT(ends, IsEmpty());
}

TEST_F(WindowTest, ASheetMayCarryASheet) {
    begin(*parent, sheet, "sheet");
    begin(*sheet, second, "nested");
    EXPECT_TRUE(second->isVisible());
    EXPECT_EQ(second->sheetParent(), sheet);
    sheet->endSheetReturnCode(*second, 2);
    EXPECT_TRUE(sheet->isVisible());
    parent->endSheetReturnCode(*sheet, 1);
    EXPECT_THAT(ends, ElementsAre("nested 2", "sheet 1"));
}

TEST_F(WindowTest, ASheetThatEndsStopsThoseItCarries) {
    begin(*parent, sheet, "sheet");
    begin(*sheet, second, "nested");
    parent->endSheetReturnCode(*sheet, 0);
    EXPECT_THAT(ends, ElementsAre("nested -1000", "sheet 0"));
    EXPECT_FALSE(second->isVisible());
}

TEST_F(WindowTest, AParentThatClosesStopsAllItsSheets) {
    begin(*parent, sheet, "first");
    begin(*parent, second, "second");
    begin(*sheet, third, "nested");
    parent->close();
    bench->settle();
    EXPECT_THAT(ends, ElementsAre("nested -1000", "first -1000", "second -1000"));
    for (const auto& window : {parent, sheet, second, third}) EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowTest, WhatIsBegunWhileTheParentClosesIsNotShown) {
    parent->beginSheetCompletionHandler(sheet, [&](std::int64_t) { begin(*parent, second, "second"); });
    parent->close();
    bench->settle();
    EXPECT_FALSE(second->isVisible());
    EXPECT_FALSE(second->isSheet());
    EXPECT_THAT(ends, IsEmpty());
    parent->show();
    begin(*parent, second, "later");
    EXPECT_TRUE(second->isVisible());
}

TEST_F(WindowTest, AParentThatDiesStopsAllItsSheets) {
    begin(*parent, sheet, "first");
    begin(*parent, second, "second");
    parent = nullptr;
    bench->settle();
    EXPECT_THAT(ends, ElementsAre("first -1000", "second -1000"));
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_FALSE(sheet->isSheet());
    EXPECT_EQ(sheet->sheetParent(), nullptr);
    const auto other = shownWindow();
    begin(*other, sheet, "again");
    EXPECT_TRUE(sheet->isVisible());
}

TEST_F(WindowTest, WhatAHandlerRaisesWhileItsParentDiesIsLogged) {
    parent->beginSheetCompletionHandler(sheet, [](std::int64_t) { throw std::runtime_error("no room"); });
    begin(*parent, second, "second");
    parent = nullptr;
    EXPECT_THAT(ends, ElementsAre("second -1000"));
    EXPECT_THAT(logged, ElementsAre(testing::HasSubstr("no room")));
}

TEST_F(WindowTest, ASheetThatClosesItselfIsStopped) {
    begin(*parent, sheet, "sheet");
    begin(*parent, second, "second");
    sheet->close();
    bench->settle();
    EXPECT_THAT(ends, ElementsAre("sheet -1000"));
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_TRUE(second->isVisible());
}

TEST_F(WindowTest, EscapeEndsASheetAsCancelledByTheUser) {
    begin(*parent, sheet, "sheet");
    bench->pressEscape(*sheet);
    EXPECT_THAT(ends, ElementsAre("sheet -1"));
    EXPECT_FALSE(sheet->isVisible());
}

TEST_F(WindowTest, TheCloseBoxEndsASheetAsCancelledByTheUser) {
    begin(*parent, sheet, "sheet");
    bench->clickCloseBox(*sheet);
    EXPECT_THAT(ends, ElementsAre("sheet -1"));
    EXPECT_FALSE(sheet->isVisible());
}

TEST_F(WindowTest, EscapeReachesTheSheetInFrontOnly) {
    begin(*parent, sheet, "sheet");
    begin(*sheet, second, "nested");
    bench->pressEscape(*sheet);
    EXPECT_THAT(ends, IsEmpty());
    bench->pressEscape(*second);
    EXPECT_THAT(ends, ElementsAre("nested -1"));
    bench->pressEscape(*sheet);
    EXPECT_THAT(ends, ElementsAre("nested -1", "sheet -1"));
}

TEST_F(WindowTest, TheCloseBoxClosesAWindowUnlessASheetIsInFrontOfIt) {
    begin(*parent, sheet, "sheet");
    bench->clickCloseBox(*parent);
    EXPECT_TRUE(parent->isVisible());
    EXPECT_TRUE(sheet->isVisible());
    parent->endSheetReturnCode(*sheet, 0);
    bench->clickCloseBox(*parent);
    EXPECT_FALSE(parent->isVisible());
    EXPECT_THAT(ends, ElementsAre("sheet 0"));
}

TEST_F(WindowTest, ASheetIsKeptUntilItsShowingEnds) {
    begin(*parent, sheet, "sheet");
    Window* shown = sheet.get();
    sheet = nullptr;
    EXPECT_EQ(parent->attachedSheet().get(), shown);
    parent->endSheetReturnCode(*shown, 3);
    EXPECT_THAT(ends, ElementsAre("sheet 3"));
}

TEST_F(WindowTest, WhatAHandlerHoldsIsLetGoWhenTheShowingEnds) {
    const auto held = String::make("held");
    parent->beginSheetCompletionHandler(sheet, [held](std::int64_t) {});
    EXPECT_EQ(held->referenceCount(), 2u);
    parent->endSheet(*sheet);
    EXPECT_EQ(held->referenceCount(), 1u);
}

} // namespace
} // namespace estatebook::platform
