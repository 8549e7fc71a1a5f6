// SPDX-License-Identifier: MIT
#pragma once

/// TKNote: a dated, signed piece of rich text on a property, a tenant or a tenure.

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

    TKTag* createTagWithName(const platform::Ref<platform::String>& name) override;
    [[nodiscard]] platform::ToManyView<TKTag> tags() const override { return TKNoteProperties::tags(); }
    void setTags(const platform::Ref<platform::OrderedSet>& tags) override {
        TKNoteProperties::setTags(tags);
    }

    void willSave() override;
    void awakeFromFetch() override;

protected:
    ~TKNote() override;
};

} // namespace estatebook
