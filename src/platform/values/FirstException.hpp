// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: work that is carried out to its end although hooks or observers raise on the way.
///
///     FirstException exceptions;
///     for (const auto& object : saved) exceptions.keep([&] { object->didSave(); });
///     exceptions.rethrow();

#include <exception>
#include <utility>

namespace estatebook::platform {

class FirstException {
public:
    template <class Action>
    void keep(Action&& action) noexcept {
        try {
            action();
        } catch (...) {
            if (!first_) first_ = std::current_exception();
        }
    }
    /// Raises what was raised first; does nothing when all went well.
    void rethrow() {
        if (first_) std::rethrow_exception(std::exchange(first_, nullptr));
    }

private:
    std::exception_ptr first_{};
};

} // namespace estatebook::platform
