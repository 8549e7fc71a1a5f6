// SPDX-License-Identifier: MIT
#pragma once

/// SheetFields: fields of a sheet, bound to a copy of the object that the sheet edits.
///
///     SheetFields fields(window, figures, session.context(), "Property", property);
///     fields.bindText("name", "name");
///     fields.bindAmount("rent", "rentalAmount", tr("The rent is no amount."));
///     …
///     if (const QString why = fields.commit(); !why.isEmpty()) return why;
///     session.perform("Change of Property", [&] { fields.applyTo(*property); });
///
/// The copy belongs to no book: whatever is typed stays out of the book until it is applied, and what nobody touched is
/// applied to nothing.

#include "estatebook-desktop/window/Figures.hpp"

#include "platform/persistence/ManagedObject.hpp"
#include "platform/toolkit/qt/Binder.hpp"
#include "platform/toolkit/qt/QtWindow.hpp"
#include "ui/TKDateController.hpp"

#include <QString>

#include <string>
#include <string_view>
#include <vector>

namespace estatebook::desktop {

class SheetFields {
public:
    /// The copy is empty for null, an object that is to be made. REQUIRES: window and figures outlive the fields.
    SheetFields(const platform::QtWindow& window, const Figures& figures,
                const platform::ManagedObjectContext& context, std::string_view entity,
                const platform::ManagedObject* original);

    // A field and a key of the copy. Fields are widgets of these names in the interface file.

    /// Blanks at the ends are taken off; an empty text is none.
    void bindText(std::string_view field, std::string_view key);
    /// The sentence tells of a text that is no amount.
    void bindAmount(std::string_view field, std::string_view key, const QString& sentence);
    void bindCount(std::string_view field, std::string_view key);
    /// A list of billing cycles, at months when there is none.
    void bindCycle(std::string_view field, std::string_view key);
    void bindFlag(std::string_view field, std::string_view key);
    void bindDate(TKDateController& dates, std::string_view key);

    /// Of the copy. REQUIRES: a key that is bound.
    [[nodiscard]] platform::Value value(std::string_view key) const { return copy_->valueForKey(key); }
    void setValue(const platform::Value& value, std::string_view key) { copy_->setValueForKey(value, key); }

    /// Takes what was typed over into the copy. Empty, or the sentence of the first field that cannot be read, which then has the
    /// keyboard.
    [[nodiscard]] QString commit();
    /// Gives an object of that entity what differs.
    void applyTo(platform::ManagedObject& object) const;

private:
    void bind(std::string_view field, const char* property, platform::BoundPath path);
    void take(std::string_view key);

    const platform::QtWindow& window_;
    const Figures& figures_;
    platform::Ref<const platform::ManagedObject> original_;
    platform::Ref<platform::ManagedObject> copy_;
    std::vector<std::string> keys_;
    platform::Binder binder_;
};

} // namespace estatebook::desktop
