// SPDX-License-Identifier: MIT
#pragma once

/// ObservableObject: read and written by key, and observed by key path.
///
/// A change is a pair of announcements around a store: will, store, did. Observers of the key are told after
/// the store, and so are observers of every key that depends on it, each once a change. Dependent keys are
/// announced through the same overridable pair, whether or not anybody observes, so that a class can pass them on:
///
///     void TKTenure::didChangeValueForKey(Key key) {
///         Super::didChangeValueForKey(key);                       // always first
///         if (key == keys::balance && property()) property()->didChangeValueForKey(keys::tenureBalance);
///     }
///
/// Observing:
///
///     tenure.addObserverForKeyPathOptionsContext(watcher, "balance", ObservingNew, token);
///     tenure.removeObserverForKeyPathContext(watcher, "balance", token);
///
/// or, as long as a token lives that the call hands out,
///
///     ObservationToken balance = tenure.observe("balance", [&] { redraw(); });
///
/// Neither observer nor observed is kept alive: an observer that died is passed over, and what was registered on
/// an object dies with it. Observers may come and go during a notification: one that is removed hears nothing
/// more, one that is added hears of the next change.
///
/// An exception out of an observer or out of a getter read for one leaves the value set and every pair closed; all other
/// observers are told, and the first exception leaves the outermost setter.
///
/// Announcing costs nothing when nobody observes an object and its class does not replace the pair. Objects
/// are used on one thread.

#include "platform/observation/ClassDescription.hpp"
#include "platform/observation/Key.hpp"
#include "platform/observation/ObservationToken.hpp"
#include "platform/observation/ObserverCallback.hpp"
#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"
#include "platform/values/Value.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace estatebook::platform {

class Set;

/// Bits of what an observer asks for.
enum ObservingOptions : std::uint8_t {
    ObservingNothing = 0,
    /// The new value in the change record, read by key while the observers are told.
    ObservingNew = 1,
    /// The value before the change.
    ObservingOld = 2,
    /// One notification at once, while registering.
    ObservingInitial = 4,
    /// One more notification before each change.
    ObservingPrior = 8,
};

enum class ChangeKind : std::uint8_t { Setting = 1, Insertion = 2, Removal = 3, Replacement = 4 };

/// What an observer is told of a change.
struct KeyValueChange {
    ChangeKind kind = ChangeKind::Setting;
    /// Whether the change is yet to come.
    bool isPrior = false;
    /// With ObservingNew: the value, or the members that came; the null object where there is none.
    Value newValue{};
    /// With ObservingOld: the value before, or the members that went; the null object where there was none.
    Value oldValue{};
    /// Places of the members that came or went in an ordered relationship.
    std::vector<std::size_t> indexes{};
};

class ESTATEBOOK_API ObservableObject : public Object {
public:
    // Reading and writing by key

    /// The table of the object's class.
    [[nodiscard]] virtual const ClassDescription& classDescription() const noexcept;

    /// valueForKey: the value; absent where there is none. An unknown key raises UndefinedKeyException.
    [[nodiscard]] virtual Value valueForKey(Key key) const;
    [[nodiscard]] Value valueForKey(std::string_view key) const { return valueForKey(Key::named(key)); }

    /// Whether the key has a value at all; a key without one can still be observed.
    [[nodiscard]] virtual bool hasValueForKey(Key key) const;

    /// setValue:forKey: through the setter. An unknown or read-only key raises UndefinedKeyException; nothing for a
    /// plain number, or a value of the wrong kind, raises InvalidArgumentException.
    virtual void setValueForKey(const Value& value, Key key);
    void setValueForKey(const Value& value, std::string_view key) { setValueForKey(value, Key::named(key)); }

