// SPDX-License-Identifier: MIT
#pragma once

/// Tags: the names of tags as one text with commas, to and from whatever has tags.

#include "estatebook-desktop/window/Figures.hpp"

#include "tags/TKTag.hpp"
#include "tags/TKTagNames.hpp"

#include <QString>

#include <string>

namespace estatebook::desktop {

template <class Owner>
[[nodiscard]] QString tagsOf(const Owner& owner) {
    const auto names = owner.tagNames();
    return names ? QString::fromStdString(names->editableString()) : QString();
}

/// Does nothing when they are the same. Emptying the names alone would keep the old tags, so that these go, too.
template <class Owner>
void setTags(Owner& owner, const QString& text) {
    const auto names = TKTagNames::initWithEditableString(text.toStdString());
    if (QString::fromStdString(names->editableString()) == tagsOf(owner)) return;
    owner.setTagNames(names);
    if (names->isEmpty()) TKTag::replaceTagNamesForTaggableObject(nullptr, owner);
}

} // namespace estatebook::desktop
