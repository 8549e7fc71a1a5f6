// SPDX-License-Identifier: MIT
#pragma once

/// TKState: a setting that concerns the whole book, kept in the book itself under a name.
///
///     TKState::updateStateWithNameValueInManagedObjectContext(TKCurrencyCodeStateName, String::make("EUR"), context);
///     TKState::valueForNameInManagedObjectContext(TKCurrencyCodeStateName, context).string();   // "EUR"
///
/// Names are compared exactly, letter case included. One object a name is meant; more are tolerated: each access that
/// finds several says so in the log and works on the first in the order of creation. Nothing here saves. Each access is one
/// fetch, linear in the number of settings.

#include "model/TKStateProperties.hpp"
#include "platform/values/String.hpp"

#include <optional>
#include <vector>

namespace estatebook {

class ESTATEBOOK_API TKState final : public TKStateProperties {
public:
    using TKStateProperties::TKStateProperties;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }

    /// fetchStateForName:inManagedObjectContext:
    /// Every setting of the name; none when the fetch fails.
    [[nodiscard]] static std::optional<std::vector<platform::Ref<TKState>>>
    fetchStateForNameInManagedObjectContext(const platform::Ref<platform::String>& name,
                                            platform::ManagedObjectContext& context);

    /// stateForKey:inManagedObjectContext:
    /// The setting of the name, made without a value when there is none: a look-up may leave an unsaved change,
    /// so that there is always an object to observe.
    [[nodiscard]] static platform::Ref<TKState>
    stateForKeyInManagedObjectContext(const platform::Ref<platform::String>& name,
                                      platform::ManagedObjectContext& context);

    /// valueForName:inManagedObjectContext:
    /// The value of the setting; absent when there is none, and nothing is made.
    [[nodiscard]] static platform::Value
    valueForNameInManagedObjectContext(const platform::Ref<platform::String>& name,
                                       platform::ManagedObjectContext& context);

    /// updateStateWithName:value:inManagedObjectContext:
    /// Sets the value, which may be absent, and makes the setting when there is none.
    static void updateStateWithNameValueInManagedObjectContext(const platform::Ref<platform::String>& name,
                                                               const platform::Value& value,
                                                               platform::ManagedObjectContext& context);

    /// The setting of the name; null when there is none. Raises ObjectInaccessibleException when the store cannot be read, which the
    /// operations above take for a setting that is not there.
    [[nodiscard]] static platform::Ref<TKState>
    readStateForNameInManagedObjectContext(const platform::Ref<platform::String>& name,
                                           platform::ManagedObjectContext& context);

private:
    ~TKState() override;
};

/// The setting under which the code of the book's currency is kept: a text.
ESTATEBOOK_API extern platform::String* const TKCurrencyCodeStateName;
/// The setting under which the billing mode is kept: a number read as an unsigned integer.
ESTATEBOOK_API extern platform::String* const TKBillingModeStateName;

} // namespace estatebook
