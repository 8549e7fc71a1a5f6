// SPDX-License-Identifier: MIT
#include "platform/observation/ObserverList.hpp"

#include <bit>

namespace estatebook::platform {

ObserverList::~ObserverList() {
    for (Registration& each : registrations_) each.letGo();
}

void ObserverList::add(const Registration& registration) {
    if (registrations_.size() == registrations_.capacity()) {
        if (telling_ == 0) closeHoles();
        // By an eighth: very many observers of one key must not take twice their room.
        registrations_.reserve(registrations_.size() + registrations_.size() / 8 + 4);
    }
    registrations_.push_back(registration);
    count(registration);
    if (registrations_.size() > 2 * latest_.size() && registrations_.size() >= IndexedFrom)
        index();
    else if (!latest_.empty())
        enter(registrations_.size() - 1);
}

bool ObserverList::remove(std::size_t place) {
    Registration& gone = registrations_[place];
    discount(gone);
    gone.letGo();
    if (telling_ == 0 && registrations_.size() > 2 * alive_ + IndexedFrom) closeHoles();
    return true;
}

void ObserverList::count(const Registration& registration) noexcept {
    ++alive_;
    wantingOld_ += registration.wantsOld();
    wantingBefore_ += registration.wantsBefore();
}

void ObserverList::discount(const Registration& registration) noexcept {
    --alive_;
    wantingOld_ -= registration.wantsOld();
    wantingBefore_ -= registration.wantsBefore();
}

void ObserverList::endTelling() {
    if (--telling_ == 0 && registrations_.size() > 2 * alive_ + IndexedFrom) closeHoles();
}

void ObserverList::closeHoles() {
    std::erase_if(registrations_, [this](Registration& each) {
        if (each.isAlive()) return false;
        if (each.kind != Registration::Kind::None) discount(each);
        each.letGo();
        return true;
    });
    if (!latest_.empty()) index();
}

void ObserverList::index() {
    latest_.assign(std::bit_ceil(registrations_.size() / 2 + 1), 0);
    for (std::size_t place = 0; place < registrations_.size(); ++place)
        if (registrations_[place].kind != Registration::Kind::None) enter(place);
}

void ObserverList::enter(std::size_t place) noexcept {
    std::uint32_t& latest = latest_[rowOf(registrations_[place].target)];
    registrations_[place].earlier = latest;
    latest = static_cast<std::uint32_t>(place + 1);
}

std::size_t ObserverList::rowOf(const void* target) const noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(target);
    constexpr std::uint64_t Odd = 0x9E37'79B9'7F4A'7C15u;
    return static_cast<std::size_t>((address * Odd) >> 32) & (latest_.size() - 1);
}

} // namespace estatebook::platform
