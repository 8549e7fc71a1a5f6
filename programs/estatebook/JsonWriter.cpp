// SPDX-License-Identifier: MIT
#include "estatebook/JsonWriter.hpp"

#include "estatebook/document/JsonText.hpp"

#include <ostream>

namespace estatebook {

namespace {
constexpr std::size_t FullSize = std::size_t{1} << 16;
}

JsonWriter& JsonWriter::key(std::string_view name) {
    beforeEntry();
    document::appendJsonText(text_, name);
    text_ += ": ";
    afterKey_ = true;
    return *this;
}

void JsonWriter::text(std::string_view text) {
    beforeEntry();
    document::appendJsonText(text_, text);
    flushWhenFull();
}

void JsonWriter::textOrNull(const std::optional<std::string>& text) {
    if (text)
        this->text(*text);
    else
        null();
}

void JsonWriter::decimal(const std::optional<platform::Decimal>& number) {
    if (number)
        decimal(*number);
    else
        null();
}

void JsonWriter::finish() {
    text_ += '\n';
    out_ << text_;
    text_.clear();
}

void JsonWriter::begin(char bracket, Layout layout) {
    beforeEntry();
    text_ += bracket;
    const bool isLine = layout == Layout::Line || (!levels_.empty() && levels_.back().isLine);
    levels_.push_back({isLine});
}

void JsonWriter::end(char bracket) {
    const Level level = levels_.back();
    levels_.pop_back();
    if (!level.isLine && !level.isEmpty) indent();
    text_ += bracket;
    flushWhenFull();
}

void JsonWriter::raw(std::string_view text) {
    beforeEntry();
    text_ += text;
}

void JsonWriter::beforeEntry() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (levels_.empty()) return;
    Level& level = levels_.back();
    if (!level.isEmpty) text_ += level.isLine ? ", " : ",";
    level.isEmpty = false;
    if (!level.isLine) indent();
}

void JsonWriter::indent() {
    text_ += '\n';
    text_.append(2 * levels_.size(), ' ');
}

void JsonWriter::flushWhenFull() {
    if (text_.size() < FullSize) return;
    out_ << text_;
    text_.clear();
}

} // namespace estatebook
