// SPDX-License-Identifier: MIT
#pragma once

/// BookCopies: the copies that are kept beside a book, in the folder "NAME.copies"; copyBook and salvageBook: one copy.
///
///     BookCopies copies(store->location(), model, options);
///     if (auto made = copies.makeForToday(); !made) warn(made.error().message);
///
/// A copy is a book like any other. It appears under its name when it is complete and was checked from end to end, or not
/// at all; so no copy is made of a book that is damaged. The book may be open, also for writing, while it is copied: the copy is the
/// book as its last save left it.

#include "platform/calendar/CivilDay.hpp"
#include "platform/persistence/store/sqlite/SQLiteStore.hpp"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace estatebook::platform {

/// Gives the copy's path, absolute. Exists when something bears the name; Damaged when the book is not sound. Of the
/// options, the access and the holder do not matter. Linear in the size of the book.
[[nodiscard]] ESTATEBOOK_API StoreResult<std::string> copyBook(const std::string& from, const std::string& to,
                                                               const Ref<ManagedObjectModel>& model,
                                                               const SQLiteStore::Options& options);

struct Salvage {
    std::string path;
    /// How many rows of objects came along.
    std::size_t rows = 0;
    /// A line for each thing that did not, or that had to be changed; for many, the last one tells how many more there are.
    std::vector<std::string> lost;
    /// The names of the entries among it that programs kept with the book (MetadataChange), as far as they can be told.
    std::vector<std::string> lostEntries{};
};

/// A new book of all that can be read of a damaged one, which is left as it is. Links to what is lost lead nowhere in it, and
/// places are counted anew. The save that it ends with is told as the holder's. Foreign, Newer: as for opening.
[[nodiscard]] ESTATEBOOK_API StoreResult<Salvage> salvageBook(const std::string& from, const std::string& to,
                                                              const Ref<ManagedObjectModel>& model,
                                                              const SQLiteStore::Options& options);

class ESTATEBOOK_API BookCopies {
public:
    /// What a copy is made for, which also tells how long it is kept.
    enum class Occasion : std::uint8_t { Day, Import, Migration };

    static constexpr std::size_t KeptDays = 10;
    static constexpr std::size_t KeptWeeks = 8;

    BookCopies(const std::string& bookPath, Ref<ManagedObjectModel> model, SQLiteStore::Options options);

    [[nodiscard]] const std::string& folder() const noexcept { return folder_; }
    /// A copy of the book as it is, named after the instant and what comes now. These are never taken away.
    [[nodiscard]] StoreResult<std::string> makeBefore(Occasion occasion);
    /// A copy for the day that it is in the default zone, unless there is one: its path, or none. Once it is there, copies
    /// of former days go: those of the last KeptDays stay, and the last one of each of the last KeptWeeks.
    [[nodiscard]] StoreResult<std::optional<std::string>> makeForToday();

    /// The days of copies that may go, of those that there are.
    [[nodiscard]] static std::vector<CivilDay> daysToLetGo(std::span<const CivilDay> days);

private:
    [[nodiscard]] StoreResult<std::string> copyTo(const std::string& name);
    [[nodiscard]] std::string pathOf(CivilDay day) const;
    [[nodiscard]] std::vector<CivilDay> days() const;

    std::string book_;
    std::string folder_;
    /// The book's name without its suffix.
    std::string name_;
    Ref<ManagedObjectModel> model_;
    SQLiteStore::Options options_;
};

} // namespace estatebook::platform
