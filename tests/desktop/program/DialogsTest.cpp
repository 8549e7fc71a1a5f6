// SPDX-License-Identifier: MIT
#include "desktop/program/DialogTestCase.hpp"

#include <QClipboard>
#include <QGuiApplication>

namespace estatebook::desktop::test {

namespace {

using estatebook::test::settle;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class DialogsTest : public DialogTestCase {
protected:
    /// The menu item that bears the text.
    void choose(const char* text) {
        const auto actions = window_->findChildren<QAction*>();
        for (QAction* action : actions)
            if (action->text() == QString::fromUtf8(text)) {
                action->trigger();
                return settle();
            }
        FAIL() << "no " << text;
    }
};

TEST_F(DialogsTest, ALettingGoesWhenItIsMeantAndComesBack) {
    openExample();
    selectRowOf(Page::Tenures, "M. Jones");
    dialogs_.confirmations = {true};
    trigger("delete");
    EXPECT_EQ(list(Page::Tenures).shownRows(), 9);
    EXPECT_FALSE(tenureOf(session(), "M. Jones"));
    EXPECT_THAT(dialogs_.asked, ElementsAre(HasSubstr("M. Jones")));
    trigger("undo");
    EXPECT_EQ(list(Page::Tenures).shownRows(), 10);
    EXPECT_TRUE(tenureOf(session(), "M. Jones"));
}

TEST_F(DialogsTest, ALettingStaysWhenItIsNotMeant) {
    openExample();
    selectRowOf(Page::Tenures, "M. Jones");
    dialogs_.confirmations = {false};
    trigger("delete");
    EXPECT_EQ(list(Page::Tenures).shownRows(), 10);
    EXPECT_EQ(dialogs_.asked.size(), 1U);
    EXPECT_FALSE(session().canUndo());
    EXPECT_FALSE(window_->isWindowModified());
}

TEST_F(DialogsTest, WhoHasLettingsIsNotDeleted) {
    openExample();
    MainWindowTestCase::choose(Page::Properties);
    selectRowOf(Page::Properties, "12 Harbour Street");
    dialogs_.confirmations = {true};
    trigger("delete");
    EXPECT_THAT(dialogs_.asked, ElementsAre(HasSubstr("has lettings")));
    EXPECT_EQ(dialogs_.confirmations.size(), 1U) << "nothing was asked";
    EXPECT_EQ(list(Page::Properties).shownRows(), 4);
}

TEST_F(DialogsTest, APropertyThatIsNotLetGoes) {
    open(makeEmpty());
    session().perform("New", [&] {
        session().context().insertNewObject<TKProperty>("Property")->setName(platform::String::make("Shed"));
    });
    settle();
    MainWindowTestCase::choose(Page::Properties);
    selectRowOf(Page::Properties, "Shed");
    dialogs_.confirmations = {false, true};
    trigger("delete");
    EXPECT_EQ(list(Page::Properties).shownRows(), 1);
    trigger("delete");
    EXPECT_TRUE(session().properties().empty());
    EXPECT_EQ(list(Page::Properties).shownRows(), 0);
    EXPECT_EQ(session().undoName(), "Deletion of Property");
}

TEST_F(DialogsTest, AStatementGoesIntoTheFileThatIsChosen) {
    showStatement();
    dialogs_.files = {file("jones.csv"), file("jones.pdf")};
    pressButton("C&SV…");
    EXPECT_THAT(dialogs_.offered.toStdString(), HasSubstr("M. Jones"));
    EXPECT_TRUE(dialogs_.offered.endsWith(QLatin1String(".csv")));
    pressButton("PD&F…");
    EXPECT_TRUE(dialogs_.offered.endsWith(QLatin1String(".pdf")));
    EXPECT_EQ(contentOf(file("jones.csv")), window_->statementPage().csv());
    EXPECT_THAT(contentOf(file("jones.pdf")), StartsWith("%PDF"));
    EXPECT_THAT(textOfPdf(file("jones.pdf")), HasSubstr("M. Jones"));
}

TEST_F(DialogsTest, NothingIsWrittenWhenNoFileIsChosen) {
    showStatement();
    pressButton("C&SV…");
    pressButton("PD&F…");
    EXPECT_EQ(dialogs_.asked.size(), 2U);
    EXPECT_FALSE(std::filesystem::exists(path("jones.csv")));
}

TEST_F(DialogsTest, AFileThatCannotBeWrittenIsToldOf) {
    showStatement();
    dialogs_.files = {file("no such folder/jones.csv")};
    pressButton("C&SV…");
    ASSERT_EQ(dialogs_.asked.size(), 2U);
    EXPECT_THAT(dialogs_.asked.back(), HasSubstr("jones.csv"));
}

TEST_F(DialogsTest, AStatementIsPrintedOnThePrinterThatIsChosen) {
    showStatement();
    pressButton("&Print…");
    EXPECT_EQ(dialogs_.asked.size(), 1U) << "nothing is printed without a printer";
    dialogs_.paper = file("paper.pdf");
    pressButton("&Print…");
    const std::string text = textOfPdf(file("paper.pdf"));
    EXPECT_THAT(text, HasSubstr("M. Jones"));
    const auto& model = window_->statementPage().model();
    EXPECT_THAT(text, HasSubstr(model.texts(model.rowCount() - 1).last().toStdString()));
}

TEST_F(DialogsTest, LinesAreCopied) {
    showStatement();
    pressButton("&Copy");
    EXPECT_EQ(QGuiApplication::clipboard()->text(), window_->statementPage().copiedText());
    EXPECT_THAT(QGuiApplication::clipboard()->text().toStdString(), HasSubstr("\t"));
}

TEST_F(DialogsTest, ANewBookStandsWhereItIsWanted) {
    dialogs_.files = {file("mine")};
    trigger("newBook");
    ASSERT_TRUE(window_->session());
    EXPECT_EQ(session().path(), path("mine.estatebook"));
    dialogs_.files.clear();
    trigger("newBook");
    EXPECT_EQ(session().path(), path("mine.estatebook")) << "nothing was chosen";
}

TEST_F(DialogsTest, ABookThatIsThereIsNeverReplaced) {
    openExample();
    testkit::writeFile(path("other.estatebook"), "what somebody else wrote");
    dialogs_.files = {file("harbour"), file("other.estatebook"), file("mine")};
    trigger("newBook");
    EXPECT_EQ(session().path(), path("mine.estatebook"));
    EXPECT_THAT(dialogs_.asked, ElementsAre("New Book", HasSubstr("“harbour.estatebook”"), "New Book",
                                            HasSubstr("“other.estatebook”"), "New Book"));
    EXPECT_EQ(contentOf(file("other.estatebook")), "what somebody else wrote");
}

TEST_F(DialogsTest, ABookThatCannotBeMadeLeavesTheOpenOneOpen) {
    openExample();
    dialogs_.files = {file("no such folder/mine")};
    trigger("newBook");
    ASSERT_TRUE(window_->session());
    EXPECT_EQ(session().path(), path("harbour.estatebook"));
    EXPECT_EQ(list(Page::Tenures).shownRows(), 10);
    ASSERT_EQ(dialogs_.asked.size(), 2U);
    EXPECT_THAT(dialogs_.asked.back(), HasSubstr("no such folder"));
}

TEST_F(DialogsTest, AStatementIsReplacedWhenItIsMeant) {
    showStatement();
    testkit::writeFile(path("jones.csv"), "of last year");
    dialogs_.files = {file("jones")};
    dialogs_.confirmations = {false};
    pressButton("C&SV…");
    EXPECT_EQ(contentOf(file("jones.csv")), "of last year");
    EXPECT_EQ(dialogs_.asked.size(), 3U) << "another name is asked for";
    EXPECT_EQ(dialogs_.offered, file("jones.csv"));
    dialogs_.files = {file("jones")};
    dialogs_.confirmations = {true};
    pressButton("C&SV…");
    EXPECT_EQ(contentOf(file("jones.csv")), window_->statementPage().csv());
    dialogs_.files = {file("JONES.CSV")};
    pressButton("C&SV…");
    EXPECT_EQ(contentOf(file("JONES.CSV")), window_->statementPage().csv());
}

TEST_F(DialogsTest, ABookIsOpenedThatIsChosen) {
    const auto book = makeExample();
    trigger("openBook");
    EXPECT_FALSE(window_->session());
    dialogs_.files = {QString::fromStdString(book)};
    trigger("openBook");
    ASSERT_TRUE(window_->session());
    EXPECT_EQ(session().path(), book);
}

TEST_F(DialogsTest, ADocumentIsTakenIn) {
    dialogs_.files = {QStringLiteral(ESTATEBOOK_EXAMPLES "/harbour-street.json"), file("taken.estatebook")};
    choose("&Import a Document…");
    ASSERT_TRUE(window_->session());
    EXPECT_EQ(session().path(), path("taken.estatebook"));
    EXPECT_EQ(list(Page::Tenures).shownRows(), 10);
}

TEST_F(DialogsTest, ADocumentThatIsRefusedLeavesTheBookOpen) {
    openExample();
    testkit::writeFile(path("list.json"), "bread, milk");
    dialogs_.files = {file("list.json"), file("taken.estatebook")};
    choose("&Import a Document…");
    ASSERT_EQ(dialogs_.asked.size(), 3U);
    EXPECT_THAT(dialogs_.asked.back(), HasSubstr("list.json"));
    EXPECT_FALSE(std::filesystem::exists(path("taken.estatebook")));
    ASSERT_TRUE(window_->session()) << "the book that was open is open still";
    EXPECT_EQ(session().path(), path("harbour.estatebook"));
    EXPECT_EQ(list(Page::Tenures).shownRows(), 10);
}

TEST_F(DialogsTest, AWindowWithEditsThatCannotBeSavedClosesOnlyWhenItIsMeant) {
    openExample();
    const auto jones = tenureOf(session(), "M. Jones");
    session().perform("Change of Letting", [&] { jones->setEndDate(day(2025, 1, 1)); });
    dialogs_.confirmations = {false, true};
    EXPECT_FALSE(window_->close());
    EXPECT_TRUE(window_->isVisible());
    ASSERT_EQ(dialogs_.asked.size(), 1U);
    EXPECT_THAT(dialogs_.asked.front(), HasSubstr("ends before it starts"));
    EXPECT_TRUE(window_->close());
    EXPECT_FALSE(window_->isVisible());
}

TEST_F(DialogsTest, AWindowWithoutEditsClosesUnasked) {
    openExample();
    EXPECT_TRUE(window_->close());
    EXPECT_THAT(dialogs_.asked, IsEmpty());
}

} // namespace

} // namespace estatebook::desktop::test
