// SPDX-License-Identifier: MIT
#pragma once

/// TKNotable: whatever notes are attached to: properties, tenants and tenures.

#include "platform/persistence/ToManyView.hpp"
#include "platform/values/Protocol.hpp"
#include "platform/values/Set.hpp"

namespace estatebook {

class TKNote;

class ESTATEBOOK_API TKNotable : public platform::Protocol {
public:
    /// createNote
    /// A new note on this object in its context. Raises InvalidArgumentException for an object without a context.
    virtual TKNote* createNote() = 0;
    [[nodiscard]] virtual platform::ToManyView<TKNote> notes() const = 0;
    virtual void setNotes(const platform::Ref<platform::Set>& notes) = 0;

protected:
    ~TKNotable() = default;
};

} // namespace estatebook
