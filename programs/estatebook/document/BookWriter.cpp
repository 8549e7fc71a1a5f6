// SPDX-License-Identifier: MIT
#include "estatebook/document/BookWriter.hpp"

#include "estatebook/document/BookMembers.hpp"
#include "estatebook/document/BookPlace.hpp"
#include "estatebook/document/DateText.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/calendar/TimeZone.hpp"
#include "platform/text/Text.hpp"

#include <type_traits>
#include <utility>
#include <variant>

namespace estatebook::document {

namespace {

using platform::Calendar;
using platform::Date;
using platform::Decimal;
using platform::TimeZone;

Calendar calendarOf(const BookDocument& book) {
    return Calendar(book.timeZone ? TimeZone::named(*book.timeZone) : platform::Ref<TimeZone>());
}

class Writer {
public:
    explicit Writer(const BookDocument& book) : book_(book), calendar_(calendarOf(book)) {}

    WrittenBook write() {
        openObject();
        begin("schema");
        appendJsonText(out_, BookSchema);
        writeZone();
        writeSettings();
        writeList("properties", book_.properties);
        writeList("tenants", book_.tenants);
        writeList("tenures", book_.tenures);
        closeObject();
        out_ += '\n';
        return {std::move(out_), std::move(leftOut_)};
    }

private:
    // -- Layout

    void startLine() {
        out_ += isFirst_ ? "\n" : ",\n";
        out_.append(2 * depth_, ' ');
        isFirst_ = false;
    }
    void open(char bracket) {
        out_ += bracket;
        ++depth_;
        isFirst_ = true;
    }
    void close(char bracket) {
        --depth_;
        if (!isFirst_) {
            out_ += '\n';
            out_.append(2 * depth_, ' ');
        }
        out_ += bracket;
        isFirst_ = false;
    }
    void openObject() { open('{'); }
    void closeObject() { close('}'); }
    /// Starts a member; its value is to follow.
    void begin(std::string_view name) {
        startLine();
        appendJsonText(out_, name);
        out_ += ": ";
    }

    void leaveOut(std::string_view name, std::string reason) {
        leftOut_.push_back({path_ + pathStep(forMessage(name)), std::move(reason)});
    }
    /// Whether the text can stand in a document; if not, says so.
    bool carries(std::string_view name, std::string_view text) {
        if (platform::isWellFormedUtf8(text)) return true;
        leaveOut(name, "the text is not well-formed UTF-8");
        return false;
    }

    // -- Values

    void writeText(std::string_view name, std::string_view text) {
        if (!carries(name, text)) return;
        begin(name);
        appendJsonText(out_, text);
    }

    void write(std::string_view name, const std::optional<std::string>& text) {
        if (text) writeText(name, *text);
    }
    void write(std::string_view name, const std::optional<RichText>& text) {
        if (!text) return;
        if (const auto plain = text->plain()) return writeText(name, *plain);
        std::string list;
        for (const TextPiece& piece : text->pieces) {
            if (!carries(name, piece.text)) return;
            list += list.empty() ? "[" : ", ";
            if (!appendPiece(list, piece))
                return leaveOut(name, "an attribute is not a number, or its text is not well-formed UTF-8");
        }
        begin(name);
        (out_ += list) += ']';
    }
    void write(std::string_view name, const std::optional<Decimal>& amount) {
        if (!amount) return;
        if (amount->isNaN()) return leaveOut(name, "the amount is not a number");
        begin(name);
        appendJsonText(out_, amount->toString());
    }
    void write(std::string_view name, const std::optional<Date>& date) {
        if (!date) return;
        const std::optional<std::string> text = dateText(*date, calendar_);
        if (!text) return leaveOut(name, "the date lies outside the years 1583 to 9999");
        begin(name);
        appendJsonText(out_, *text);
    }
    void write(std::string_view name, const std::optional<bool>& flag) {
        if (!flag) return;
        begin(name);
        out_ += *flag ? "true" : "false";
    }
    void write(std::string_view name, const std::optional<std::uint64_t>& count) {
        if (!count) return;
        begin(name);
        out_ += std::to_string(*count);
    }
    template <class Number>
        requires std::is_enum_v<Number>
    void write(std::string_view name, const std::optional<Number>& number) {
        if (!number) return;
        begin(name);
        if (const std::string_view known = nameOf(*number); !known.empty())
            appendJsonText(out_, known);
        else
            out_ += std::to_string(static_cast<std::uint64_t>(*number));
    }
    void write(std::string_view name, const std::vector<std::string>& tags) {
        std::string list;
        for (const std::string& tag : tags) {
            if (!carries(name, tag)) continue;
            list += list.empty() ? "[" : ", ";
            appendJsonText(list, tag);
        }
        if (list.empty()) return;
        begin(name);
        (out_ += list) += ']';
    }
    template <class Object>
    void write(std::string_view name, const std::vector<Object>& objects) {
        writeList(name, objects);
    }

