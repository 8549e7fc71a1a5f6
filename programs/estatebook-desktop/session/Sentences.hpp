// SPDX-License-Identifier: MIT
#pragma once

/// Sentences: in the user's language what was refused, why, and what can be done.
///
///     } catch (const Failure& failure) {
///         dialogs.warn(window, title, QString::fromStdString(sentenceOf(failure)));
///
/// A sentence begins with the name of the file. What the program that found damage says of the place stands in brackets, as it
/// is. Whatever has no sentence here keeps the text that it came with.

#include "estatebook/Failure.hpp"

#include "platform/values/Exception.hpp"

#include <string>

namespace estatebook::desktop {

[[nodiscard]] std::string sentenceOf(const Failure& failure);
/// Of a book that can be read no further. The file is named as messages show it.
[[nodiscard]] std::string sentenceOf(const std::string& file, const platform::Exception& exception);

} // namespace estatebook::desktop
