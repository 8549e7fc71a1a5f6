// SPDX-License-Identifier: MIT
#include "estatebook/document/TextSource.hpp"

#include <cerrno>

#include <unistd.h>

namespace estatebook::document {

namespace {
constexpr std::size_t BufferSize = 65536;
}

TextSource::TextSource(std::string_view text) noexcept : at_(text.data()), end_(text.data() + text.size()) {}

TextSource::TextSource(int descriptor)
    : descriptor_(descriptor), buffer_(std::make_unique_for_overwrite<char[]>(BufferSize)) {}

bool TextSource::refill() {
    if (descriptor_ < 0) return false;
    ssize_t count = 0;
    do {
        count = ::read(descriptor_, buffer_.get(), BufferSize);
    } while (count < 0 && errno == EINTR);
    if (count < 0) error_ = errno;
    if (count <= 0) {
        descriptor_ = -1;
        return false;
    }
    at_ = buffer_.get();
    end_ = at_ + count;
    return true;
}

} // namespace estatebook::document
