// SPDX-License-Identifier: MIT
// Any bytes are read as a property list and as an archive. What can be read can be written, and then comes back as the same.
#include "platform/archive/BinaryPropertyList.hpp"
#include "platform/archive/KeyedArchiver.hpp"
#include "platform/archive/KeyedUnarchiver.hpp"
#include "platform/values/Array.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>

namespace {

using namespace estatebook::platform;

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

// Tag names stop the program when they are not what they should be, so something like them stands in here.
constexpr std::string_view Names[] = {"EstateBook_Model.TKTagNames", "NSObject"};
const ArchivedClass AnyNames{"", Names, nullptr, [](KeyedUnarchiver& coder) -> Value {
                                 return Array::make({coder.decodeObject(), coder.decodeObject()});
                             }};

void readList(std::span<const std::byte> bytes) {
    Ref<Error> error;
    const Value list = BinaryPropertyList::read(bytes, &error);
    require(list.isAbsent() == (error != nullptr), "neither a property list nor a reason");
    if (error) return;
    const auto written = BinaryPropertyList::write(list);
    require(written != nullptr, "a property list that was read cannot be written");
    const Value again = BinaryPropertyList::read(written->bytes(), &error);
    require(!error, "a property list that was written cannot be read");
    const auto twice = BinaryPropertyList::write(again);
    require(twice && twice->isEqual(*written), "the second writing of a property list differs");
}

void readArchive(std::span<const std::byte> bytes) {
    Ref<Error> error;
    const Value root = KeyedUnarchiver::unarchivedObject(bytes, {&AnyNames, 1}, &error);
    if (error) return require(root.isAbsent(), "a root in spite of an error");
    const auto written = KeyedArchiver::archivedData(root, {}, &error);
    require(written != nullptr, "an archive that was read cannot be written");
    const Value again = KeyedUnarchiver::unarchivedObject(written->bytes(), {}, &error);
    require(!error, "an archive that was written cannot be read");
    const auto twice = KeyedArchiver::archivedData(again);
    require(twice && twice->isEqual(*written), "the second writing of an archive differs");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes = std::as_bytes(std::span(data, size));
    readList(bytes);
    readArchive(bytes);
    return 0;
}
