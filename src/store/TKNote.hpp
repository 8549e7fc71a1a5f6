// SPDX-License-Identifier: MIT
#pragma once

/// TKNote: a dated, signed piece of rich text on a property, a tenant or a tenure.
///
///     TKPropertyNote* note = property->createNote();      // dated now and signed by the user of the computer
///     note->regarding();                                  // "Property: Elm Street - Unit 2"

#include "model/TKNoteProperties.hpp"
#include "tags/TKTaggable.hpp"

namespace estatebook {

class ESTATEBOOK_API TKNote : public platform::Adopts<TKNoteProperties, TKTaggable> {
public:
    using Adopts::Adopts;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }

    /// regarding
    /// In one line, what the note is about, made anew at each reading. Nobody is told when the name of that changes.
    [[nodiscard]] virtual platform::Ref<platform::String> regarding() const;

    TKTag* createTagWithName(const platform::Ref<platform::String>& name) override;
    [[nodiscard]] platform::ToManyView<TKTag> tags() const override { return TKNoteProperties::tags(); }
    void setTags(const platform::Ref<platform::OrderedSet>& tags) override {
        TKNoteProperties::setTags(tags);
    }

    /// Dates and signs the note, and gives it an empty text.
    void awakeFromInsert() override;
    void awakeFromFetch() override;
    void willSave() override;

protected:
    /// "KIND: NAME", or "KIND: (null)" without a name.
    [[nodiscard]] static platform::Ref<platform::String>
    regardingKindNamed(std::string_view kind, const platform::Ref<platform::String>& name);
    ~TKNote() override;
};

} // namespace estatebook
