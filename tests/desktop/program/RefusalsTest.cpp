// SPDX-License-Identifier: MIT

// What the program says of books that it cannot open, save or make, in each of its languages.

#include "desktop/program/MainWindowTestCase.hpp"

#include "estatebook-desktop/session/Sentences.hpp"
#include "estatebook-desktop/window/Translations.hpp"
#include "estatebook/book/StoredBook.hpp"

#include <QLabel>

#include <array>
#include <cerrno>
#include <ctime>
#include <fstream>
#include <set>

namespace estatebook::desktop::test {

namespace {

using estatebook::test::settle;
using platform::SQLiteStore;
using platform::StoreError;
using platform::StoreErrorCode;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

struct Language {
    const char* name;
    bool isGerman;
};

class RefusalsTest : public MainWindowTestCase, public testing::WithParamInterface<Language> {
protected:
    RefusalsTest() {
        window_.reset();
        QLocale::setDefault(QLocale(QLatin1String(GetParam().name)));
        installTranslations({QLatin1String(GetParam().name)});
        makeWindow();
    }
    ~RefusalsTest() override {
        window_.reset();
        installTranslations({});
        QLocale::setDefault(locale_);
    }

    /// What stands in the place of a book.
    [[nodiscard]] std::string refusalOf(const std::string& book) {
        EXPECT_FALSE(window_->openBook(QString::fromStdString(book)));
        settle();
        const auto labels = window_->findChildren<QLabel*>();
        for (const QLabel* label : labels)
            if (label->isVisible() && label->text().startsWith(QString::fromStdString(book + ": ")))
                return label->text().toStdString();
        return {};
    }
    [[nodiscard]] static std::string in(const char* english, const char* german) {
        return GetParam().isGerman ? german : english;
    }
    static void writeInto(const std::string& file, std::streamoff place, std::string_view bytes) {
        std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(place);
        stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    QLocale locale_;

    void renameProperty() {
        const auto property = session().properties().front();
        session().perform("Change", [&] { property->setName(platform::String::make("Quay House")); });
    }
};

TEST_P(RefusalsTest, ABookThatIsMissing) {
    EXPECT_THAT(refusalOf(path("gone.estatebook")),
                EndsWith(in(": there is no such book; choose another one",
                            ": Dieses Buch gibt es nicht; wählen Sie ein anderes")));
}

TEST_P(RefusalsTest, AFileThatIsNoBook) {
    const auto file = path("letter.estatebook");
    testkit::writeFile(file, std::string(5000, 'x'));
    EXPECT_THAT(refusalOf(file), EndsWith(in("choose a book's file", "wählen Sie die Datei eines Buchs")));
}

TEST_P(RefusalsTest, ABookOfANewerVersion) {
    const auto book = makeExample();
    writeInto(book, 60, std::string_view("\0\0\0\x63", 4));
    EXPECT_THAT(refusalOf(book), EndsWith(in("open it with that one", "öffnen Sie es mit dieser")));
}

TEST_P(RefusalsTest, ABookThatIsDamaged) {
    const auto book = makeExample();
    writeInto(book, 18, "\2\2");
    const std::string refusal = refusalOf(book);
    EXPECT_THAT(refusal, HasSubstr(in("the book is damaged", "Das Buch ist beschädigt")));
    EXPECT_THAT(refusal, HasSubstr("(another program has put it into another journal mode)"));
    EXPECT_THAT(refusal,
                EndsWith(in("go on with an earlier copy", "arbeiten Sie mit einer früheren Kopie weiter")));
}

/// The computer's zone, as long as this lives.
class ZoneOfTheComputer {
public:
    explicit ZoneOfTheComputer(const char* zone) { set(zone); }
    ~ZoneOfTheComputer() { set(former_.isNull() ? nullptr : former_.constData()); }
    ZoneOfTheComputer(const ZoneOfTheComputer&) = delete;
    ZoneOfTheComputer& operator=(const ZoneOfTheComputer&) = delete;

private:
    static void set(const char* zone) {
        if (zone)
            qputenv("TZ", zone);
        else
            qunsetenv("TZ");
        tzset();
    }
    QByteArray former_ = qgetenv("TZ");
};

TEST_P(RefusalsTest, ABookThatIsOpenElsewhere) {
    const ZoneOfTheComputer zone("Asia/Tokyo");
    const auto book = makeExample();
    const StoredBook other = StoredBook::openForWriting(book, "pay");
    const std::string refusal = refusalOf(book);
    EXPECT_THAT(refusal, HasSubstr(in(" has it open in estatebook pay since ", " hat das Buch seit ")));
    EXPECT_THAT(refusal, HasSubstr(in("8:00", "20:00"))) << "by the computer's clock";
    EXPECT_THAT(refusal, EndsWith(in("close it there first", "schließen Sie es dort zuerst")));
}

TEST_P(RefusalsTest, ABookThatSomebodyHoldsWhoIsNotNamed) {
    const auto book = makeExample();
    const StoredBook other = StoredBook::openForWriting(book, "pay");
    testkit::writeFile(book + ".lock", "scribble\n");
    EXPECT_THAT(
        refusalOf(book),
        EndsWith(in(": it is open in another program; close it there first",
                    ": Das Buch ist in einem anderen Programm geöffnet; schließen Sie es dort zuerst")));
}

TEST_P(RefusalsTest, ABookThatIsTakenAwayWhileItIsOpen) {
    open(makeExample());
    renameProperty();
    std::filesystem::rename(path("harbour.estatebook"), path("elsewhere.estatebook"));
    EXPECT_FALSE(session().save());
    EXPECT_THAT(session().trouble(),
                AllOf(HasSubstr(in("was moved or replaced", "wurde verschoben oder ersetzt")),
                      HasSubstr(in("put it back", "legen Sie es zurück")), HasSubstr(".edits.json")));
    std::filesystem::rename(path("elsewhere.estatebook"), path("harbour.estatebook"));
    EXPECT_TRUE(session().save()) << session().trouble();
}

TEST_P(RefusalsTest, ABookThatSomebodyReadsForLong) {
    open(makeExample());
    {
        const StoredBook reader = StoredBook::openForReading(path("harbour.estatebook"));
        renameProperty();
        EXPECT_FALSE(session().save());
        EXPECT_THAT(session().trouble(), HasSubstr(in("another program is reading the book",
                                                      "Ein anderes Programm liest gerade das Buch")));
    }
    EXPECT_TRUE(session().save()) << session().trouble();
}

TEST_P(RefusalsTest, ABookThatCannotBeMade) {
    open(makeExample());
    EXPECT_FALSE(window_->makeBook(QString::fromStdString(path("nowhere/mine.estatebook"))));
    EXPECT_FALSE(window_->makeBook(QString::fromStdString(path("harbour.estatebook"))));
    testkit::writeFile(path("new.estatebook-journal"), "a save");
    EXPECT_FALSE(window_->makeBook(QString::fromStdString(path("new.estatebook"))));
    EXPECT_THAT(dialogs_.asked,
                testing::ElementsAre(
                    EndsWith(in("there is no such folder; make it first", "legen Sie ihn zuerst an")),
                    EndsWith(in("choose another name", "wählen Sie einen anderen")),
                    HasSubstr(in("the unfinished save", "noch nicht gesichert"))));
    EXPECT_TRUE(window_->session());
}

TEST_P(RefusalsTest, ARowThatCannotBeRead) {
    open(makeExample());
    const auto raised = [&](const std::string& reason) {
        window_->giveUpBook(std::make_exception_ptr(platform::ObjectInaccessibleException(reason)));
        settle();
        const auto labels = window_->findChildren<QLabel*>();
        for (const QLabel* label : labels)
            if (label->isVisible() && label->text().contains(QStringLiteral("digest")))
                return label->text().toStdString();
        return std::string();
    };
    const auto book = path("harbour.estatebook");
    EXPECT_EQ(
        raised(book +
               ": a row does not agree with its digest. It was left as it is; go on with an earlier copy."),
        book + in(": the book cannot be read any further (a row does not agree with its digest); open it "
                  "again, or go "
                  "on with an earlier copy",
                  ": Das Buch lässt sich nicht weiter lesen (a row does not agree with its digest); öffnen "
                  "Sie es noch "
                  "einmal, oder arbeiten Sie mit einer früheren Kopie weiter"));
}

TEST_P(RefusalsTest, EachRefusalHasASentenceOfItsOwn) {
    std::set<std::string> sentences;
    for (std::int64_t code = static_cast<std::int64_t>(StoreErrorCode::Missing);
         code <= static_cast<std::int64_t>(StoreErrorCode::OutOfMemory); ++code) {
        const auto kind = static_cast<StoreErrorCode>(code);
        if (kind == StoreErrorCode::InvalidChange || kind == StoreErrorCode::Unsupported) continue;
        for (const char* message : {"/b: crooked. Do that.", ""}) {
            const std::string sentence = sentenceOf(storeFailure("b", StoreError{kind, "/b", message}));
            EXPECT_THAT(sentence, StartsWith("b: "));
            EXPECT_THAT(sentence, HasSubstr(";")) << "and what can be done";
            EXPECT_THAT(sentence, AllOf(Not(HasSubstr("%")), Not(HasSubstr("Do that")), Not(HasSubstr("()")),
                                        Not(HasSubstr("\n"))));
            sentences.insert(sentence);
        }
    }
    EXPECT_EQ(sentences.size(), 15U) << "two of them tell of the place";
    using Why = FileFailure::Why;
    for (const Why why : {Why::NoFolder, Why::JournalLeft, Why::NoPlainFile, Why::IsBook, Why::System})
        sentences.insert(sentenceOf(FileFailure(why, "b", "own", ENOSPC)));
    EXPECT_EQ(sentences.size(), 20U);
    EXPECT_THAT(sentences, Not(testing::Contains(HasSubstr("own"))));
    if (GetParam().isGerman) {
        EXPECT_THAT(sentences, testing::Each(Not(testing::ContainsRegex("[; ](the|and|is|it) "))));
    }
}

TEST_P(RefusalsTest, WhatHasNoSentenceKeepsItsText) {
    EXPECT_EQ(sentenceOf(storeFailure("b", StoreError{StoreErrorCode(999), "/b", "/b: so it is. Do that."})),
              "b: so it is; do that");
    EXPECT_EQ(sentenceOf(storeFailure(
                  "b", StoreError{StoreErrorCode::InvalidChange, "/b", "/b: so it is. Do that."})),
              "b: so it is; do that");
    EXPECT_EQ(sentenceOf(Failure(ExitCode::BadData, "b: line 3 is no line")), "b: line 3 is no line");
}

INSTANTIATE_TEST_SUITE_P(Languages, RefusalsTest,
                         testing::Values(Language{"en", false}, Language{"de-DE", true}),
                         [](const auto& each) { return each.param.isGerman ? "German" : "English"; });

} // namespace

} // namespace estatebook::desktop::test
