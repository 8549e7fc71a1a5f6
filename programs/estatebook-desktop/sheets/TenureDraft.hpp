// SPDX-License-Identifier: MIT
#pragma once

/// TenureDraft: the terms of a letting while somebody edits them, apart from the book.
///
///     TenureDraft draft(session, tenure);
///     draft.set([&](TKTenure& terms) { terms.setRentalAmount(1100); });
///     draft.preview().balance;
///     session.perform("Change of Letting", [&] { draft.applyTo(*tenure); });
///
/// The draft is a tenure in a context of its own, with the settings of the book and what was paid so far, so that whatever it
/// reckons is what the tenure will reckon. Terms that cannot be reckoned are kept as they are, and told of by `fault`.

#include "estatebook/Reckoned.hpp"

#include "platform/persistence/ManagedObjectContext.hpp"
#include "tenure/TKTenure.hpp"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace estatebook::desktop {

class BookSession;

class TenureDraft {
public:
    /// How many lines a preview has at most.
    static constexpr std::size_t PreviewLines = 6;

    struct Line {
        std::optional<platform::Date> when;
        std::string what;
        std::optional<platform::Decimal> amount;
    };
    struct Preview {
        /// The rent that falls due next, after the day.
        std::vector<Line> next;
        /// Zero or negative.
        platform::Decimal cost;
        platform::Decimal balance;
    };
    /// An end date that lies one day before a whole number of periods.
    struct DayShort {
        std::uint64_t periods = 0;
        std::uint64_t days = 0;
        platform::Date end;
        platform::Date next;
    };

    /// Of a tenure of the book; with the usual terms for null.
    TenureDraft(const BookSession& session, const TKTenure* tenure);

    [[nodiscard]] const platform::Ref<TKTenure>& terms() const noexcept { return terms_; }
    /// Changes terms, whatever they raise at that.
    void set(const std::function<void(TKTenure&)>& change) const;
    /// Takes the terms over that the property is usually let by.
    void takeUsualTermsOf(const TKProperty& property) const;

    /// Why the terms cannot be those of a letting; none when they can.
    enum class Fault : std::uint8_t { None, NoStart, EndBeforeStart, Unreckonable };
    [[nodiscard]] Fault fault() const;

    [[nodiscard]] Reckoned<Preview> preview() const;
    [[nodiscard]] std::optional<DayShort> dayShort() const;

    /// Gives a tenure these terms.
    void applyTo(TKTenure& tenure) const;

private:
    void addPaid(const TKTenure& tenure) const;
    [[nodiscard]] std::vector<Line> nextLines() const;

    const BookSession& session_;
    platform::Ref<platform::ManagedObjectContext> context_;
    platform::Ref<TKTenure> terms_;
};

} // namespace estatebook::desktop
