// SPDX-License-Identifier: MIT
#pragma once

/// BookDocument: a whole book as plain data, member by member as the document holds it.
///
/// It stands between the text of a document and the objects of a store: `BookReader` makes one from JSON,
/// `BookWriter` makes JSON of one, import and export carry it in and out of a store. Nothing here is derived
/// and nothing refers to anything but by identifier. A member that is absent or null in the document is
/// absent here; lists keep their order.
///
///     BookReading reading = BookReader::readFile("harbour-street.json");
///     for (const Tenure& tenure : reading.document->tenures)
///         tenure.rentalAmount;                         // a decimal, or absent
///
/// The trap: numbers of a cycle or a behaviour need not be one of the named ones. A book may hold any, and
/// keeps it.

#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace estatebook::document {

/// The text of the member `schema`.
inline constexpr std::string_view BookSchema = "estatebook/book/1";

/// A billing cycle by its number; other numbers than these are kept, too.
enum class BillingCycle : std::uint64_t { Day = 1, Week = 7, Month = 30, Year = 365 };

/// How a part of a period is charged; other numbers than these are kept, too.
enum class ChargeBehaviour : std::uint64_t { Start = 0, Partial = 1, End = 2 };

/// What a setting holds: nothing (null), a boolean, a whole number, any other number, or a text. A number
/// stays a number and a text a text; "1.0" and 1e0 are the whole number 1.
using SettingValue = std::variant<std::monostate, bool, std::int64_t, platform::Decimal, std::string>;

struct Setting {
    std::string name;
    SettingValue value;

    friend bool operator==(const Setting&, const Setting&) = default;
};

/// A piece of a text, and the attributes that hold for the whole of it.
struct TextPiece {
    std::string text;
    std::vector<Setting> attributes;

    friend bool operator==(const TextPiece&, const TextPiece&) = default;
};

/// A text of which pieces may have attributes.
struct RichText {
    RichText() = default;
    /// Without attributes.
    RichText(std::string plain);

    /// Brings it into the one form it has: no piece is empty, and pieces without attributes do not touch.
    void settle();
    /// The text when there are no attributes.
    [[nodiscard]] std::optional<std::string_view> plain() const noexcept;

    std::vector<TextPiece> pieces;

    friend bool operator==(const RichText&, const RichText&) = default;
};

struct Transaction {
    std::optional<std::string> id;
    std::optional<platform::Decimal> amount;
    std::optional<std::string> what;
    std::optional<platform::Date> when;
    std::optional<platform::Date> processedOn;
    std::optional<std::string> receipt;
    std::optional<bool> adjustment;
    std::vector<std::string> tags;

    friend bool operator==(const Transaction&, const Transaction&) = default;
};

struct Note {
    std::optional<std::string> id;
    std::optional<std::string> subject;
    std::optional<RichText> content;
    std::optional<platform::Date> createdDate;
    std::optional<std::string> createdBy;
    std::vector<std::string> tags;

    friend bool operator==(const Note&, const Note&) = default;
};

struct Property {
    std::optional<std::string> id;
    std::optional<std::string> name;
    std::optional<std::string> sublease;
    std::optional<std::string> addressBookID;
    std::optional<platform::Decimal> rentalAmount;
    std::optional<platform::Decimal> bondAmount;
    std::optional<std::uint64_t> rentalPeriod;
    std::optional<BillingCycle> rentalBillingCycle;
    std::optional<bool> available;
    std::vector<std::string> tags;
    std::vector<Transaction> transactions;
    std::vector<Note> notes;

    friend bool operator==(const Property&, const Property&) = default;
};

struct Tenant {
    std::optional<std::string> id;
    std::optional<std::string> name;
    std::optional<std::string> addressBookID;
    std::vector<std::string> tags;
    std::vector<Note> notes;

    friend bool operator==(const Tenant&, const Tenant&) = default;
};

struct Tenure {
    std::optional<std::string> id;
    /// The identifiers of the two accounts that the letting joins.
    std::optional<std::string> property;
    std::optional<std::string> tenant;
    std::optional<platform::Date> startDate;
    std::optional<platform::Date> endDate;
    std::optional<platform::Decimal> rentalAmount;
    std::optional<std::uint64_t> rentalPeriod;
    std::optional<BillingCycle> rentalBillingCycle;
    std::optional<std::uint64_t> advancePeriod;
    std::optional<BillingCycle> advanceBillingCycle;
    std::optional<ChargeBehaviour> chargeBehaviour;
    std::optional<bool> chargeFullDuration;
    std::optional<platform::Decimal> bondAmount;
    std::optional<platform::Date> lastBalancedDate;
    std::vector<Transaction> transactions;
    std::vector<Note> notes;

    friend bool operator==(const Tenure&, const Tenure&) = default;
};

struct BookDocument {
    /// The name of the zone in which the book's days are reckoned; absent: the zone of the process.
    std::optional<std::string> timeZone;
    std::vector<Setting> settings;
    std::vector<Property> properties;
    std::vector<Tenant> tenants;
    std::vector<Tenure> tenures;

    friend bool operator==(const BookDocument&, const BookDocument&) = default;
};

} // namespace estatebook::document
