// SPDX-License-Identifier: MIT
// Runs a fuzz target once on each file of the folders named, in order of name. The file it is at is named
// first on standard error, so that a crash tells its input.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> filesBelow(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<char> contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

int main(int count, char** arguments) {
    std::size_t inputs = 0;
    for (int i = 1; i < count; ++i) {
        for (const auto& file : filesBelow(arguments[i])) {
            std::fprintf(stderr, "%s\n", file.c_str());
            const std::vector<char> content = contentOf(file);
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
            ++inputs;
        }
    }
    std::printf("%zu inputs replayed\n", inputs);
    return inputs == 0 ? 1 : 0;
}
