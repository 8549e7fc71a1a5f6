// SPDX-License-Identifier: MIT
#pragma once

/// Inner header of observing: the registrations for one key of one object.

#include "platform/observation/Key.hpp"
#include "platform/observation/ObservableObject.hpp"
#include "platform/observation/WeakReference.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace estatebook::platform {

struct PathLink;

/// One registration: an observer, a callback or the link of a path that is to be told.
struct Registration {
    /// Lists: not a registration at all, but the place of all (Observation.hpp).
    enum class Kind : std::uint8_t { None, Observer, Callback, Link, Lists };

    void* target = nullptr; // of the class that the kind names; an observer by its WeakBlock, which is held
    const void* context = nullptr;
    std::uint32_t earlier = 0; // 1 + the place of the one before it in the same row of the index
    Key key{};
    std::uint8_t options = 0;
    Kind kind = Kind::None;

    [[nodiscard]] ObservableObject* observer() const noexcept {
        return static_cast<WeakBlock*>(target)->object;
    }
    [[nodiscard]] ObserverCallback* callback() const noexcept {
        return static_cast<ObserverCallback*>(target);
    }
    [[nodiscard]] PathLink* link() const noexcept { return static_cast<PathLink*>(target); }
    /// Whether it waits to be told, and not for an observer that is gone.
    [[nodiscard]] bool isAlive() const noexcept {
        return kind != Kind::None && (kind != Kind::Observer || observer());
    }
    /// Whether it wants to hear of a change and nothing more of it.
    [[nodiscard]] bool isPlain() const noexcept {
        return (kind == Kind::Observer || kind == Kind::Callback) && options == ObservingNothing;
    }
    /// Whether it wants the value before the change.
    [[nodiscard]] bool wantsOld() const noexcept { return (options & ObservingOld) != 0; }
    /// Whether there is anything to be done for it before the change.
    [[nodiscard]] bool wantsBefore() const noexcept {
        return kind == Kind::Link || (options & (ObservingOld | ObservingPrior)) != 0;
    }
    void letGo() noexcept {
        if (kind == Kind::Observer) static_cast<WeakBlock*>(target)->letGo();
        *this = {};
    }
};

static_assert(sizeof(Registration) == 24);

/// The registrations, oldest first. One that is removed leaves a hole, so that the others keep their places while they
/// are told; holes are closed when they are many. Adding and removing take constant time.
class ObserverList {
public:
    explicit ObserverList(Key key) noexcept : key_(key) {}
    ObserverList(const ObserverList&) = delete;
    ObserverList& operator=(const ObserverList&) = delete;
    ~ObserverList();

    [[nodiscard]] Key key() const noexcept { return key_; }
    [[nodiscard]] bool empty() const noexcept { return alive_ == 0; }
    [[nodiscard]] bool wantsOld() const noexcept { return wantingOld_ != 0; }
    [[nodiscard]] bool wantsBefore() const noexcept { return wantingBefore_ != 0; }

    /// Takes over the registration's hold.
    void add(const Registration& registration);
    /// Takes away the latest registration of the target that matches; false when there is none.
    template <class Matches>
    bool removeLatest(const void* target, Matches matches) {
        if (latest_.empty()) {
            for (std::size_t place = registrations_.size(); place-- > 0;)
                if (registrations_[place].target == target && matches(registrations_[place]))
                    return remove(place);
            return false;
        }
        for (std::uint32_t* next = &latest_[rowOf(target)]; *next != 0;) {
            const std::size_t place = *next - 1;
            Registration& each = registrations_[place];
            if (each.target == target && matches(each)) {
                *next = each.earlier;
                return remove(place);
            }
            next = &each.earlier;
        }
        return false;
    }

    /// While observers are told, places stay what they are. There may be holes.
    void beginTelling() noexcept { ++telling_; }
    void endTelling();
    [[nodiscard]] bool isTelling() const noexcept { return telling_ != 0; }
    [[nodiscard]] std::size_t places() const noexcept { return registrations_.size(); }
    [[nodiscard]] const Registration& at(std::size_t place) const noexcept { return registrations_[place]; }

private:
    // Few registrations are searched in line; more are found by their target.
    static constexpr std::size_t IndexedFrom = 16;

    bool remove(std::size_t place);
    void count(const Registration& registration) noexcept;
    void discount(const Registration& registration) noexcept;
    void closeHoles();
    void enter(std::size_t place) noexcept;
    void index();
    [[nodiscard]] std::size_t rowOf(const void* target) const noexcept;

    std::vector<Registration> registrations_;
    /// The rows of the index: 1 + the place of the latest registration of the targets in the row.
    std::vector<std::uint32_t> latest_;
    std::uint32_t alive_ = 0;
    std::uint32_t wantingOld_ = 0;
    std::uint32_t wantingBefore_ = 0;
    std::uint32_t telling_ = 0;
    Key key_;
};

} // namespace estatebook::platform
