// SPDX-License-Identifier: MIT

// A palette of black and white alone, given while the window stands: everything that is drawn is then of their tones, and all texts
// can be told from what they stand on.

#include "desktop/program/MainWindowTestCase.hpp"

#include "estatebook-desktop/window/Appearance.hpp"

#include <QAbstractButton>
#include <QComboBox>
#include <QDateEdit>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QStyle>

#include <algorithm>
#include <cmath>
#include <map>

namespace estatebook::desktop::test {

namespace {

using estatebook::test::settle;

constexpr double LeastContrast = 7;

double luminanceOf(QRgb colour) {
    const auto linear = [](int part) {
        const double share = part / 255.0;
        return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

double contrastOf(QRgb one, QRgb other) {
    const auto [dark, bright] = std::minmax({luminanceOf(one), luminanceOf(other)});
    return (bright + 0.05) / (dark + 0.05);
}

QPalette paletteOf(const QColor& paper, const QColor& ink, const QColor& faded) {
    QPalette palette(ink, paper, paper, paper, paper, ink, ink, paper, paper);
    for (const auto role : {QPalette::AlternateBase, QPalette::ToolTipBase, QPalette::HighlightedText})
        palette.setColor(role, paper);
    for (const auto role :
         {QPalette::ToolTipText, QPalette::Highlight, QPalette::Link, QPalette::LinkVisited})
        palette.setColor(role, ink);
    palette.setColor(QPalette::PlaceholderText, faded);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faded);
    return palette;
}

const QPalette WhiteOnBlack = paletteOf(Qt::black, Qt::white, QColor(0xC0C0C0));
const QPalette BlackOnWhite = paletteOf(Qt::white, Qt::black, QColor(0x404040));

/// A place where a text is drawn.
struct Place {
    std::string text;
    QRect where;
};

/// The places of the texts that are seen in a window, in its coordinates.
std::vector<Place> textsIn(const QWidget& window) {
    std::vector<Place> places;
    const auto add = [&](const QWidget& widget, const QRect& where, const QString& text) {
        QString plain = text;
        plain.remove(QLatin1Char('&'));
        const QRect seen = where & widget.rect();
        if (!plain.trimmed().isEmpty() && seen.width() > 2 && seen.height() > 2)
            places.push_back({plain.toStdString(), seen.translated(widget.mapTo(&window, QPoint()))});
    };
    // Frames are no texts.
    constexpr int Frame = 3;
    const auto inside = [](const QWidget& widget) {
        return widget.rect().adjusted(Frame, Frame, -Frame, -Frame);
    };
    const auto addView = [&](const QAbstractItemView& view) {
        const QAbstractItemModel& model = *view.model();
        for (int row = 0; row < model.rowCount(); ++row)
            for (int column = 0; column < model.columnCount(); ++column) {
                const QModelIndex index = model.index(row, column, view.rootIndex());
                add(*view.viewport(), view.visualRect(index).adjusted(Frame, Frame, -Frame, -Frame),
                    index.data().toString());
            }
    };
    const auto widgets = window.findChildren<QWidget*>();
    for (const QWidget* widget : widgets) {
        if (!widget->isVisibleTo(&window) || !widget->isVisible()) continue;
        if (const auto* label = qobject_cast<const QLabel*>(widget))
            add(*label, inside(*label), label->text());
        if (const auto* line = qobject_cast<const QLineEdit*>(widget))
            add(*line, inside(*line), line->text().isEmpty() ? line->placeholderText() : line->text());
        if (const auto* edit = qobject_cast<const QPlainTextEdit*>(widget))
            add(*edit, inside(*edit), edit->toPlainText());
        if (const auto* box = qobject_cast<const QComboBox*>(widget); box && !box->isEditable())
            add(*box, box->style()->subElementRect(QStyle::SE_ComboBoxFocusRect, nullptr, box) & inside(*box),
                box->currentText());
        if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
            QRect where = inside(*button);
            // Beside its mark.
            if (button->isCheckable())
                where.setLeft(button->style()->pixelMetric(QStyle::PM_IndicatorWidth) + 4);
            add(*button, where, button->text());
        }
        if (const auto* header = qobject_cast<const QHeaderView*>(widget); header && header->model())
            for (int column = 0; column < header->count(); ++column)
                add(*header->viewport(),
                    QRect(header->sectionViewportPosition(column), 0, header->sectionSize(column),
                          header->height())
                        .adjusted(Frame, Frame, -Frame, -Frame),
                    header->model()->headerData(column, Qt::Horizontal).toString());
        else if (const auto* view = qobject_cast<const QAbstractItemView*>(widget); view && view->model())
            addView(*view);
        if (const auto* menus = qobject_cast<const QMenuBar*>(widget)) {
            const auto actions = menus->actions();
            for (const QAction* action : actions)
                add(*menus, menus->actionGeometry(const_cast<QAction*>(action)), action->text());
        }
    }
    return places;
}

/// The most that a colour differs from the one of which there is most.
double contrastIn(const QImage& picture, const QRect& where) {
    std::map<QRgb, int> counts;
    for (int y = where.top(); y <= where.bottom(); ++y)
        for (int x = where.left(); x <= where.right(); ++x)
            if (picture.valid(x, y)) ++counts[picture.pixel(x, y)];
    if (counts.empty()) return 0;
    const QRgb paper =
        std::ranges::max_element(counts, {}, [](const auto& each) { return each.second; })->first;
    double most = 0;
    for (const auto& [colour, count] : counts) most = std::max(most, contrastOf(paper, colour));
    return most;
}

void leaveAppearance() {
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setPalette(QPalette());
}

class ContrastTest : public MainWindowTestCase, public testing::WithParamInterface<const QPalette*> {
protected:
    ContrastTest() {
        applyAppearance(Appearance::Light);
        makeWindow();
    }
    ~ContrastTest() override {
        window_.reset();
        leaveAppearance();
    }

