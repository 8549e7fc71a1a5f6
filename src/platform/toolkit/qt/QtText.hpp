// SPDX-License-Identifier: MIT
#pragma once

/// Texts, from ours to Qt's and back.

#include "platform/values/Ref.hpp"
#include "platform/values/String.hpp"

#include <QString>

#include <string>
#include <string_view>

namespace estatebook::platform {

/// What is not well formed becomes replacement characters.
[[nodiscard]] inline QString qString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
/// Empty for null.
[[nodiscard]] inline QString qString(const Ref<String>& text) {
    return text ? qString(text->view()) : QString();
}
[[nodiscard]] inline std::string textOf(const QString& text) {
    return text.toStdString();
}

} // namespace estatebook::platform
