// SPDX-License-Identifier: MIT
#pragma once

/// TenureSheet: the terms of a letting in plain words, with what follows from them beside.
///
/// The length of a letting is told by its last day, by its rent periods or by its days; whichever is edited, the others follow. A
/// property or a tenant that is not in the book is made along with the letting.

#include "estatebook-desktop/sheets/BookSheet.hpp"
#include "estatebook-desktop/sheets/TenureDraft.hpp"

#include "platform/observation/ObservationToken.hpp"

#include <vector>

class QComboBox;

namespace estatebook::desktop {

class TenureSheet final : public BookSheet {
public:
    /// Makes a new one when the tenure is null.
    TenureSheet(BookSession& session, TKTenure* tenure)
        : BookSheet(session), tenure_(tenure), draft_(session, tenure) {}

    [[nodiscard]] platform::Ref<platform::String> nibName() const override;
    /// Null until a new one is made.
    [[nodiscard]] TKTenure* tenure() const noexcept { return tenure_.get(); }
    [[nodiscard]] const TenureDraft& draft() const noexcept { return draft_; }

protected:
    ~TenureSheet() override = default;
    void prepareControls() override;
    [[nodiscard]] QString fault() override;
    [[nodiscard]] QString stepName() const override;
    void apply() override;

private:
    void prepareParties();
    void prepareDates();
    void prepareLength();
    void prepareRent();
    void prepareCards();
    void preparePreview();
    /// Has a change in the sheet become one of the draft, and shows what follows.
    void edit(const std::function<void(TKTenure&)>& change);
    void takePaidInAdvance();
    void takeUsualTerms();
    void showTerms();
    void showLength();
    void showPreview();
    void showAdded();
    [[nodiscard]] QString faultOfDraft() const;
    [[nodiscard]] platform::ManagedObject* chosen(const char* list) const;

    platform::Ref<TKTenure> tenure_;
    bool isNew_ = !tenure_;
    TenureDraft draft_;
    platform::Ref<TKDateController> starts_;
    platform::Ref<TKDateController> ends_;
    std::vector<platform::ObservationToken> announcements_;
    /// Controls are being filled, which is no edit.
    bool isShowing_ = false;
};

} // namespace estatebook::desktop
