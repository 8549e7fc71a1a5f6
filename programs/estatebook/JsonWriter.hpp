// SPDX-License-Identifier: MIT
#pragma once

/// JsonWriter: writes a document as it goes, so that its length takes no memory.
///
/// Lists and objects stand on lines of their own, two blanks deeper for each level; what begins with
/// `Layout::Line` stands in one line with all that is in it.
///
///     JsonWriter json(std::cout);
///     json.beginObject();
///     json.key("asOf").text("2025-03-31");
///     json.endObject();
///     json.finish();

#include "platform/values/Decimal.hpp"

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook {

class JsonWriter {
public:
    enum class Layout : unsigned char { Lines, Line };

    explicit JsonWriter(std::ostream& out) : out_(out) {}

    void beginObject(Layout layout = Layout::Lines) { begin('{', layout); }
    void endObject() { end('}'); }
    void beginList(Layout layout = Layout::Lines) { begin('[', layout); }
    void endList() { end(']'); }

    /// The name of the member that comes next. REQUIRES: within an object.
    JsonWriter& key(std::string_view name);

    void text(std::string_view text);
    void textOrNull(const std::optional<std::string>& text);
    void integer(std::uint64_t number) { raw(std::to_string(number)); }
    void integer(std::int64_t number) { raw(std::to_string(number)); }
    void boolean(bool flag) { raw(flag ? "true" : "false"); }
    void null() { raw("null"); }
    /// As a text with all its digits.
    void decimal(const platform::Decimal& number) { text(number.toString()); }
    void decimal(const std::optional<platform::Decimal>& number);

    /// Ends the document with a line break. REQUIRES: all that was begun was ended.
    void finish();

private:
    struct Level {
        bool isLine = false;
        bool isEmpty = true;
    };

    void begin(char bracket, Layout layout);
    void end(char bracket);
    void raw(std::string_view text);
    void beforeEntry();
    void indent();
    void flushWhenFull();

    std::ostream& out_;
    std::string text_;
    std::vector<Level> levels_;
    bool afterKey_ = false;
};

} // namespace estatebook
