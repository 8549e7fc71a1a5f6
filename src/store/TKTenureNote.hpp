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

private:
    ~TKTenureNote() override;
};

} // namespace estatebook
