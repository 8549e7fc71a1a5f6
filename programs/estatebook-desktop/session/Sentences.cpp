// SPDX-License-Identifier: MIT
#include "estatebook-desktop/session/Sentences.hpp"

#include "estatebook/book/StoredBook.hpp"
#include "estatebook/document/JsonText.hpp"

#include <QCoreApplication>
#include <QDateTime>
#include <QLocale>
#include <QString>

#include <cmath>
#include <string_view>
#include <system_error>

namespace estatebook::desktop {

using platform::StoreError;
using platform::StoreErrorCode;
using platform::StoreHolder;

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(Sentences)
};

constexpr std::size_t LongestDetail = 1000;

QString shown(const std::string& text) {
    return QString::fromStdString(document::forMessage(text, LongestDetail));
}

/// What happened alone, of a message "PATH: it is so. Do that."
QString detailOf(std::string_view message, std::string_view path) {
    if (!path.empty() && message.starts_with(path) && message.substr(path.size()).starts_with(": "))
        message.remove_prefix(path.size() + 2);
    if (message.ends_with('.')) message.remove_suffix(1);
    if (const std::size_t advice = message.rfind(". "); advice != std::string_view::npos)
        message = message.substr(0, advice);
    return shown(std::string(message));
}

/// With what is told of the place in brackets, if anything is.
QString withDetail(const QString& bare, const QString& withPlace, const QString& detail) {
    return detail.isEmpty() ? bare : withPlace.arg(detail);
}

QString held(const StoreError& error) {
    if (!error.holder) return Words::tr("it is open in another program; close it there first");
    const StoreHolder& holder = *error.holder;
    const auto since =
        QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(holder.since.unixSeconds())));
    return Words::tr("%1 has it open in %2 since %3; close it there first")
        .arg(holder.author.empty() ? Words::tr("somebody") : shown(holder.author),
             holder.program.empty() ? Words::tr("another program") : shown(holder.program),
             QLocale().toString(since, QLocale::ShortFormat));
}

/// Empty for what has none.
QString sentenceOf(const StoreError& error) {
    const QString detail = detailOf(error.message, error.path);
    switch (error.code) {
    case StoreErrorCode::Missing:
        return Words::tr("there is no such book; choose another one");
    case StoreErrorCode::Exists:
        return Words::tr("there is something of this name already; choose another name");
    case StoreErrorCode::Foreign:
        return Words::tr("this is no book, and was left as it is; choose a book's file");
    case StoreErrorCode::Newer:
        return Words::tr(
            "a newer version of EstateBook wrote this book, and it was left as it is; open it with that one");
    case StoreErrorCode::Damaged:
        return withDetail(
            Words::tr("the book is damaged, and was left as it is; go on with an earlier copy"),
            Words::tr("the book is damaged, and was left as it is (%1); go on with an earlier copy"), detail);
    case StoreErrorCode::Locked:
        return held(error);
    case StoreErrorCode::Busy:
        return Words::tr("another program is reading the book, so that nothing was changed; try again");
    case StoreErrorCode::ReadOnly:
        return Words::tr("the book or its folder may not be written, so that nothing was changed; ask for "
                         "the right to write them");
    case StoreErrorCode::Full:
        return Words::tr("there is no room left on the disk, so that nothing was changed; make room");
    case StoreErrorCode::Unreadable:
        return withDetail(Words::tr("the book cannot be read or written; check the disk, and try again"),
                          Words::tr("the book cannot be read or written (%1); check the disk, and try again"),
                          detail);
    case StoreErrorCode::Moved:
        return Words::tr("the book was moved or replaced while it was open, so that nothing was changed; put "
                         "it back, or open it where it is now");
    case StoreErrorCode::OutcomeUnknown:
        return Words::tr(
            "nobody can tell whether the last save is in the book; check the disk, and save once more");
    case StoreErrorCode::OutOfMemory:
        return Words::tr(
            "there is no memory left, so that nothing was changed; close other programs, and try again");
    // What no user brings about: the text that it came with tells more.
    case StoreErrorCode::InvalidChange:
    case StoreErrorCode::Unsupported:
        break;
    }
    return {};
}

QString sentenceOf(const FileFailure& failure) {
    switch (failure.why()) {
    case FileFailure::Why::NoFolder:
        return Words::tr("there is no such folder; make it first");
    case FileFailure::Why::Exists:
        return Words::tr("there is something of this name already; choose another name");
    case FileFailure::Why::JournalLeft:
        return Words::tr("beside it lies the unfinished save of a book that is gone; choose another name");
    case FileFailure::Why::NoPlainFile:
        return Words::tr("this is no plain file; choose another name");
    case FileFailure::Why::IsBook:
        return Words::tr("this is a book, which is not replaced; choose another name");
    case FileFailure::Why::System:
        return Words::tr(
                   "it cannot be written (%1); check its name, the permissions and the room on the disk")
            .arg(QString::fromLocal8Bit(std::generic_category().message(failure.error()).c_str()));
    }
    return {};
}

QString unreadable(const QString& detail) {
    return Words::tr("the book cannot be read any further (%1); open it again, or go on with an earlier copy")
        .arg(detail);
}

std::string told(const std::string& file, const QString& sentence) {
    return file + ": " + sentence.toStdString();
}

} // namespace

std::string sentenceOf(const Failure& failure) {
    if (const auto* refusal = dynamic_cast<const StoreRefusal*>(&failure))
        if (const QString sentence = sentenceOf(refusal->error()); !sentence.isEmpty())
            return told(refusal->file(), sentence);
    if (const auto* ofFile = dynamic_cast<const FileFailure*>(&failure))
        return told(ofFile->file(), sentenceOf(*ofFile));
    return failure.what();
}

std::string sentenceOf(const std::string& file, const platform::Exception& exception) {
    if (dynamic_cast<const platform::ObjectInaccessibleException*>(&exception))
        return told(file, unreadable(detailOf(exception.reason(), file)));
    return told(file, QString::fromStdString(lineOfStore(exception.reason())));
}

} // namespace estatebook::desktop
