// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: changes that are passed on to an owner. The object may have another owner, or none, when the change closes: it is
/// closed on the one on which it was opened.

#include "platform/observation/Key.hpp"
#include "platform/persistence/ManagedObject.hpp"
#include "platform/values/Ref.hpp"

#include <iterator>
#include <utility>
#include <vector>

namespace estatebook {

class OpenedOwners {
public:
    /// Whether anybody would hear of it. `owner` may be null.
    [[nodiscard]] static bool isHeard(const platform::ManagedObject* owner, platform::Key ofOwner) {
        return owner && owner->mustAnnounce(ofOwner);
    }

    /// `owner` may be null.
    static void willChange(const platform::ManagedObject& object, platform::ManagedObject* owner,
                           platform::Key ofOwner) {
        // Also where there is none, or none that is heard: its end must not be taken for that of another change of the object, further out.
        if (!isHeard(owner, ofOwner)) owner = nullptr;
        opened().push_back({&object, ofOwner, platform::Ref<platform::ManagedObject>(owner)});
        if (owner) owner->willChangeValueForKey(ofOwner);
    }
    /// `owner` is told where nothing stands open.
    static void didChange(const platform::ManagedObject& object, platform::ManagedObject* owner,
                          platform::Key ofOwner) {
        auto told = take(object, ofOwner);
        if (!told) told = platform::Ref<platform::ManagedObject>(owner);
        if (told) told->didChangeValueForKey(ofOwner);
    }

private:
    struct Opened {
        const platform::ManagedObject* object;
        platform::Key ofOwner;
        platform::Ref<platform::ManagedObject> owner;
    };

    static std::vector<Opened>& opened() noexcept {
        thread_local std::vector<Opened> all;
        return all;
    }
    static platform::Ref<platform::ManagedObject> take(const platform::ManagedObject& object,
                                                       platform::Key ofOwner) {
        auto& all = opened();
        for (auto each = all.rbegin(); each != all.rend(); ++each) {
            if (each->object != &object || each->ofOwner != ofOwner) continue;
            auto owner = std::move(each->owner);
            all.erase(std::next(each).base());
            return owner;
        }
        return nullptr;
    }
};

} // namespace estatebook
