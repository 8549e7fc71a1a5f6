// SPDX-License-Identifier: MIT
#pragma once

/// NotesSheet: the notes on a letting, a property or a tenant, with a plain editor.
///
/// The trap: an editor of plain text shows no attributes. A note with attributes keeps them as long as its text is not edited.

#include "estatebook-desktop/sheets/BookSheet.hpp"

#include "store/TKNotable.hpp"
#include "store/TKNote.hpp"

#include <vector>

namespace estatebook::desktop {

class NotesSheet final : public BookSheet {
public:
    /// REQUIRES: the owner is an object of the session's book.
    NotesSheet(BookSession& session, TKNotable& owner, QString name);

    [[nodiscard]] platform::Ref<platform::String> nibName() const override;

protected:
    ~NotesSheet() override = default;
    void prepareControls() override;
    [[nodiscard]] QString fault() override { return {}; }
    [[nodiscard]] QString stepName() const override;
    void apply() override;

private:
    struct Entry {
        /// Null for one that is to be made.
        platform::Ref<TKNote> note;
        QString subject;
        QString content;
        bool isDeleted = false;
    };

    void fillList();
    void showEntry(int row);
    void takeEntry();
    void add();
    void deleteShown();
    [[nodiscard]] QString titleOf(const Entry& entry) const;
    [[nodiscard]] Entry* shown();

    TKNotable& owner_;
    /// Holds the owner.
    platform::Ref<platform::Object> held_;
    QString name_;
    std::vector<Entry> entries_;
    /// The entries in the list, in its order.
    std::vector<std::size_t> listed_;
    bool isShowing_ = false;
};

} // namespace estatebook::desktop
