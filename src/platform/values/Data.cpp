// SPDX-License-Identifier: MIT
#include "platform/values/Data.hpp"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

namespace estatebook::platform {

Data::Data(std::vector<std::byte> bytes) noexcept : Object(Counting::Shared), bytes_(std::move(bytes)) {}

Ref<Data> Data::make(std::vector<std::byte> bytes) {
    return Ref<Data>(new Data(std::move(bytes)));
}

bool Data::isEqual(const Object& other) const noexcept {
    const auto* data = dynamic_cast<const Data*>(&other);
    return data && bytes_ == data->bytes_;
}

std::size_t Data::hash() const noexcept {
    return std::hash<std::string_view>{}({reinterpret_cast<const char*>(bytes_.data()), bytes_.size()});
}

std::string Data::description() const {
    return "<" + std::to_string(bytes_.size()) + " bytes>";
}

} // namespace estatebook::platform
