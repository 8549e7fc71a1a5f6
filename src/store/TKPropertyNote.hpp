// SPDX-License-Identifier: MIT
#pragma once

/// TKPropertyNote: a note on a property.

#include "model/TKPropertyNoteProperties.hpp"

namespace estatebook {

class ESTATEBOOK_API TKPropertyNote final : public TKPropertyNoteProperties {
public:
    using TKPropertyNoteProperties::TKPropertyNoteProperties;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }

    /// "Property: NAME", with the property's full name.
    [[nodiscard]] platform::Ref<platform::String> regarding() const override;

private:
    ~TKPropertyNote() override;
};

} // namespace estatebook
