// SPDX-License-Identifier: MIT
#pragma once

/// ArrearsListing: who owes what on the day, since when, and how old the debts are.
///
///     ArrearsListing(book).print(Format::Text, std::cout);
///
/// A debt is what is due by the day and not paid by then. Rent that runs up and is not billed yet is told apart, and
/// makes nobody a debtor.

#include "estatebook/Listing.hpp"

#include <iosfwd>

namespace estatebook {

class ArrearsListing {
public:
    /// Linear in the lines of all statements; holds one schedule at a time. REQUIRES: the book outlives the listing.
    explicit ArrearsListing(const OpenBook& book);

    void print(Format format, std::ostream& out) const;

private:
    void add(const OpenBook::Letting& letting);

    const OpenBook& book_;
    Listing listing_;
};

} // namespace estatebook
