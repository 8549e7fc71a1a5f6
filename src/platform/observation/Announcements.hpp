// SPDX-License-Identifier: MIT
#pragma once

/// Inner header of observing: what is being announced on a thread.

#include "platform/observation/ObservableObject.hpp"
#include "platform/observation/ObserverCallback.hpp"
#include "platform/observation/PathObservation.hpp"
#include "platform/values/QuickThreadLocal.hpp"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <utility>
#include <vector>

namespace estatebook::platform {

/// What there is to know of a key between its will and its did, if it is more than that.
struct OpenKey {
    Key key;
    /// Pairs of the key that stand open within the outermost.
    std::uint32_t inner = 0;
    Value old{};
    /// Dotted dependencies whose dependent was opened along with this key, and at which step. They are closed with
    /// it even when nobody follows them any more.
    std::vector<std::pair<Ref<PathObservation>, std::size_t>> opened{};
};

/// The keys of an object between their will and their did.
class OpenObject {
public:
    [[nodiscard]] ObservableObject* object() const noexcept { return object_.get(); }
    [[nodiscard]] bool isClosed() const noexcept { return object_ == nullptr; }
    [[nodiscard]] const KeySet& keys() const noexcept { return keys_; }
    [[nodiscard]] std::size_t count() const noexcept { return count_; }
    void begin(ObservableObject& object) noexcept { object_ = Ref<ObservableObject>(&object); }
    /// Gives the hold on the object to the caller.
    Ref<ObservableObject> end() noexcept {
        keys_ = {};
        count_ = 0;
        if (!details_.empty()) details_.clear();
        return std::move(object_);
    }

    [[nodiscard]] bool isOpen(Key key) const noexcept {
        return keys_.mayContain(key) && (KeySet::isExact(key) || find(key));
    }
    void open(Key key) {
        keys_.insert(key);
        ++count_;
        if (!KeySet::isExact(key)) details_.push_back({.key = key});
    }
    /// REQUIRES: it is open.
    [[nodiscard]] OpenKey& details(Key key);
    /// Null when there are none.
    [[nodiscard]] OpenKey* find(Key key) const noexcept {
        for (OpenKey& each : details_)
            if (each.key == key) return &each;
        return nullptr;
    }
    /// Whether a pair within the outermost was closed by this did; else the did is that of the outermost.
    bool closeInner(Key key) noexcept {
        OpenKey* known = find(key);
        if (!known || known->inner == 0) return false;
        --known->inner;
        return true;
    }
    /// REQUIRES: it is open.
    void close(Key key) noexcept {
        --count_;
        if (KeySet::isExact(key)) keys_.remove(key);
        if (!details_.empty()) dropDetails(key);
    }

    OpenObject* below = nullptr;
    OpenObject* above = nullptr;

private:
    void dropDetails(Key key) noexcept;

    Ref<ObservableObject> object_;
    KeySet keys_;
    std::uint32_t count_ = 0;
    mutable std::vector<OpenKey> details_;
};

/// Why a key is announced.
enum class Cause : std::uint8_t {
    Itself,
    /// Another key of the object, which announces all that follow from it.
    Key,
    /// A path that leads to another object.
    Path,
};

/// What one outermost setter has open on this thread. An observer that changes something while it is being
/// told begins a session of its own, so that an exception reaches just the setter that caused it.
struct Session {
    explicit Session(OpenObject* top) noexcept : base(top) {}

    OpenObject* base;
    std::size_t openPairs = 0;
    // The announcement that is about to arrive at the base because another key caused it.
    const ObservableObject* expectedObject = nullptr;
    // The membership change that the next announcement is about.
    const ObservableObject* mutatedObject = nullptr;
    const KeyValueChange* mutation = nullptr;
    Key expectedKey{};
    Cause expectedCause = Cause::Itself;
    std::exception_ptr firstException{};
};

class Apart;

class Announcements {
public:
    /// Those of this thread.
    static Announcements& current() { return mine ? *mine : make(); }
    /// Gives up a function. If it is just being called, it ends after that.
    static void endAfterCall(Ref<Object> function) noexcept;

