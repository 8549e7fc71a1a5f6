// SPDX-License-Identifier: MIT
#include "desktop/ModalScript.hpp"
#include "desktop/program/DialogTestCase.hpp"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPrintDialog>
#include <QTreeView>

namespace estatebook::desktop::test {

namespace {

using estatebook::test::click;
using estatebook::test::ModalScript;
using estatebook::test::settle;
using testing::HasSubstr;
using testing::StartsWith;

/// The dialogs that a user gets, with a user in front of them.
class RealDialogsTest : public DialogTestCase {
protected:
    RealDialogsTest() {
        // Those of a desktop would be out of reach.
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        qputenv("HOME", path("").c_str());
        makeWindow();
    }
    ~RealDialogsTest() override {
        window_.reset();
        qputenv("HOME", home_);
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, false);
    }
    Dialogs& dialogs() override { return Dialogs::usual(); }

    // What the user does
    /// In the place of the name that stands there, and then the return key.
    static void typeName(QFileDialog& dialog, const QString& name) {
        auto& line = *dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        estatebook::test::giveFocus(line);
        press(line, Qt::Key_A, Qt::ControlModifier);
        for (const QChar each : name) QTest::keyClick(dialog.windowHandle(), each.toLatin1());
        press(line, Qt::Key_Return);
    }
    static std::function<void(QFileDialog&)> typing(const QString& name) {
        return [name](QFileDialog& dialog) { typeName(dialog, name); };
    }
    template <class Dialog>
    static void escape(Dialog& dialog) {
        press(dialog, Qt::Key_Escape);
    }
    /// The button of that text, in a message whose words are noted.
    std::function<void(QMessageBox&)> answering(const char* text) {
        return [this, text](QMessageBox& box) {
            told_ = box.text().toStdString();
            const auto buttons = box.buttons();
            for (QAbstractButton* button : buttons)
                if (button->text().remove(QLatin1Char('&')) == QLatin1String(text)) return click(*button);
            ADD_FAILURE() << "no button " << text;
            box.close();
        };
    }

