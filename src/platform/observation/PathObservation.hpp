// SPDX-License-Identifier: MIT
#pragma once

/// Inner header of observing: PathObservation follows a path from its root through whatever objects stand along it, and tells an
/// observer, or announces a dependent key of the root, when any step changes.

#include "platform/observation/Key.hpp"
#include "platform/observation/ObserverCallback.hpp"
#include "platform/observation/WeakReference.hpp"
#include "platform/values/Ref.hpp"
#include "platform/values/Value.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace estatebook::platform {

class PathObservation;

/// One step of an observed path: the object found there, watched for the key of the step.
struct PathLink {
    PathObservation* path;
    std::size_t step;
    WeakReference hop;
};

class PathObservation final : public Object {
public:
    PathObservation(ObservableObject& root, std::vector<Key> path);

    /// Watches the objects along the path as they stand now.
    void follow();
    void unfollow();

    void stepWillChange();
    void stepDidChange(std::size_t step);

    /// What stands for whoever is told: an observer's WeakBlock, a callback, or the path itself.
    [[nodiscard]] const void* told() const noexcept;

    // Whom to tell: an observer,
    WeakReference observer;
    const void* context = nullptr;
    // or a callback,
    Ref<ObserverCallback> callback;
    // both with
    std::uint8_t options = 0;
    std::string text;
    // or the root itself.
    Key dependent;

    /// Grows with each path that is made.
    const std::uint64_t number;

private:
    ~PathObservation() override;
    void linkFrom(std::size_t step);
    void unlinkFrom(std::size_t step);
    [[nodiscard]] bool isAwaited() const noexcept { return callback || observer.get(); }
    void tell(const struct KeyValueChange& change);

    ObservableObject& root_;
    std::vector<Key> path_;
    std::vector<PathLink> links_; // as many as steps, from the start: registrations point to them
    Value old_;
    bool isFollowing_ = false;
};

} // namespace estatebook::platform
