// SPDX-License-Identifier: MIT
#include "ui/QBSheetController.hpp"

#include "store/TKManagedObjectModel.hpp"
#include "toolkit/ToolkitTestCase.hpp"

#include <stdexcept>

namespace estatebook {
namespace {

using namespace platform;
using testing::ElementsAre;
using testing::IsEmpty;

class Editor final : public QBSheetController {
public:
    explicit Editor(std::vector<std::string>& log) : log_(log) {}
    ~Editor() override { log_.emplace_back("gone"); }

    [[nodiscard]] Ref<String> nibName() const override { return String::make("Sheet"); }
    void prepareSheet() override {
        log_.emplace_back("prepare");
        EXPECT_TRUE(window());
    }

private:
    std::vector<std::string>& log_;
};

/// Has the operation without adopting the protocol.
struct PlainListener {
    std::vector<std::string>& log;
    Ref<Window> sheet{};
    void sheetControllerDidEndWithResult(QBSheetController& controller, std::int64_t result) {
        log.push_back("delegate " + std::to_string(result));
        sheet = controller.window();
        EXPECT_FALSE(sheet->isVisible());
    }
};

class Adopter : public Adopts<Object, QBSheetDelegate> {
public:
    Adopter(std::vector<std::string>& log, std::string name)
        : Adopts(Counting::Local), log_(log), name_(std::move(name)) {}
    void sheetControllerDidEndWithResult(QBSheetController&, std::int64_t result) override {
        log_.push_back(name_ + " " + std::to_string(result));
    }

private:
    ~Adopter() override { log_.push_back(name_ + " gone"); }
    std::vector<std::string>& log_;
    std::string name_;
};

/// Has the operation and does not adopt the protocol.
class Lookalike final : public Object {
public:
    explicit Lookalike(std::vector<std::string>& log) : Object(Counting::Local), log_(log) {}
    void sheetControllerDidEndWithResult(QBSheetController&, std::int64_t) { log_.emplace_back("lookalike"); }

private:
    std::vector<std::string>& log_;
};

class BookDocument final : public Document {
public:
    explicit BookDocument(Ref<ManagedObjectContext> context) : context_(std::move(context)) {}
    [[nodiscard]] Ref<ManagedObjectContext> managedObjectContext() const override { return context_; }

private:
    Ref<ManagedObjectContext> context_;
};

class QBSheetControllerTest : public test::ToolkitTestCase {
protected:
    QBSheetControllerTest() {
        editor->setParent(parent);
        editor->setDelegate(&listener);
    }
    // A sheet keeps its controller, and so its parent, until it ends.
    void TearDown() override {
        if (parent) parent->close();
        bench->settle();
    }
    void show(const Ref<Object>& context = nullptr) {
        editor->showSheet(context);
        bench->settle();
    }
    Ref<Adopter> adopter(std::string name) { return makeRef<Adopter>(log, std::move(name)); }

