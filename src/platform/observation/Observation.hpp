// SPDX-License-Identifier: MIT
#pragma once

/// Inner header of observing: what an observed object remembers of its observers. An object has an Observation only once it
/// observes or is observed.

#include "platform/observation/ObservableObject.hpp"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::platform {

/// Where a dying object leaves word that it is gone.
struct WeakBlock {
    explicit WeakBlock(ObservableObject& living) noexcept : object(&living) {}
    ObservableObject* object;
    std::uint32_t holders = 1; // the object itself
};

class WeakReference {
public:
    WeakReference() = default;
    explicit WeakReference(ObservableObject& object);
    WeakReference(const WeakReference& other) noexcept : block_(other.block_) { hold(); }
    WeakReference(WeakReference&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
    WeakReference& operator=(WeakReference other) noexcept {
        std::swap(block_, other.block_);
        return *this;
    }
    ~WeakReference();

    /// The object, or null when it is gone or there never was one.
    [[nodiscard]] ObservableObject* get() const noexcept { return block_ ? block_->object : nullptr; }
    [[nodiscard]] bool isSet() const noexcept { return block_ != nullptr; }

private:
    void hold() const noexcept {
        if (block_) ++block_->holders;
    }
    WeakBlock* block_ = nullptr;
};

class PathObservation;

/// One step of an observed path: the object found there, watched for the key of the step.
struct PathLink {
    PathObservation* path;
    std::size_t step;
    WeakReference hop;
};

/// One registration. Either an observer is told, or the link of a path.
struct Registration {
    WeakReference observer;
    const void* context = nullptr;
    PathLink* link = nullptr;
    std::uint8_t options = 0;

    [[nodiscard]] bool isRemoved() const noexcept { return !observer.isSet() && !link; }
};

/// The registrations of one key, oldest first.
struct KeyObservers {
    Key key;
    std::vector<Registration> registrations;
    /// While observers are being told, a removed registration keeps its place.
    unsigned telling = 0;
    bool hasRemoved = false;

    void remove(std::size_t index);
    void endTelling();
};

struct Observation {
    WeakBlock* weak = nullptr;
    KeySet observedKeys;
    std::vector<KeyObservers> keys;
    /// Dotted paths that observers registered on this object.
    std::vector<std::shared_ptr<PathObservation>> paths;

    /// A dotted dependency followed because a key that it affects is observed.
    struct Followed {
        const ClassDescription::PathDependency* dependency;
        std::shared_ptr<PathObservation> path;
    };
    std::vector<Followed> followed;

    [[nodiscard]] KeyObservers* find(Key key) noexcept;
};

/// Follows a path from its root through whatever objects stand along it, and tells an observer, or announces a
/// dependent key of the root, when any step changes.
class PathObservation : public std::enable_shared_from_this<PathObservation> {
public:
    PathObservation(ObservableObject& root, std::vector<Key> path);
    ~PathObservation();
    PathObservation(const PathObservation&) = delete;
    PathObservation& operator=(const PathObservation&) = delete;

    /// Watches the objects along the path as they stand now.
    void follow();
    void unfollow();

    void stepWillChange();
    void stepDidChange(std::size_t step);

    // Whom to tell: an observer,
    WeakReference observer;
    const void* context = nullptr;
    std::uint8_t options = 0;
    std::string text;
    // or the root itself.
    Key dependent;

private:
    void linkFrom(std::size_t step);
    void unlinkFrom(std::size_t step);

    ObservableObject& root_;
    std::vector<Key> path_;
    std::vector<std::unique_ptr<PathLink>> links_;
    Value old_;
    bool isFollowing_ = false;
};

/// The workings behind ObservableObject's announcements.
class ObservationEngine {
public:
    static Observation& observationOf(ObservableObject& object);
    static Observation* observationIfAny(const ObservableObject& object) noexcept {
        return object.observation_;
    }
    static bool isObserved(const ObservableObject& object) noexcept {
        return object.observation_ && !object.observation_->observedKeys.empty();
    }

    static void add(ObservableObject& object, Key key, Registration registration);
    /// Takes away the registration at a place of the key's list.
    static void removeAt(ObservableObject& object, Key key, std::size_t index);
    static void removeLink(ObservableObject& object, Key key, const PathLink& link);

    static void will(ObservableObject& object, Key key);
    static void did(ObservableObject& object, Key key);
    static void willMutate(ObservableObject& object, Key key, const KeyValueChange& mutation);
    static void didMutate(ObservableObject& object, Key key, const KeyValueChange& mutation);

    /// Announces a key of the object that a dotted path leads to: not as an edit of the key itself.
    static void announceFromPath(ObservableObject& object, Key key, void (ObservableObject::*announce)(Key));

    /// Calls the observer; its exception is kept for the outermost setter.
    static void tellObserver(ObservableObject& observer, std::string_view keyPath, ObservableObject& object,
                             const KeyValueChange& change, const void* context);
    /// The value at the end of the path; absent where the last key is declared without a value.
    static Value valueAlong(const ObservableObject& object, std::string_view keyPath);
    /// The same for an observer: absent when the reading raises, which is kept likewise.
    static Value readForObserver(const ObservableObject& object, std::string_view keyPath);

    static void objectEnds(ObservableObject& object) noexcept;

private:
    static void tell(ObservableObject& object, Key key, struct OpenKey& open, bool isPrior);
    static Value valueOrNothing(const ObservableObject& object, Key key);
    static Value readForObserver(const ObservableObject& object, Key key);
    static Value newValueOf(const ObservableObject& object, Key key, const KeyValueChange* mutation);
    static Value membersForObserver(const ObservableObject& object, Key key,
                                    const std::vector<std::size_t>& places);
    static void followDependencies(ObservableObject& object, Key key);
    static void unfollowDependencies(ObservableObject& object);
};

} // namespace estatebook::platform
