// SPDX-License-Identifier: MIT
#pragma once

/// HeldOutput: what is printed, until it may be seen.
///
///     HeldOutput held;
///     std::ostream out(&held);
///     printAll(out);
///     held.release(std::cout);
///
/// A few megabytes are kept in memory, more in a file of the folder for passing files that no name leads to; without such a
/// file, or without room in it, all stays in memory.

#include <cstddef>
#include <cstdio>
#include <iosfwd>
#include <memory>
#include <streambuf>
#include <string>

namespace estatebook {

class HeldOutput final : public std::streambuf {
public:
    HeldOutput() = default;

    /// Writes all that was held, and holds nothing any more. What cannot be had back fails the stream.
    void release(std::ostream& out);

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;

private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
    };
    static constexpr std::size_t MostInMemory = std::size_t{4} << 20;

    void keep(const char* text, std::size_t size);
    void writeAway();

    /// What comes behind that in the file.
    std::string memory_;
    std::unique_ptr<std::FILE, Closer> file_;
    std::size_t inFile_ = 0;
    bool isFileUsable_ = true;
};

} // namespace estatebook
