// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/StoreFailure.hpp"

#include <new>

namespace estatebook::platform::sqlite {

namespace {

std::string_view adviceFor(StoreErrorCode code) {
    switch (code) {
    case StoreErrorCode::Missing:
        return "Check its name, or make a new book.";
    case StoreErrorCode::Exists:
        return "Choose another name.";
    case StoreErrorCode::Foreign:
        return "It was left as it is; choose a book's file.";
    case StoreErrorCode::Newer:
        return "It was left as it is; open it with a newer program.";
    case StoreErrorCode::Damaged:
        return "It was left as it is; go on with an earlier copy.";
    case StoreErrorCode::Locked:
        return "Close it there first.";
    case StoreErrorCode::Busy:
        return "Nothing was changed; try again.";
    case StoreErrorCode::ReadOnly:
        return "Nothing was changed; ask for the right to read and write the file and its folder.";
    case StoreErrorCode::Full:
        return "Nothing was changed; make room and try again.";
    case StoreErrorCode::Unreadable:
        return "Check the disk, and try again.";
    case StoreErrorCode::Moved:
        return "Nothing was changed; put it back, or open it where it is now.";
    case StoreErrorCode::InvalidChange:
        return "Nothing was changed.";
    case StoreErrorCode::Unsupported:
        return "Ask for something else.";
    case StoreErrorCode::OutcomeUnknown:
        return "Ask again whether the save has landed, before anything is saved another time.";
    case StoreErrorCode::OutOfMemory:
        return "Nothing was changed; close other programs and try again.";
    }
    return {};
}

} // namespace

StoreError errorOf(const StoreFailure& failure, std::string_view path) noexcept {
    try {
        std::string message = std::string(path) + ": " + failure.reason + ". ";
        message += adviceFor(failure.code);
        for (char& each : message)
            if (each == '\n') each = ' ';
        return {failure.code, std::string(path), std::move(message)};
    } catch (const std::bad_alloc&) {
        return {failure.code, {}, {}};
    }
}

StoreError errorWithoutMemory(std::string_view path) noexcept {
    try {
        return errorOf({StoreErrorCode::OutOfMemory, "there is no memory left"}, path);
    } catch (const std::bad_alloc&) {
        return {StoreErrorCode::OutOfMemory, {}, {}};
    }
}

} // namespace estatebook::platform::sqlite
