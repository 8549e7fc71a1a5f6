// SPDX-License-Identifier: MIT
#pragma once

/// TextSource: the bytes of a document, one after another, with the number of the line they stand on.
///
/// It reads from memory or from a file descriptor, of which it holds no more than a bufferful; so a pipe
/// without end costs only as much as is taken from it.
///
///     TextSource source(text);
///     std::copy(source.begin(), source.end(), out);    // one pass
///     source.line();                                   // of the last byte taken
///
/// The line break belongs to the line that it ends. That a reader looks one byte ahead, as one must at the
/// end of a number, therefore does not move the line.

#include <cstddef>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string_view>

namespace estatebook::document {

class TextSource {
public:
    /// Reads a text. REQUIRES: it outlives the source.
    explicit TextSource(std::string_view text) noexcept;
    /// Reads what a stream gives until its end. The stream stays open.
    explicit TextSource(std::FILE* stream);

    TextSource(const TextSource&) = delete;
    TextSource& operator=(const TextSource&) = delete;

    /// Whether there is another byte.
    [[nodiscard]] bool more() { return at_ != end_ || refill(); }
    /// The next byte. REQUIRES: more().
    [[nodiscard]] char front() const noexcept { return *at_; }
    /// Takes the next byte. REQUIRES: more().
    void advance() noexcept {
        if (last_ == '\n') ++line_;
        last_ = *at_++;
    }

    /// The line of the last byte taken, from 1.
    [[nodiscard]] std::size_t line() const noexcept { return line_; }
    /// The last byte taken; a blank before the first.
    [[nodiscard]] char last() const noexcept { return last_; }
    /// The system's number of what went wrong while reading, or 0.
    [[nodiscard]] int error() const noexcept { return error_; }

    /// One pass over the bytes.
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = char;
        using difference_type = std::ptrdiff_t;
        using pointer = const char*;
        using reference = char;

        explicit Iterator(TextSource* source = nullptr) noexcept : source_(source) {}

        char operator*() const noexcept { return source_->front(); }
        Iterator& operator++() noexcept {
            source_->advance();
            return *this;
        }
        Iterator operator++(int) noexcept {
            const Iterator before = *this;
            source_->advance();
            return before;
        }
        friend bool operator==(const Iterator& a, const Iterator& b) { return a.atEnd() == b.atEnd(); }

    private:
        [[nodiscard]] bool atEnd() const { return source_ == nullptr || !source_->more(); }

        TextSource* source_;
    };

    [[nodiscard]] Iterator begin() noexcept { return Iterator(this); }
    [[nodiscard]] static Iterator end() noexcept { return Iterator(); }

private:
    bool refill();

    const char* at_ = nullptr;
    const char* end_ = nullptr;
    std::size_t line_ = 1;
    char last_ = ' ';
    std::FILE* stream_ = nullptr;
    int error_ = 0;
    std::unique_ptr<char[]> buffer_;
};

} // namespace estatebook::document
