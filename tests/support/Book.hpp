// SPDX-License-Identifier: MIT
#pragma once

/// A book in memory, the days its tests speak of, and listeners for what it announces.

#include "platform/calendar/Calendar.hpp"
#include "platform/observation/ObservableObject.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/system/HostOperations.hpp"
#include "platform/system/Log.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKProperty.hpp"
#include "store/TKTenant.hpp"
#include "tenure/TKTenure.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace estatebook::bookkit {

/// Puts a zone in the place of the default one for as long as it lives.
class DefaultZone {
public:
    explicit DefaultZone(std::string_view name) : before_(platform::TimeZone::defaultTimeZone()) {
        platform::TimeZone::setDefaultTimeZone(platform::TimeZone::named(name));
    }
    ~DefaultZone() { platform::TimeZone::setDefaultTimeZone(before_); }
    DefaultZone(const DefaultZone&) = delete;
    DefaultZone& operator=(const DefaultZone&) = delete;

private:
    platform::Ref<platform::TimeZone> before_;
};

/// Gives the host's operations back as they were.
class HostOperationsGuard {
public:
    HostOperationsGuard() : before_(platform::hostOperations()) {}
    ~HostOperationsGuard() { platform::hostOperations() = before_; }
    HostOperationsGuard(const HostOperationsGuard&) = delete;
    HostOperationsGuard& operator=(const HostOperationsGuard&) = delete;

private:
    platform::HostOperations before_;
};

/// The lines that go to the log while it lives.
class LogLines {
public:
    LogLines() {
        platform::Log::setSink([this](std::string_view line) { lines_.emplace_back(line); });
    }
    ~LogLines() { platform::Log::setSink({}); }
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;

    const std::vector<std::string>& lines() const { return lines_; }

private:
    std::vector<std::string> lines_;
};

/// That time of day on the wall of the default zone; the day begins at its first instant.
inline platform::Date onDay(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    const auto calendar = platform::Calendar::current();
    const auto civil = platform::CivilDay::fromYearMonthDay(year, month, day);
    if (hour == 0 && minute == 0 && second == 0) return calendar.startOfCivilDay(civil);
    return calendar.instantOfWallTime(civil, hour * 3600 + minute * 60 + second).value();
}

inline platform::Ref<platform::String> text(std::string_view view) {
    return platform::String::make(view);
}

/// The text of a string; "(null)" for none.
inline std::string shownText(const platform::Ref<platform::String>& string) {
    return string ? string->string() : "(null)";
}

/// Hears what is announced for the key paths it was set on.
class Listener final : public platform::ObservableObject {
public:
    struct Heard {
        std::string keyPath;
        platform::ObservableObject* object;
        const void* context;
    };

    void listenTo(platform::ObservableObject& object, std::string_view keyPath, unsigned options = 0,
                  const void* context = nullptr) {
        object.addObserverForKeyPathOptionsContext(*this, keyPath, options, context);
    }
    void observeValueForKeyPathOfObjectChangeContext(std::string_view keyPath,
                                                     platform::ObservableObject& object,
                                                     const platform::KeyValueChange&,
                                                     const void* context) override {
        heard_.push_back({std::string(keyPath), &object, context});
    }

    const std::vector<Heard>& heard() const { return heard_; }
    void forget() { heard_.clear(); }
    /// How often the key path was announced.
    std::size_t times(std::string_view keyPath) const {
        std::size_t count = 0;
        for (const Heard& each : heard_) count += each.keyPath == keyPath ? 1 : 0;
        return count;
    }

private:
    std::vector<Heard> heard_;
};

/// A book without a store.
class Book {
public:
    Book() : context_(TKManagedObjectModel::inMemoryManagedObjectContext()) {}

    platform::ManagedObjectContext& context() const { return *context_; }
    platform::ManagedObjectContext* operator->() const { return context_.get(); }

    template <class T>
    platform::Ref<T> insert(std::string_view entity) const {
        return context_->insertNewObject<T>(entity);
    }
    platform::Ref<TKProperty> property(std::string_view name) const {
        auto property = insert<TKProperty>("Property");
        property->setName(text(name));
        return property;
    }
    platform::Ref<TKTenant> tenant(std::string_view name) const {
        auto tenant = insert<TKTenant>("Tenant");
        tenant->setName(text(name));
        return tenant;
    }
    platform::Ref<TKTenure> tenure() const { return insert<TKTenure>("Tenure"); }

    /// A rent of so many cycles, due from the start; nothing else is set.
    platform::Ref<TKTenure> tenure(platform::Date start, std::uint64_t cycle, std::uint64_t period,
                                   const platform::Decimal& rent) const {
        auto made = tenure();
        made->setStartDate(start);
        made->setRentalBillingCycle(platform::Number(cycle));
        made->setRentalPeriod(platform::Number(period));
        made->setRentalAmount(rent);
        return made;
    }

    /// A payment on a tenure, or a cost or an income of a property.
    template <class Ledger>
    auto* record(Ledger& ledger, const std::optional<platform::Decimal>& amount,
                 const std::optional<platform::Date>& when = std::nullopt, bool isAdjustment = false) const {
        auto* transaction = ledger.createTransaction();
        transaction->setAmount(amount);
        transaction->setWhen(when);
        if (isAdjustment) transaction->setAdjustment(platform::Number(true));
        return transaction;
    }

private:
    platform::Ref<platform::ManagedObjectContext> context_;
};

} // namespace estatebook::bookkit
