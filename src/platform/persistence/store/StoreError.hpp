// SPDX-License-Identifier: MIT
#pragma once

/// StoreError: why a store could not do what it was asked; StoreResult<T>: a T, or such an error.
///
///     auto store = SQLiteStore::open(path, model, options);
///     if (!store) return show(store.error().message);
///     use(**store);

#include "platform/values/Date.hpp"
#include "platform/values/Error.hpp"

#include <cassert>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace estatebook::platform {

/// Also the code of the Error, of the domain "Persistence", that is made of it.
enum class StoreErrorCode : std::int64_t {
    Missing = 134101,        ///< there is no such book
    Exists = 134102,         ///< a book is to be made where something is
    Foreign = 134103,        ///< the file is no book
    Newer = 134104,          ///< the book was written by a newer program
    Damaged = 134105,        ///< the book is not as it was left
    Locked = 134106,         ///< another program has it open for writing
    Busy = 134107,           ///< somebody read it for longer than we waited; nothing was changed
    ReadOnly = 134108,       ///< it may not be written, or was opened for reading only
    Full = 134109,           ///< there is no room left; nothing was changed
    Unreadable = 134110,     ///< the system failed to read or to write
    Moved = 134111,          ///< the file was replaced or taken away while it was open
    InvalidChange = 134112,  ///< a change that no book can take; nothing was changed
    Unsupported = 134113,    ///< something this store cannot answer
    OutcomeUnknown = 134114, ///< whether the save landed can be asked by its token later
    OutOfMemory = 134115,    ///< nothing was changed
};

/// Who has a book open for writing, as they have told it themselves.
struct StoreHolder {
    /// Empty for somebody who has no name, and so is the program.
    std::string author;
    /// With the command that it carries out, if any.
    std::string program;
    Date since;
};

struct StoreError {
    StoreErrorCode code{};
    /// The book's; empty for one in memory.
    std::string path;
    /// One line: what happened, where, and what to do. Empty when there was no memory left even for that.
    std::string message;
    /// With Locked; none when it cannot be told.
    std::optional<StoreHolder> holder{};

    [[nodiscard]] ESTATEBOOK_API Ref<Error> asError() const;
};

template <class T>
class [[nodiscard]] StoreResult {
public:
    StoreResult(T value) : content_(std::in_place_index<0>, std::move(value)) {}
    StoreResult(StoreError error) : content_(std::in_place_index<1>, std::move(error)) {}

    [[nodiscard]] explicit operator bool() const noexcept { return content_.index() == 0; }
    /// REQUIRES: no error.
    [[nodiscard]] T& operator*() & noexcept {
        assert(*this);
        return *std::get_if<0>(&content_);
    }
    /// By value, so that a loop over what an operation gives walks something that lives.
    [[nodiscard]] T operator*() && { return std::move(**this); }
    [[nodiscard]] const T& operator*() const& noexcept {
        assert(*this);
        return *std::get_if<0>(&content_);
    }
    [[nodiscard]] T* operator->() noexcept { return &**this; }
    [[nodiscard]] const T* operator->() const noexcept { return &**this; }
    /// REQUIRES: an error.
    [[nodiscard]] const StoreError& error() const noexcept {
        assert(!*this);
        return *std::get_if<1>(&content_);
    }

private:
    std::variant<T, StoreError> content_;
};

} // namespace estatebook::platform
