// SPDX-License-Identifier: MIT
#pragma once

/// ArrearsScan: looks through all tenures for those that owe something, a few in each turn of the event loop.
///
/// The list keeps its former rows until all tenures were looked at.

#include "estatebook-desktop/lists/BookLists.hpp"
#include "estatebook-desktop/lists/Slices.hpp"

#include <functional>
#include <vector>

namespace estatebook::desktop {

class BookSession;

class ArrearsScan {
public:
    /// REQUIRES: what is given outlives the scan.
    ArrearsScan(BookSession& session, ListModel& list, FiguresSource figures);

    /// Begins anew.
    void begin();
    [[nodiscard]] bool isAtWork() const noexcept { return slices_.isAtWork(); }
    /// Looks at all the rest at once.
    void finish() { slices_.finish(); }

private:
    bool lookAtNext();
    void lookAt(TKTenure& tenure);

    BookSession& session_;
    ListModel& list_;
    FiguresSource figures_;
    Slices slices_;
    std::vector<platform::Ref<TKTenure>> tenures_;
    std::size_t next_ = 0;
    ListModel::Objects found_;
    std::vector<ListModel::Row> rows_;
};

} // namespace estatebook::desktop