    [[nodiscard]] OpenObject* find(const ObservableObject& object) const noexcept {
        for (OpenObject* each = top; each != session->base; each = each->below)
            if (each->object() == &object) return each;
        return nullptr;
    }
    OpenObject& open(ObservableObject& object) {
        if (OpenObject* found = find(object)) return *found;
        OpenObject* next = top->above;
        if (!next) next = &grow();
        next->begin(object);
        top = next;
        return *next;
    }
    /// Whether nothing is open in this session and nothing is said of the next announcement.
    [[nodiscard]] bool isQuiet() const noexcept {
        return session->openPairs == 0 && !session->mutatedObject && !session->expectedObject;
    }
    /// Opens a pair without anything being written down. REQUIRES: nothing is open in this session.
    void openLone(ObservableObject& object, Key key) noexcept {
        lone_ = Ref<ObservableObject>(&object);
        loneKey_ = key;
        session->openPairs = 1;
    }
    [[nodiscard]] bool hasLone() const noexcept { return lone_ != nullptr; }
    [[nodiscard]] bool isLone(const ObservableObject& object, Key key) const noexcept {
        return lone_.get() == &object && loneKey_ == key;
    }
    /// The pair is still open, but to be written down by the caller.
    [[nodiscard]] std::pair<Ref<ObservableObject>, Key> takeLone() noexcept {
        return {std::move(lone_), loneKey_};
    }

    void dropClosed() noexcept {
        while (top != session->base && top->isClosed()) top = top->below;
    }
    /// Forgets every pair that was left open in this session.
    void forgetSession() noexcept;

    void keep(std::exception_ptr exception) noexcept {
        if (!session->firstException) session->firstException = std::move(exception);
    }
    [[nodiscard]] Cause takeExpected(const ObservableObject& object, Key key) noexcept {
        if (session->expectedObject != &object || session->expectedKey != key) return Cause::Itself;
        session->expectedObject = nullptr;
        return session->expectedCause;
    }
    [[nodiscard]] const KeyValueChange* takeMutation(const ObservableObject& object) noexcept {
        if (session->mutatedObject != &object) return nullptr;
        session->mutatedObject = nullptr;
        return session->mutation;
    }

    OpenObject* top = &bottom_;
    Session* session = &outermost_;
    Apart* innermost = nullptr;

private:
    struct Ending;
    static Announcements& make();
    OpenObject& grow();

    static constinit ESTATEBOOK_QUICK_THREAD_LOCAL Announcements* mine;
    // The only pair that is open in the session, as most are.
    Ref<ObservableObject> lone_;
    Key loneKey_{};
    // Never an object of its own; what is free stands above the top.
    OpenObject bottom_;
    Session outermost_{&bottom_};
};

/// Runs foreign code in sessions of its own; what it throws is kept for the outer one's setter.
class Apart {
public:
    explicit Apart(Announcements& all) noexcept
        : all_(all), outer_(all.session), around_(all.innermost), inner_(all.top) {
        all.session = &inner_;
        all.innermost = this;
    }
    Apart(const Apart&) = delete;
    Apart& operator=(const Apart&) = delete;
    ~Apart() {
        all_.session = outer_;
        all_.innermost = around_;
        if (first_) [[unlikely]]
            all_.keep(std::move(first_));
    }

    template <class Action>
    void run(Action action) noexcept {
        try {
            action();
        } catch (...) {
            if (!first_) first_ = std::current_exception();
            all_.forgetSession();
        }
        if (inner_.openPairs != 0) [[unlikely]]
            all_.forgetSession();
    }
    /// The function may end its token; it is held only then, as a hold on each would be felt where there are many.
    void call(ObserverCallback& function, ObservableObject& object, const KeyValueChange& change) noexcept {
        called_ = &function;
        run([&] { function.changed(object, change); });
        called_ = nullptr;
        if (held_) [[unlikely]]
            held_ = nullptr;
    }

private:
    friend class Announcements;

    Announcements& all_;
    Session* outer_;
    Apart* around_;
    Session inner_;
    const Object* called_ = nullptr;
    Ref<Object> held_;
    std::exception_ptr first_{};
};

} // namespace estatebook::platform
