// SPDX-License-Identifier: MIT
#pragma once

/// How many cases a test that is run by chance takes, and where it begins.

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string_view>

namespace estatebook::test {

/// The number in a variable of the environment; else the usual one, or `withSanitizers` in a program that is slowed down by
/// them.
inline std::uint64_t effort(const char* variable, std::uint64_t usual, std::uint64_t withSanitizers) {
    std::uint64_t number = usual;
#ifdef __SANITIZE_ADDRESS__
    number = withSanitizers;
#else
    static_cast<void>(withSanitizers);
#endif
    if (const char* text = std::getenv(variable)) {
        const std::string_view digits(text);
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
    }
    return number;
}

/// What ESTATEBOOK_SEED says, else another one each time.
inline std::uint64_t anySeed() {
    std::random_device entropy;
    return effort("ESTATEBOOK_SEED", (std::uint64_t{entropy()} << 32) | entropy(),
                  (std::uint64_t{entropy()} << 32) | entropy());
}

} // namespace estatebook::test
