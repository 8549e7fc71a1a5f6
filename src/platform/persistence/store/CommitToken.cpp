// SPDX-License-Identifier: MIT
#include "platform/persistence/store/CommitToken.hpp"

#include <cstddef>
#include <random>

namespace estatebook::platform {

CommitToken CommitToken::random() {
    static_assert(std::random_device::min() == 0 && std::random_device::max() == 0xffff'ffffu);
    std::random_device device;
    CommitToken token;
    for (std::size_t place = 0; place < token.bytes.size(); place += 4) {
        const std::uint32_t word = device();
        for (std::size_t index = 0; index < 4; ++index)
            token.bytes[place + index] = static_cast<std::uint8_t>(word >> (8 * index));
    }
    return token;
}

} // namespace estatebook::platform
