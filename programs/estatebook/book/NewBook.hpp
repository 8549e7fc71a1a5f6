// SPDX-License-Identifier: MIT
#pragma once

/// NewBook: a book file that appears complete or not at all.
///
///     NewBook book("harbour.estatebook", "import");
///     book.take(document);
///     book.finish();
///
/// Until it is finished it stands in a folder beside the place that it will have; the folder goes with the NewBook. A
/// program that is killed leaves the folder, "NAME.new-XXXXXX", which may be deleted.

#include "estatebook/book/StoredBook.hpp"

#include <memory>
#include <string>
#include <string_view>

namespace estatebook {

/// Throws Failure when there is no folder in which the file could be made.
void requireFolderOf(const std::string& path);

class NewBook {
public:
    /// Throws Failure, also when there is something at the path already.
    NewBook(const std::string& path, std::string_view command);
    ~NewBook();
    NewBook(const NewBook&) = delete;
    NewBook& operator=(const NewBook&) = delete;

    /// For the objects of the book.
    [[nodiscard]] platform::ManagedObjectContext& context() const { return *draft_->context; }

    /// Makes the objects of a document and the settings that it implies. Throws Failure.
    void take(const document::BookDocument& document) const { draft_->take(document, command_); }

    /// Saves the book, closes it, and puts it in its place. Throws Failure; then nothing is there, or the whole book when only
    /// its folder could not be told to keep the name.
    void finish();

private:
    void makeFolder();
    [[nodiscard]] std::string draftPath() const { return folder_ + "/book.estatebook"; }
    void requireRoom() const;

    std::string path_;
    /// As messages show it.
    std::string file_;
    std::string folder_;
    std::string command_;
    std::unique_ptr<StoredBook> draft_;
};

} // namespace estatebook
