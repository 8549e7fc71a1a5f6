// SPDX-License-Identifier: MIT
#pragma once

/// FieldFormatter: what stands between a value and the text of a field or a column: it writes the one and reads the other.
///
///     Value value;
///     Ref<Error> error;
///     if (!formatter.getObjectValueForStringRangeError(value, typed, nullptr, &error))
///         complain(error->localizedDescription());
///     else if (value.isAbsent()) …                 // read, and nothing is meant
///
/// The trap: reading has three outcomes. A text that stands for no value is read, with success.

#include "platform/observation/ObservableObject.hpp"
#include "platform/values/Error.hpp"
#include "platform/values/String.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace estatebook::platform {

/// The domain and the code of a text that cannot be read.
inline constexpr std::string_view FormattingErrorDomain = "NSCocoaErrorDomain";
inline constexpr std::int64_t FormattingError = 2048;

/// A part of a text, in bytes.
struct TextRange {
    std::size_t location = 0;
    std::size_t length = 0;
    friend bool operator==(const TextRange&, const TextRange&) noexcept = default;
};

class ESTATEBOOK_API FieldFormatter : public ObservableObject {
public:
    /// stringForObjectValue: null for a value of a kind that the formatter does not write, and for nothing.
    [[nodiscard]] virtual Ref<String> stringForObjectValue(const Value& value) const = 0;

    /// getObjectValue:forString:range:error:
    /// Reads the text into `object`. With a range, only that part of the text is read; what it begins with is enough, and the range
    /// then tells which part that was. Without one the whole text must be used up, white space around it aside. On failure
    /// `object` stays as it is and `error`, unless it is null, says why.
    virtual bool getObjectValueForStringRangeError(Value& object, const Ref<String>& string, TextRange* range,
                                                   Ref<Error>* error) const = 0;

    /// awakeFromNib: the interface file that holds the formatter has been read; empty unless a class says otherwise.
    virtual void awakeFromNib() {}

protected:
    // Counted for threads: what a formatter is asked may be asked elsewhere.
    FieldFormatter() noexcept : ObservableObject(Counting::Shared) {}
};

} // namespace estatebook::platform
