// SPDX-License-Identifier: MIT
#pragma once

/// PropertyListUid: the member of a property list that points to an entry of an archive's list of objects.

#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"

#include <cstdint>

namespace estatebook::platform {

class ESTATEBOOK_API PropertyListUid final : public Object {
public:
    [[nodiscard]] static Ref<PropertyListUid> make(std::uint64_t number);

    [[nodiscard]] std::uint64_t number() const noexcept { return number_; }

    [[nodiscard]] bool isEqual(const Object& other) const noexcept override;
    [[nodiscard]] std::size_t hash() const noexcept override;
    /// "UID 5".
    [[nodiscard]] std::string description() const override;
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "PropertyListUid"; }

private:
    explicit PropertyListUid(std::uint64_t number) noexcept : Object(Counting::Shared), number_(number) {}
    std::uint64_t number_;
};

} // namespace estatebook::platform
