// SPDX-License-Identifier: MIT
#include "estatebook/document/BookChecks.hpp"

#include "estatebook/document/JsonText.hpp"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace estatebook::document {

namespace {

/// The fault that stands first in the text.
class FirstFault {
public:
    /// Whether a fault at this line would be the first.
    [[nodiscard]] bool precedes(std::size_t line) const noexcept {
        return !fault_ || line < fault_->place.line;
    }
    void note(BookFault fault) {
        if (precedes(fault.place.line)) fault_ = std::move(fault);
    }
    [[nodiscard]] std::optional<BookFault> take() { return std::move(fault_); }

private:
    std::optional<BookFault> fault_;
};

/// Identifiers in order, each with the mark it was read at; a lookup is a search by halves. (A hash table
/// would let a document choose identifiers that all collide.)
class Identifiers {
public:
    Identifiers(const BookDocument& book, const std::vector<BookPlace>& places) {
        entries_.reserve(places.size());
        for (const BookPlace& place : places)
            entries_.push_back(
                {visitObject(book, place, [](const auto& object) -> std::string_view { return *object.id; }),
                 &place});
        std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
            return a.text != b.text ? a.text < b.text : a.place < b.place;
        });
    }

    [[nodiscard]] bool contain(std::string_view text) const {
        const auto found =
            std::lower_bound(entries_.begin(), entries_.end(), text,
                             [](const Entry& entry, std::string_view sought) { return entry.text < sought; });
        return found != entries_.end() && found->text == text;
    }

    void findRepeated(FirstFault& first) const {
        for (std::size_t i = 1; i < entries_.size(); ++i) {
            const Entry& entry = entries_[i];
            if (entry.text != entries_[i - 1].text || !first.precedes(entry.place->line)) continue;
            first.note({*entry.place,
                        fmt::format("the identifier \"{}\" is used already, on line {}",
                                    forMessage(entry.text), entries_[i - 1].place->line),
                        "give each its own"});
        }
    }

private:
    struct Entry {
        std::string_view text;
        const BookPlace* place;
    };
    std::vector<Entry> entries_;
};

/// The place of a tenure's member.
BookPlace placeOf(const BookMarks& marks, std::size_t tenure, std::string_view member) {
    BookPlace place;
    place.list = BookPlace::List::Tenures;
    place.index = static_cast<std::uint32_t>(tenure);
    place.member = static_cast<std::uint8_t>(indexOfMember<Tenure>(member));
    place.line = marks.tenureLines[tenure][place.member];
    return place;
}

void checkReference(const std::optional<std::string>& reference, const Identifiers& known,
                    const BookPlace& place, FirstFault& first) {
    if (!reference || known.contain(*reference)) return;
    const std::string_view name = membersOf<Tenure>[place.member].name;
    first.note({place, fmt::format("no {} has the identifier \"{}\"", name, forMessage(*reference)),
                fmt::format("use the id of a {} of this document, or leave the member out", name)});
}

void checkDuration(const Tenure& tenure, const BookPlace& place, FirstFault& first) {
    if (!tenure.endDate) return;
    if (!tenure.startDate)
        first.note(
            {place, "an end date is given without a start date", "give the start date, or no end date"});
    else if (*tenure.endDate < *tenure.startDate)
        first.note({place, "the end date is before the start date", "end on the start date or later"});
}

bool isKnown(BillingCycle cycle) noexcept {
    return !nameOf(cycle).empty();
}

} // namespace

std::optional<BookFault> checkBook(const BookDocument& book, const BookMarks& marks) {
    const Identifiers properties(book, marks.identifiers[static_cast<std::size_t>(IdentifierKind::Property)]);
    const Identifiers tenants(book, marks.identifiers[static_cast<std::size_t>(IdentifierKind::Tenant)]);
    FirstFault first;
    properties.findRepeated(first);
    tenants.findRepeated(first);
    for (const IdentifierKind kind :
         {IdentifierKind::Tenure, IdentifierKind::Transaction, IdentifierKind::Note})
        Identifiers(book, marks.identifiers[static_cast<std::size_t>(kind)]).findRepeated(first);
    for (std::size_t i = 0; i < book.tenures.size(); ++i) {
        const Tenure& tenure = book.tenures[i];
        checkReference(tenure.property, properties, placeOf(marks, i, "property"), first);
        checkReference(tenure.tenant, tenants, placeOf(marks, i, "tenant"), first);
        checkDuration(tenure, placeOf(marks, i, "endDate"), first);
    }
    return first.take();
}

std::vector<BookFault> unreckonableTerms(const BookDocument& book, const BookMarks& marks) {
    std::vector<BookFault> faults;
    for (std::size_t i = 0; i < book.tenures.size(); ++i) {
        const Tenure& tenure = book.tenures[i];
        const auto warn = [&](std::string_view member, std::string message) {
            faults.push_back({placeOf(marks, i, member), std::move(message), {}});
        };
        const auto warnOfCycle = [&](std::string_view member, const std::optional<BillingCycle>& cycle) {
            if (cycle && !isKnown(*cycle))
                warn(member, fmt::format("{} is no billing cycle (1, 7, 30 or 365 days)",
                                         static_cast<std::uint64_t>(*cycle)));
        };
        if (tenure.rentalAmount && tenure.rentalPeriod && !tenure.rentalBillingCycle)
            warn("rentalAmount", "a rent amount and a rent period without a billing cycle");
        if (tenure.rentalPeriod == std::uint64_t{0}) warn("rentalPeriod", "a rent period of 0");
        warnOfCycle("rentalBillingCycle", tenure.rentalBillingCycle);
        warnOfCycle("advanceBillingCycle", tenure.advanceBillingCycle);
    }
    return faults;
}

} // namespace estatebook::document
