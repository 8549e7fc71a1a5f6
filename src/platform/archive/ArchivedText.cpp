// SPDX-License-Identifier: MIT
#include "platform/archive/ArchivedText.hpp"

#include "platform/archive/KeyedArchiver.hpp"
#include "platform/archive/KeyedUnarchiver.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/AttributedString.hpp"
#include "platform/values/Data.hpp"
#include "platform/values/Exception.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace estatebook::platform::detail {

namespace {

constexpr std::string_view TextKey = "NSString";
constexpr std::string_view AttributesKey = "NSAttributes";
constexpr std::string_view RunsKey = "NSAttributeInfo";

using Run = AttributedString::Run;

void require(bool holds) {
    if (!holds) throw InvalidUnarchiveOperationException("an attributed string is not complete");
}

/// The runs and, with an empty dictionary, what is between them.
std::vector<Run> allRuns(const AttributedString& string) {
    const Ref<Dictionary> none = Dictionary::make({});
    std::vector<Run> all;
    std::size_t end = 0;
    const auto fillTo = [&](std::size_t location) {
        if (location > end) all.push_back({end, location - end, none});
    };
    for (const Run& run : string.runs()) {
        fillTo(run.location);
        all.push_back(run);
        end = run.location + run.length;
    }
    fillTo(string.text()->size());
    return all;
}

/// The bytes of the character that begins with the byte.
std::size_t bytesOfCharacter(char first) {
    const auto lead = static_cast<unsigned char>(first);
    if (lead < 0x80) return 1;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

/// The UTF-16 units of a character of so many bytes.
std::size_t unitsOfCharacter(std::size_t bytes) {
    return bytes == 4 ? 2 : 1;
}

std::size_t unitsIn(std::string_view text) {
    std::size_t units = 0;
    for (std::size_t place = 0; place < text.size();) {
        const std::size_t bytes = bytesOfCharacter(text[place]);
        units += unitsOfCharacter(bytes);
        place += bytes;
    }
    return units;
}

/// A number in groups of seven bits, the lowest first; all but the last with the eighth bit set.
void appendNumber(std::vector<std::byte>& bytes, std::size_t number) {
    for (; number >= 0x80; number >>= 7) bytes.push_back(static_cast<std::byte>((number & 0x7F) | 0x80));
    bytes.push_back(static_cast<std::byte>(number));
}

std::size_t takeNumber(std::span<const std::byte>& bytes) {
    constexpr unsigned MostBits = 63;
    std::size_t number = 0;
    for (unsigned shift = 0;; shift += 7) {
        require(!bytes.empty() && shift < MostBits);
        const auto group = static_cast<std::size_t>(bytes.front());
        bytes = bytes.subspan(1);
        number |= (group & 0x7F) << shift;
        if (group < 0x80) return number;
    }
}

/// Cuts a text into runs of so many UTF-16 units each.
class RunCutter {
public:
    explicit RunCutter(Ref<String> text) : text_(std::move(text)) {}

    void cut(std::size_t units, Ref<Dictionary> attributes) {
        require(units > 0);
        const std::size_t start = place_;
        while (units > 0) {
            require(place_ < text_->size());
            const std::size_t bytes = bytesOfCharacter(text_->view()[place_]);
            require(unitsOfCharacter(bytes) <= units);
            units -= unitsOfCharacter(bytes);
            place_ += bytes;
        }
        runs_.push_back({start, place_ - start, std::move(attributes)});
    }

    [[nodiscard]] Ref<AttributedString> finish() && {
        require(place_ == text_->size());
        return AttributedString::make(std::move(text_), std::move(runs_));
    }

private:
    Ref<String> text_;
    std::size_t place_ = 0;
    std::vector<Run> runs_;
};

} // namespace

void encodeAttributedString(const Value& value, KeyedArchiver& coder) {
    const auto string = value.as<AttributedString>();
    const std::vector<Run> runs = allRuns(*string);
    coder.encodeObjectForKey(string->text(), TextKey);
    if (runs.size() == 1) return coder.encodeObjectForKey(runs.front().attributes, AttributesKey);
    if (runs.empty()) return;

    std::vector<Value> dictionaries;
    std::unordered_map<Ref<Dictionary>, std::size_t> numbers;
    std::vector<std::byte> info;
    for (const Run& run : runs) {
        const auto [known, isNew] = numbers.try_emplace(run.attributes, dictionaries.size());
        if (isNew) dictionaries.emplace_back(run.attributes);
        appendNumber(info, unitsIn(string->text()->view().substr(run.location, run.length)));
        appendNumber(info, known->second);
    }
    coder.encodeObjectForKey(Array::make(std::move(dictionaries)), AttributesKey);
    coder.encodeObjectForKey(Data::make(std::move(info)), RunsKey);
}

Value decodeAttributedString(KeyedUnarchiver& coder) {
    auto text = coder.decodeObjectForKey(TextKey).string();
    require(text != nullptr);
    const Value attributes = coder.decodeObjectForKey(AttributesKey);
    if (text->empty() || attributes.isAbsent()) return AttributedString::make(std::move(text));
    if (auto whole = attributes.as<Dictionary>())
        return AttributedString::make(text, {{0, text->size(), std::move(whole)}});

    const auto dictionaries = attributes.as<Array>();
    const auto data = coder.decodeObjectForKey(RunsKey).as<Data>();
    require(dictionaries && data);
    // Any number of attributed strings may share one text.
    coder.requireWork(text->size() + data->bytes().size());
    RunCutter cutter(std::move(text));
    for (auto info = data->bytes(); !info.empty();) {
        const std::size_t units = takeNumber(info);
        const std::size_t number = takeNumber(info);
        require(number < dictionaries->count());
        auto dictionary = dictionaries->at(number).as<Dictionary>();
        require(dictionary != nullptr);
        cutter.cut(units, std::move(dictionary));
    }
    return std::move(cutter).finish();
}

} // namespace estatebook::platform::detail