    std::vector<std::string> log;
    Ref<Window> parent = shownWindow();
    Ref<Editor> editor = makeRef<Editor>(log);
    PlainListener listener{log};
};

TEST_F(QBSheetControllerTest, ShowingLoadsPreparesAndShowsTheWindow) {
    EXPECT_FALSE(editor->isWindowLoaded());
    show();
    EXPECT_THAT(log, ElementsAre("prepare"));
    EXPECT_EQ(parent->attachedSheet(), editor->window());
    EXPECT_TRUE(editor->window()->isVisible());
}

TEST_F(QBSheetControllerTest, CancellingTellsTheDelegateAndThenTheContextMinusOne) {
    show(adopter("context"));
    editor->cancelSheet();
    EXPECT_THAT(log, ElementsAre("prepare", "delegate -1", "context -1", "context gone"));
    EXPECT_FALSE(editor->window()->isVisible());
    EXPECT_EQ(parent->attachedSheet(), nullptr);
}

TEST_F(QBSheetControllerTest, ConfirmingTellsBothZero) {
    show(adopter("context"));
    editor->processSheet();
    EXPECT_THAT(log, ElementsAre("prepare", "delegate 0", "context 0", "context gone"));
}

TEST_F(QBSheetControllerTest, TheButtonsOfTheFileConfirmAndCancel) {
    show();
    bench->click(*editor->window(), *editor->window()->button("ok"));
    show();
    bench->click(*editor->window(), *editor->window()->button("cancel"));
    EXPECT_THAT(log, ElementsAre("prepare", "delegate 0", "delegate -1"));
}

TEST_F(QBSheetControllerTest, EscapeAndTheCloseBoxCancel) {
    show();
    bench->pressEscape(*editor->window());
    show();
    bench->clickCloseBox(*editor->window());
    EXPECT_THAT(log, ElementsAre("prepare", "delegate -1", "delegate -1"));
}

TEST_F(QBSheetControllerTest, AWindowThatIsNoSheetOfTheParentCanBeSentAwayAllTheSame) {
    editor->window()->show();
    bench->settle();
    bench->pressEscape(*editor->window());
    EXPECT_FALSE(editor->window()->isVisible());
    const auto other = shownWindow();
    std::int64_t ended = 0;
    other->beginSheetCompletionHandler(editor->window(), [&](std::int64_t code) { ended = code; });
    bench->settle();
    bench->clickCloseBox(*editor->window());
    EXPECT_EQ(ended, -1);
    EXPECT_THAT(log, ElementsAre("prepare"));
}

TEST_F(QBSheetControllerTest, WhateverElseEndsTheSheetTellsAnotherCode) {
    show(adopter("context"));
    parent->endSheetReturnCode(*editor->window(), 12);
    show();
    parent->close();
    bench->settle();
    EXPECT_THAT(log, ElementsAre("prepare", "delegate 12", "context 12", "context gone", "delegate -1000"));
}

TEST_F(QBSheetControllerTest, AShowingEndsOnce) {
    show();
    editor->processSheet();
    editor->cancelSheet();
    editor->processSheet();
    bench->settle();
    EXPECT_THAT(log, ElementsAre("prepare", "delegate 0"));
}

TEST_F(QBSheetControllerTest, AnObjectThatIsBothIsToldTwice) {
    const auto both = adopter("both");
    editor->setDelegate(both.get());
    show(both);
    editor->processSheet();
    EXPECT_THAT(log, ElementsAre("prepare", "both 0", "both 0"));
}

TEST_F(QBSheetControllerTest, AContextThatDoesNotAdoptTheProtocolIsNotTold) {
    show(makeRef<Lookalike>(log));
    editor->processSheet();
    show(String::make("a text"));
    editor->processSheet();
    EXPECT_THAT(log, ElementsAre("prepare", "delegate 0", "delegate 0"));
}

TEST_F(QBSheetControllerTest, ADelegateNeedOnlyHaveTheOperation) {
    const auto lookalike = makeRef<Lookalike>(log);
    editor->setDelegate(lookalike.get());
    show();
    editor->processSheet();
    EXPECT_THAT(log, ElementsAre("prepare", "lookalike"));
    EXPECT_EQ(editor->delegate(), lookalike.get());
}

TEST_F(QBSheetControllerTest, ADelegateBehindAnotherNameIsToldIfItAdoptsTheProtocol) {
    const Ref<Object> hidden = adopter("hidden");
    editor->setDelegate(hidden.get());
    show();
    editor->processSheet();
    EXPECT_THAT(log, ElementsAre("prepare", "hidden 0"));
}

TEST_F(QBSheetControllerTest, ADelegateWithoutTheOperationIsNotTold) {
    const auto text = String::make("a text");
    editor->setDelegate(text.get());
    int number = 0;
    show();
    editor->processSheet();
    editor->setDelegate(&number);
    show();
    editor->processSheet();
    editor->setDelegate(nullptr);
    EXPECT_EQ(editor->delegate(), nullptr);
    show();
    editor->processSheet();
    EXPECT_THAT(log, ElementsAre("prepare"));
}

TEST_F(QBSheetControllerTest, TheDelegateIsNotHeldAndTheContextIsUntilTheEnd) {
    const auto delegate = adopter("delegate");
    editor->setDelegate(delegate.get());
    EXPECT_EQ(delegate->referenceCount(), 1u);
    show(adopter("context"));
    EXPECT_THAT(log, ElementsAre("prepare"));
    editor->processSheet();
    EXPECT_THAT(log, ElementsAre("prepare", "delegate 0", "context 0", "context gone"));
    editor->setDelegate(nullptr);
}

TEST_F(QBSheetControllerTest, AControllerIsKeptUntilItsSheetEnds) {
    show();
    const Ref<Window> sheet = editor->window();
    editor = nullptr;
    EXPECT_THAT(log, ElementsAre("prepare"));
    bench->click(*sheet, *sheet->button("ok"));
    EXPECT_THAT(log, ElementsAre("prepare", "delegate 0", "gone"));
}

TEST_F(QBSheetControllerTest, TheParentIsHeld) {
    const auto count = parent->referenceCount();
    const auto other = makeRef<Editor>(log);
    other->setParent(parent);
    EXPECT_EQ(other->parent(), parent);
    EXPECT_EQ(parent->referenceCount(), count + 1);
    other->setParent(nullptr);
    EXPECT_EQ(parent->referenceCount(), count);
}

TEST_F(QBSheetControllerTest, TheDelegateMayShowTheSheetAgain) {
    struct Insistent {
        int times = 0;
        void sheetControllerDidEndWithResult(QBSheetController& controller, std::int64_t) {
            if (++times == 1) controller.showSheet();
        }
    } insistent;
    editor->setDelegate(&insistent);
    show();
    editor->processSheet();
    bench->settle();
    EXPECT_TRUE(editor->window()->isVisible());
    editor->processSheet();
    EXPECT_EQ(insistent.times, 2);
    EXPECT_THAT(log, ElementsAre("prepare"));
    editor->setDelegate(nullptr);
}

TEST_F(QBSheetControllerTest, ASecondControllerWaitsForTheFirst) {
    const auto other = makeRef<Editor>(log);
    other->setParent(parent);
    show();
    other->showSheet();
    bench->settle();
    EXPECT_FALSE(other->window()->isVisible());
    editor->processSheet();
    bench->settle();
    EXPECT_TRUE(other->window()->isVisible());
    other->cancelSheet();
}

TEST_F(QBSheetControllerTest, ADelegateThatRaisesKeepsNobodyFromBeingTold) {
    struct Failing {
        void sheetControllerDidEndWithResult(QBSheetController&, std::int64_t) {
            throw std::runtime_error("no room");
        }
    } failing;
    editor->setDelegate(&failing);
    show(adopter("context"));
    EXPECT_THROW(editor->processSheet(), std::runtime_error);
    EXPECT_THAT(log, ElementsAre("prepare", "context 0", "context gone"));
    EXPECT_FALSE(editor->window()->isVisible());
}

TEST_F(QBSheetControllerTest, WithoutAParentTheWindowIsLoadedAndNothingElseHappens) {
    editor->setParent(nullptr);
    show(adopter("context"));
    EXPECT_THAT(log, ElementsAre("prepare", "context gone"));
    EXPECT_FALSE(editor->window()->isVisible());
    editor->processSheet();
    editor->cancelSheet();
    EXPECT_THAT(log, ElementsAre("prepare", "context gone"));
}

TEST_F(QBSheetControllerTest, AClassWithoutAFileLogsThatWhenItsWindowIsLoaded) {
    const auto bare = makeRef<QBSheetController>();
    bare->setParent(parent);
    EXPECT_THAT(logged, IsEmpty());
    EXPECT_FALSE(bare->window());
    EXPECT_THAT(logged, ElementsAre("Warning: QBSheetController#nibName not implemented!"));
    bare->showSheet();
    EXPECT_THAT(parent->sheets(), IsEmpty());
    bare->processSheet();
    bare->cancelSheet();
}

TEST_F(QBSheetControllerTest, TheDocumentAndItsContextAreThoseOfTheParent) {
    const auto owner = makeRef<WindowController>();
    owner->setWindow(parent);
    const auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
    const auto document = makeRef<BookDocument>(context);
    owner->setDocument(document.get());
    EXPECT_EQ(editor->document(), document);
    EXPECT_EQ(editor->managedObjectContext(), context);
    EXPECT_THAT(logged, IsEmpty());
    owner->setDocument(nullptr);
    EXPECT_FALSE(editor->document());
    EXPECT_FALSE(editor->managedObjectContext());
    EXPECT_THAT(logged, IsEmpty());
}

TEST_F(QBSheetControllerTest, AParentWithoutAControllerHasNoDocument) {
    EXPECT_FALSE(editor->document());
    EXPECT_FALSE(editor->managedObjectContext());
    EXPECT_THAT(logged, IsEmpty());
}

TEST_F(QBSheetControllerTest, AskingForTheDocumentWithoutAParentIsLogged) {
    editor->setParent(nullptr);
    EXPECT_FALSE(editor->document());
    EXPECT_THAT(logged, ElementsAre("Trying to get document but no parent specified!"));
    EXPECT_FALSE(editor->managedObjectContext());
}

TEST_F(QBSheetControllerTest, OtherActionsAreNotKnown) {
    EXPECT_TRUE(editor->actionNamed("processSheet:"));
    EXPECT_TRUE(editor->actionNamed("cancelSheet:"));
    EXPECT_FALSE(editor->actionNamed("processSheet"));
    EXPECT_FALSE(editor->actionNamed(""));
}

} // namespace
} // namespace estatebook
