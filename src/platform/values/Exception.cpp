// SPDX-License-Identifier: MIT
#include "platform/values/Exception.hpp"

namespace estatebook::platform {

Exception::Exception(std::string_view name, std::string_view reason)
    : name_(name), reason_(reason), text_(name_ + ": " + reason_) {}

// Defined here so that each class has its type information in this library, and is caught across libraries.
Exception::~Exception() = default;
DivideByZeroException::~DivideByZeroException() = default;
OverflowException::~OverflowException() = default;
UnderflowException::~UnderflowException() = default;
ExactnessException::~ExactnessException() = default;
InvalidArgumentException::~InvalidArgumentException() = default;
RangeException::~RangeException() = default;
UndefinedKeyException::~UndefinedKeyException() = default;
InternalInconsistencyException::~InternalInconsistencyException() = default;
ObjectInaccessibleException::~ObjectInaccessibleException() = default;
InvalidArchiveOperationException::~InvalidArchiveOperationException() = default;
InvalidUnarchiveOperationException::~InvalidUnarchiveOperationException() = default;

} // namespace estatebook::platform
