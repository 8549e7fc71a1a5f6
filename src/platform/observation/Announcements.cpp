// SPDX-License-Identifier: MIT
#include "platform/observation/Announcements.hpp"

#include <algorithm>

namespace estatebook::platform {

constinit ESTATEBOOK_QUICK_THREAD_LOCAL Announcements* Announcements::mine = nullptr;

/// Ends with the thread.
struct Announcements::Ending {
    ~Ending() {
        for (OpenObject* each = mine->bottom_.above; each;) delete std::exchange(each, each->above);
        delete std::exchange(mine, nullptr);
    }
};

Announcements& Announcements::make() {
    mine = new Announcements;
    thread_local Ending ending;
    static_cast<void>(&ending);
    return *mine;
}

OpenObject& Announcements::grow() {
    auto* made = new OpenObject;
    made->below = top;
    top->above = made;
    return *made;
}

void Announcements::forgetSession() noexcept {
    for (; top != session.base; top = top->below) static_cast<void>(top->end());
    session = Session{.base = session.base};
}

// OpenObject

Ref<ObservableObject> OpenObject::end() noexcept {
    keys_ = {};
    details_.clear();
    return std::move(object_);
}

OpenKey& OpenObject::details(Key key) {
    if (OpenKey* known = find(key)) return *known;
    details_.push_back({.key = key});
    return details_.back();
}

OpenKey* OpenObject::find(Key key) const noexcept {
    const auto found = std::ranges::find(details_, key, &OpenKey::key);
    return found == details_.end() ? nullptr : &*found;
}

bool OpenObject::closeInner(Key key) noexcept {
    OpenKey* known = find(key);
    if (!known || known->inner == 0) return false;
    --known->inner;
    return true;
}

void OpenObject::close(Key key) noexcept {
    if (KeySet::isExact(key)) keys_.remove(key);
    if (!details_.empty()) {
        std::erase_if(details_, [&](const OpenKey& each) { return each.key == key; });
        const bool isShared =
            std::ranges::any_of(details_, [](const OpenKey& each) { return !KeySet::isExact(each.key); });
        if (!KeySet::isExact(key) && !isShared) keys_.remove(key);
    }
}

} // namespace estatebook::platform
