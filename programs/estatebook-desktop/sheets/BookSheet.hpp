// SPDX-License-Identifier: MIT
#pragma once

/// BookSheet: the base of the sheets that edit a book.
///
/// What is edited goes into the book when the sheet is confirmed, as one step that can be undone, and never before. A
/// sheet that cannot be confirmed says why in its own place, and stays. Escape and Ctrl+Return do what Cancel and Save do.

#include "estatebook-desktop/session/BookSession.hpp"
#include "estatebook-desktop/sheets/SheetFields.hpp"
#include "estatebook-desktop/sheets/Tags.hpp"
#include "estatebook-desktop/window/Figures.hpp"

#include "platform/toolkit/qt/QtWindow.hpp"
#include "ui/QBSheetController.hpp"
#include "ui/TKDateController.hpp"

#include <QLineEdit>
#include <QString>

#include <cassert>
#include <optional>
#include <string_view>

namespace estatebook::desktop {

class BookSheet : public QBSheetController {
public:
    explicit BookSheet(BookSession& session) : session_(session), figures_(Figures::of(session)) {}

    void prepareSheet() final;
    void processSheet(platform::Object* sender = nullptr) override;

    /// The widget of that name in the interface file. REQUIRES: the window is loaded, and has one of that class.
    template <class Widget>
    [[nodiscard]] Widget& find(std::string_view name) const {
        return *qtWindow().find<Widget>(name);
    }
    [[nodiscard]] const platform::QtWindow& qtWindow() const noexcept { return *window_; }

protected:
    ~BookSheet() override = default;

    /// Fills the controls; called once.
    virtual void prepareControls() = 0;
    /// Why it cannot be confirmed; empty when it can.
    [[nodiscard]] virtual QString fault() = 0;
    /// What the step is called.
    [[nodiscard]] virtual QString stepName() const = 0;
    /// Puts what was edited into the book.
    virtual void apply() = 0;

    [[nodiscard]] BookSession& session() const noexcept { return session_; }
    [[nodiscard]] const Figures& figures() const noexcept { return figures_; }
    void setTitle(const QString& title) const;
    /// Shows the sentence in its place; none takes it away.
    void showFault(const QString& sentence) const;

    /// Couples a check box and a day of these names. Days are taken at their beginning.
    [[nodiscard]] platform::Ref<TKDateController> makeDates(std::string_view checkBox,
                                                            std::string_view day) const;
    /// Fields on a copy of the object that is edited; null for one that is to be made. Called once.
    SheetFields& bindFields(std::string_view entity, const platform::ManagedObject* original) {
        return fields_.emplace(*window_, figures_, session_.context(), entity, original);
    }
    /// REQUIRES: bindFields was called.
    [[nodiscard]] SheetFields& fields() {
        assert(fields_);
        return *fields_;
    }
    /// Shows the tags of the object, if there is one, in the line "tags", which completes them from those of the book.
    template <class Owner>
    void showTags(const Owner* owner) const {
        completeTags(find<QLineEdit>("tags"));
        if (owner) find<QLineEdit>("tags").setText(tagsOf(*owner));
    }
    /// The amount of a line, whether there is one and whether it can be read.
    struct Amount {
        bool isReadable = true;
        std::optional<platform::Decimal> amount;
    };
    [[nodiscard]] Amount amountIn(std::string_view line) const;

private:
    /// One after another.
    void completeTags(QLineEdit& line) const;

    BookSession& session_;
    Figures figures_;
    platform::QtWindow* window_ = nullptr;
    std::optional<SheetFields> fields_;
};

} // namespace estatebook::desktop
