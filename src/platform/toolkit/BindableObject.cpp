// SPDX-License-Identifier: MIT
#include "platform/toolkit/BindableObject.hpp"

#include <utility>

namespace estatebook::platform {

namespace {

void writeThroughBinding(BindableObject& object, const Value& value, std::string_view name) {
    const std::optional<Binding> binding = object.infoForBinding(name);
    if (!binding) return;
    const Ref<ValueTransformer>& transformer = binding->valueTransformer;
    if (transformer && !transformer->allowsReverseTransformation()) return;
    binding->observedObject->setValueForKeyPath(
        transformer ? transformer->reverseTransformedValue(value) : value, binding->keyPath);
}

constinit PropagateValueForBinding propagating = writeThroughBinding;

} // namespace

BindableObject::~BindableObject() = default;

void BindableObject::bindToObjectWithKeyPath(std::string_view name, const Ref<ObservableObject>& object,
                                             std::string_view keyPath,
                                             const Ref<ValueTransformer>& valueTransformer) {
    unbind(name);
    if (!object) return;
    const std::string key(name);
    ObservationToken observation = object->observe(keyPath, [this, key] { takeModelValue(key); });
    bindings_.insert_or_assign(
        key, Bound{{object, std::string(keyPath), valueTransformer}, std::move(observation)});
    takeModelValue(name);
}

void BindableObject::unbind(std::string_view name) {
    const auto found = bindings_.find(name);
    if (found == bindings_.end()) return;
    // What goes with it may ask for the binding.
    const auto gone = bindings_.extract(found);
}

std::optional<Binding> BindableObject::infoForBinding(std::string_view name) const {
    const auto found = bindings_.find(name);
    if (found == bindings_.end()) return std::nullopt;
    return found->second.binding;
}

void BindableObject::takeModelValue(std::string_view name) {
    const std::optional<Binding> binding = infoForBinding(name);
    if (!binding) return;
    const Value value = binding->observedObject->valueForKeyPath(binding->keyPath);
    const Ref<ValueTransformer>& transformer = binding->valueTransformer;
    setValueForKey(transformer ? transformer->transformedValue(value) : value, name);
}

void propagateValueForBinding(BindableObject& object, const Value& value, std::string_view binding) {
    propagating(object, value, binding);
}

void setPropagateValueForBinding(PropagateValueForBinding operation) noexcept {
    propagating = operation ? operation : writeThroughBinding;
}

} // namespace estatebook::platform
