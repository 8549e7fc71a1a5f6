// SPDX-License-Identifier: MIT
#pragma once

/// TKTag: one stored tag of one owner, which is what a store can search.
///
/// An owner holds its tags twice: as `tagNames`, which people edit, and as `tags`, one object a name. The
/// names are the authority while the owner is in memory: its tags are rebuilt from them before each save, and
/// they from the tags when it is fetched.
///
/// Whether a tag still fits is asked of the string object, not of its text: names that came from the tags and
/// were not edited cost nothing, names that were typed anew make new tags. The trap: only as many places as
/// there are names are looked at, so that emptying the names keeps the old tags.

#include "model/TKTagProperties.hpp"
#include "tags/TKTaggable.hpp"

namespace estatebook {

class TKTagNames;

class ESTATEBOOK_API TKTag final : public TKTagProperties {
public:
    using TKTagProperties::TKTagProperties;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }

    /// fetchTagNamesFromTaggableObject:
    /// The names of the owner's tags, in order, as the very objects the tags hold. A tag without a name raises
    /// InvalidArgumentException.
    [[nodiscard]] static platform::Ref<TKTagNames> fetchTagNamesFromTaggableObject(const TKTaggable& owner);

    /// replaceTagNames:forTaggableObject:
    /// Deletes every tag of the owner and makes new ones for the names, in order. Null names leave none.
    /// Announces the owner's "tags".
    static void replaceTagNamesForTaggableObject(const platform::Ref<TKTagNames>& names, TKTaggable& owner);

    /// updateTagNames:forTaggableObject:
    /// Replaces the tags when a name is not the very string object of the tag at its place. Null or empty
    /// names change nothing.
    static void updateTagNamesForTaggableObject(const platform::Ref<TKTagNames>& names, TKTaggable& owner);
};

/// For an owner's createTagWithName.
[[nodiscard]] TKTag* insertTag(std::string_view entityName, const platform::ManagedObject& owner,
                               const platform::Ref<platform::String>& name);

} // namespace estatebook
