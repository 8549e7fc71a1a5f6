// SPDX-License-Identifier: MIT
#pragma once

/// Set and OrderedSet: immutable, counted collections in which no two members are equal.
///
/// Both keep the order in which members were given; in a Set that order says nothing, in an OrderedSet it is
/// part of the value: equal ordered sets have the same members in the same order.
///
///     Ref<OrderedSet> names = OrderedSet::make({String::make("b"), String::make("a"), String::make("b")});
///     names->count();          // 2: the first occurrence keeps its place
///     names->contains(String::make("a"));

#include "platform/values/Array.hpp"

#include <cstddef>
#include <optional>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

namespace estatebook::platform {

/// What the two have in common: distinct members with constant-time look-up.
class ESTATEBOOK_API DistinctValues : public Object {
public:
    [[nodiscard]] std::size_t count() const noexcept { return members_.size(); }
    [[nodiscard]] bool empty() const noexcept { return members_.empty(); }
    [[nodiscard]] bool contains(const Value& member) const noexcept { return indexOf(member).has_value(); }
    /// The members in the order in which they were given.
    [[nodiscard]] std::span<const Value> members() const noexcept { return members_; }
    [[nodiscard]] std::string description() const override;

protected:
    DistinctValues() noexcept : Object(Counting::Shared) {}
    explicit DistinctValues(std::vector<Value> members);
    /// Puts a member at the end unless an equal one is there.
    void append(Value member);
    [[nodiscard]] std::optional<std::size_t> indexOf(const Value& member) const noexcept;

private:
    // Small collections are searched in line; the index is built for larger ones only.
    static constexpr std::size_t IndexedFrom = 9;
    void addToIndex(std::size_t place);

    std::vector<Value> members_;
    std::unordered_multimap<std::size_t, std::size_t> placesByHash_;
};

class ESTATEBOOK_API Set final : public DistinctValues {
public:
    [[nodiscard]] static Ref<Set> make(std::vector<Value> members);
    [[nodiscard]] bool isEqual(const Object& other) const noexcept override;
    [[nodiscard]] std::size_t hash() const noexcept override { return count(); }
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "Set"; }

private:
    using DistinctValues::DistinctValues;
};

class ESTATEBOOK_API OrderedSet final : public DistinctValues {
public:
    /// Grows a set member by member.
    class ESTATEBOOK_API Builder {
    public:
        Builder() : set_(new OrderedSet) {}
        /// addObject: an equal member keeps its place.
        void add(Value member) { set_->append(std::move(member)); }
        /// unionOrderedSet: the members that are new go to the end, in their order.
        void unionOrderedSet(const OrderedSet& other) {
            for (const Value& member : other.members()) set_->append(member);
        }
        [[nodiscard]] Ref<OrderedSet> finish() && { return std::move(set_); }

    private:
        Ref<OrderedSet> set_;
    };

    [[nodiscard]] static Ref<OrderedSet> make(std::vector<Value> members);
    /// REQUIRES: index < count().
    [[nodiscard]] const Value& at(std::size_t index) const noexcept { return members()[index]; }
    /// Where the member stands; none when it is no member.
    [[nodiscard]] std::optional<std::size_t> index(const Value& member) const noexcept {
        return indexOf(member);
    }
    /// The members as a list.
    [[nodiscard]] Ref<Array> array() const;
    [[nodiscard]] bool isEqual(const Object& other) const noexcept override;
    [[nodiscard]] std::size_t hash() const noexcept override { return count(); }
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "OrderedSet"; }

private:
    using DistinctValues::DistinctValues;
};

} // namespace estatebook::platform
