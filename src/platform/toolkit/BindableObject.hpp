// SPDX-License-Identifier: MIT
#pragma once

/// BindableObject: an object of which a key can be bound to a key path of a model object, so that both go together.
///
///     dates->bindToObjectWithKeyPath("currentDate", tenure, "startDate");
///
/// From then on the object has the model's value under its own key, at once and after each change. The way back is not
/// taken by itself: whoever edits the value says when,
///
///     propagateValueForBinding(dates, date, "currentDate");       // tenure->setStartDate(date)
///
/// and the change comes back to the object's own setter, once more, before that returns.
///
/// A transformer stands between both: the model's value passes through it, and what goes back passes through it in reverse, unless
/// it has no way back. The object keeps the model object alive while they are bound.

#include "platform/observation/ObservableObject.hpp"
#include "platform/values/ValueTransformer.hpp"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace estatebook::platform {

/// What a key is bound to.
struct Binding {
    Ref<ObservableObject> observedObject;
    std::string keyPath;
    /// May be null.
    Ref<ValueTransformer> valueTransformer{};
};

class ESTATEBOOK_API BindableObject : public ObservableObject {
public:
    /// bind:toObject:withKeyPath:options: The name is a key of this object; a binding of that name before this one ends. A null
    /// object is bound to nothing. Raises UndefinedKeyException for a key that either side does not have.
    void bindToObjectWithKeyPath(std::string_view name, const Ref<ObservableObject>& object,
                                 std::string_view keyPath,
                                 const Ref<ValueTransformer>& valueTransformer = nullptr);
    /// unbind: the key keeps its value. One that is not bound does nothing.
    void unbind(std::string_view name);
    /// infoForBinding: none when the key is not bound.
    [[nodiscard]] std::optional<Binding> infoForBinding(std::string_view name) const;

protected:
    BindableObject() = default;
    ~BindableObject() override;

private:
    struct Bound {
        Binding binding;
        ObservationToken observation;
    };
    void takeModelValue(std::string_view name);

    std::map<std::string, Bound, std::less<>> bindings_;
};

/// propagateValue:forBinding: writes the value to what the key is bound to, through the transformer's reverse. A key that is not
/// bound, or whose transformer has no way back, does nothing. The host may put another operation in its place.
ESTATEBOOK_API void propagateValueForBinding(BindableObject& object, const Value& value,
                                             std::string_view binding);

/// What `propagateValueForBinding` calls; null restores the library's own. To be set on the model's thread.
using PropagateValueForBinding = void (*)(BindableObject& object, const Value& value,
                                          std::string_view binding);
ESTATEBOOK_API void setPropagateValueForBinding(PropagateValueForBinding operation) noexcept;

} // namespace estatebook::platform
