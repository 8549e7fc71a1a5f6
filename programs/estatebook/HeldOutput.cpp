// SPDX-License-Identifier: MIT
#include "estatebook/HeldOutput.hpp"

#include <algorithm>
#include <array>
#include <ostream>
#include <string_view>

#include <unistd.h>

namespace estatebook {

HeldOutput::int_type HeldOutput::overflow(int_type character) {
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
    const char each = traits_type::to_char_type(character);
    keep(&each, 1);
    return character;
}

std::streamsize HeldOutput::xsputn(const char* text, std::streamsize size) {
    keep(text, static_cast<std::size_t>(size));
    return size;
}

void HeldOutput::keep(const char* text, std::size_t size) {
    memory_.append(text, size);
    if (memory_.size() >= MostInMemory && isFileUsable_) writeAway();
}

void HeldOutput::writeAway() {
    if (!file_) file_.reset(std::tmpfile());
    std::string_view rest = memory_;
    while (file_ && !rest.empty()) {
        const ssize_t count =
            pwrite(fileno(file_.get()), rest.data(), rest.size(), static_cast<off_t>(inFile_));
        if (count <= 0) break;
        rest.remove_prefix(static_cast<std::size_t>(count));
        inFile_ += static_cast<std::size_t>(count);
    }
    isFileUsable_ = rest.empty();
    memory_.erase(0, memory_.size() - rest.size());
}

void HeldOutput::release(std::ostream& out) {
    std::array<char, 1 << 16> block{};
    for (std::size_t at = 0; at < inFile_ && out;) {
        const ssize_t count = pread(fileno(file_.get()), block.data(), std::min(block.size(), inFile_ - at),
                                    static_cast<off_t>(at));
        if (count <= 0) return out.setstate(std::ios::badbit);
        out.write(block.data(), count);
        at += static_cast<std::size_t>(count);
    }
    out << memory_;
    memory_.clear();
    file_.reset();
    inFile_ = 0;
}

} // namespace estatebook