    std::string told_;

private:
    QByteArray home_ = qgetenv("HOME");
};

TEST_F(RealDialogsTest, AnEmptyBookIsMadeUnderTheNameThatIsTyped) {
    ModalScript user;
    QString offered;
    user.then<QFileDialog>([&](QFileDialog& dialog) {
        offered = dialog.selectedFiles().value(0);
        EXPECT_EQ(dialog.windowTitle().toStdString(), "New Book");
        typeName(dialog, QStringLiteral("mine"));
    });
    trigger("newBook");
    EXPECT_TRUE(user.isDone());
    EXPECT_EQ(offered, file("My Properties.estatebook"));
    ASSERT_TRUE(window_->session());
    EXPECT_EQ(session().path(), path("mine.estatebook"));
}

TEST_F(RealDialogsTest, ANewBookTakesTheNameThatIsOffered) {
    ModalScript user;
    user.then<QFileDialog>([](QFileDialog& dialog) { press(dialog, Qt::Key_Return); });
    trigger("newBook");
    ASSERT_TRUE(window_->session());
    EXPECT_EQ(session().path(), path("My Properties.estatebook"));
}

TEST_F(RealDialogsTest, ABookThatIsThereIsNotWrittenOver) {
    openExample();
    ModalScript user;
    user.then<QFileDialog>(typing(QStringLiteral("harbour")))
        .then<QMessageBox>(answering("OK"))
        .then<QFileDialog>(typing(QStringLiteral("another")));
    trigger("newBook");
    EXPECT_TRUE(user.isDone());
    EXPECT_THAT(told_, HasSubstr("“harbour.estatebook”"));
    EXPECT_EQ(session().path(), path("another.estatebook"));
    EXPECT_EQ(BookSession::openForReading(path("harbour.estatebook"), loop_->runLoop())->tenures().size(),
              10U);
}

TEST_F(RealDialogsTest, EscapeOpensAndMakesNothing) {
    ModalScript user;
    user.then<QFileDialog>(escape<QFileDialog>);
    trigger("newBook");
    EXPECT_TRUE(user.isDone());
    user.then<QFileDialog>(escape<QFileDialog>);
    trigger("openBook");
    EXPECT_TRUE(user.isDone());
    EXPECT_FALSE(window_->session());
    EXPECT_FALSE(std::filesystem::exists(path("My Properties.estatebook")));
}

TEST_F(RealDialogsTest, ABookIsChosenAmongThoseOfTheFolder) {
    const auto book = makeExample();
    testkit::writeFile(path("list.txt"), "bread");
    ModalScript user;
    user.then<QFileDialog>([&](QFileDialog& dialog) {
        auto& list = *dialog.findChild<QTreeView*>(QStringLiteral("treeView"));
        ASSERT_TRUE(QTest::qWaitFor([&] { return list.model()->rowCount(list.rootIndex()) > 0; },
                                    estatebook::test::Patience));
        QModelIndex found;
        for (int row = 0; row < list.model()->rowCount(list.rootIndex()); ++row) {
            const QModelIndex index = list.model()->index(row, 0, list.rootIndex());
            EXPECT_NE(index.data().toString(), QStringLiteral("list.txt")) << "no book";
            if (index.data().toString() == QLatin1String("harbour.estatebook")) found = index;
        }
        if (!found.isValid()) {
            ADD_FAILURE() << "the book is not listed";
            return dialog.reject();
        }
        estatebook::test::clickAt(*list.viewport(), list.visualRect(found).center());
        press(list, Qt::Key_Return);
    });
    trigger("openBook");
    EXPECT_TRUE(user.isDone());
    ASSERT_TRUE(window_->session());
    EXPECT_EQ(session().path(), book);
}

TEST_F(RealDialogsTest, ABookThatIsNotThereIsToldOfAndAnotherOneIsChosen) {
    const auto book = makeExample();
    ModalScript user;
    user.then<QFileDialog>(typing(QStringLiteral("gone.estatebook")))
        .then<QMessageBox>(answering("OK"))
        .then<QFileDialog>(typing(QStringLiteral("harbour.estatebook")));
    trigger("openBook");
    EXPECT_TRUE(user.isDone());
    EXPECT_THAT(told_, HasSubstr("gone.estatebook"));
    ASSERT_TRUE(window_->session());
    EXPECT_EQ(session().path(), book);
}

TEST_F(RealDialogsTest, APdfIsSavedWithASuffixThatNobodyTyped) {
    showStatement();
    ModalScript user;
    QString offered;
    user.then<QFileDialog>([&](QFileDialog& dialog) {
        offered = dialog.selectedFiles().value(0);
        typeName(dialog, QStringLiteral("M. Jones"));
    });
    pressButton("PD&F…");
    EXPECT_TRUE(user.isDone());
    EXPECT_TRUE(offered.startsWith(file("")) && offered.endsWith(QLatin1String(".pdf")))
        << offered.toStdString();
    EXPECT_THAT(contentOf(file("M. Jones.pdf")), StartsWith("%PDF"));
    EXPECT_THAT(textOfPdf(file("M. Jones.pdf")), HasSubstr("M. Jones"));
}

TEST_F(RealDialogsTest, AFileThatIsThereIsReplacedAfterAQuestion) {
    showStatement();
    testkit::writeFile(path("jones.csv"), "of last year");
    ModalScript user;
    user.then<QFileDialog>(typing(QStringLiteral("jones")))
        .then<QMessageBox>(escape<QMessageBox>)
        .then<QFileDialog>(escape<QFileDialog>);
    pressButton("C&SV…");
    EXPECT_TRUE(user.isDone());
    EXPECT_EQ(contentOf(file("jones.csv")), "of last year");
    user.then<QFileDialog>(typing(QStringLiteral("jones.csv"))).then<QMessageBox>(answering("Cancel"));
    user.then<QFileDialog>([](QFileDialog& dialog) { press(dialog, Qt::Key_Return); });
    user.then<QMessageBox>(answering("Replace"));
    pressButton("C&SV…");
    EXPECT_TRUE(user.isDone());
    EXPECT_THAT(told_, HasSubstr("“jones.csv”"));
    EXPECT_TRUE(contentOf(file("jones.csv")) == window_->statementPage().csv());
}

TEST_F(RealDialogsTest, AFolderIsGoneIntoAndNotWritten) {
    showStatement();
    std::filesystem::create_directory(path("paper"));
    ModalScript user;
    user.then<QFileDialog>([](QFileDialog& dialog) {
        typeName(dialog, QStringLiteral("paper"));
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_EQ(dialog.directory().dirName(), QStringLiteral("paper"));
        typeName(dialog, QStringLiteral("jones"));
    });
    pressButton("C&SV…");
    EXPECT_TRUE(user.isDone());
    EXPECT_TRUE(std::filesystem::is_regular_file(path("paper/jones.csv")));
}

TEST_F(RealDialogsTest, EscapeSavesNoStatement) {
    showStatement();
    ModalScript user;
    user.then<QFileDialog>(escape<QFileDialog>);
    pressButton("PD&F…");
    EXPECT_TRUE(user.isDone());
    for (const auto& entry : std::filesystem::directory_iterator(path("")))
        EXPECT_NE(entry.path().extension(), ".pdf") << entry.path();
    EXPECT_TRUE(window_->statementPage().isVisible()) << "the statement is not left";
}

/// A computer without a printer prints into files.
void chooseFile(QPrintDialog& dialog, const QString& name) {
    auto& line = *dialog.findChild<QLineEdit*>(QStringLiteral("filename"));
    ASSERT_TRUE(line.isVisible());
    estatebook::test::giveFocus(line);
    press(line, Qt::Key_A, Qt::ControlModifier);
    for (const QChar each : name) QTest::keyClick(dialog.windowHandle(), each.toLatin1());
    settle();
    // The list of names that fit takes the first return key for itself.
    if (QApplication::activePopupWidget()) press(dialog, Qt::Key_Return);
}

TEST_F(RealDialogsTest, AStatementIsPrinted) {
    showStatement();
    ModalScript user;
    user.then<QPrintDialog>([&](QPrintDialog& dialog) {
        EXPECT_TRUE(dialog.findChild<QLineEdit*>(QStringLiteral("filename"))->text().startsWith(file("")));
        chooseFile(dialog, file("paper.pdf"));
        press(dialog, Qt::Key_Return);
    });
    pressButton("&Print…");
    EXPECT_TRUE(user.isDone());
    const std::string text = textOfPdf(file("paper.pdf"));
    EXPECT_THAT(text, HasSubstr("M. Jones"));
    const auto& model = window_->statementPage().model();
    EXPECT_THAT(text, HasSubstr(model.texts(model.rowCount() - 1).last().toStdString()));
}

TEST_F(RealDialogsTest, EscapePrintsNothing) {
    showStatement();
    ModalScript user;
    user.then<QPrintDialog>([&](QPrintDialog& dialog) {
        chooseFile(dialog, file("paper.pdf"));
        press(dialog, Qt::Key_Escape);
    });
    pressButton("&Print…");
    EXPECT_TRUE(user.isDone());
    EXPECT_FALSE(std::filesystem::exists(path("paper.pdf")));
}

TEST_F(RealDialogsTest, PaperThatIsThereIsReplacedAfterAQuestion) {
    showStatement();
    testkit::writeFile(path("paper.pdf"), "of last year");
    ModalScript user;
    user.then<QPrintDialog>([&](QPrintDialog& dialog) {
            chooseFile(dialog, file("paper.pdf"));
            press(dialog, Qt::Key_Return);
            EXPECT_TRUE(dialog.isVisible());
            press(dialog, Qt::Key_Escape);
        })
        .then<QMessageBox>(answering("No"));
    pressButton("&Print…");
    EXPECT_TRUE(user.isDone());
    EXPECT_EQ(contentOf(file("paper.pdf")), "of last year");
}

TEST_F(RealDialogsTest, AQuestionIsAnsweredByItsButtons) {
    openExample();
    selectRowOf(Page::Tenures, "M. Jones");
    ModalScript user;
    user.then<QMessageBox>(escape<QMessageBox>);
    trigger("delete");
    EXPECT_EQ(list(Page::Tenures).shownRows(), 10) << "escape means no";
    user.then<QMessageBox>([](QMessageBox& box) { press(box, Qt::Key_Return); });
    trigger("delete");
    EXPECT_EQ(list(Page::Tenures).shownRows(), 10) << "and so does the return key";
    user.then<QMessageBox>(answering("Cancel"));
    trigger("delete");
    EXPECT_EQ(list(Page::Tenures).shownRows(), 10);
    user.then<QMessageBox>(answering("Delete"));
    trigger("delete");
    EXPECT_EQ(list(Page::Tenures).shownRows(), 9);
    EXPECT_TRUE(user.isDone());
}

} // namespace

} // namespace estatebook::desktop::test