    /// valueForKeyPath: step by step; nothing in the middle gives nothing. A collection in the middle is mapped over.
    /// "tenures.@sum.balance" is the decimal sum over the members (0 of none), "tenures.@unionOfSets.transactions"
    /// the set of all members of the members' sets. Another operator raises InvalidArgumentException. Linear in the
    /// members visited.
    [[nodiscard]] Value valueForKeyPath(std::string_view keyPath) const;
    /// The sum of the members' values, where it can be told without reading each member; else none.
    [[nodiscard]] virtual std::optional<Decimal> sumOfMembers(Key collection, Key ofMember) const;

    /// setValue:forKeyPath: nothing in the middle leaves everything as it is.
    void setValueForKeyPath(const Value& value, std::string_view keyPath);

    // Announcing

    /// willChangeValueForKey: opens a change of the key and, when it is the outermost, of all keys that depend on it.
    virtual void willChangeValueForKey(Key key);
    /// didChangeValueForKey: closes it and tells the observers. One without its will is tolerated and does nothing.
    virtual void didChangeValueForKey(Key key);

    /// The pair for an unordered to-many key: members that come (Insertion), go (Removal), or replace all (Replacement).
    void willChangeValueForKeyWithSetMutationUsingObjects(Key key, ChangeKind kind, const Ref<Set>& objects);
    void didChangeValueForKeyWithSetMutationUsingObjects(Key key, ChangeKind kind, const Ref<Set>& objects);
    /// The pair for an ordered to-many key.
    void willChangeValuesAtIndexesForKey(ChangeKind kind, std::vector<std::size_t> indexes, Key key);
    void didChangeValuesAtIndexesForKey(ChangeKind kind, std::vector<std::size_t> indexes, Key key);

    /// For a class that replaces the pair: whether it does more with one of the keys than the class above, as things are now. Where
    /// the class that replaces the pair declares this beside it, changes of which nobody would hear are not announced at all;
    /// to say yes without need costs no more than that. May raise what reading raises.
    [[nodiscard]] virtual bool passesOn(const KeySet&) const { return false; }
    /// Whether anybody would hear of a change of the key or of one that depends on it, here or where it is passed on to.
    [[nodiscard]] bool mustAnnounce(Key key) const { return mustAnnounceAnyOf({&key, 1}); }
    /// The same of any of several keys.
    [[nodiscard]] bool mustAnnounceAnyOf(std::span<const Key> keys) const {
        return announcing_ != Announcing::WhenObserved &&
               (announcing_ == Announcing::Observed || findHearer(keys));
    }

    // Observing

    /// addObserver:forKeyPath:options:context: The same observer may register any number of times and is told as
    /// often. The context is handed back as it is and compared by identity.
    void addObserverForKeyPathOptionsContext(ObservableObject& observer, std::string_view keyPath,
                                             unsigned options, const void* context);
    /// removeObserver:forKeyPath:context: takes away the latest registration with this context; raises RangeException when there
    /// is none.
    void removeObserverForKeyPathContext(ObservableObject& observer, std::string_view keyPath,
                                         const void* context);
    /// removeObserver:forKeyPath: the latest registration with whatever context; raises RangeException when there is none.
    void removeObserverForKeyPath(ObservableObject& observer, std::string_view keyPath);

    /// The same registration as addObserver:forKeyPath:options:context:, taken away with the token.
    [[nodiscard]] ObservationToken observe(std::string_view keyPath, ObservableObject& observer,
                                           unsigned options = ObservingNothing,
                                           const void* context = nullptr);
    /// Calls the function when the value at the path changes, until the token ends: with this object and the change, with
    /// the change alone, or with nothing, as it likes. The function may end its own token.
    template <ObservingFunction Function>
    [[nodiscard]] ObservationToken observe(std::string_view keyPath, Function function,
                                           unsigned options = ObservingNothing) {
        return observeWithCallback(keyPath, makeRef<ObserverFunction<Function>>(std::move(function)),
                                   options);
    }

