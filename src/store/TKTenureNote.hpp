// SPDX-License-Identifier: MIT
#pragma once

/// TKTenureNote: a note on a tenure.

#include "model/TKTenureNoteProperties.hpp"

namespace estatebook {

class ESTATEBOOK_API TKTenureNote final : public TKTenureNoteProperties {
public:
    using TKTenureNoteProperties::TKTenureNoteProperties;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }

    /// "Tenure: NAME", with the tenure's name.
    [[nodiscard]] platform::Ref<platform::String> regarding() const override;

private:
    ~TKTenureNote() override;
};

} // namespace estatebook
