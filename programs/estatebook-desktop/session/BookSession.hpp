// SPDX-License-Identifier: MIT
#pragma once

/// BookSession: one open book file that somebody works on: its objects, what can be undone, and saving by itself.
///
///     auto session = BookSession::open("harbour.estatebook", loop);
///     session->whenChanged([&] { lists.refreshLater(); });
///     session->perform("Change of Rent", [&] { tenure->setRentalAmount(1100); });
///     session->undo();
///
/// What was edited is saved two seconds after the last edit, and ten after the first that is not saved. When it cannot be
/// saved, `trouble` says why in one sentence, and the edits stand in a file beside the book until it can be (SideFile), so
/// that a crash loses ten seconds at most.
///
/// Times are those of `Clock::uptime`, on the run loop. Used on one thread. The trap: the zone of the process becomes the
/// book's, so that a process has one book.

#include "estatebook-desktop/session/SideFile.hpp"
#include "estatebook/Reckoned.hpp"
#include "estatebook/book/StoredBook.hpp"

#include "platform/observation/ObservationToken.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/store/StoreReading.hpp"
#include "platform/system/RunLoop.hpp"
#include "statement/TKStatement.hpp"
#include "store/TKProperty.hpp"
#include "store/TKTenant.hpp"
#include "tenure/TKTenure.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace estatebook::desktop {

/// Why a book was not opened: one sentence with what can be done.
class Refusal : public std::runtime_error {
public:
    Refusal(const std::string& sentence, bool canBeRead)
        : std::runtime_error(sentence), canBeRead_(canBeRead) {}

    /// Whether the book can be looked at all the same.
    [[nodiscard]] bool canBeRead() const noexcept { return canBeRead_; }

private:
    bool canBeRead_;
};

class BookSession {
public:
    /// Seconds from the last edit to the save, and from the first edit that is not saved.
    static constexpr double SecondsOfRest = 2;
    static constexpr double SecondsUnsaved = 10;

    enum class Condition : std::uint8_t {
        Saved,
        /// There are edits, to be saved soon.
        Edited,
        /// There are edits that cannot be saved at present; `trouble` says why.
        Stuck,
        /// Nothing can be edited.
        ReadOnly,
    };

    /// Opens a book file for editing. Throws Refusal.
    [[nodiscard]] static std::unique_ptr<BookSession> open(const std::string& path, platform::RunLoop& loop);
    /// Reads a book file as it is now, and lets go of it. Throws Refusal.
    [[nodiscard]] static std::unique_ptr<BookSession> openForReading(const std::string& path,
                                                                     platform::RunLoop& loop);
    /// Makes a book file of a document's text, whole or not at all. Throws Failure.
    static void makeOfDocument(const std::string& path, std::string_view text, std::string_view name);
    /// Makes an empty one, in the zone of the computer, billed at the start of periods. Throws Failure.
    static void makeEmpty(const std::string& path, const std::string& currencyCode);

    /// Saves what can be saved; what cannot stays in the side file. Keeps a copy of the day when something was saved.
    ~BookSession();
    BookSession(const BookSession&) = delete;
    BookSession& operator=(const BookSession&) = delete;

    [[nodiscard]] const std::string& path() const noexcept { return path_; }
    /// What is to be told of the opening; empty as a rule.
    [[nodiscard]] const std::string& notice() const noexcept { return notice_; }
    [[nodiscard]] platform::ManagedObjectContext& context() const noexcept { return *context_; }

    // -- The book, in the order of creation --------------------------------------------------------------------

    /// Tenures as they are found; `wake` reads one.
    [[nodiscard]] std::vector<platform::Ref<TKTenure>> tenures() const;
    /// Reads a tenure that was not read yet, whatever its terms raise at that, and follows what it announces from then on.
    void wake(TKTenure& tenure) const;
    [[nodiscard]] std::vector<platform::Ref<TKProperty>> properties() const;
    [[nodiscard]] std::vector<platform::Ref<TKTenant>> tenants() const;
    /// The statement of a tenure by its terms as they are, or why there is none.
    [[nodiscard]] Reckoned<platform::Ref<TKStatement>> statementOf(TKTenure& tenure) const;
    /// To be held for a moment by whoever reads much of the book.
    [[nodiscard]] platform::StoreReading reading() const { return platform::StoreReading(store_); }
    /// Null when there is none, or no text.
    [[nodiscard]] platform::Ref<platform::String> currencyCode() const;
    /// How amounts of the currency are rounded.
    [[nodiscard]] platform::DecimalBehavior rounding() const;
    /// Every name that something in the book is tagged with, in the order of their texts.
    [[nodiscard]] std::vector<std::string> tagNames() const;

