// SPDX-License-Identifier: MIT
#pragma once

/// NotificationCentre: hands a named piece of news to everybody who asked for it.
///
///     NotificationCentre& centre = NotificationCentre::defaultCentre();
///     centre.addObserverSelectorNameObject(this, [this](const Notification& news) { … }, TKCurrentDateChanged);
///     centre.postNotificationNameObjectUserInfo(TKCurrentDateChanged, today);
///     centre.removeObserver(this);                        // before the observer dies
///
/// Posting is synchronous: it comes back when all have been told, in the order in which they registered. Observers may come
/// and go meanwhile: one that is removed hears nothing more, one that is added hears of the next posting. An exception
/// out of one is raised again after all others were told. Used on one thread.

#include "EstateBook_ModelExport.hpp"
#include "platform/values/Dictionary.hpp"
#include "platform/values/String.hpp"
#include "platform/values/Value.hpp"

#include <functional>
#include <memory>
#include <vector>

namespace estatebook::platform {

struct Notification {
    Ref<String> name;
    /// Who posts, or what the news is about; may be absent.
    Value object{};
    Ref<Dictionary> userInfo{};
};

class ESTATEBOOK_API NotificationCentre {
public:
    using Selector = std::function<void(const Notification&)>;

    /// defaultCenter: the centre of the process.
    [[nodiscard]] static NotificationCentre& defaultCentre();

    NotificationCentre() = default;
    NotificationCentre(const NotificationCentre&) = delete;
    NotificationCentre& operator=(const NotificationCentre&) = delete;

    /// addObserver:selector:name:object:
    /// Calls the operation whenever news of that name (null: any) is posted with that object (absent: any), which must be
    /// the very same one. Who registers several times is told as often.
    void addObserverSelectorNameObject(const void* observer, Selector selector,
                                       const Ref<String>& name = nullptr, const Value& object = {});

    /// removeObserver:
    /// Takes away all registrations of the observer. Does nothing when there is none.
    void removeObserver(const void* observer) noexcept;

    /// postNotificationName:object:userInfo:
    /// Linear in the registrations.
    void postNotificationNameObjectUserInfo(const Ref<String>& name, const Value& object = {},
                                            const Ref<Dictionary>& userInfo = nullptr) const;

private:
    struct Registration {
        const void* observer; // null once it was removed
        Selector selector;
        Ref<String> name;
        Value object;
    };
    /// Shared with the postings that are under way.
    std::vector<std::shared_ptr<Registration>> registrations_;
};

} // namespace estatebook::platform
