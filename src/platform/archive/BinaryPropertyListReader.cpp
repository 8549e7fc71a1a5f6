// SPDX-License-Identifier: MIT
#include "platform/archive/ArchiveError.hpp"
#include "platform/archive/BinaryPropertyList.hpp"
#include "platform/archive/BinaryPropertyListMarker.hpp"
#include "platform/archive/PropertyListUid.hpp"
#include "platform/text/Text.hpp"
#include "platform/values/Array.hpp"

#include <algorithm>
#include <bit>
#include <string>
#include <utility>
#include <vector>

namespace estatebook::platform {

namespace {

using detail::Marker;

struct Damage {
    const char* reason;
};

void require(bool holds, const char* reason) {
    if (!holds) throw Damage{reason};
}

class Reader {
public:
    explicit Reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    Value read() {
        readTrailer();
        locateMembers();
        return member(top_, 0);
    }

private:
    enum class State : std::uint8_t { Untouched, Open, Done };

    /// Where a member's content stands, and how many bytes, units or members it has.
    struct Member {
        Marker marker = Marker::Simple;
        std::uint8_t size = 0; // the lower half of the marker
        State state = State::Untouched;
        std::size_t content = 0;
        std::size_t count = 0;
        Value value;
    };

    void readTrailer() {
        require(bytes_.size() >
                    detail::BinaryPropertyListHeader.size() + detail::BinaryPropertyListTrailerSize,
                "it is too short");
        require(std::ranges::equal(detail::BinaryPropertyListHeader,
                                   bytes_.first(detail::BinaryPropertyListHeader.size()), {},
                                   [](char character) { return static_cast<std::byte>(character); }),
                "it does not begin as one");
        const std::size_t trailer = bytes_.size() - detail::BinaryPropertyListTrailerSize;
        offsetSize_ = number(trailer + 6, 1);
        referenceSize_ = number(trailer + 7, 1);
        const std::uint64_t count = number(trailer + 8, 8);
        top_ = number(trailer + 16, 8);
        table_ = number(trailer + 24, 8);
        require(offsetSize_ >= 1 && offsetSize_ <= 8 && referenceSize_ >= 1 && referenceSize_ <= 8,
                "its numbers have an impossible width");
        require(table_ >= detail::BinaryPropertyListHeader.size() && table_ <= trailer,
                "its table stands nowhere");
        require((trailer - table_) % offsetSize_ == 0 && count == (trailer - table_) / offsetSize_,
                "its table has another size than it says");
        require(top_ < count, "it has no first member");
        members_.resize(count);
    }

    /// Finds each member's place. No byte belongs to two members: otherwise a few bytes could stand for any number of
    /// values.
    void locateMembers() {
        std::vector<std::pair<std::size_t, std::size_t>> extents;
        extents.reserve(members_.size());
        for (std::size_t index = 0; index < members_.size(); ++index) {
            const std::uint64_t start = number(table_ + index * offsetSize_, offsetSize_);
            require(start >= detail::BinaryPropertyListHeader.size() && start < table_,
                    "a member stands outside of it");
            extents.emplace_back(start, locate(members_[index], start));
        }
        std::ranges::sort(extents);
        for (std::size_t index = 1; index < extents.size(); ++index)
            require(extents[index - 1].second <= extents[index].first, "two members share their bytes");
    }

    /// Gives where the member ends.
    std::size_t locate(Member& member, std::size_t start) {
        const auto marker = static_cast<std::uint8_t>(number(start, 1));
        member.marker = static_cast<Marker>(marker >> 4);
        member.size = marker & 0xF;
        member.content = start + 1;
        std::size_t width = 1;
        switch (member.marker) {
        case Marker::Simple:
            require(marker == detail::FalseMarker || marker == detail::TrueMarker,
                    "a member is of no known kind");
            return member.content;
        case Marker::Integer:
            require(member.size <= 4, "an integer has an impossible width");
            member.count = std::size_t{1} << member.size;
            break;
        case Marker::Real:
            require(member.size == 2 || member.size == 3, "a number has an impossible width");
            member.count = std::size_t{1} << member.size;
            break;
        case Marker::Date:
            require(marker == detail::DateMarker, "a date has an impossible width");
            member.count = 8;
            break;
        case Marker::Uid:
            require(member.size < 8, "a reference has an impossible width");
            member.count = std::size_t{1} + member.size;
            break;
        case Marker::Data:
        case Marker::AsciiText:
            readCount(member);
            break;
        case Marker::Utf16Text:
            readCount(member);
            width = 2;
            break;
        case Marker::Array:
            readCount(member);
            width = referenceSize_;
            break;
        case Marker::Dictionary:
            readCount(member);
            width = 2 * referenceSize_;
            break;
        default:
            throw Damage{"a member is of no known kind"};
        }
        require(member.count <= (table_ - member.content) / width, "a member ends outside of it");
        return member.content + member.count * width;
    }

    void readCount(Member& member) {
        member.count = member.size;
        if (member.size != detail::CountFollows) return;
        require(member.content < table_, "a member ends outside of it");
        const std::uint64_t marker = number(member.content, 1);
        const std::size_t width = std::size_t{1} << (marker & 0xF);
        require(static_cast<Marker>(marker >> 4) == Marker::Integer && width <= 8, "a count is no number");
        require(width <= table_ - member.content - 1, "a member ends outside of it");
        member.count = number(member.content + 1, width);
        member.content += 1 + width;
    }

