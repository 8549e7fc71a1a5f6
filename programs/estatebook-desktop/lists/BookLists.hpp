// SPDX-License-Identifier: MIT
#pragma once

/// BookLists: what stands in the lists of a book.

#include "estatebook-desktop/lists/ListModel.hpp"

#include <memory>

namespace estatebook {
class TKTenure;
}

namespace estatebook::desktop {

class Figures;

/// How the figures of the book are written now; asked anew for each row.
using FiguresSource = std::function<const Figures&()>;

/// Tenures are read by `wake` when they are first shown.
[[nodiscard]] std::unique_ptr<ListModel> makeTenureList(const FiguresSource& figures,
                                                        std::function<void(TKTenure&)> wake);
[[nodiscard]] std::unique_ptr<ListModel> makePropertyList(const FiguresSource& figures);
[[nodiscard]] std::unique_ptr<ListModel> makeTenantList(const FiguresSource& figures);
/// Of tenures that owe something. Its rows are made by an ArrearsScan.
[[nodiscard]] std::unique_ptr<ListModel> makeArrearsList();

/// "Let", "Ended" or "To come": where the letting stands on the day.
[[nodiscard]] QString standingOf(const TKTenure& tenure);
/// The property and the tenant of a letting: "Flat 2 - A. Smith".
[[nodiscard]] QString partiesOf(const TKTenure& tenure);

} // namespace estatebook::desktop
