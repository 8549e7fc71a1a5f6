// SPDX-License-Identifier: MIT
#include "platform/values/Error.hpp"

namespace estatebook::platform {

Error::Error(std::string_view domain, std::int64_t code, Ref<Dictionary> userInfo)
    : Object(Counting::Shared), domain_(domain), code_(code),
      userInfo_(userInfo ? std::move(userInfo) : Dictionary::make({})) {}

Ref<Error> Error::make(std::string_view domain, std::int64_t code, std::string_view description) {
    return makeRef<Error>(
        domain, code, Dictionary::make({{std::string(LocalizedDescriptionKey), String::make(description)}}));
}

std::string Error::localizedDescription() const {
    if (const auto text = userInfo_->find(LocalizedDescriptionKey).string()) return text->string();
    return domain_ + " error " + std::to_string(code_);
}

std::string Error::description() const {
    return "Error Domain=" + domain_ + " Code=" + std::to_string(code_) + " \"" + localizedDescription() +
           "\"";
}

} // namespace estatebook::platform
