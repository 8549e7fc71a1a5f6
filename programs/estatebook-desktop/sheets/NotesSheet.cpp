// SPDX-License-Identifier: MIT
#include "estatebook-desktop/sheets/NotesSheet.hpp"

#include "platform/values/AttributedString.hpp"

#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>

#include <utility>

namespace estatebook::desktop {

using platform::AttributedString;
using platform::Ref;
using platform::String;
using platform::Value;

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(NotesSheet)
};

QString contentOf(const TKNote& note) {
    const Value content = note.content();
    if (const auto attributed = content.as<AttributedString>()) return textOf(attributed->text());
    return textOf(content.string());
}

} // namespace

NotesSheet::NotesSheet(BookSession& session, TKNotable& owner, QString name)
    : BookSheet(session), owner_(owner), held_(dynamic_cast<platform::Object*>(&owner)),
      name_(std::move(name)) {}

Ref<String> NotesSheet::nibName() const {
    return String::make("NotesSheet");
}

void NotesSheet::prepareControls() {
    setTitle(Words::tr("Notes"));
    find<QLabel>("owner").setText(name_);
    for (TKNote& note : owner_.notes())
        entries_.push_back({Ref<TKNote>(&note), textOf(note.subject()), contentOf(note)});
    auto& list = find<QListWidget>("notes");
    QObject::connect(&list, &QListWidget::currentRowChanged, &list, [this](int row) { showEntry(row); });
    auto& subject = find<QLineEdit>("subject");
    QObject::connect(&subject, &QLineEdit::textEdited, &subject, [this] { takeEntry(); });
    auto& content = find<QPlainTextEdit>("content");
    QObject::connect(&content, &QPlainTextEdit::textChanged, &content, [this] { takeEntry(); });
    auto& addNote = find<QPushButton>("addNote");
    QObject::connect(&addNote, &QPushButton::clicked, &addNote, [this] { add(); });
    auto& deleteNote = find<QPushButton>("deleteNote");
    QObject::connect(&deleteNote, &QPushButton::clicked, &deleteNote, [this] { deleteShown(); });
    const bool canEdit = session().canEdit();
    for (const char* name : {"addNote", "deleteNote", "save"}) find<QPushButton>(name).setEnabled(canEdit);
    subject.setReadOnly(!canEdit);
    content.setReadOnly(!canEdit);
    fillList();
    list.setCurrentRow(listed_.empty() ? -1 : 0);
    showEntry(list.currentRow());
}

void NotesSheet::fillList() {
    auto& list = find<QListWidget>("notes");
    const bool wasShowing = std::exchange(isShowing_, true);
    list.clear();
    listed_.clear();
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i].isDeleted) continue;
        listed_.push_back(i);
        list.addItem(titleOf(entries_[i]));
    }
    isShowing_ = wasShowing;
}

QString NotesSheet::titleOf(const Entry& entry) const {
    const QString day =
        figures().day(entry.note ? entry.note->createdDate() : std::optional(session().today()));
    return entry.subject.isEmpty() ? Words::tr("%1, without a subject").arg(day)
                                   : QStringLiteral("%1, %2").arg(day, entry.subject);
}

NotesSheet::Entry* NotesSheet::shown() {
    const int row = find<QListWidget>("notes").currentRow();
    return row < 0 || row >= static_cast<int>(listed_.size())
               ? nullptr
               : &entries_[listed_[static_cast<std::size_t>(row)]];
}

void NotesSheet::showEntry(int) {
    if (isShowing_) return;
    isShowing_ = true;
    const Entry* entry = shown();
    find<QLineEdit>("subject").setText(entry ? entry->subject : QString());
    find<QPlainTextEdit>("content").setPlainText(entry ? entry->content : QString());
    for (const char* name : {"subject", "content"}) find<QWidget>(name).setEnabled(entry != nullptr);
    find<QPushButton>("deleteNote").setEnabled(entry && session().canEdit());
    find<QPlainTextEdit>("content").setPlaceholderText(
        entry ? QString() : Words::tr("There are no notes yet. Add one on the left."));
    const QString author = entry && entry->note ? textOf(entry->note->createdBy()) : QString();
    find<QLabel>("signature").setText(author.isEmpty() ? QString() : Words::tr("Written by %1").arg(author));
    isShowing_ = false;
}

void NotesSheet::takeEntry() {
    Entry* entry = shown();
    if (isShowing_ || !entry) return;
    entry->subject = find<QLineEdit>("subject").text();
    entry->content = find<QPlainTextEdit>("content").toPlainText();
    auto& list = find<QListWidget>("notes");
    list.currentItem()->setText(titleOf(*entry));
}

void NotesSheet::add() {
    entries_.emplace_back();
    fillList();
    find<QListWidget>("notes").setCurrentRow(static_cast<int>(listed_.size()) - 1);
    find<QLineEdit>("subject").setFocus();
}

void NotesSheet::deleteShown() {
    Entry* entry = shown();
    if (!entry) return;
    entry->isDeleted = true;
    auto& list = find<QListWidget>("notes");
    const int row = list.currentRow();
    fillList();
    list.setCurrentRow(std::min(row, static_cast<int>(listed_.size()) - 1));
    showEntry(list.currentRow());
}

QString NotesSheet::stepName() const {
    return Words::tr("Change of Notes");
}

void NotesSheet::apply() {
    for (Entry& entry : entries_) {
        if (entry.isDeleted) {
            if (entry.note) session().context().deleteObject(*entry.note);
            continue;
        }
        if (!entry.note) {
            if (entry.subject.isEmpty() && entry.content.isEmpty()) continue;
            entry.note = Ref<TKNote>(owner_.createNote());
        }
        if (textOf(entry.note->subject()) != entry.subject) entry.note->setSubject(textFrom(entry.subject));
        if (contentOf(*entry.note) != entry.content)
            entry.note->setContent(String::make(entry.content.toStdString()));
    }
}

} // namespace estatebook::desktop
