// SPDX-License-Identifier: MIT
#pragma once

/// OpenBook: a book, from a document or a book file, as living objects on the day that counts as today.
///
///     const OpenBook book = OpenBook::open("harbour-street.json", "2025-09-30");
///     for (const OpenBook::Letting& letting : book.lettings()) letting.object->balance();
///
/// A book file is read as it was when it was opened, and as far as it is needed: who asks for one letting does not wait for all.
///
/// The trap: schedules are not there yet, since a book of long lettings would not fit into memory with all of
/// them. A `Schedule` makes one for as long as it lives.

#include "estatebook/BookObjects.hpp"
#include "estatebook/Failure.hpp"
#include "estatebook/Reckoned.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/system/HostOperations.hpp"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook {

struct StoredBook;

class OpenBook {
public:
    template <class T>
    using Entry = BookObjects::Entry<T>;
    using Letting = Entry<TKTenure>;

    /// A book file that is read as needed stays open, and whoever saves it waits meanwhile.
    enum class Reading : std::uint8_t { AsNeeded, AtOnce };

    /// Opens the file ("-" is a document on standard input) in the book's zone, which becomes the zone of the
    /// process. `asOf` is a date as documents write it, at which the clock of the process stands still from then on; empty
    /// means now. Warnings of a document go to standard error. Throws Failure.
    [[nodiscard]] static OpenBook open(const std::string& file, std::string_view asOf,
                                       Reading reading = Reading::AsNeeded);
    /// A book file that is open, read as needed on the day that it is. REQUIRES: the zone of the process is the book's.
    [[nodiscard]] static OpenBook of(const StoredBook& stored);
    /// The same file as it is now, at once and without warnings. Throws Failure, also when the book has come into another
    /// zone.
    [[nodiscard]] OpenBook readAgain() const;

    /// The name of the file as messages show it.
    [[nodiscard]] const std::string& file() const noexcept { return file_; }
    /// The instant that counts as today.
    [[nodiscard]] platform::Date asOf() const;
    [[nodiscard]] const platform::Calendar& calendar() const noexcept { return calendar_; }
    /// The code of the book's currency; null when the book does not tell it as a text.
    [[nodiscard]] const platform::Ref<platform::String>& currencyCode() const noexcept {
        return currencyCode_;
    }
    /// "GBP", or words for its absence.
    [[nodiscard]] std::string currencyName() const;
    /// Opening words with the day and the currency: "Tenures on 30 Jun 2026, GBP".
    [[nodiscard]] std::string heading(std::string_view opening) const;
    /// How amounts of the currency are rounded; the scale is the number of its digits.
    [[nodiscard]] platform::DecimalBehavior rounding() const;

    // In the book's order.
    [[nodiscard]] const std::vector<Entry<TKProperty>>& properties() const;
    [[nodiscard]] const std::vector<Entry<TKTenant>>& tenants() const;
    [[nodiscard]] const std::vector<Letting>& lettings() const;

    /// The identifier of an account, a tenure, a transaction or a note.
    [[nodiscard]] const std::string& identifierOf(const platform::ManagedObject& object) const {
        return all().identifierOf(object);
    }

    /// Lets go of a letting's transactions, if they were read from a book file and nobody needs them.
    void forgetTransactions(const Letting& letting) const;

    /// The letting with that identifier, or else that name, or else with a name of which the text is a part.
    /// Throws Failure when there is not just one. Of a book file no other letting is read when it is the identifier.
    /// It then holds until the next call.
    [[nodiscard]] const Letting& lettingNamed(std::string_view text) const;
    /// The same for a property.
    [[nodiscard]] const Entry<TKProperty>& propertyNamed(std::string_view text) const;

    /// What to throw when a letting's rent cannot be reckoned.
    [[nodiscard]] Failure unreckonable(const Letting& letting, ReckoningError error) const;

private:
    OpenBook(const std::string& path, const platform::Calendar& calendar);
    void fill(const document::BookDocument& document);
    void fill(const StoredBook& stored);
    /// Sets the clock and the zone of the process.
    void setDay(std::string_view asOf) const;
    /// Of a book file: lists what it holds and reads its lettings, unless that was done before.
    [[nodiscard]] const BookObjects& all() const;

    std::string path_;
    std::string file_;
    platform::Calendar calendar_;
    platform::Ref<platform::String> currencyCode_;
    platform::Ref<platform::ManagedObjectContext> context_;
    mutable BookObjects objects_;
    bool isDocument_ = true;
    /// Of a book file whose objects are not listed yet.
    mutable bool isUnlisted_ = false;
    /// The one that was read for itself.
    mutable Letting single_;
};

/// Keeps a letting's schedule up to date while it lives, and takes it away in the end.
class Schedule {
public:
    explicit Schedule(TKTenure& tenure)
        : tenure_(tenure), row_(reckon([&] { return tenure.updatePeriods(); })) {}
    ~Schedule() { tenure_.setPeriods(nullptr); }
    Schedule(const Schedule&) = delete;
    Schedule& operator=(const Schedule&) = delete;

    /// The periods, or why there are none.
    [[nodiscard]] const Reckoned<platform::Ref<TKPeriodRow>>& row() const noexcept { return row_; }

private:
    TKTenure& tenure_;
    Reckoned<platform::Ref<TKPeriodRow>> row_;
};

} // namespace estatebook
