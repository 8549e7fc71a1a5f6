// SPDX-License-Identifier: MIT
#pragma once

/// TKTaggable: whatever carries tags: accounts, transactions and notes.

#include "platform/persistence/ToManyView.hpp"
#include "platform/values/Protocol.hpp"
#include "platform/values/Set.hpp"
#include "platform/values/String.hpp"

namespace estatebook {

class TKTag;

class ESTATEBOOK_API TKTaggable : public platform::Protocol {
public:
    /// createTagWithName:
    /// A new tag of the owner's own kind in its context, with this name; it is not yet one of `tags`. Raises
    /// InvalidArgumentException for an owner without a context.
    virtual TKTag* createTagWithName(const platform::Ref<platform::String>& name) = 0;
    /// The tags, in the order of the names.
    [[nodiscard]] virtual platform::ToManyView<TKTag> tags() const = 0;
    virtual void setTags(const platform::Ref<platform::OrderedSet>& tags) = 0;

protected:
    ~TKTaggable() = default;
};

} // namespace estatebook
