// SPDX-License-Identifier: MIT
#pragma once

/// TKTagNames: the names by which a user has tagged one transaction, note or account, or all the lines of a
/// statement, in the order in which they were typed and each of them once.
///
/// People see and edit the names as one text, with commas between them. Names are told apart exactly: "Rent"
/// and "rent" are two, and so are the composed and the decomposed spelling of a letter (grouping by tag is more
/// lenient, see TKStatement). The name objects are kept as given, since a few rules ask for the very same object.
///
/// The trap: two values with the same names are not equal. Equality is identity; `compare` looks at the names.
///
///     Ref<TKTagNames> names = TKTagNames::initWithEditableString(" Rent ,Repairs,, rent");
///     names->editableString();            // "Rent, Repairs, rent"
///     names->first()->view();             // "Rent"
///     names->contains("RENT");            // false
///
/// Archives keep a value under its class's run-time name, EstateBook_Model.TKTagNames (archivedClass).
///
/// A value is not changed by anything here but `setItems`; while nobody calls that it may be read from any thread.

#include "EstateBook_ModelExport.hpp"

#include "platform/archive/ArchivedClass.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Set.hpp"
#include "platform/values/String.hpp"

#include <compare>
#include <cstddef>
#include <string>
#include <string_view>

namespace estatebook {

class ESTATEBOOK_API TKTagNames final : public platform::Object {
public:
    TKTagNames() = delete;

    /// initWithArray:
    /// The names in the order of the list. Of a name that is repeated the first one keeps its place.
    /// REQUIRES: a list.
    [[nodiscard]] static platform::Ref<TKTagNames> initWithArray(const platform::Ref<platform::Array>& names);

    /// initWithOrderedSet:
    /// The members of the set. REQUIRES: a set; without one the program stops.
    [[nodiscard]] static platform::Ref<TKTagNames>
    initWithOrderedSet(const platform::Ref<platform::OrderedSet>& names);

    /// initWithEditableString:
    /// Splits the text at its commas, trims white space (but not line breaks) from both ends of each piece, drops
    /// pieces that are empty then, and keeps the others as the list of names.
    [[nodiscard]] static platform::Ref<TKTagNames> initWithEditableString(std::string_view text);

    /// initWithCoder:
    /// Reads the names, without a key. An archive without them, or with something else in their place, was not written
    /// here: the program stops.
    [[nodiscard]] static platform::Ref<TKTagNames> initWithCoder(platform::KeyedUnarchiver& coder);
    /// encodeWithCoder:
    /// Writes the names, without a key.
    void encodeWithCoder(platform::KeyedArchiver& coder) const;
    /// How archives are told of the class.
    [[nodiscard]] static const platform::ArchivedClass& archivedClass() noexcept;

    /// The names, never null.
    [[nodiscard]] const platform::Ref<platform::OrderedSet>& items() const noexcept { return items_; }
    /// Puts other names in their place; announces nothing. REQUIRES: a set; without one the program stops.
    void setItems(const platform::Ref<platform::OrderedSet>& items);

    /// The names with ", " between them; empty when there are none. Parsing it gives the names again,
    /// unless one has a comma in it or white space at an end.
    [[nodiscard]] std::string editableString() const;

    /// contains:
    /// Whether the text is one of the names, letter case and spelling included. False for null.
    [[nodiscard]] bool contains(const platform::Ref<platform::String>& name) const;
    [[nodiscard]] bool contains(std::string_view name) const;

    /// The first name; null when there is none, and when the first member of `items` is no text.
    [[nodiscard]] platform::Ref<platform::String> first() const noexcept;

    [[nodiscard]] bool isEmpty() const noexcept { return items_->empty(); }

    /// compare:
    /// Name by name in their order by character value (compareTexts), without regard to locale; the shorter of two
    /// lists that agree so far stands first. Members that are no texts count as their descriptions.
    [[nodiscard]] std::weak_ordering compare(const TKTagNames& other) const;

    /// Another object with the same names.
    [[nodiscard]] platform::Ref<TKTagNames> copy() const { return initWithOrderedSet(items_); }
    /// copyWithZone:
    /// The same; the zone is of no account.
    [[nodiscard]] platform::Ref<TKTagNames> copyWithZone(const void*) const { return copy(); }

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return RuntimeName; }

private:
    static constexpr std::string_view RuntimeName = "EstateBook_Model.TKTagNames";

    explicit TKTagNames(platform::Ref<platform::OrderedSet> items);
    ~TKTagNames() override = default;

    platform::Ref<platform::OrderedSet> items_;
};

} // namespace estatebook
