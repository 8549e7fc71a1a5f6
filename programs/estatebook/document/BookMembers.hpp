// SPDX-License-Identifier: MIT
#pragma once

/// The members of each object of a book, in the order in which they are written. Reading and writing both go
/// by these tables, so that what one knows the other knows.

#include "estatebook/document/BookDocument.hpp"

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <variant>

namespace estatebook::document {

/// What a text stands for, beside itself.
enum class Role : unsigned char { Value, Identifier, PropertyReference, TenantReference };

/// A member: its name, and the field of the object that holds it.
template <class Object>
struct Member {
    using Field =
        std::variant<std::optional<std::string> Object::*, std::optional<platform::Decimal> Object::*,
                     std::optional<platform::Date> Object::*, std::optional<bool> Object::*,
                     std::optional<std::uint64_t> Object::*, std::optional<BillingCycle> Object::*,
                     std::optional<ChargeBehaviour> Object::*, std::vector<std::string> Object::*,
                     std::optional<RichText> Object::*, std::vector<Transaction> Object::*,
                     std::vector<Note> Object::*>;

    std::string_view name;
    Field field;
    Role role = Role::Value;
};

template <class Object>
inline constexpr int membersOf = 0;

template <>
inline constexpr std::array membersOf<Transaction>{
    Member<Transaction>{"id", &Transaction::id, Role::Identifier},
    Member<Transaction>{"amount", &Transaction::amount},
    Member<Transaction>{"what", &Transaction::what},
    Member<Transaction>{"when", &Transaction::when},
    Member<Transaction>{"processedOn", &Transaction::processedOn},
    Member<Transaction>{"receipt", &Transaction::receipt},
    Member<Transaction>{"adjustment", &Transaction::adjustment},
    Member<Transaction>{"tags", &Transaction::tags},
};

template <>
inline constexpr std::array membersOf<Note>{
    Member<Note>{"id", &Note::id, Role::Identifier}, Member<Note>{"subject", &Note::subject},
    Member<Note>{"content", &Note::content},         Member<Note>{"createdDate", &Note::createdDate},
    Member<Note>{"createdBy", &Note::createdBy},     Member<Note>{"tags", &Note::tags},
};

template <>
inline constexpr std::array membersOf<Property>{
    Member<Property>{"id", &Property::id, Role::Identifier},
    Member<Property>{"name", &Property::name},
    Member<Property>{"sublease", &Property::sublease},
    Member<Property>{"addressBookID", &Property::addressBookID},
    Member<Property>{"rentalAmount", &Property::rentalAmount},
    Member<Property>{"bondAmount", &Property::bondAmount},
    Member<Property>{"rentalPeriod", &Property::rentalPeriod},
    Member<Property>{"rentalBillingCycle", &Property::rentalBillingCycle},
    Member<Property>{"available", &Property::available},
    Member<Property>{"tags", &Property::tags},
    Member<Property>{"transactions", &Property::transactions},
    Member<Property>{"notes", &Property::notes},
};

template <>
inline constexpr std::array membersOf<Tenant>{
    Member<Tenant>{"id", &Tenant::id, Role::Identifier},
    Member<Tenant>{"name", &Tenant::name},
    Member<Tenant>{"addressBookID", &Tenant::addressBookID},
    Member<Tenant>{"tags", &Tenant::tags},
    Member<Tenant>{"notes", &Tenant::notes},
};

template <>
inline constexpr std::array membersOf<Tenure>{
    Member<Tenure>{"id", &Tenure::id, Role::Identifier},
    Member<Tenure>{"property", &Tenure::property, Role::PropertyReference},
    Member<Tenure>{"tenant", &Tenure::tenant, Role::TenantReference},
    Member<Tenure>{"startDate", &Tenure::startDate},
    Member<Tenure>{"endDate", &Tenure::endDate},
    Member<Tenure>{"rentalAmount", &Tenure::rentalAmount},
    Member<Tenure>{"rentalPeriod", &Tenure::rentalPeriod},
    Member<Tenure>{"rentalBillingCycle", &Tenure::rentalBillingCycle},
    Member<Tenure>{"advancePeriod", &Tenure::advancePeriod},
    Member<Tenure>{"advanceBillingCycle", &Tenure::advanceBillingCycle},
    Member<Tenure>{"chargeBehaviour", &Tenure::chargeBehaviour},
    Member<Tenure>{"chargeFullDuration", &Tenure::chargeFullDuration},
    Member<Tenure>{"bondAmount", &Tenure::bondAmount},
    Member<Tenure>{"lastBalancedDate", &Tenure::lastBalancedDate},
    Member<Tenure>{"transactions", &Tenure::transactions},
    Member<Tenure>{"notes", &Tenure::notes},
};

/// The members of a piece of a text.
enum class PieceMember : unsigned char { Text, Attributes };
inline constexpr std::array<std::string_view, 2> PieceMemberNames{"text", "attributes"};

/// The members of the book itself.
enum class BookMember : unsigned char { Schema, TimeZone, Settings, Properties, Tenants, Tenures };
inline constexpr std::array<std::string_view, 6> BookMemberNames{"schema",     "timeZone", "settings",
                                                                 "properties", "tenants",  "tenures"};

/// The setting that the member `timeZone` stands for.
inline constexpr std::string_view TimeZoneSettingName = "TimeZone";

/// The place of a name in a table, or the length of the table.
template <class Object>
[[nodiscard]] constexpr std::size_t indexOfMember(std::string_view name) noexcept {
    std::size_t index = 0;
    while (index < membersOf<Object>.size() && membersOf<Object>[index].name != name) ++index;
    return index;
}

template <class Number>
using NumberName = std::pair<std::string_view, Number>;

template <class Number>
inline constexpr int namesOf = 0;

template <>
inline constexpr std::array namesOf<BillingCycle>{
    NumberName<BillingCycle>{"day", BillingCycle::Day},
    NumberName<BillingCycle>{"week", BillingCycle::Week},
    NumberName<BillingCycle>{"month", BillingCycle::Month},
    NumberName<BillingCycle>{"year", BillingCycle::Year},
};

template <>
inline constexpr std::array namesOf<ChargeBehaviour>{
    NumberName<ChargeBehaviour>{"start", ChargeBehaviour::Start},
    NumberName<ChargeBehaviour>{"partial", ChargeBehaviour::Partial},
    NumberName<ChargeBehaviour>{"end", ChargeBehaviour::End},
};

/// The number of that name, or absent.
template <class Number>
[[nodiscard]] constexpr std::optional<Number> numberNamed(std::string_view name) noexcept {
    for (const auto& [known, number] : namesOf<Number>)
        if (known == name) return number;
    return {};
}

/// The name of that number, or empty.
template <class Number>
[[nodiscard]] constexpr std::string_view nameOf(Number number) noexcept {
    for (const auto& [name, known] : namesOf<Number>)
        if (known == number) return name;
    return {};
}

} // namespace estatebook::document
