// SPDX-License-Identifier: MIT
#pragma once

/// A movement of money that just holds what it is given.

#include "platform/values/Object.hpp"
#include "statement/TKLedgerTransaction.hpp"

#include <optional>
#include <string_view>

namespace estatebook::test {

class PlainTransaction final : public platform::Adopts<platform::Object, TKLedgerTransaction> {
public:
    explicit PlainTransaction(std::optional<platform::Decimal> amount = {},
                              std::optional<platform::Date> when = {},
                              platform::Ref<TKTagNames> tags = nullptr)
        : Adopts(platform::Counting::Local), amount_(amount), when_(when), tags_(std::move(tags)) {}

    [[nodiscard]] std::optional<platform::Decimal> amount() const override { return amount_; }
    [[nodiscard]] platform::Ref<platform::String> what() const override { return nullptr; }
    [[nodiscard]] std::optional<platform::Date> when() const override { return when_; }
    [[nodiscard]] platform::Ref<TKTagNames> tagNames() const override { return tags_; }

    void setTagNames(platform::Ref<TKTagNames> tags) { tags_ = std::move(tags); }

private:
    std::optional<platform::Decimal> amount_;
    std::optional<platform::Date> when_;
    platform::Ref<TKTagNames> tags_;
};

/// A movement of an amount, tagged as the text says.
[[nodiscard]] inline platform::Ref<PlainTransaction> tagged(std::string_view tags,
                                                            std::optional<platform::Decimal> amount = 0) {
    return platform::makeRef<PlainTransaction>(amount, std::nullopt,
                                               TKTagNames::initWithEditableString(tags));
}

} // namespace estatebook::test
