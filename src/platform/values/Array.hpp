// SPDX-License-Identifier: MIT
#pragma once

/// Array: an immutable, counted list of values; ArrayOf<T>: one whose members are all objects of class T.
///
///     Ref<Array> names = Array::make({String::make("a"), String::make("b")});
///     names->at(0).string();
///
///     ArrayOf<TKPeriod>::Builder row(2);
///     row.emplace(start, end);
///     Ref<ArrayOf<TKPeriod>> periods = std::move(row).finish();
///     for (TKPeriod& period : *periods) …
///
/// The trap: a loop over `*object.periods()` walks a list that nobody holds when the function hands out a new one; give
/// it a name first, as above.
///
/// An ArrayOf made by a Builder keeps its members in one block (ObjectBlock.hpp).

#include "platform/values/ObjectBlock.hpp"
#include "platform/values/Value.hpp"

#include <cassert>
#include <cstddef>
#include <iterator>
#include <vector>

namespace estatebook::platform {

class ESTATEBOOK_API Array : public Object {
public:
    [[nodiscard]] static Ref<Array> make(std::vector<Value> members);

    [[nodiscard]] virtual std::size_t count() const noexcept = 0;
    /// REQUIRES: index < count().
    [[nodiscard]] virtual Value at(std::size_t index) const noexcept = 0;
    [[nodiscard]] bool empty() const noexcept { return count() == 0; }

    [[nodiscard]] bool isEqual(const Object& other) const noexcept override;
    [[nodiscard]] std::size_t hash() const noexcept override;
    /// "(\n    a,\n    b\n)".
    [[nodiscard]] std::string description() const override;
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "Array"; }

protected:
    Array() noexcept : Object(Counting::Shared) {}
};

template <class T>
class ArrayOf final : public Array {
public:
    class iterator {
    public:
        using value_type = T;
        using reference = T&;
        using pointer = T*;
        using difference_type = std::ptrdiff_t;
        using iterator_category = std::forward_iterator_tag;
        iterator() = default;
        iterator(const ArrayOf* array, std::size_t index) : array_(array), index_(index) {}
        T& operator*() const { return (*array_)[index_]; }
        T* operator->() const { return &(*array_)[index_]; }
        iterator& operator++() {
            ++index_;
            return *this;
        }
        iterator operator++(int) { return {array_, index_++}; }
        friend bool operator==(const iterator&, const iterator&) = default;

    private:
        const ArrayOf* array_ = nullptr;
        std::size_t index_ = 0;
    };

    /// Makes the members one after another in one block of a size known beforehand.
    class Builder {
    public:
        explicit Builder(std::size_t capacity) : block_(capacity) {}
        /// REQUIRES: fewer members so far than the capacity.
        template <class... Arguments>
        T& emplace(Arguments&&... arguments) {
            return block_.emplace(std::forward<Arguments>(arguments)...);
        }
        [[nodiscard]] std::size_t count() const noexcept { return block_.size(); }
        [[nodiscard]] Ref<ArrayOf> finish() && { return Ref<ArrayOf>(new ArrayOf(std::move(block_))); }

    private:
        ObjectBlock<T> block_;
    };

    [[nodiscard]] static Ref<ArrayOf> of(std::vector<Ref<T>> members) {
        return Ref<ArrayOf>(new ArrayOf(std::move(members)));
    }

    [[nodiscard]] std::size_t count() const noexcept override { return block_.size() + members_.size(); }
    [[nodiscard]] Value at(std::size_t index) const noexcept override {
        return Value(Ref<T>(&(*this)[index]));
    }
    /// REQUIRES: index < count().
    T& operator[](std::size_t index) const noexcept {
        assert(index < count());
        return members_.empty() ? block_[index] : *members_[index];
    }
    [[nodiscard]] T& back() const noexcept { return (*this)[count() - 1]; }
    [[nodiscard]] iterator begin() const noexcept { return {this, 0}; }
    [[nodiscard]] iterator end() const noexcept { return {this, count()}; }

private:
    explicit ArrayOf(ObjectBlock<T> block) noexcept : block_(std::move(block)) {}
    explicit ArrayOf(std::vector<Ref<T>> members) noexcept : members_(std::move(members)) {}

    // Only one of the two is in use.
    ObjectBlock<T> block_;
    std::vector<Ref<T>> members_;
};

} // namespace estatebook::platform
