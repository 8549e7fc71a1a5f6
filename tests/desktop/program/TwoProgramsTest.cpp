// SPDX-License-Identifier: MIT
#include "desktop/program/MainWindowTestCase.hpp"
#include "desktop/program/OtherProgram.hpp"

#include "platform/system/HostOperations.hpp"

#include <QLabel>
#include <QPushButton>

#include <algorithm>

namespace estatebook::desktop::test {

namespace {

using estatebook::test::click;
using estatebook::test::settle;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class TwoProgramsTest : public MainWindowTestCase {
protected:
    /// The sentence in the window that says so; empty when there is none.
    [[nodiscard]] std::string sentenceWith(const char* words) const {
        const auto labels = window_->findChildren<QLabel*>();
        for (const QLabel* label : labels)
            if (label->isVisible() && label->text().contains(QLatin1String(words)))
                return label->text().toStdString();
        return {};
    }
    [[nodiscard]] QPushButton* button(const char* words) const {
        const auto buttons = window_->findChildren<QPushButton*>();
        for (QPushButton* each : buttons)
            if (each->isVisible() && each->text().contains(QLatin1String(words))) return each;
        return nullptr;
    }
    /// Another program renames a property, cannot save that, and is killed.
    static void killWithEditsPutAside(const std::string& book) {
        Editor other(book);
        ASSERT_EQ(other.tell("rename Quay House"), "edited");
        ASSERT_EQ(other.tell("break"), "edited");
        ASSERT_EQ(other.tell("pass 2.1"), "stuck");
        other.kill();
    }
    [[nodiscard]] std::string firstProperty() const { return cell(Page::Properties, 0, 0); }
};

TEST_F(TwoProgramsTest, WhoComesSecondLooksAndComesAgain) {
    const auto book = makeExample();
    Editor other(book);
    ASSERT_EQ(other.tell("rename Quay House"), "edited");

    EXPECT_FALSE(window_->openBook(QString::fromStdString(book)));
    settle();
    const std::string refusal = sentenceWith("has it open");
    EXPECT_THAT(refusal, HasSubstr("harbour.estatebook: "));
    EXPECT_THAT(refusal, HasSubstr(" in estatebook-desktop since "));
    EXPECT_THAT(refusal, HasSubstr("close it there first"));
    EXPECT_EQ(std::ranges::count(refusal, '\n'), 0) << refusal;

    ASSERT_TRUE(button("Look at it"));
    click(*button("Look at it"));
    ASSERT_TRUE(window_->session());
    EXPECT_FALSE(session().canEdit());
    choose(Page::Properties);
    EXPECT_EQ(firstProperty(), "12 Harbour Street") << "what is not saved is not seen";
    EXPECT_EQ(other.tell("pass 2.1"), "saved") << "who looks at a book holds nobody up";
    EXPECT_EQ(firstProperty(), "12 Harbour Street") << "it stays as it was when it was opened";

    ASSERT_EQ(other.tell("rename Pier House"), "edited");
    ASSERT_TRUE(other.end());
    open(book);
    EXPECT_TRUE(session().canEdit());
    EXPECT_EQ(firstProperty(), "Pier House");
}

TEST_F(TwoProgramsTest, CommandsReadABookThatIsOpenAndDoNotWriteIt) {
    open(makeExample());
    const QString book = QString::fromStdString(session().path());
    const auto document = QStringLiteral(ESTATEBOOK_EXAMPLES "/harbour-street.json");
    const Printed written = Printed::by({QStringLiteral("import"), document, book});
    EXPECT_NE(written.exitCode, 0);
    EXPECT_THAT(written.errors,
                HasSubstr("harbour.estatebook: it cannot be opened for writing: it is held by "));
    EXPECT_THAT(written.errors, HasSubstr(" with estatebook-desktop since 2026-06-30 11:00:00"));
    EXPECT_EQ(std::ranges::count(written.errors, '\n'), 1) << written.errors;

    const auto list = [&] {
        return Printed::by({QStringLiteral("properties"), QStringLiteral("--book"), book});
    };
    EXPECT_THAT(list().out, HasSubstr("12 Harbour Street"));
    const auto property = session().properties().front();
    session().perform("Change", [&] { property->setName(platform::String::make("Quay House")); });
    EXPECT_THAT(list().out, HasSubstr("12 Harbour Street"));
    passTime(2.1);
    const Printed after = list();
    EXPECT_EQ(after.exitCode, 0) << after.errors;
    EXPECT_THAT(after.out, HasSubstr("Quay House"));
}

TEST_F(TwoProgramsTest, AProgramThatWasKilledHoldsNoBook) {
    const auto book = makeExample();
    Editor other(book);
    ASSERT_EQ(other.tell("rename Quay House"), "edited");
    ASSERT_EQ(other.tell("pass 2.1"), "saved");
    other.kill();
    open(book);
    choose(Page::Properties);
    EXPECT_EQ(firstProperty(), "Quay House");
}

TEST_F(TwoProgramsTest, EditsThatAKilledProgramPutAsideAreOffered) {
    const auto book = makeExample();
    killWithEditsPutAside(book);
    open(book);
    choose(Page::Properties);
    EXPECT_EQ(firstProperty(), "12 Harbour Street");
    EXPECT_THAT(window_->banner().sentence().toStdString(), HasSubstr("kept beside the book"));
    ASSERT_TRUE(button("Go on with them"));
    click(*button("Go on with them"));
    EXPECT_EQ(firstProperty(), "Quay House");
    EXPECT_EQ(window_->banner().sentence().toStdString(), "");
    EXPECT_TRUE(session().save()) << session().trouble();
}

TEST_F(TwoProgramsTest, EditsThatAKilledProgramPutAsideAreDiscarded) {
    const auto book = makeExample();
    killWithEditsPutAside(book);
    open(book);
    ASSERT_TRUE(button("Discard them"));
    click(*button("Discard them"));
    EXPECT_FALSE(session().putAsideOn());
    makeWindow();
    open(book);
    choose(Page::Properties);
    EXPECT_EQ(window_->banner().sentence().toStdString(), "");
    EXPECT_EQ(firstProperty(), "12 Harbour Street");
}

} // namespace

} // namespace estatebook::desktop::test
