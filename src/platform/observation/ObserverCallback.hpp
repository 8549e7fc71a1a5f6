// SPDX-License-Identifier: MIT
#pragma once

/// ObserverCallback: a function that is told of changes in an observer's place (ObservableObject::observe).

#include "platform/values/Object.hpp"

#include <concepts>
#include <utility>

namespace estatebook::platform {

class ObservableObject;
struct KeyValueChange;

class ESTATEBOOK_API ObserverCallback : public Object {
public:
    virtual void changed(ObservableObject& object, const KeyValueChange& change) = 0;

protected:
    ObserverCallback() noexcept : Object(Counting::Local) {}
};

/// What can be called with the object and the change, with the change alone, or with nothing.
template <class Function>
concept ObservingFunction = std::invocable<Function&, ObservableObject&, const KeyValueChange&> ||
                            std::invocable<Function&, const KeyValueChange&> || std::invocable<Function&>;

template <ObservingFunction Function>
class ObserverFunction final : public ObserverCallback {
public:
    explicit ObserverFunction(Function function) : function_(std::move(function)) {}
    void changed(ObservableObject& object, const KeyValueChange& change) override {
        if constexpr (std::invocable<Function&, ObservableObject&, const KeyValueChange&>)
            function_(object, change);
        else if constexpr (std::invocable<Function&, const KeyValueChange&>)
            function_(change);
        else
            function_();
    }

private:
    Function function_;
};

} // namespace estatebook::platform
