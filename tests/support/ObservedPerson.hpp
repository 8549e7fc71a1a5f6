// SPDX-License-Identifier: MIT
#pragma once

/// A plain observable class for tests, and an observer that writes down what it is told.

#include "model/Keys.hpp"
#include "platform/observation/ObservableObject.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Set.hpp"

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace estatebook::test {

namespace platform = estatebook::platform;

/// Has a stored value of each sort, and a diamond of derived ones over the amount:
/// amount -> totalIncome, totalAdjustment -> balance -> balanced; name -> fullName -> details (without a value).
class Person : public platform::ObservableObject {
public:
    using Key = platform::Key;
    static constexpr std::array Dependencies{
        platform::DependencyRow{keys::fullName, {keys::name}},
        platform::DependencyRow{keys::details, {keys::fullName}},
        platform::DependencyRow{keys::totalIncome, {keys::amount}},
        platform::DependencyRow{keys::totalAdjustment, {keys::amount}},
        platform::DependencyRow{keys::balance, {keys::totalIncome, keys::totalAdjustment}},
        platform::DependencyRow{keys::balanced, {keys::balance}},
    };
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }

    Person() = default;

    [[nodiscard]] platform::Ref<platform::String> name() const { return name_; }
    void setName(const platform::Ref<platform::String>& name) {
        change(keys::name, [&] { name_ = name; });
    }
    [[nodiscard]] std::optional<platform::Decimal> amount() const { return amount_; }
    void setAmount(const std::optional<platform::Decimal>& amount) {
        change(keys::amount, [&] { amount_ = amount; });
    }
    /// A plain number.
    [[nodiscard]] std::uint64_t billingMode() const { return mode_; }
    void setBillingMode(std::uint64_t mode) {
        change(keys::billingMode, [&] { mode_ = mode; });
    }
    /// The one this person answers to.
    [[nodiscard]] platform::Ref<Person> owner() const { return owner_; }
    void setOwner(const platform::Ref<Person>& owner) {
        change(keys::owner, [&] { owner_ = owner; });
    }
    [[nodiscard]] platform::Ref<platform::Set> tenures() const { return set_; }
    void setTenures(const platform::Ref<platform::Set>& set) {
        change(keys::tenures, [&] { set_ = set; });
    }
    [[nodiscard]] platform::Value value() const { return value_; }
    void setValue(const platform::Value& value) {
        change(keys::value, [&] { value_ = value; });
    }
    /// A store that raises.
    void failToStore() {
        change(keys::amount, [] { throw platform::RangeException("the store failed"); });
    }

    [[nodiscard]] platform::Ref<platform::String> fullName() const {
        return name_ ? platform::String::make(name_->string() + "!") : nullptr;
    }
    [[nodiscard]] platform::Decimal totalIncome() const { return amount_.value_or(platform::Decimal()); }
    [[nodiscard]] platform::Decimal totalAdjustment() const {
        return amount_.value_or(platform::Decimal()).decimalNumberByMultiplyingBy(platform::Decimal(2));
    }
    /// Raises for an amount below zero.
    [[nodiscard]] platform::Decimal balance() const {
        if (totalIncome() < platform::Decimal()) throw platform::DivideByZeroException("there is no balance");
        return totalIncome().decimalNumberByAdding(totalAdjustment());
    }
    [[nodiscard]] bool isBalanced() const { return balance() == platform::Decimal(); }

protected:
    ~Person() override = default;

private:
    platform::Ref<platform::String> name_;
    std::optional<platform::Decimal> amount_;
    std::uint64_t mode_ = 0;
    platform::Ref<Person> owner_;
    platform::Ref<platform::Set> set_;
    platform::Value value_;
};

namespace detail {
inline constexpr auto personClosure = platform::closureOf(Person::Dependencies);
inline constexpr platform::Property personProperties[] = {
    platform::writable<&Person::name, &Person::setName>(keys::name),
    platform::writable<&Person::amount, &Person::setAmount>(keys::amount),
    platform::writable<&Person::billingMode, &Person::setBillingMode>(keys::billingMode),
    platform::writable<&Person::owner, &Person::setOwner>(keys::owner),
    platform::writable<&Person::tenures, &Person::setTenures>(keys::tenures),
    platform::writable<&Person::value, &Person::setValue>(keys::value),
    platform::derived<&Person::fullName>(keys::fullName),
    platform::derived<&Person::totalIncome>(keys::totalIncome),
    platform::derived<&Person::totalAdjustment>(keys::totalAdjustment),
    platform::derived<&Person::balance>(keys::balance),
    platform::derived<&Person::isBalanced>(keys::balanced),
    platform::derived<&Person::isBalanced>(keys::isBalanced),
};
} // namespace detail

inline constinit const platform::ClassDescription Person::Class("Person", nullptr, detail::personProperties,
                                                                Person::Dependencies,
                                                                platform::dependentsIn<detail::personClosure>,
                                                                platform::announcing<Person>);

/// Writes down every announcement that passes through the overridable pair: "+amount", "-amount".
class RecordingPerson final : public Person {
public:
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }
    RecordingPerson() = default;

    std::vector<std::string> announced;

    void willChangeValueForKey(Key key) override {
        announced.push_back("+" + std::string(key.name()));
        Person::willChangeValueForKey(key);
    }
    void didChangeValueForKey(Key key) override {
        announced.push_back("-" + std::string(key.name()));
        Person::didChangeValueForKey(key);
    }

private:
    ~RecordingPerson() override = default;
};
inline constinit const platform::ClassDescription
    RecordingPerson::Class("RecordingPerson", &Person::Class, {}, Person::Dependencies,
                           platform::dependentsIn<detail::personClosure>,
                           platform::announcing<RecordingPerson>);

/// An observer that remembers everything and does what it is told to.
class Watcher final : public platform::ObservableObject {
public:
    struct Heard {
        std::string path;
        platform::ObservableObject* object;
        platform::KeyValueChange change;
        const void* context;
    };
    Watcher() = default;
    explicit Watcher(std::function<void(const Heard&)> reaction) : reaction(std::move(reaction)) {}

    std::vector<Heard> heard;
    std::function<void(const Heard&)> reaction;

    /// The paths in the order in which they were told.
    [[nodiscard]] std::vector<std::string> paths() const {
        std::vector<std::string> all;
        for (const Heard& each : heard) all.push_back(each.path);
        return all;
    }
    [[nodiscard]] std::size_t timesTold(std::string_view path) const {
        std::size_t times = 0;
        for (const Heard& each : heard) times += each.path == path;
        return times;
    }

    void observeValueForKeyPathOfObjectChangeContext(std::string_view path,
                                                     platform::ObservableObject& object,
                                                     const platform::KeyValueChange& change,
                                                     const void* context) override {
        heard.push_back({std::string(path), &object, change, context});
        if (!reaction) return;
        const Heard told = heard.back();
        reaction(told);
    }

private:
    ~Watcher() override = default;
};

/// Registers for a path; the context is the watcher itself.
inline void watch(platform::ObservableObject& object, Watcher& watcher, std::string_view path,
                  unsigned options = platform::ObservingNothing) {
    object.addObserverForKeyPathOptionsContext(watcher, path, options, &watcher);
}
inline void unwatch(platform::ObservableObject& object, Watcher& watcher, std::string_view path) {
    object.removeObserverForKeyPathContext(watcher, path, &watcher);
}

inline platform::Ref<platform::String> text(std::string_view characters) {
    return platform::String::make(characters);
}

} // namespace estatebook::test
