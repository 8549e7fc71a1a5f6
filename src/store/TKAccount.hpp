// SPDX-License-Identifier: MIT
#pragma once

/// TKAccount: a party with whom the landlord keeps books: a property or a tenant. It has a name, a link to a contact
/// card, tags and notes.
///
/// An account of a context follows the current day from its awakening until it turns into a fault: its `currentDate` is
/// the instant of the last update of TKCurrentDateController, not the present moment.

#include "model/Keys.hpp"
#include "model/TKAccountProperties.hpp"
#include "store/TKCurrentDate.hpp"
#include "tags/TKTaggable.hpp"

#include <array>

namespace estatebook {

class TKTenure;

class ESTATEBOOK_API TKAccount : public platform::Adopts<TKAccountProperties, TKCurrentDate, TKTaggable> {
public:
    using Adopts::Adopts;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }
    static constexpr std::array Dependencies{platform::DependencyRow{keys::tagNames, {keys::tags}}};

    [[nodiscard]] std::optional<platform::Date> currentDate() const override {
        return TKAccountProperties::currentDate();
    }
    void setCurrentDate(const std::optional<platform::Date>& date) override {
        TKAccountProperties::setCurrentDate(date);
    }

    /// tenuresActiveAtDate:
    /// The account's tenures that are active on the day of the date.
    [[nodiscard]] platform::Ref<platform::Set>
    tenuresActiveAtDate(const std::optional<platform::Date>& date) const;

    /// The balance as a plain number: the single-precision 0, which neither kind of account replaces.
    [[nodiscard]] virtual float accountBalance() const { return 0.0F; }
    /// Whether nothing is owed: `accountBalance` is 0 or more.
    [[nodiscard]] virtual bool isBalanced() const { return accountBalance() >= 0.0F; }
    /// Whether the account takes part in a current letting.
    [[nodiscard]] virtual bool isActive() const { return true; }

    /// addObservers
    /// Follows the current day, which sets `currentDate` at once.
    void addObservers();
    /// removeObservers
    /// Follows it no more; raises RangeException when it did not.
    void removeObservers();
    /// Takes the current date over when the context is TKCurrentDateChanged.
    void observeValueForKeyPathOfObjectChangeContext(std::string_view keyPath,
                                                     platform::ObservableObject& object,
                                                     const platform::KeyValueChange& change,
                                                     const void* context) override;

    TKTag* createTagWithName(const platform::Ref<platform::String>& name) override;
    [[nodiscard]] platform::ToManyView<TKTag> tags() const override { return TKAccountProperties::tags(); }
    void setTags(const platform::Ref<platform::OrderedSet>& tags) override {
        TKAccountProperties::setTags(tags);
    }

    void awakeFromInsert() override;
    void awakeFromFetch() override;
    /// Registers once more and leaves the registration there was, so that the account is told of each day as often as it
    /// was restored; turning into a fault takes one away.
    void awakeFromSnapshotEvents(unsigned events) override;
    void willTurnIntoFault() override;
    void willSave() override;

protected:
    ~TKAccount() override;
};

} // namespace estatebook
