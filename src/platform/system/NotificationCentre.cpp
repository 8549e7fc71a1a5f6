// SPDX-License-Identifier: MIT
#include "platform/system/NotificationCentre.hpp"

#include "platform/values/FirstException.hpp"

#include <utility>

namespace estatebook::platform {

NotificationCentre& NotificationCentre::defaultCentre() {
    // Never destroyed: whoever ends after the program's other statics can still take itself away.
    static auto& centre = *new NotificationCentre;
    return centre;
}

void NotificationCentre::addObserverSelectorNameObject(const void* observer, Selector selector,
                                                       const Ref<String>& name, const Value& object) {
    registrations_.push_back(
        std::make_shared<Registration>(Registration{observer, std::move(selector), name, object}));
}

void NotificationCentre::removeObserver(const void* observer) noexcept {
    std::erase_if(registrations_, [&](const auto& registration) {
        if (registration->observer != observer) return false;
        registration->observer = nullptr;
        return true;
    });
}

void NotificationCentre::postNotificationNameObjectUserInfo(const Ref<String>& name, const Value& object,
                                                            const Ref<Dictionary>& userInfo) const {
    const Notification news{name, object, userInfo};
    const auto registrations = registrations_;
    FirstException exceptions;
    for (const auto& registration : registrations) {
        if (!registration->observer) continue;
        if (registration->name && !(name && *registration->name == *name)) continue;
        if (!registration->object.isAbsent() && !registration->object.isIdentical(object)) continue;
        exceptions.keep([&] { registration->selector(news); });
    }
    exceptions.rethrow();
}

} // namespace estatebook::platform
