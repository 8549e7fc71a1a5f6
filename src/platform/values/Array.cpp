// SPDX-License-Identifier: MIT
#include "platform/values/Array.hpp"

#include <utility>

namespace estatebook::platform {

namespace {

class ArrayOfValues final : public Array {
public:
    explicit ArrayOfValues(std::vector<Value> members) noexcept : members_(std::move(members)) {}
    [[nodiscard]] std::size_t count() const noexcept override { return members_.size(); }
    [[nodiscard]] Value at(std::size_t index) const noexcept override { return members_[index]; }

private:
    std::vector<Value> members_;
};

} // namespace

Ref<Array> Array::make(std::vector<Value> members) {
    return makeRef<ArrayOfValues>(std::move(members));
}

bool Array::isEqual(const Object& other) const noexcept {
    const auto* array = dynamic_cast<const Array*>(&other);
    if (!array || array->count() != count()) return false;
    for (std::size_t index = 0; index < count(); ++index)
        if (!at(index).isEqual(array->at(index))) return false;
    return true;
}

std::size_t Array::hash() const noexcept {
    return count();
}

std::string Array::description() const {
    std::string text = "(";
    for (std::size_t index = 0; index < count(); ++index)
        text += (index ? ",\n    " : "\n    ") + at(index).description();
    return text + "\n)";
}

} // namespace estatebook::platform
