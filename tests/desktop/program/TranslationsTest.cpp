// SPDX-License-Identifier: MIT
#include "desktop/program/MainWindowTestCase.hpp"

#include "estatebook-desktop/window/Translations.hpp"

#include <QAbstractButton>
#include <QComboBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QTableWidget>
#include <QXmlStreamReader>

#include <map>
#include <set>

namespace estatebook::desktop::test {

namespace {

using estatebook::test::settle;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using Texts = std::set<QString>;

/// What can be read in a window, or heard of it.
Texts textsIn(const QWidget& window) {
    Texts texts;
    const auto addHeader = [&](const QAbstractItemModel* model) {
        for (int column = 0; model && column < model->columnCount(); ++column)
            texts.insert(model->headerData(column, Qt::Horizontal).toString());
    };
    const auto widgets = window.findChildren<QWidget*>();
    for (const QWidget* widget : widgets) {
        texts.insert({widget->accessibleName(), widget->toolTip(), widget->windowTitle()});
        if (const auto* label = qobject_cast<const QLabel*>(widget)) texts.insert(label->text());
        if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) texts.insert(button->text());
        if (const auto* group = qobject_cast<const QGroupBox*>(widget)) texts.insert(group->title());
        if (const auto* line = qobject_cast<const QLineEdit*>(widget)) texts.insert(line->placeholderText());
        if (const auto* table = qobject_cast<const QAbstractItemView*>(widget)) addHeader(table->model());
        // Where something else can be written, the names of the book are offered.
        if (const auto* box = qobject_cast<const QComboBox*>(widget); box && !box->isEditable())
            for (int item = 0; item < box->count(); ++item) texts.insert(box->itemText(item));
    }
    const auto actions = window.findChildren<QAction*>();
    for (const QAction* action : actions) texts.insert({action->text(), action->toolTip()});
    texts.insert(window.windowTitle());
    texts.erase(QString());
    return texts;
}

class TranslationsTest : public MainWindowTestCase {
protected:
    TranslationsTest() { speak({QStringLiteral("de-DE")}); }
    ~TranslationsTest() override { installTranslations({}); }

