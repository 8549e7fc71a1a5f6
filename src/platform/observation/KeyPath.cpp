// SPDX-License-Identifier: MIT
#include "platform/observation/KeyPath.hpp"

#include "platform/observation/ObservableObject.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Set.hpp"

#include <optional>
#include <string>
#include <vector>

namespace estatebook::platform {

namespace {

/// The members of a collection; none when the value is no collection.
std::optional<std::vector<Value>> membersOf(const Value& value) {
    const Ref<Object> object = value.object();
    if (const auto set = refCast<DistinctValues>(object))
        return std::vector<Value>(set->members().begin(), set->members().end());
    if (const auto array = refCast<Array>(object)) {
        std::vector<Value> members;
        members.reserve(array->count());
        for (std::size_t index = 0; index < array->count(); ++index) members.push_back(array->at(index));
        return members;
    }
    return std::nullopt;
}

[[noreturn]] void raiseNoKeys(const Value& value, std::string_view key) {
    throw UndefinedKeyException("[" + value.description() + " valueForUndefinedKey:]: there is no key \"" +
                                std::string(key) + "\"");
}

Value stepped(const Value& start, std::string_view key) {
    const Ref<Object> object = start.object();
    if (const auto observable = refCast<ObservableObject>(object)) return observable->valueForKey(key);
    const auto members = membersOf(start);
    if (!members) raiseNoKeys(start, key);
    // A list keeps a place for each member; a set leaves absent results out and merges equal ones.
    const bool isList = refCast<Array>(object).get() != nullptr;
    std::vector<Value> results;
    for (const Value& member : *members) {
        Value result = stepped(member, key);
        if (result.isAbsent() && isList) result = NullObject{};
        if (!result.isAbsent()) results.push_back(std::move(result));
    }
    if (isList) return Array::make(std::move(results));
    if (refCast<OrderedSet>(object)) return OrderedSet::make(std::move(results));
    return Set::make(std::move(results));
}

Value memberValue(const Value& member, std::string_view path) {
    return path.empty() ? member : valueForKeyPathOfValue(member, path);
}

Value sumOver(const std::vector<Value>& members, std::string_view path) {
    Decimal sum;
    for (const Value& member : members)
        if (const auto amount = memberValue(member, path).decimal()) sum = sum.decimalNumberByAdding(*amount);
    return sum;
}

Value unionOfSetsOver(const std::vector<Value>& members, std::string_view path) {
    std::vector<Value> all;
    for (const Value& member : members) {
        const Value value = memberValue(member, path);
        if (value.isAbsent()) continue;
        auto inner = membersOf(value);
        if (!inner)
            throw InvalidArgumentException("@unionOfSets." + std::string(path) +
                                           " needs collections, but found " + value.description());
        all.insert(all.end(), inner->begin(), inner->end());
    }
    return Set::make(std::move(all));
}

struct CollectionOperator {
    std::string_view name;
    Value (*apply)(const std::vector<Value>& members, std::string_view path);
};
constexpr CollectionOperator operators[] = {{"@sum", sumOver}, {"@unionOfSets", unionOfSetsOver}};

Value applyOperator(const Value& collection, std::string_view name, std::string_view path) {
    if (collection.isAbsent()) return {};
    const auto members = membersOf(collection);
    if (!members) raiseNoKeys(collection, name);
    for (const CollectionOperator& each : operators)
        if (each.name == name) return each.apply(*members, path);
    throw InvalidArgumentException("there is no collection operator \"" + std::string(name) + "\"");
}

/// "KEY.@sum.KEY", where the object tells it.
std::optional<Decimal> sumToldBy(const Value& owner, std::string_view collection,
                                 std::string_view operation) {
    constexpr std::string_view Sum = "@sum.";
    if (!operation.starts_with(Sum)) return std::nullopt;
    const std::string_view ofMember = operation.substr(Sum.size());
    if (ofMember.empty() || ofMember.find_first_of(".@") != std::string_view::npos) return std::nullopt;
    const auto object = owner.as<ObservableObject>();
    return object ? object->sumOfMembers(Key::named(collection), Key::named(ofMember)) : std::nullopt;
}

} // namespace

Value valueForKeyPathOfValue(const Value& start, std::string_view path) {
    Value value = start;
    for (std::string_view rest = path; !rest.empty();) {
        const auto [step, after] = splitKeyPath(rest);
        if (step.starts_with('@')) return applyOperator(value, step, after);
        if (value.isAbsent()) return {};
        if (const auto sum = sumToldBy(value, step, after)) return *sum;
        value = stepped(value, step);
        rest = after;
    }
    return value;
}

} // namespace estatebook::platform
