// SPDX-License-Identifier: MIT
#include "platform/text/StringsTable.hpp"

#include "platform/text/Text.hpp"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <mutex>
#include <shared_mutex>

namespace estatebook::platform {
namespace {

/// The main program's tables by name.
struct Installed {
    std::shared_mutex mutex;
    std::map<std::string, StringsTable, std::less<>> tables;
};

Installed& installed() {
    static auto& instance = *new Installed;
    return instance;
}

void appendUtf8(std::string& out, unsigned character) {
    if (character < 0x80) {
        out += static_cast<char>(character);
    } else if (character < 0x800) {
        out += static_cast<char>(0xC0 | character >> 6);
        out += static_cast<char>(0x80 | (character & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | character >> 12);
        out += static_cast<char>(0x80 | (character >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (character & 0x3F));
    }
}

/// Reads the entries of a table's text. `problem` is empty as long as all is well.
class Reader {
public:
    explicit Reader(std::string_view text) : text_(text), rest_(text) {}

    std::map<std::string, std::string> entries() {
        std::map<std::string, std::string> entries;
        skipRemarks();
        while (problem_.empty() && !rest_.empty()) {
            const std::string key = quoted();
            expect('=');
            std::string value = quoted();
            expect(';');
            if (problem_.empty()) entries.insert_or_assign(key, std::move(value));
        }
        return entries;
    }

    [[nodiscard]] const std::string& problem() const noexcept { return problem_; }

private:
    void fail(std::string_view what) {
        if (!problem_.empty()) return;
        const auto line =
            1 + std::count(text_.begin(), text_.end() - static_cast<std::ptrdiff_t>(rest_.size()), '\n');
        problem_ = "line " + std::to_string(line) + ": " + std::string(what);
    }

    void skipRemarks() {
        for (;;) {
            rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size()));
            if (rest_.starts_with("//")) {
                rest_.remove_prefix(std::min(rest_.find('\n'), rest_.size()));
            } else if (rest_.starts_with("/*")) {
                const std::size_t end = rest_.find("*/", 2);
                if (end == rest_.npos) return fail("a remark has no end");
                rest_.remove_prefix(end + 2);
            } else {
                return;
            }
        }
    }

    void expect(char wanted) {
        if (!rest_.starts_with(wanted)) return fail(std::string("expected ") + wanted);
        rest_.remove_prefix(1);
        skipRemarks();
    }

    std::string quoted() {
        std::string text;
        if (!rest_.starts_with('"')) return fail("expected a text in quotes"), text;
        rest_.remove_prefix(1);
        while (!rest_.starts_with('"')) {
            if (rest_.empty()) return fail("a text has no end"), text;
            const char character = rest_.front();
            rest_.remove_prefix(1);
            if (character == '\\')
                readEscape(text);
            else
                text += character;
        }
        expect('"');
        return text;
    }

    void readEscape(std::string& text) {
        if (rest_.empty()) return;
        const char letter = rest_.front();
        rest_.remove_prefix(1);
        switch (letter) {
        case '"':
        case '\\':
            text += letter;
            break;
        case 'n':
            text += '\n';
            break;
        case 'r':
            text += '\r';
            break;
        case 't':
            text += '\t';
            break;
        case 'u':
        case 'U':
            readHexadecimal(text);
            break;
        default:
            fail("an unknown character follows a backslash");
        }
    }

    void readHexadecimal(std::string& text) {
        const std::string_view digits = rest_.substr(0, 4);
        unsigned character = 0;
        const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), character, 16);
        if (digits.size() != 4 || result.ptr != digits.data() + digits.size())
            return fail("expected four hexadecimal digits");
        if (character >= 0xD800 && character < 0xE000) return fail("half of a pair is no character");
        rest_.remove_prefix(4);
        appendUtf8(text, character);
    }

    std::string_view text_;
    std::string_view rest_;
    std::string problem_;
};

} // namespace

StringsTable StringsTable::fromTexts(const std::map<std::string, std::string>& texts) {
    StringsTable table;
    for (const auto& [key, text] : texts) table.texts_.emplace(key, String::make(text));
    return table;
}

std::optional<StringsTable> StringsTable::parse(std::string_view text, std::string* error) {
    constexpr std::string_view byteOrderMark = "\ufeff";
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    Reader reader(text);
    StringsTable table = fromTexts(reader.entries());
    const std::string problem = isWellFormedUtf8(text) ? reader.problem() : "the text is not UTF-8";
    if (problem.empty()) return table;
    if (error) *error = problem;
    return std::nullopt;
}

std::optional<StringsTable> StringsTable::read(const std::string& path, std::string* error) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string text;
    for (char part[4096]; file.read(part, sizeof part), file.gcount() > 0;)
        text.append(part, static_cast<std::size_t>(file.gcount()));
    if (!file.is_open() || file.bad()) {
        if (error) *error = path + ": " + std::strerror(errno);
        return std::nullopt;
    }
    std::optional<StringsTable> table = parse(text, error);
    if (!table && error) *error = path + ": " + *error;
    return table;
}

void StringsTable::install(StringsTable table, std::string_view name) {
    const std::unique_lock lock(installed().mutex);
    installed().tables.insert_or_assign(std::string(name), std::move(table));
}

Ref<String> StringsTable::find(std::string_view key) const {
    const auto found = texts_.find(key);
    return found == texts_.end() ? nullptr : found->second;
}

Ref<String> localizedStringForKeyValueTable(const Ref<String>& key, const Ref<String>& value,
                                            std::string_view table) {
    {
        const std::shared_lock lock(installed().mutex);
        const auto found = installed().tables.find(table.empty() ? StringsTable::DefaultName : table);
        if (found != installed().tables.end())
            if (Ref<String> text = found->second.find(key->view())) return text;
    }
    return value && !value->empty() ? value : key;
}

} // namespace estatebook::platform
