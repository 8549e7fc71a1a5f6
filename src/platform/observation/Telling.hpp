// SPDX-License-Identifier: MIT
#pragma once

/// Inner header of observing: Telling leads one change of one key to those who are registered for it.

#include "platform/observation/Announcements.hpp"
#include "platform/observation/ObservableObject.hpp"
#include "platform/observation/Observation.hpp"
#include "platform/values/String.hpp"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace estatebook::platform {

class Telling {
public:
    /// A dotted dependency whose dependent was opened along with the key, and at which step.
    using OpenedPath = std::pair<Ref<PathObservation>, std::size_t>;

    /// The membership change may be null. REQUIRES: the object is held.
    Telling(ObservableObject& object, Key key, const KeyValueChange* mutation) noexcept
        : object_(object), key_(key), mutation_(mutation) {}
    Telling(const Telling&) = delete;
    Telling& operator=(const Telling&) = delete;

    /// What those are told who want to hear that there was a change and nothing more of it.
    static const KeyValueChange& plainSetting() noexcept { return *plainSetting_.get(); }

    /// Gives the dotted dependencies that this has opened.
    [[nodiscard]] std::vector<OpenedPath> before(Value old);
    void after();
    /// Closes the dotted dependencies first.
    void after(Value old, std::vector<OpenedPath> opened);

private:
    // Everybody who is registered now, and still is when his turn comes.
    void tellAll(Observation& observation);
    void tellList(ObserverList& list);
    std::size_t tellPlainOnes(const ObserverList& list, std::size_t place, std::size_t count);
    void tellLink(PathLink& link);
    void tellPath(PathObservation& path, std::size_t step);
    void tellPerson(Apart& apart, const Registration& registration);
    const KeyValueChange& changeFor(Apart& apart, unsigned options);
    const KeyValueChange& changeWithValues(Apart& apart, unsigned options);

    static Constant<KeyValueChange> plainSetting_;

    ObservableObject& object_;
    Key key_;
    bool isPrior_ = false;
    std::uint8_t options_ = 0;
    const KeyValueChange* mutation_;
    std::string_view name_ = key_.name();
    std::optional<Value> old_;
    std::vector<OpenedPath> opened_;

    // What the last one was told, for the next who asks for the same.
    std::optional<KeyValueChange> change_;
    std::optional<Value> newValue_;
};

} // namespace estatebook::platform
