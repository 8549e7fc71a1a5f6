// SPDX-License-Identifier: MIT
#pragma once

/// AttributedString: immutable text with attributes on runs of it, such as the body of a note.
///
/// A run gives attributes to `length` bytes of the text from `location`. Runs begin and end between characters, do not
/// overlap and stand in order. Text outside every run has no attributes.

#include "platform/values/Dictionary.hpp"
#include "platform/values/String.hpp"

#include <cstddef>
#include <span>
#include <vector>

namespace estatebook::platform {

class ESTATEBOOK_API AttributedString final : public Object {
public:
    struct Run {
        std::size_t location = 0;
        std::size_t length = 0;
        Ref<Dictionary> attributes;
    };

    /// A run of no bytes, or whose attributes are an empty dictionary, says nothing and is left out. Raises
    /// InvalidArgumentException when a run leaves the text, cuts a character in two, overlaps the one before it or
    /// has no dictionary.
    [[nodiscard]] static Ref<AttributedString> make(Ref<String> text, std::vector<Run> runs = {});
    /// Without text and without attributes.
    [[nodiscard]] static Ref<AttributedString> empty();

    [[nodiscard]] const Ref<String>& text() const noexcept { return text_; }
    [[nodiscard]] std::span<const Run> runs() const noexcept { return runs_; }

    [[nodiscard]] bool isEqual(const Object& other) const noexcept override;
    [[nodiscard]] std::size_t hash() const noexcept override { return text_->hash(); }
    [[nodiscard]] std::string description() const override { return text_->string(); }
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "AttributedString"; }

private:
    AttributedString(Ref<String> text, std::vector<Run> runs) noexcept;
    Ref<String> text_;
    std::vector<Run> runs_;
};

} // namespace estatebook::platform
