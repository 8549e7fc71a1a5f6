// SPDX-License-Identifier: MIT
#pragma once

/// Ref<T>: a counted reference to an Object, or to whatever adopts a Protocol. Null when default-made.
///
///     Ref<TKPeriod> period = makeRef<TKPeriod>(start, end);
///     if (period) period->days();
///
/// Copying counts up, destroying counts down; moving does neither. Comparison is by identity.

#include "platform/values/Object.hpp"
#include "platform/values/Protocol.hpp"

#include <cstddef>
#include <functional>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace estatebook::platform {

namespace detail {
template <class T>
void retain(const T* object) noexcept {
    if constexpr (std::is_base_of_v<Object, T>)
        object->retain();
    else
        object->retainAdopter();
}
template <class T>
void release(const T* object) noexcept {
    if constexpr (std::is_base_of_v<Object, T>)
        object->release();
    else
        object->releaseAdopter();
}
} // namespace detail

template <class T>
class Ref {
public:
    using element_type = T;

    constexpr Ref() noexcept = default;
    constexpr Ref(std::nullptr_t) noexcept {}
    Ref(T* object) noexcept : object_(object) {
        if (object_) detail::retain(object_);
    }
    Ref(const Ref& other) noexcept : Ref(other.object_) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    template <class U>
        requires std::is_convertible_v<U*, T*>
    Ref(const Ref<U>& other) noexcept : Ref(other.get()) {}
    template <class U>
        requires std::is_convertible_v<U*, T*>
    Ref(Ref<U>&& other) noexcept : object_(other.detach()) {}
    ~Ref() {
        if (object_) detail::release(object_);
    }

    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    [[nodiscard]] T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    /// Gives the reference away without counting down; the caller now holds it.
    [[nodiscard]] T* detach() noexcept { return std::exchange(object_, nullptr); }
    /// Takes over a reference that was counted already.
    [[nodiscard]] static Ref adopt(T* object) noexcept {
        Ref ref;
        ref.object_ = object;
        return ref;
    }

    template <class U>
    friend bool operator==(const Ref& a, const Ref<U>& b) noexcept {
        return a.get() == b.get();
    }
    friend bool operator==(const Ref& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }
    friend bool operator==(const Ref& a, const T* b) noexcept { return a.object_ == b; }

private:
    T* object_ = nullptr;
};

/// Makes an object and the first reference to it.
template <class T, class... Arguments>
[[nodiscard]] Ref<T> makeRef(Arguments&&... arguments) {
    return Ref<T>(new T(std::forward<Arguments>(arguments)...));
}

/// The same object as a T, or null when it is none.
template <class T, class U>
[[nodiscard]] Ref<T> refCast(const Ref<U>& ref) noexcept {
    // Most are asked for by their own class, which needs no search.
    U* const object = ref.get();
    if constexpr (requires { static_cast<T*>(object); })
        if (object && typeid(*object) == typeid(T)) return Ref<T>(static_cast<T*>(object));
    return Ref<T>(dynamic_cast<T*>(object));
}

} // namespace estatebook::platform

template <class T>
struct std::hash<estatebook::platform::Ref<T>> {
    std::size_t operator()(const estatebook::platform::Ref<T>& ref) const noexcept {
        return std::hash<const void*>{}(ref.get());
    }
};
