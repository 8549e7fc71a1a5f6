// SPDX-License-Identifier: MIT
#pragma once

/// Data: an immutable, counted run of bytes.

#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"

#include <cstddef>
#include <span>
#include <vector>

namespace estatebook::platform {

class ESTATEBOOK_API Data final : public Object {
public:
    [[nodiscard]] static Ref<Data> make(std::vector<std::byte> bytes);
    [[nodiscard]] std::span<const std::byte> bytes() const noexcept { return bytes_; }

    [[nodiscard]] bool isEqual(const Object& other) const noexcept override;
    [[nodiscard]] std::size_t hash() const noexcept override;
    /// The number of bytes: "<12 bytes>".
    [[nodiscard]] std::string description() const override;
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "Data"; }

private:
    explicit Data(std::vector<std::byte> bytes) noexcept;
    std::vector<std::byte> bytes_;
};

} // namespace estatebook::platform
