// SPDX-License-Identifier: MIT
#pragma once

/// StatementParts: a tenure's statement as it is shown: whole or by tag, all lines or only those that are outstanding.
///
///     const auto parts = StatementParts::of(session, tenure, {.isByTag = true});
///     if (parts) for (const StatementParts::Part& part : parts->parts) …

#include "estatebook/Reckoned.hpp"
#include "estatebook/StatementSheet.hpp"

#include "tenure/TKTenure.hpp"

#include <optional>
#include <string>
#include <vector>

namespace estatebook::desktop {

class BookSession;

struct StatementParts {
    struct Choice {
        bool isOutstandingOnly = false;
        bool isByTag = false;
    };
    struct Line {
        StatementSheet::Line line;
        std::string tags;
        /// What was recorded; null for a line that nobody recorded.
        platform::Ref<TKTransaction> transaction;
    };
    struct Part {
        /// The primary tag of its lines; absent for the whole statement.
        std::optional<std::string> tag;
        StatementSheet sheet;
        std::vector<Line> due;
        /// None when only what is outstanding is shown.
        std::vector<Line> notYetDue{};
    };

    std::vector<Part> parts;
    /// Of a statement by tag: how many lines have none, and what they come to.
    std::size_t untaggedCount = 0;
    platform::Decimal untaggedAmount{};

    /// Linear in the lines of the statement.
    [[nodiscard]] static Reckoned<StatementParts> of(const BookSession& session, TKTenure& tenure,
                                                     Choice choice);
};

} // namespace estatebook::desktop
