// SPDX-License-Identifier: MIT
#pragma once

/// String: an immutable, counted piece of UTF-8 text whose identity means something.
///
/// Attributes keep the very object they were given, and two rules of the model ask whether two strings are
/// the same object rather than the same text. Equality of text is literal: composed and decomposed forms
/// of a letter are two texts. (Canonical equivalence: platform/text.)
///
///     Ref<String> name = String::make("Rent");
///     name->view();                       // "Rent"
///     *name == "Rent";                    // the text
///     name == String::make("Rent");       // false: another object
///
/// Text that is not well-formed UTF-8 is kept as it stands; programs refuse it at their door, and no store takes it.

#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"

#include <string>
#include <string_view>

namespace estatebook::platform {

class StringBlock;

class ESTATEBOOK_API String final : public Object {
public:
    /// A new object that holds a copy of the text.
    [[nodiscard]] static Ref<String> make(std::string_view text);

    /// A constant with static storage; the text must live as long as the program.
    constexpr explicit String(std::string_view literal) noexcept
        : Object(Counting::Immortal), size_(static_cast<std::uint32_t>(literal.size())),
          data_(literal.data()) {}

    [[nodiscard]] std::string_view view() const noexcept { return {data_, size_}; }
    [[nodiscard]] std::string string() const { return std::string(view()); }
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] bool empty() const noexcept { return size_ == 0; }

    [[nodiscard]] bool isEqual(const Object& other) const noexcept override;
    [[nodiscard]] std::size_t hash() const noexcept override;
    [[nodiscard]] std::string description() const override { return string(); }
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "String"; }

    friend bool operator==(const String& a, const String& b) noexcept { return a.view() == b.view(); }
    friend bool operator==(const String& a, std::string_view b) noexcept { return a.view() == b; }

private:
    struct Counted {};
    String(Counted, const char* data, std::uint32_t size) noexcept
        : Object(Counting::Shared, Held{}), size_(size), data_(data) {}
    ~String() override = default;
    void dispose() const noexcept override;

    template <class>
    friend class Constant;
    friend class StringBlock;

    std::uint32_t size_;
    const char* data_;
};

/// Static storage for a constant object: made before any code runs, never destroyed, so that no order of
/// start-up or shut-down matters.
template <class T>
class Constant {
public:
    template <class... Arguments>
    constexpr explicit Constant(Arguments... arguments) noexcept : object_(arguments...) {}
    constexpr ~Constant() {}
    [[nodiscard]] constexpr T* get() noexcept { return &object_; }

private:
    union {
        T object_;
    };
};

} // namespace estatebook::platform
