// SPDX-License-Identifier: MIT

// How window controllers come by their windows, in every toolkit.

#include "toolkit/ToolkitTestCase.hpp"

namespace estatebook::platform {
namespace {

using test::PlainController;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class PlainDocument final : public Document {
public:
    [[nodiscard]] Ref<ManagedObjectContext> managedObjectContext() const override;
};

class WindowControllerTest : public test::ToolkitTestCase {};

TEST_F(WindowControllerTest, NothingIsLoadedBeforeTheWindowIsRead) {
    const auto controller = makeRef<PlainController>("Plain");
    EXPECT_FALSE(controller->isWindowLoaded());
    controller->close();
    EXPECT_EQ(controller->timesAsked, 0);
    EXPECT_THAT(controller->hooks, IsEmpty());
}

TEST_F(WindowControllerTest, TheFirstReadLoadsTheWindowOnce) {
    const auto controller = makeRef<PlainController>("Plain");
    const auto window = controller->window();
    ASSERT_TRUE(window);
    EXPECT_EQ(controller->window(), window);
    EXPECT_THAT(controller->hooks, ElementsAre("will", "did"));
    EXPECT_TRUE(controller->hadWindowWhenLoaded);
    EXPECT_EQ(controller->timesAsked, 1);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(window->windowController(), controller.get());
    EXPECT_FALSE(controller->loadError());
    EXPECT_THAT(logged, IsEmpty());
}

TEST_F(WindowControllerTest, ControlsAreFoundByNameAndKind) {
    const auto controller = makeRef<PlainController>("Plain");
    const auto window = controller->window();
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->button("ok"));
    EXPECT_TRUE(window->datePicker("date"));
    EXPECT_EQ(window->button("ok"), window->button("ok"));
    EXPECT_EQ(window->control("ok"), window->button("ok"));
    EXPECT_FALSE(window->datePicker("ok"));
    EXPECT_FALSE(window->button("date"));
    EXPECT_FALSE(window->control("nobody"));
    EXPECT_FALSE(window->control(""));
    EXPECT_TRUE(window->button("several")->allowsMixedState());
    EXPECT_FALSE(window->button("enabled")->allowsMixedState());
}

TEST_F(WindowControllerTest, WithoutAFileThereIsNoWindow) {
    const auto controller = makeRef<PlainController>(nullptr);
    EXPECT_FALSE(controller->window());
    EXPECT_THAT(controller->hooks, IsEmpty());
    EXPECT_FALSE(controller->isWindowLoaded());
    EXPECT_FALSE(controller->loadError());
}

TEST_F(WindowControllerTest, AFileThatIsNotThereIsNamed) {
    const auto controller = makeRef<PlainController>("Nowhere");
    EXPECT_FALSE(controller->window());
    ASSERT_TRUE(controller->loadError());
    EXPECT_EQ(controller->loadError()->domain(), InterfaceFileErrorDomain);
    EXPECT_EQ(controller->loadError()->code(), static_cast<std::int64_t>(InterfaceFileError::Missing));
    EXPECT_THAT(controller->loadError()->localizedDescription(), HasSubstr("Nowhere"));
    EXPECT_THAT(logged, ElementsAre(HasSubstr("Nowhere")));
    EXPECT_THAT(controller->hooks, ElementsAre("will"));
}

TEST_F(WindowControllerTest, AnActionThatTheControllerDoesNotKnowIsNamed) {
    const auto controller = makeRef<PlainController>("Stray");
    EXPECT_FALSE(controller->window());
    ASSERT_TRUE(controller->loadError());
    EXPECT_EQ(controller->loadError()->code(), static_cast<std::int64_t>(InterfaceFileError::UnknownAction));
    EXPECT_THAT(controller->loadError()->localizedDescription(),
                AllOf(HasSubstr("Stray"), HasSubstr("ok"), HasSubstr("flySheet:")));
}

TEST_F(WindowControllerTest, WithoutAToolkitThereIsNoWindow) {
    Toolkit::setCurrent(nullptr);
    const auto controller = makeRef<PlainController>("Plain");
    EXPECT_FALSE(controller->window());
    ASSERT_TRUE(controller->loadError());
    EXPECT_EQ(controller->loadError()->code(), static_cast<std::int64_t>(InterfaceFileError::NoToolkit));
    Toolkit::setCurrent(&bench->toolkit());
    EXPECT_TRUE(controller->window());
    EXPECT_FALSE(controller->loadError());
}

TEST_F(WindowControllerTest, AWindowThatIsSetCountsAsLoaded) {
    const auto controller = makeRef<PlainController>("Plain");
    const auto window = bench->toolkit().makeWindow();
    controller->setWindow(window);
    EXPECT_TRUE(controller->isWindowLoaded());
    EXPECT_EQ(controller->window(), window);
    EXPECT_THAT(controller->hooks, IsEmpty());
    controller->setWindow(nullptr);
    EXPECT_EQ(window->windowController(), nullptr);
    EXPECT_NE(controller->window(), window);
    EXPECT_THAT(controller->hooks, ElementsAre("will", "did"));
}

TEST_F(WindowControllerTest, AWindowOutlivesItsController) {
    auto controller = makeRef<PlainController>("Plain");
    const auto window = controller->window();
    controller = nullptr;
    EXPECT_EQ(window->windowController(), nullptr);
    window->show();
    bench->clickCloseBox(*window);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowControllerTest, EscapeAndTheCloseBoxAskTheController) {
    class Reluctant final : public PlainController {
    public:
        Reluctant() : PlainController("Plain") {}
        int timesAskedToCancel = 0;
        void cancelOperation(Object* sender) override {
            EXPECT_EQ(sender, nullptr);
            ++timesAskedToCancel;
        }
    };
    const auto parent = shownWindow();
    const auto controller = makeRef<Reluctant>();
    const auto sheet = controller->window();
    int ends = 0;
    parent->beginSheetCompletionHandler(sheet, [&](std::int64_t) { ++ends; });
    bench->settle();
    bench->pressEscape(*sheet);
    bench->clickCloseBox(*sheet);
    EXPECT_EQ(controller->timesAskedToCancel, 2);
    EXPECT_EQ(ends, 0);
    EXPECT_TRUE(sheet->isVisible());
}

Ref<ManagedObjectContext> PlainDocument::managedObjectContext() const {
    return nullptr;
}

TEST_F(WindowControllerTest, ADocumentIsNotHeldAndForgottenWhenItIsGone) {
    const auto controller = makeRef<PlainController>(nullptr);
    const auto other = makeRef<PlainController>(nullptr);
    EXPECT_FALSE(controller->document());
    Ref<Document> document = makeRef<PlainDocument>();
    controller->setDocument(document.get());
    other->setDocument(document.get());
    EXPECT_EQ(controller->document(), document);
    EXPECT_EQ(document->referenceCount(), 1u);
    other->setDocument(nullptr);
    document = nullptr;
    EXPECT_FALSE(controller->document());
    EXPECT_FALSE(other->document());
}

TEST_F(WindowControllerTest, ADocumentOutlivesItsControllers) {
    const Ref<Document> document = makeRef<PlainDocument>();
    auto controller = makeRef<PlainController>(nullptr);
    controller->setDocument(document.get());
    controller = nullptr;
    EXPECT_EQ(document->referenceCount(), 1u);
}

} // namespace
} // namespace estatebook::platform