    void speak(const QStringList& languages) {
        window_.reset();
        installTranslations(languages);
        makeWindow();
    }
    [[nodiscard]] std::vector<std::string> menus() const {
        std::vector<std::string> titles;
        const auto actions = window_->menuBar()->actions();
        for (const QAction* action : actions) titles.push_back(action->text().toStdString());
        return titles;
    }
    [[nodiscard]] std::string textOfAction(const char* name) const {
        return window_->findChild<QAction*>(QLatin1String(name))->text().toStdString();
    }
    /// Of each English text all that it is in German.
    [[nodiscard]] static std::map<QString, Texts> german() {
        QFile file(QStringLiteral(ESTATEBOOK_TRANSLATIONS "/estatebook-desktop_de.ts"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QXmlStreamReader reader(&file);
        std::map<QString, Texts> translations;
        QString source;
        while (!reader.atEnd()) {
            reader.readNext();
            if (!reader.isStartElement()) continue;
            if (reader.name() == QLatin1String("source")) source = reader.readElementText();
            if (reader.name() == QLatin1String("translation"))
                translations[source].insert(reader.readElementText());
        }
        return translations;
    }
    /// No text of the window is one that should read otherwise.
    void expectGerman(const QWidget& window, const char* which) const {
        const Texts texts = textsIn(window);
        EXPECT_FALSE(texts.empty());
        expectRoom(window, which);
        for (const QString& text : texts) {
            const auto found = translations_.find(text);
            EXPECT_TRUE(found == translations_.end() || found->second.contains(text))
                << which << ": " << text.toStdString();
        }
    }
    /// German words are longer than English ones.
    static void expectRoom(const QWidget& window, const char* which) {
        const auto widgets = window.findChildren<QWidget*>();
        for (const QWidget* widget : widgets) {
            const auto* label = qobject_cast<const QLabel*>(widget);
            const auto* button = qobject_cast<const QAbstractButton*>(widget);
            if (!widget->isVisible() || (label && label->wordWrap()) || (!label && !button)) continue;
            EXPECT_LE(widget->sizeHint().width(), widget->width())
                << which << ": " << (label ? label->text() : button->text()).toStdString();
        }
        constexpr int SpaceBesideText = 6;
        const auto tables = window.findChildren<QTableWidget*>();
        for (const QTableWidget* table : tables)
            for (int row = 0; row < table->rowCount(); ++row)
                for (int column = 0; column < table->columnCount(); ++column)
                    if (const QTableWidgetItem* item = table->item(row, column)) {
                        EXPECT_LE(table->fontMetrics().horizontalAdvance(item->text()),
                                  table->columnWidth(column) - SpaceBesideText)
                            << which << ": " << item->text().toStdString();
                    }
    }
    void expectGermanSheet(const char* action) {
        window_->findChild<QAction*>(QLatin1String(action))->trigger();
        settle();
        ASSERT_TRUE(window_->sheet()) << action;
        expectGerman(sheetWidget(), action);
        estatebook::test::press(sheetWidget(), Qt::Key_Escape);
        ASSERT_FALSE(window_->sheet());
    }

private:
    std::map<QString, Texts> translations_ = german();
};

const auto German = ElementsAre("&Buch", "B&earbeiten", "&Mietverhältnis", "&Ansicht", "&Hilfe");
const auto English = ElementsAre("&Book", "&Edit", "&Letting", "&View", "&Help");

TEST_F(TranslationsTest, TheFirstLanguageThatThereIsIsSpoken) {
    EXPECT_THAT(menus(), German);
    speak({QStringLiteral("de-AT"), QStringLiteral("en-GB")});
    EXPECT_THAT(menus(), German);
    speak({QStringLiteral("fi-FI"), QStringLiteral("de")});
    EXPECT_THAT(menus(), German);
    speak({QStringLiteral("en-GB"), QStringLiteral("de-DE")});
    EXPECT_THAT(menus(), English) << "English is the program's own";
    speak({QStringLiteral("fi-FI")});
    EXPECT_THAT(menus(), English);
    speak({});
    EXPECT_THAT(menus(), English);
}

TEST_F(TranslationsTest, EachWindowIsInOneLanguage) {
    expectGerman(*window_, "welcome");
    openExample();
    for (const Page page : {Page::Tenures, Page::Properties, Page::Tenants, Page::Arrears, Page::Settings}) {
        window_->showPage(page);
        window_->refreshNow();
        settle();
        expectGerman(*window_, "page");
    }
    window_->showPage(Page::Tenures);
    selectRowOf(Page::Tenures, "M. Jones");
    for (const char* action : {"edit", "add", "pay", "notes", "addProperty", "addTenant"})
        expectGermanSheet(action);
    window_->showPage(Page::Tenures);
    window_->findChild<QAction*>(QStringLiteral("statement"))->trigger();
    settle();
    expectGerman(*window_, "statement");
    ASSERT_TRUE(window_->makeBook(QString::fromStdString(path("empty.estatebook"))));
    settle();
    expectGerman(*window_, "empty");
}

TEST_F(TranslationsTest, AStepIsCalledByItsNameInTheLanguage) {
    openExample();
    selectRowOf(Page::Tenures, "M. Jones");
    window_->findChild<QAction*>(QStringLiteral("pay"))->trigger();
    settle();
    confirm();
    EXPECT_EQ(textOfAction("undo"), "&Rückgängig: Zahlung");
    session().undo();
    settle();
    EXPECT_EQ(textOfAction("undo"), "&Rückgängig");
    EXPECT_EQ(textOfAction("redo"), "&Wiederholen: Zahlung");
}

TEST_F(TranslationsTest, KeysAreTheSameInEachLanguage) {
    openExample();
    press(*window_, Qt::Key_T, Qt::ControlModifier);
    EXPECT_TRUE(window_->sheet());
    press(sheetWidget(), Qt::Key_Escape);
    press(*window_, Qt::Key_3, Qt::ControlModifier);
    EXPECT_EQ(window_->page(), Page::Tenants);
}

TEST_F(TranslationsTest, WhatIsNoBookIsRefusedInTheLanguage) {
    EXPECT_FALSE(window_->openBook(QString::fromStdString(path("gone.txt"))));
    settle();
    const Texts texts = textsIn(*window_);
    EXPECT_TRUE(std::ranges::any_of(texts, [](const QString& text) {
        return text.contains(QStringLiteral("Dieses Buch gibt es nicht"));
    }));
}

TEST_F(TranslationsTest, TheProgramStartsInTheLanguageOfTheUser) {
    const auto help = [](const QString& locale) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("LC_ALL"), locale);
        environment.remove(QStringLiteral("LANGUAGE"));
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(ESTATEBOOK_TEST_DESKTOP), {QStringLiteral("--help")});
        process.waitForFinished();
        EXPECT_EQ(process.exitCode(), 0);
        return process.readAllStandardOutput().toStdString();
    };
    EXPECT_THAT(help(QStringLiteral("de_DE.UTF-8")), HasSubstr("Führt die Bücher vermieteter Objekte."));
    EXPECT_THAT(help(QStringLiteral("en_GB.UTF-8")), HasSubstr("Keeps the books of rental properties."));
}

} // namespace

} // namespace estatebook::desktop::test