    /// The window changes when the desktop does.
    void changePalette() {
        QApplication::setPalette(*GetParam());
        settle();
    }
    static void expectContrast(QWidget& window, const char* which) {
        settle();
        const QImage picture = window.grab().toImage().convertToFormat(QImage::Format_RGB32);
        const auto places = textsIn(window);
        EXPECT_GT(places.size(), 4U) << which;
        for (const Place& place : places)
            EXPECT_GE(contrastIn(picture, place.where), LeastContrast) << which << ": " << place.text;
        expectGrey(picture, which);
    }
    /// Black and white mixed are grey; anything else is a colour that somebody named.
    static void expectGrey(const QImage& picture, const char* which) {
        constexpr int Rounding = 3;
        int coloured = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const QRgb pixel = picture.pixel(x, y);
                const auto [least, most] = std::minmax({qRed(pixel), qGreen(pixel), qBlue(pixel)});
                coloured += most - least > Rounding;
            }
        EXPECT_EQ(coloured, 0) << which;
    }
    void expectContrastOfSheet(const char* action) {
        window_->findChild<QAction*>(QLatin1String(action))->trigger();
        settle();
        ASSERT_TRUE(window_->sheet()) << action;
        expectContrast(sheetWidget(), action);
        estatebook::test::press(sheetWidget(), Qt::Key_Escape);
    }
};

TEST_P(ContrastTest, AllPagesFollowThePalette) {
    openExample();
    changePalette();
    for (const auto& [page, name] : {std::pair(Page::Tenures, "lettings"),
                                     {Page::Properties, "properties"},
                                     {Page::Tenants, "tenants"},
                                     {Page::Arrears, "arrears"}}) {
        window_->showPage(page);
        window_->refreshNow();
        list(page).table().selectRow(1);
        expectContrast(*window_, name);
    }
    window_->showPage(Page::Settings);
    expectContrast(*window_, "settings");
    window_->showPage(Page::Tenures);
    window_->findChild<QAction*>(QStringLiteral("statement"))->trigger();
    expectContrast(*window_, "statement");
}

TEST_P(ContrastTest, WhatStandsInThePlaceOfListsFollowsThePalette) {
    changePalette();
    expectContrast(*window_, "welcome");
    window_->openBook(QString::fromStdString(path("gone.estatebook")));
    expectContrast(*window_, "refused");
    ASSERT_TRUE(window_->makeBook(QString::fromStdString(path("empty.estatebook"))));
    expectContrast(*window_, "empty");
    openExample();
    const auto jones = tenureOf(session(), "M. Jones");
    session().perform("Change of Letting", [&] { jones->setEndDate(day(2025, 1, 1)); });
    passTime(2.1);
    ASSERT_NE(window_->banner().sentence().toStdString(), "");
    expectContrast(*window_, "banner");
}

TEST_P(ContrastTest, SheetsFollowThePalette) {
    openExample();
    changePalette();
    window_->showPage(Page::Tenures);
    selectRowOf(Page::Tenures, "M. Jones");
    for (const char* action : {"edit", "add", "pay"}) expectContrastOfSheet(action);
    window_->showPage(Page::Properties);
    list(Page::Properties).table().selectRow(0);
    for (const char* action : {"edit", "notes"}) expectContrastOfSheet(action);
    window_->showPage(Page::Tenants);
    list(Page::Tenants).table().selectRow(0);
    expectContrastOfSheet("edit");
}

TEST_P(ContrastTest, FieldsHaveAnOutline) {
    openExample();
    changePalette();
    selectRowOf(Page::Tenures, "M. Jones");
    window_->findChild<QAction*>(QStringLiteral("pay"))->trigger();
    settle();
    const QImage picture = sheetWidget().grab().toImage();
    int fields = 0;
    const auto lines = sheetWidget().findChildren<QLineEdit*>();
    for (const QLineEdit* line : lines) {
        if (!line->isVisible() || !line->hasFrame()) continue;
        const QRect around(line->mapTo(&sheetWidget(), QPoint()), line->size());
        const QRect left(around.left(), around.center().y() - 3, 3, 6);
        EXPECT_GE(contrastIn(picture, left), LeastContrast) << line->objectName().toStdString();
        ++fields;
    }
    EXPECT_GE(fields, 4);
}

INSTANTIATE_TEST_SUITE_P(Palettes, ContrastTest, testing::Values(&WhiteOnBlack, &BlackOnWhite),
                         [](const auto& given) {
                             return given.param == &WhiteOnBlack ? "WhiteOnBlack" : "BlackOnWhite";
                         });

TEST(AppearanceTest, TheOneOfHighContrastHasIt) {
    applyAppearance(*appearanceNamed(QStringLiteral("contrast")));
    const QPalette palette = QApplication::palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        const auto expectRead = [&](QPalette::ColorRole text, QPalette::ColorRole on) {
            EXPECT_GE(contrastOf(palette.color(group, text).rgb(), palette.color(group, on).rgb()),
                      LeastContrast)
                << group << ", " << text << " on " << on;
        };
        for (const auto text : {QPalette::Text, QPalette::PlaceholderText, QPalette::Link})
            for (const auto on : {QPalette::Base, QPalette::AlternateBase, QPalette::Window})
                expectRead(text, on);
        expectRead(QPalette::WindowText, QPalette::Window);
        expectRead(QPalette::ButtonText, QPalette::Button);
        expectRead(QPalette::ToolTipText, QPalette::ToolTipBase);
        expectRead(QPalette::HighlightedText, QPalette::Highlight);
    }
    leaveAppearance();
}

} // namespace

} // namespace estatebook::desktop::test
