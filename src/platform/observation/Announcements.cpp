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
    lone_ = nullptr;
    for (; top != session->base; top = top->below) static_cast<void>(top->end());
    *session = Session(session->base);
}

void Announcements::endAfterCall(Ref<Object> function) noexcept {
    Apart* outermost = nullptr;
    for (Apart* each = mine ? mine->innermost : nullptr; each; each = each->around_)
        if (each->called_ == function.get()) outermost = each;
    if (outermost) outermost->held_ = std::move(function);
}

// OpenObject

OpenKey& OpenObject::details(Key key) {
    if (OpenKey* known = find(key)) return *known;
    details_.push_back({.key = key});
    return details_.back();
}

void OpenObject::dropDetails(Key key) noexcept {
    std::erase_if(details_, [&](const OpenKey& each) { return each.key == key; });
    // The others of its kind share its bit.
    const bool isShared =
        std::ranges::any_of(details_, [](const OpenKey& each) { return !KeySet::isExact(each.key); });
    if (!KeySet::isExact(key) && !isShared) keys_.remove(key);
}

} // namespace estatebook::platform
