// SPDX-License-Identifier: MIT
#pragma once

/// Slots: where a managed object keeps one property, as small as the property allows. Absence takes no room of
/// its own. Generated classes are made of these; nobody else needs them.

#include "platform/observation/Key.hpp"
#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/Number.hpp"
#include "platform/values/Value.hpp"

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace estatebook::platform {

class ManagedObject;

/// An optional decimal in 24 bytes: no decimal has all bits set.
class DecimalSlot {
public:
    DecimalSlot() noexcept = default;
    DecimalSlot& operator=(const std::optional<Decimal>& value) noexcept {
        if (value)
            words_ = std::bit_cast<std::array<std::uint64_t, 3>>(*value);
        else
            words_ = Nothing;
        return *this;
    }
    [[nodiscard]] std::optional<Decimal> get() const noexcept {
        if (words_[2] == Absent) return std::nullopt;
        return std::bit_cast<Decimal>(words_);
    }

private:
    static constexpr std::uint64_t Absent = ~std::uint64_t{0};
    static constexpr std::array<std::uint64_t, 3> Nothing{Absent, Absent, Absent};
    std::array<std::uint64_t, 3> words_ = Nothing;
};

/// An optional date in 8 bytes: one of the many bit patterns that are no number stands for absence.
class DateSlot {
public:
    DateSlot() noexcept = default;
    explicit DateSlot(const std::optional<Date>& value) noexcept { *this = value; }
    DateSlot& operator=(const std::optional<Date>& value) noexcept {
        bits_ = value ? std::bit_cast<std::uint64_t>(value->secondsSinceReferenceDate) : Absent;
        return *this;
    }
    [[nodiscard]] std::optional<Date> get() const noexcept {
        if (bits_ == Absent) return std::nullopt;
        return Date{std::bit_cast<double>(bits_)};
    }

private:
    static constexpr std::uint64_t Absent = 0x7ff8'0000'0000'0b5eu;
    std::uint64_t bits_ = Absent;
};

/// An optional number of any kind in 8 bytes; one that does not fit beside its kind, as a decimal, is kept elsewhere.
class ESTATEBOOK_API NumberSlot {
public:
    NumberSlot() noexcept = default;
    NumberSlot(const NumberSlot&) = delete;
    NumberSlot& operator=(const NumberSlot&) = delete;
    ~NumberSlot() {
        if (isElsewhere()) drop();
    }
    NumberSlot& operator=(const std::optional<Number>& value);
    [[nodiscard]] std::optional<Number> get() const noexcept;

private:
    static constexpr unsigned KindBits = 3;
    static constexpr std::uint64_t KindMask = (std::uint64_t{1} << KindBits) - 1;
    static_assert(static_cast<std::uint64_t>(Number::Kind::Decimal) < KindMask);
    static_assert(__STDCPP_DEFAULT_NEW_ALIGNMENT__ > KindMask);

    [[nodiscard]] static std::optional<std::uint64_t> raised(const Number& number) noexcept;
    [[nodiscard]] bool isElsewhere() const noexcept { return bits_ != 0 && (bits_ & KindMask) == 0; }
    void drop() noexcept;

    // The lowest bits are 1 + the kind of the number whose bits are the others. They are 0 in an address; all bits are
    // when there is no number.
    std::uint64_t bits_ = 0;
};

/// The one object a to-one relationship leads to, and the place that this object has among the other side's many.
struct ToOneSlot {
    ManagedObject* target = nullptr;
    std::uint32_t place = 0;
};

/// The members of a to-many relationship. Taking one in or out costs the same however many there are; in an
/// ordered relationship taking one out of the middle moves those behind it.
class ESTATEBOOK_API ToManySlot {
public:
    ToManySlot() noexcept = default;
    ToManySlot(const ToManySlot&) = delete;
    ToManySlot& operator=(const ToManySlot&) = delete;

    [[nodiscard]] std::size_t count() const noexcept;
    [[nodiscard]] bool isEmpty() const noexcept { return !members_ || count() == 0; }
    /// The members: in the order of their creation, or in the relationship's own where it is ordered. Valid until a
    /// member goes. REQUIRES: they are known.
    [[nodiscard]] std::span<ManagedObject* const> members() const;
    /// Whether they stand in a store and were not asked for yet.
    [[nodiscard]] bool isUnknown() const noexcept { return members_.get() == &unknown; }

private:
    friend class RelationshipUpkeep;
    friend class ManagedObject;
    struct Members;
    struct ESTATEBOOK_API Drop {
        void operator()(Members* members) const noexcept;
    };
    /// Stands for members that are not known yet.
    static Members unknown;
    std::unique_ptr<Members, Drop> members_;
};

template <class T>
void clearSlot(Ref<T>& slot) noexcept {
    slot = nullptr;
}
inline void clearSlot(Value& slot) noexcept {
    slot = Value();
}
inline void clearSlot(DateSlot& slot) noexcept {
    slot = std::optional<Date>();
}
inline void clearSlot(DecimalSlot& slot) noexcept {
    slot = std::optional<Decimal>();
}
inline void clearSlot(NumberSlot& slot) noexcept {
    slot = std::optional<Number>();
}

// How a value read from outside gets into a slot. A value of another kind raises InvalidArgumentException.
ESTATEBOOK_API void storeInSlot(Ref<String>& slot, const Value& value, Key key);
ESTATEBOOK_API void storeInSlot(DateSlot& slot, const Value& value, Key key);
ESTATEBOOK_API void storeInSlot(DecimalSlot& slot, const Value& value, Key key);
ESTATEBOOK_API void storeInSlot(NumberSlot& slot, const Value& value, Key key);
inline void storeInSlot(Value& slot, const Value& value, Key) {
    slot = value;
}
[[noreturn]] ESTATEBOOK_API void refuseForSlot(const Value& value, Key key);
template <class T>
void storeInSlot(Ref<T>& slot, const Value& value, Key key) {
    Ref<T> object = value.as<T>();
    if (!object && !value.isAbsent() && !value.isNullObject()) refuseForSlot(value, key);
    slot = std::move(object);
}

} // namespace estatebook::platform
