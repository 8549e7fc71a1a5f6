// SPDX-License-Identifier: MIT
#pragma once

/// Error: why an operation that may fail did fail. It is handed back, never thrown.
///
///     Ref<Error> error;
///     if (!tenure.validateForInsert(&error)) show(error->localizedDescription());

#include "platform/values/Dictionary.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace estatebook::platform {

/// Entry of an error's user info: the sentence for people.
inline constexpr std::string_view LocalizedDescriptionKey = "NSLocalizedDescription";
/// Entry of an error's user info: an array of errors that stand behind this one.
inline constexpr std::string_view DetailedErrorsKey = "NSDetailedErrors";

class ESTATEBOOK_API Error final : public Object {
public:
    Error(std::string_view domain, std::int64_t code, Ref<Dictionary> userInfo);
    /// With one sentence under LocalizedDescriptionKey.
    [[nodiscard]] static Ref<Error> make(std::string_view domain, std::int64_t code,
                                         std::string_view description);

    [[nodiscard]] std::string_view domain() const noexcept { return domain_; }
    [[nodiscard]] std::int64_t code() const noexcept { return code_; }
    /// Never null.
    [[nodiscard]] const Ref<Dictionary>& userInfo() const noexcept { return userInfo_; }
    /// The sentence under LocalizedDescriptionKey, or the domain and code.
    [[nodiscard]] std::string localizedDescription() const;

    [[nodiscard]] std::string description() const override;
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "Error"; }

private:
    std::string domain_;
    std::int64_t code_;
    Ref<Dictionary> userInfo_;
};

} // namespace estatebook::platform
