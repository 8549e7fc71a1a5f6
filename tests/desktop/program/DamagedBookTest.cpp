// SPDX-License-Identifier: MIT

// Books whose damage shows only when a row is read, in front of a user.

#include "desktop/program/MainWindowTestCase.hpp"

#include "platform/values/Exception.hpp"

#include <QLabel>

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

namespace estatebook::desktop::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class DamagedBookTest : public MainWindowTestCase {
protected:
    /// Changes a letter of a text in the book file. The data base does not notice.
    static void damage(const std::string& book, std::string_view text) {
        std::ifstream file(book, std::ios::binary);
        std::string content((std::istreambuf_iterator<char>(file)), {});
        const std::size_t place = content.find(text);
        ASSERT_NE(place, std::string::npos) << text;
        content[place] = static_cast<char>(content[place] ^ 1);
        testkit::writeFile(book, content);
    }
    /// What the window says in place of a book.
    [[nodiscard]] std::string refusal() const {
        for (const auto* label : window_->findChildren<QLabel*>())
            if (label->isVisible() && label->text().contains(QStringLiteral("digest")))
                return label->text().toStdString();
        return {};
    }
};

TEST_F(DamagedBookTest, ARowThatIsDamagedClosesTheBookWithASentence) {
    const auto book = makeExample();
    damage(book, "Chimney pointing");
    static_cast<void>(window_->openBook(QString::fromStdString(book)));
    estatebook::test::settle();
    if (window_->session()) {
        choose(Page::Properties);
        window_->refreshNow();
        estatebook::test::settle();
    }
    EXPECT_FALSE(window_->session());
    EXPECT_THAT(refusal(), HasSubstr("harbour.estatebook"));
    EXPECT_THAT(refusal(), Not(HasSubstr("\n")));
}

TEST_F(DamagedBookTest, ADamagedListIsRefusedAtOnce) {
    const auto book = makeExample();
    damage(book, "12 Harbour Street");
    static_cast<void>(window_->openBook(QString::fromStdString(book)));
    estatebook::test::settle();
    EXPECT_FALSE(window_->session());
    EXPECT_THAT(refusal(), HasSubstr("harbour.estatebook"));
}

TEST_F(DamagedBookTest, WhatIsRaisedAmidAnEventIsToldOnceAndNothingEnds) {
    openExample();
    struct Failing : QObject {
        bool event(QEvent*) override {
            throw platform::ObjectInaccessibleException("the digest of a row is wrong. Check the book.");
        }
    } failing;
    for (int time = 0; time < 3; ++time) QCoreApplication::postEvent(&failing, new QEvent(QEvent::User));
    estatebook::test::settle();
    EXPECT_FALSE(window_->session());
    EXPECT_THAT(
        refusal(),
        HasSubstr("harbour.estatebook: the book cannot be read any further (the digest of a row is wrong)"));
    EXPECT_TRUE(window_->openBook(QString::fromStdString(path("harbour.estatebook"))));
}

} // namespace
} // namespace estatebook::desktop::test
