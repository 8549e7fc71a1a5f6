// SPDX-License-Identifier: MIT
#pragma once

/// SheetDialog: a dialog that can be shown as a sheet. Its results are those of sheets: accepting is 0, rejecting is -1.
///
/// The trap it is there for: to Qt 1 is accepted and 0 is rejected, so that a plain dialog that the user sends away would
/// end as one that the user confirmed. Hear `finished`, never `accepted` and `rejected`.

#include <QDialog>

#include <functional>

namespace estatebook::platform {

class SheetDialog : public QDialog {
public:
    static constexpr int Confirmed = 0;
    static constexpr int Cancelled = -1;

    explicit SheetDialog(QWidget* parent = nullptr);
    ~SheetDialog() override;

    void accept() override { done(Confirmed); }
    /// What Escape, the close box and a button with the role of cancelling lead to. The window decides what comes of it
    /// (Window.hpp); a dialog of no window is done with -1.
    void reject() override;
    void done(int result) override;
    void setVisible(bool visible) override;

    /// Whether it goes away because it is done.
    [[nodiscard]] bool isFinishing() const noexcept { return isFinishing_; }
    /// To be called in the place of being done, when the user sends the dialog away.
    void setWhenRejected(std::function<void()> whenRejected) { whenRejected_ = std::move(whenRejected); }

    /// Whether it stays when the widget goes that it was shown on.
    [[nodiscard]] bool isKept() const noexcept { return isKept_; }
    void setKept(bool kept) noexcept { isKept_ = kept; }

private:
    std::function<void()> whenRejected_;
    bool isKept_ = false;
    bool isFinishing_ = false;
};

} // namespace estatebook::platform
