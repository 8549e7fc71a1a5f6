// SPDX-License-Identifier: MIT
#pragma once

/// BinaryPropertyList: trees of values as bytes, in the form that begins with "bplist00".
///
/// A property list consists of texts, numbers, dates, data, UIDs (PropertyListUid), arrays and dictionaries.
///
///     Ref<Data> bytes = BinaryPropertyList::write(Dictionary::make({{"rent", 1000}}));
///     BinaryPropertyList::read(bytes->bytes()).as<Dictionary>()->find("rent");     // 1000
///
/// What is reached twice is written once and comes back as one. Numbers come back as the kind they were: an unsigned one takes sixteen bytes, all other whole numbers at most eight.
/// A decimal has no place in a property list.
///
/// Bytes may come from anywhere. Lists that contain themselves, that share bytes between two of their members or that
/// are deeper than DeepestArchive are refused, so that time and memory are linear in the bytes.

#include "platform/values/Data.hpp"
#include "platform/values/Error.hpp"
#include "platform/values/Value.hpp"

#include <cstddef>
#include <span>

namespace estatebook::platform {

class ESTATEBOOK_API BinaryPropertyList {
public:
    BinaryPropertyList() = delete;

    /// The bytes of the list; null, with a reason, when it holds something else than the above or a text that is not
    /// well formed.
    [[nodiscard]] static Ref<Data> write(const Value& list, Ref<Error>* error = nullptr);

    /// The list; absent, with a reason, when the bytes are none.
    [[nodiscard]] static Value read(std::span<const std::byte> bytes, Ref<Error>* error = nullptr);
};

} // namespace estatebook::platform
