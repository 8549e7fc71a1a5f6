// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/Banner.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace estatebook::desktop {

Banner::Banner(QWidget* parent) : QFrame(parent), sentence_(new QLabel) {
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    sentence_->setForegroundRole(QPalette::ToolTipText);
    sentence_->setWordWrap(true);
    sentence_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    first_.button = new QPushButton;
    second_.button = new QPushButton;
    auto* row = new QHBoxLayout(this);
    row->addWidget(sentence_, 1);
    for (Button* each : {&first_, &second_}) {
        row->addWidget(each->button);
        connect(each->button, &QPushButton::clicked, this, [each] { each->action(); });
    }
    hide();
}

void Banner::show(const QString& sentence, const Choice& first, const Choice& second) {
    sentence_->setText(sentence);
    set(first_, first);
    set(second_, second);
    setVisible(!sentence.isEmpty());
}

QString Banner::sentence() const {
    return isVisibleTo(parentWidget()) ? sentence_->text() : QString();
}

void Banner::set(Button& button, const Choice& choice) {
    button.button->setText(choice.text);
    button.button->setVisible(!choice.text.isEmpty());
    button.action = choice.action;
}

} // namespace estatebook::desktop
