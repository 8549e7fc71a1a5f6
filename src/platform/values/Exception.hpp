// SPDX-License-Identifier: MIT
#pragma once

/// The exceptions of the platform layer: one root, and one class for each condition, each with the name the
/// platform gives it. Absent or odd data never raises; these are for conditions that have no answer.
///
///     try { a.decimalNumberByDividingBy(b); }
///     catch (const DivideByZeroException& exception) { exception.name(); exception.reason(); }

#include "EstateBook_ModelExport.hpp"

#include <exception>
#include <string>
#include <string_view>

namespace estatebook::platform {

class ESTATEBOOK_API Exception : public std::exception {
public:
    Exception(std::string_view name, std::string_view reason);
    ~Exception() override;

    /// The platform's name, for example "NSRangeException".
    [[nodiscard]] std::string_view name() const noexcept { return name_; }
    /// One line that says what happened.
    [[nodiscard]] std::string_view reason() const noexcept { return reason_; }
    /// "NAME: REASON".
    [[nodiscard]] const char* what() const noexcept override { return text_.c_str(); }

private:
    std::string name_;
    std::string reason_;
    std::string text_;
};

#define ESTATEBOOK_EXCEPTION(Class, Name)                                                                    \
    class ESTATEBOOK_API Class : public Exception {                                                          \
    public:                                                                                                  \
        explicit Class(std::string_view reason) : Exception(Name, reason) {}                                 \
        ~Class() override;                                                                                   \
    }

ESTATEBOOK_EXCEPTION(DivideByZeroException, "NSDecimalNumberDivideByZeroException");
ESTATEBOOK_EXCEPTION(OverflowException, "NSDecimalNumberOverflowException");
ESTATEBOOK_EXCEPTION(UnderflowException, "NSDecimalNumberUnderflowException");
ESTATEBOOK_EXCEPTION(ExactnessException, "NSDecimalNumberExactnessException");
ESTATEBOOK_EXCEPTION(InvalidArgumentException, "NSInvalidArgumentException");
ESTATEBOOK_EXCEPTION(RangeException, "NSRangeException");
ESTATEBOOK_EXCEPTION(UndefinedKeyException, "NSUnknownKeyException");
ESTATEBOOK_EXCEPTION(InternalInconsistencyException, "NSInternalInconsistencyException");
ESTATEBOOK_EXCEPTION(ObjectInaccessibleException, "NSObjectInaccessibleException");
ESTATEBOOK_EXCEPTION(InvalidArchiveOperationException, "NSInvalidArchiveOperationException");
ESTATEBOOK_EXCEPTION(InvalidUnarchiveOperationException, "NSInvalidUnarchiveOperationException");

#undef ESTATEBOOK_EXCEPTION

} // namespace estatebook::platform