    /// observeValueForKeyPath:ofObject:change:context: Called for each registration of this object. The root raises
    /// InternalInconsistencyException: nobody knew the context.
    virtual void observeValueForKeyPathOfObjectChangeContext(std::string_view keyPath,
                                                             ObservableObject& object,
                                                             const KeyValueChange& change,
                                                             const void* context);

protected:
    constexpr explicit ObservableObject(Counting counting = Counting::Local) noexcept : Object(counting) {}
    /// For a class that replaces `noteWillChange` and `noteDidChange`.
    enum class Notes : bool { None, Taken };
    constexpr explicit ObservableObject(Notes notes) noexcept : Object(Counting::Local), notes_(notes) {}
    ~ObservableObject() override { endObserving(); }
    /// Observers learn that the object is gone before any part of it is.
    void dispose() const noexcept override;
    /// For classes that replace `dispose`: REQUIRES: called first in it.
    void endObserving() const noexcept {
        if (observation_) forgetObservers();
    }

    /// valueForUndefinedKey: raises UndefinedKeyException unless a class knows better.
    [[nodiscard]] virtual Value valueForUndefinedKey(Key key) const;
    virtual void setValueForUndefinedKey(const Value& value, Key key);
    /// setNilValueForKey: raises InvalidArgumentException unless a class knows better.
    virtual void setNilValueForKey(Key key);

    /// Runs a store between the two announcements, or alone when nobody can hear them. A store that raises leaves the
    /// change closed, too, and its exception leaves the setter.
    template <class Store>
    void change(Key key, Store&& store) {
        if (mustAnnounce(key)) return changeAnnounced(key, std::forward<Store>(store));
        if (notes_ == Notes::Taken) noteWillChange(key);
        store();
        if (notes_ == Notes::Taken) noteDidChange(key);
    }
    /// The same where somebody may hear of it.
    template <class Store>
    void changeAnnounced(Key key, Store&& store) {
        willChangeValueForKey(key);
        try {
            store();
        } catch (...) {
            closeAfterFailure(key);
            throw;
        }
        didChangeValueForKey(key);
    }

    /// Told of each key that is itself changed, as against one that is announced because it depends on another, if the
    /// class says that it takes notes.
    virtual void noteWillChange(Key) {}
    virtual void noteDidChange(Key) {}

private:
    friend class ObservationEngine;
    /// Passed: the class replaces the pair, and says for which keys.
    enum class Announcing : std::uint8_t { Unknown, WhenObserved, Observed, Passed, Always };
    void findAnnouncing() const noexcept;
    bool findHearer(std::span<const Key> keys) const;
    void forgetObservers() const noexcept;
    void observationBegins() noexcept;
    void observationEnds() noexcept;
    [[nodiscard]] ObservationToken observeWithCallback(std::string_view keyPath,
                                                       Ref<ObserverCallback> callback, unsigned options);
    [[nodiscard]] ObservationToken observeFor(const struct ObservationTarget& target,
                                              std::string_view keyPath, unsigned options);
    void closeAfterFailure(Key key) noexcept;

    class Observation* observation_ = nullptr;
    mutable Announcing announcing_ = Announcing::Unknown;
    Notes notes_ = Notes::None;
};

namespace detail {

template <class Member>
struct OwnerOf;
template <class Function, class C>
struct OwnerOf<Function C::*> {
    using Class = C;
};
template <class A, class B>
inline constexpr bool haveOneOwner = std::is_same_v<typename OwnerOf<A>::Class, typename OwnerOf<B>::Class>;

} // namespace detail

/// For class tables: how T announces, by the classes that declare the announcing pair and `passesOn`.
template <class T>
inline constexpr Announces announcing = [] {
    using Will = decltype(&T::willChangeValueForKey);
    using Did = decltype(&T::didChangeValueForKey);
    using PassesOn = decltype(&T::passesOn);
    using Platform = decltype(&ObservableObject::willChangeValueForKey);
    if (detail::haveOneOwner<Will, Platform> && detail::haveOneOwner<Did, Platform>)
        return Announces::ToObservers;
    return detail::haveOneOwner<Will, Did> && detail::haveOneOwner<Will, PassesOn> ? Announces::AsItSays
                                                                                   : Announces::Always;
}();

} // namespace estatebook::platform
