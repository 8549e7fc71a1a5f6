// SPDX-License-Identifier: MIT
#pragma once

/// ToManyView<T>: the members of a to-many relationship, seen in place and without counting.
///
///     for (const TKTransaction& transaction : tenure.transactions()) total += …
///
/// Members come in the order of their creation, or in the relationship's own order where it has one. Adding and removing
/// members while a view is walked is not allowed; deleting them from their context is, since relationships are
/// cleaned up later. What must outlive a change is copied first: `members()`.

#include "platform/persistence/Slots.hpp"
#include "platform/values/Ref.hpp"

#include <cstddef>
#include <iterator>
#include <vector>

namespace estatebook::platform {

template <class T>
class ToManyView {
public:
    class iterator {
    public:
        using value_type = T;
        using reference = T&;
        using pointer = T*;
        using difference_type = std::ptrdiff_t;
        using iterator_category = std::forward_iterator_tag;
        iterator() = default;
        explicit iterator(ManagedObject* const* place) : place_(place) {}
        // Not read before a walk begins, so that a view needs no complete T.
        T& operator*() const { return *static_cast<T*>(*place_); }
        T* operator->() const { return static_cast<T*>(*place_); }
        iterator& operator++() {
            ++place_;
            return *this;
        }
        iterator operator++(int) { return iterator(place_++); }
        friend bool operator==(const iterator&, const iterator&) = default;

    private:
        ManagedObject* const* place_ = nullptr;
    };

    explicit ToManyView(const ToManySlot& slot) : members_(slot.members()) {}
    /// A view of a class as one of its base.
    template <class U>
    ToManyView(const ToManyView<U>& other) : members_(other.span()) {}

    [[nodiscard]] std::size_t count() const noexcept { return members_.size(); }
    [[nodiscard]] bool empty() const noexcept { return members_.empty(); }
    /// REQUIRES: index < count().
    T& operator[](std::size_t index) const { return *static_cast<T*>(members_[index]); }
    [[nodiscard]] iterator begin() const { return iterator(members_.data()); }
    [[nodiscard]] iterator end() const { return iterator(members_.data() + members_.size()); }
    [[nodiscard]] std::span<ManagedObject* const> span() const noexcept { return members_; }

    /// A counted copy that stays as it is.
    [[nodiscard]] std::vector<Ref<T>> members() const {
        std::vector<Ref<T>> copy;
        copy.reserve(count());
        for (T& member : *this) copy.emplace_back(&member);
        return copy;
    }

private:
    std::span<ManagedObject* const> members_;
};

} // namespace estatebook::platform