    // -- Editing -----------------------------------------------------------------------------------------------

    [[nodiscard]] bool canEdit() const noexcept { return store_ != nullptr; }
    /// Carries out an edit as one step that can be undone, called by that name. What the edit raises is raised again when all
    /// it has done is undone. REQUIRES: canEdit().
    void perform(const std::string& name, const std::function<void()>& edit);
    [[nodiscard]] bool canUndo() const;
    [[nodiscard]] bool canRedo() const;
    [[nodiscard]] std::string undoName() const;
    [[nodiscard]] std::string redoName() const;
    /// Nothing happens when there is nothing to undo, or to redo.
    void undo();
    void redo();

    // -- Saving ------------------------------------------------------------------------------------------------

    [[nodiscard]] Condition condition() const noexcept { return condition_; }
    /// Why edits cannot be saved; empty when they can.
    [[nodiscard]] const std::string& trouble() const noexcept { return trouble_; }
    /// Saves at once what was edited. False when it cannot be saved; then it is in the side file.
    bool save();

    /// Edits that an earlier session could not save: when they were put aside; none when there are none.
    [[nodiscard]] std::optional<platform::Date> putAsideOn() const { return side_.writtenOn(); }
    /// Puts them in the place of what the book holds; they are then edits of this session, and cannot be undone. Throws Failure, and
    /// then nothing has changed.
    void takePutAside();
    void discardPutAside() { side_.remove(); }

    // -- Being told --------------------------------------------------------------------------------------------

    /// Called after whatever may have changed a figure of the book, its lists or the day; maybe many times.
    void whenChanged(std::function<void()> changed) { changed_ = std::move(changed); }
    /// Called when the condition or the trouble is another.
    void whenConditionChanged(std::function<void()> changed) { conditionChanged_ = std::move(changed); }

    // -- The day -----------------------------------------------------------------------------------------------

    /// The instant that counts as today.
    [[nodiscard]] platform::Date today() const;
    /// Has another day count as today, until none is given.
    void setAsOf(std::optional<platform::Date> day);
    [[nodiscard]] const std::optional<platform::Date>& asOf() const noexcept { return asOf_; }

private:
    BookSession(std::string path, platform::RunLoop& loop);
    void openStore();
    [[nodiscard]] StoredBook stored() const;
    void readAll();
    void begin();
    void follow();
    void followOne(TKTenure& tenure) const;
    void wakeTenures() const;
    void clearBook();
    void announce() const;
    void noteEdit();
    void scheduleSave(double seconds);
    void setCondition(Condition condition, std::string trouble = {});
    [[nodiscard]] std::string reasonOf(const platform::Error& error) const;
    [[nodiscard]] std::string putAside();
    void moveToAsOf();

    std::string path_;
    /// As messages show it.
    std::string file_;
    platform::RunLoop& loop_;
    SideFile side_;
    /// Null when nothing can be edited.
    platform::Ref<platform::SQLiteStore> store_;
    platform::Ref<platform::ManagedObjectContext> context_;
    platform::Ref<platform::Timer> saving_;
    /// The uptime of the first edit that is not saved.
    std::optional<double> firstEdit_;
    /// Whether there are edits that are not in the side file either.
    bool isAheadOfSideFile_ = false;
    bool hasSaved_ = false;
    std::string notice_;
    Condition condition_ = Condition::Saved;
    std::string trouble_;
    std::optional<platform::Date> asOf_;
    std::function<void()> changed_;
    std::function<void()> conditionChanged_;
    std::vector<platform::Ref<TKTenure>> known_;
    /// Of those that were read: one that was not is shown nowhere, and announces a lot when it is.
    mutable std::unordered_map<const TKTenure*, std::vector<platform::ObservationToken>> followed_;
};

} // namespace estatebook::desktop