    /// Whether the piece's attributes can stand in a document.
    static bool appendPiece(std::string& list, const TextPiece& piece) {
        if (piece.attributes.empty()) {
            appendJsonText(list, piece.text);
            return true;
        }
        appendJsonText(list += "{\"text\": ", piece.text);
        list += ", \"attributes\": {";
        for (const Setting& attribute : piece.attributes) {
            if (!platform::isWellFormedUtf8(attribute.name)) return false;
            if (&attribute != &piece.attributes.front()) list += ", ";
            appendJsonText(list, attribute.name);
            list += ": ";
            if (!std::visit([&](const auto& value) { return appendAttribute(list, value); }, attribute.value))
                return false;
        }
        list += "}}";
        return true;
    }
    static bool appendAttribute(std::string& list, std::monostate) {
        list += "null";
        return true;
    }
    static bool appendAttribute(std::string& list, bool value) {
        list += value ? "true" : "false";
        return true;
    }
    static bool appendAttribute(std::string& list, std::int64_t value) {
        list += std::to_string(value);
        return true;
    }
    static bool appendAttribute(std::string& list, const Decimal& value) {
        list += value.toString();
        return !value.isNaN();
    }
    static bool appendAttribute(std::string& list, const std::string& value) {
        appendJsonText(list, value);
        return platform::isWellFormedUtf8(value);
    }

    // -- Objects

    template <class Object>
    void writeList(std::string_view name, const std::vector<Object>& objects) {
        if (objects.empty()) return;
        const std::size_t length = path_.size();
        begin(name);
        open('[');
        for (std::size_t i = 0; i < objects.size(); ++i) {
            ((path_ += pathStep(name)) += '/') += std::to_string(i);
            startLine();
            writeObject(objects[i]);
            path_.resize(length);
        }
        close(']');
    }
    template <class Object>
    void writeObject(const Object& object) {
        openObject();
        for (const Member<Object>& member : membersOf<Object>)
            std::visit([&](auto field) { write(member.name, object.*field); }, member.field);
        closeObject();
    }

    void writeZone() {
        if (!book_.timeZone) return;
        if (TimeZone::named(*book_.timeZone))
            writeText("timeZone", *book_.timeZone);
        else
            leaveOut("timeZone", "the zone is unknown");
    }

    void writeSettings() {
        if (book_.settings.empty()) return;
        begin("settings");
        openObject();
        path_ = "/settings";
        for (const Setting& setting : book_.settings) {
            if (setting.name == TimeZoneSettingName)
                leaveOut(setting.name, "the member timeZone stands for it");
            else if (carries(setting.name, setting.name))
                std::visit([&](const auto& value) { writeSetting(setting.name, value); }, setting.value);
        }
        path_.clear();
        closeObject();
    }
    void writeSetting(std::string_view name, std::monostate) {
        begin(name);
        out_ += "null";
    }
    void writeSetting(std::string_view name, bool value) { write(name, std::optional<bool>(value)); }
    void writeSetting(std::string_view name, const std::string& value) { writeText(name, value); }
    void writeSetting(std::string_view name, std::int64_t value) {
        begin(name);
        out_ += std::to_string(value);
    }
    void writeSetting(std::string_view name, const Decimal& value) {
        if (value.isNaN()) return leaveOut(name, "the setting is not a number");
        begin(name);
        out_ += value.toString();
    }

    const BookDocument& book_;
    const Calendar calendar_;
    std::string out_;
    std::vector<LeftOut> leftOut_;
    std::string path_;
    std::size_t depth_ = 0;
    bool isFirst_ = true;
};

} // namespace

WrittenBook BookWriter::write(const BookDocument& book) {
    return Writer(book).write();
}

} // namespace estatebook::document
