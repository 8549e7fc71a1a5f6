// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/WelcomePage.hpp"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace estatebook::desktop {

namespace {

constexpr int Width = 460;

QLabel* addWords(QVBoxLayout& column, const QString& text) {
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    column.addWidget(label);
    return label;
}

QPushButton* addButton(QVBoxLayout& column, const QString& text) {
    auto* button = new QPushButton(text);
    button->setFixedWidth(Width / 2 + 40);
    button->setMinimumHeight(34);
    column.addWidget(button, 0, Qt::AlignHCenter);
    return button;
}

} // namespace

WelcomePage::WelcomePage() {
    // A fixed width, so that words that are wrapped tell how high they are.
    auto* words = new QWidget;
    words->setFixedWidth(Width);
    auto* whole = new QVBoxLayout(this);
    auto* row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(words);
    row->addStretch();
    whole->addStretch();
    whole->addLayout(row);
    whole->addStretch();
    auto* column = new QVBoxLayout(words);
    column->setSpacing(10);
    QLabel* title = addWords(*column, tr("EstateBook"));
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 2);
    font.setBold(true);
    title->setFont(font);
    addWords(*column, tr("Who lives where, what they owe today, and what was paid."));
    column->addSpacing(8);

    refusal_ = addWords(*column, {});
    refusal_->setFrameShape(QFrame::StyledPanel);
    refusal_->setMargin(10);
    refusal_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    read_ = addButton(*column, tr("&Look at it without editing"));
    showRefusal({}, false);

    QPushButton* example = addButton(*column, tr("Try the &example book"));
    QPushButton* fresh = addButton(*column, tr("&New book…"));
    QPushButton* open = addButton(*column, tr("&Open a book…"));
    column->addSpacing(4);
    QLabel* hint =
        addWords(*column, tr("The example is a copy of your own: change in it whatever you like."));
    hint->setForegroundRole(QPalette::PlaceholderText);

    connect(example, &QPushButton::clicked, this, &WelcomePage::exampleWanted);
    connect(fresh, &QPushButton::clicked, this, &WelcomePage::newBookWanted);
    connect(open, &QPushButton::clicked, this, &WelcomePage::openingWanted);
    connect(read_, &QPushButton::clicked, this, &WelcomePage::readingWanted);
}

void WelcomePage::showRefusal(const QString& sentence, bool canBeRead) {
    refusal_->setText(sentence);
    refusal_->setVisible(!sentence.isEmpty());
    read_->setVisible(canBeRead);
}

} // namespace estatebook::desktop