    Value member(std::uint64_t index, std::size_t depth) {
        require(index < members_.size(), "a reference leads nowhere");
        Member& member = members_[index];
        if (member.state == State::Done) return member.value;
        require(member.state != State::Open, "a member contains itself");
        require(depth <= DeepestArchive, "it is nested too deeply");
        member.state = State::Open;
        member.value = content(member, depth);
        member.state = State::Done;
        return member.value;
    }

    Value content(const Member& member, std::size_t depth) {
        switch (member.marker) {
        case Marker::Simple:
            return (detail::TrueMarker & 0xF) == member.size;
        case Marker::Integer:
            return integer(member);
        case Marker::Real:
            if (member.count == 4)
                return std::bit_cast<float>(static_cast<std::uint32_t>(number(member.content, 4)));
            return std::bit_cast<double>(number(member.content, 8));
        case Marker::Date:
            return Date{std::bit_cast<double>(number(member.content, 8))};
        case Marker::Uid:
            return PropertyListUid::make(number(member.content, member.count));
        case Marker::Data: {
            const auto data = bytes_.subspan(member.content, member.count);
            return Data::make({data.begin(), data.end()});
        }
        case Marker::AsciiText:
        case Marker::Utf16Text:
            return String::make(text(member));
        case Marker::Array:
            return array(member, depth);
        case Marker::Dictionary:
            return dictionary(member, depth);
        }
        throw Damage{"a member is of no known kind"};
    }

    Value integer(const Member& member) const {
        if (member.count < 16) {
            const std::uint64_t bits = number(member.content, member.count);
            require(member.count == 8 || bits >> 63 == 0, "an integer is out of range");
            return static_cast<std::int64_t>(bits);
        }
        const std::uint64_t high = number(member.content, 8);
        const std::uint64_t low = number(member.content + 8, 8);
        if (high == 0) return low;
        require(high == ~std::uint64_t{0} && low >> 63 != 0, "an integer is out of range");
        return static_cast<std::int64_t>(low);
    }

    std::string text(const Member& member) const {
        if (member.marker == Marker::AsciiText) {
            const auto bytes = bytes_.subspan(member.content, member.count);
            const bool isAscii = std::ranges::all_of(
                bytes, [](std::byte byte) { return (byte & std::byte{0x80}) == std::byte{0}; });
            require(isAscii, "a text is not well formed");
            return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
        }
        std::u16string units(member.count, u'\0');
        for (std::size_t index = 0; index < units.size(); ++index)
            units[index] = static_cast<char16_t>(number(member.content + 2 * index, 2));
        if (auto text = fromUtf16(units)) return *std::move(text);
        throw Damage{"a text is not well formed"};
    }

    Value array(const Member& array, std::size_t depth) {
        std::vector<Value> members;
        members.reserve(array.count);
        for (std::size_t index = 0; index < array.count; ++index)
            members.push_back(member(reference(array, index), depth + 1));
        return Array::make(std::move(members));
    }

    Value dictionary(const Member& dictionary, std::size_t depth) {
        std::vector<Dictionary::Entry> entries;
        entries.reserve(dictionary.count);
        for (std::size_t index = 0; index < dictionary.count; ++index) {
            const std::uint64_t place = reference(dictionary, index);
            require(place < members_.size(), "a reference leads nowhere");
            const Marker marker = members_[place].marker;
            require(marker == Marker::AsciiText || marker == Marker::Utf16Text, "a key is no text");
            entries.emplace_back(keyText(place),
                                 member(reference(dictionary, dictionary.count + index), depth + 1));
        }
        auto made = Dictionary::make(std::move(entries));
        require(made->count() == dictionary.count, "a key is there twice");
        return made;
    }

    // A long text could be the key of very many entries, and is copied for each of them.
    std::string keyText(std::size_t place) {
        constexpr std::size_t KeyBytesForAByte = 64;
        keyBytes_ += members_[place].count;
        require(keyBytes_ <= KeyBytesForAByte * bytes_.size(), "its keys are too long");
        return text(members_[place]);
    }

    std::uint64_t reference(const Member& collection, std::size_t index) const {
        return number(collection.content + index * referenceSize_, referenceSize_);
    }

    std::uint64_t number(std::size_t start, std::size_t size) const {
        std::uint64_t number = 0;
        for (const std::byte byte : bytes_.subspan(start, size))
            number = number << 8 | static_cast<std::uint64_t>(byte);
        return number;
    }

    std::span<const std::byte> bytes_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::size_t top_ = 0;
    std::size_t table_ = 0;
    std::size_t keyBytes_ = 0;
    std::vector<Member> members_;
};

} // namespace

Value BinaryPropertyList::read(std::span<const std::byte> bytes, Ref<Error>* error) {
    try {
        return Reader(bytes).read();
    } catch (const Damage& damage) {
        if (error)
            *error = Error::make(ArchiveErrorDomain, static_cast<std::int64_t>(ArchiveErrorCode::ReadCorrupt),
                                 std::string("The property list cannot be read: ") + damage.reason);
        return {};
    }
}

} // namespace estatebook::platform
