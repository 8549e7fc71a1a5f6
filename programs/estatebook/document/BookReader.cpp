// SPDX-License-Identifier: MIT
#include "estatebook/document/BookReader.hpp"

#include "estatebook/document/BookBuilder.hpp"
#include "estatebook/document/JsonText.hpp"
#include "estatebook/document/TextSource.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <clocale>
#include <memory>
#include <new>
#include <system_error>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace estatebook::document {

namespace {

using nlohmann::json;

constexpr std::string_view CorrectText = "correct the text on this line";

Refusal zeroByte() {
    return {"there is a zero byte in the text", "replace the file by one of plain text"};
}

/// Leads the events of the JSON reader to a builder.
class Events {
public:
    using number_integer_t = json::number_integer_t;
    using number_unsigned_t = json::number_unsigned_t;
    using number_float_t = json::number_float_t;
    using string_t = json::string_t;
    using binary_t = json::binary_t;

    Events(const TextSource& source, BookBuilder& builder) noexcept : source_(source), builder_(builder) {}

    bool null() { return builder_.value({}); }
    bool boolean(bool value) { return builder_.value({Scalar::Type::Boolean, value, {}}); }
    bool number_integer(number_integer_t value) { return integer(value); }
    bool number_unsigned(number_unsigned_t value) { return integer(value); }
    bool number_float(number_float_t, const string_t& digits) { return number(digits); }
    bool string(const string_t& text) { return builder_.value({Scalar::Type::Text, false, text}); }
    bool binary(const binary_t&) { return false; } // JSON text has none
    bool start_object(std::size_t) { return builder_.beginObject(); }
    bool key(const string_t& name) { return builder_.key(name); }
    bool end_object() { return builder_.endObject(); }
    bool start_array(std::size_t) { return builder_.beginList(); }
    bool end_array() { return builder_.endList(); }

    bool parse_error(std::size_t, const std::string& token, const json::exception& exception) {
        constexpr int NumberTooLarge = 406;
        if (exception.id == NumberTooLarge)
            number(token);
        else
            builder_.refuse(refusalFor(exception.what()));
        return false;
    }

private:
    bool number(std::string_view digits) { return builder_.value({Scalar::Type::Number, false, digits}); }

    template <class Integer>
    bool integer(Integer value) {
        std::array<char, 24> digits{};
        const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
        return number({digits.data(), static_cast<std::size_t>(end - digits.data())});
    }

    [[nodiscard]] Refusal refusalFor(std::string_view complaint) const {
        if (source_.last() == '\0') return zeroByte();
        return {fmt::format("this is not JSON: {}", reasonIn(complaint)), std::string(CorrectText)};
    }

    /// The reason out of "… - REASON; expected WHAT" or "… - REASON; last read: 'TOKEN'", where the token may
    /// be of any length.
    [[nodiscard]] static std::string reasonIn(std::string_view complaint) {
        if (const std::size_t dash = complaint.find(" - "); dash != std::string_view::npos)
            complaint.remove_prefix(dash + 3);
        std::string reason(complaint.substr(0, complaint.find("; last read")));
        std::replace(reason.begin(), reason.end(), ';', ',');
        return reason;
    }

    const TextSource& source_;
    BookBuilder& builder_;
};

/// The JSON reader asks the locale for the decimal point. While this lives, it is a point for this thread.
class PlainNumerals {
public:
    PlainNumerals() noexcept
        : plain_(::newlocale(LC_ALL_MASK, "C", nullptr)),
          before_(plain_ != nullptr ? ::uselocale(plain_) : nullptr) {}
    ~PlainNumerals() {
        if (plain_ == nullptr) return;
        ::uselocale(before_);
        ::freelocale(plain_);
    }
    PlainNumerals(const PlainNumerals&) = delete;
    PlainNumerals& operator=(const PlainNumerals&) = delete;

private:
    locale_t plain_;
    locale_t before_;
};

BookReading failure(BookError error) {
    BookReading reading;
    reading.error = std::move(error);
    return reading;
}

BookReading unreadable(std::string_view file, int number) {
    return failure({.kind = BookError::Kind::Unreadable,
                    .file = std::string(file),
                    .path = {},
                    .message = "cannot be read: " + std::generic_category().message(number),
                    .advice = "check its name and permissions"});
}

/// Reads all of a source.
void readInto(BookBuilder& builder, TextSource& source) {
    // The JSON reader would pass over a byte order mark, and takes a zero byte for the end of the text.
    if (source.more() && source.front() == '\xEF') {
        builder.refuse({"the text begins with a byte order mark", "save it as UTF-8 without one"});
        return;
    }
    Events events(source, builder);
    if (json::sax_parse(source.begin(), TextSource::end(), &events) && source.last() == '\0')
        builder.refuse(zeroByte());
}

BookReading read(TextSource& source, std::string_view file) {
    const PlainNumerals plainNumerals;
    try {
        BookBuilder builder(source, file);
        readInto(builder, source);
        if (source.error() != 0) return unreadable(file, source.error());
        return builder.finish();
    } catch (const std::bad_alloc&) {
        return failure({.kind = BookError::Kind::Unreadable,
                        .file = std::string(file),
                        .path = {},
                        .message = "does not fit into memory",
                        .advice = "divide the book"});
    }
}

std::string locate(std::string_view file, std::size_t line, std::string_view path) {
    constexpr std::size_t LongestPath = 4096;
    std::string text = forMessage(file, LongestPath);
    if (line != 0) text += fmt::format(":{}", line);
    text += ": ";
    if (!path.empty()) text += fmt::format("{}: ", path);
    return text;
}

} // namespace

std::string BookError::text() const {
    return fmt::format("{}{}; {}", locate(file, line, path), message, advice);
}

std::string BookWarning::text() const {
    return fmt::format("{}warning: {}", locate(file, line, path), message);
}

BookReading BookReader::readText(std::string_view text, std::string_view file) {
    TextSource source(text);
    return read(source, file);
}

BookReading BookReader::readStream(std::FILE* stream, std::string_view file) {
    TextSource source(stream);
    return read(source, file);
}

BookReading BookReader::readFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(path.c_str(), "rb"),
                                                                 &std::fclose);
    return stream ? readStream(stream.get(), path) : unreadable(path, errno);
}

} // namespace estatebook::document
