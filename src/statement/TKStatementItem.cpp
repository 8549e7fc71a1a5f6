// SPDX-License-Identifier: MIT
#include "statement/TKStatementItem.hpp"

namespace estatebook {

platform::Ref<platform::String> TKStatementItem::primaryTag() const {
    const platform::Ref<TKTagNames> names = transaction_->tagNames();
    return names ? names->first() : nullptr;
}

} // namespace estatebook
