// SPDX-License-Identifier: MIT
#include "estatebook/document/TextSource.hpp"

#include <cerrno>

namespace estatebook::document {

namespace {
constexpr std::size_t BufferSize = 65536;
}

TextSource::TextSource(std::string_view text) noexcept : at_(text.data()), end_(text.data() + text.size()) {}

TextSource::TextSource(std::FILE* stream)
    : stream_(stream), buffer_(std::make_unique_for_overwrite<char[]>(BufferSize)) {}

bool TextSource::refill() {
    if (stream_ == nullptr) return false;
    errno = 0;
    const std::size_t count = std::fread(buffer_.get(), 1, BufferSize, stream_);
    if (count < BufferSize) {
        if (std::ferror(stream_) != 0) error_ = errno != 0 ? errno : EIO;
        stream_ = nullptr;
    }
    at_ = buffer_.get();
    end_ = at_ + count;
    return count > 0;
}

} // namespace estatebook::document
