// SPDX-License-Identifier: MIT
// Any bytes are a book or one error on one line. A book that is taken in is written so that it reads back as
// the same, and writing it again gives the same bytes.
#include "estatebook/document/BookReader.hpp"
#include "estatebook/document/BookWriter.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

using namespace estatebook::document;

namespace {

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::abort();
}

bool isOneLine(std::string_view text) {
    for (const char character : text)
        if (static_cast<unsigned char>(character) < 0x20) return false;
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const BookReading reading = BookReader::readText({reinterpret_cast<const char*>(data), size});
    require(reading.document.has_value() != reading.error.has_value(), "a document or an error");
    for (const BookWarning& warning : reading.warnings)
        require(isOneLine(warning.text()), "a warning is one line");
    if (reading.error) {
        require(isOneLine(reading.error->text()), "an error is one line");
        require(reading.error->text().size() < 2000, "an error is short");
        return 0;
    }

    const WrittenBook written = BookWriter::write(*reading.document);
    require(written.leftOut.empty(), "what was read can be written");
    const BookReading again = BookReader::readText(written.text);
    require(again.document == reading.document, "what was written reads back as the same");
    require(BookWriter::write(*again.document).text == written.text, "the canonical form is one");
    return 0;
}
