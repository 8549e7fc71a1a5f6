// SPDX-License-Identifier: MIT

// A book is copied piece by piece while somebody writes it, with its journal or without. The copy is a whole book as it was after
// some save, or it tells that it is none.

#include "support/Effort.hpp"
#include "support/SavedHistory.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>

namespace estatebook::platform {
namespace {

using test::DiskContent;
using test::DiskOperation;
using test::MemoryDisk;
using test::SavedHistory;

const std::string Path(test::HistoryPath);
const std::string JournalPath = Path + "-journal";

/// The files as those see them who read meanwhile.
class Files {
public:
    void apply(const DiskOperation& operation) {
        using Kind = DiskOperation::Kind;
        std::string& bytes = files_[operation.file];
        switch (operation.kind) {
        case Kind::Create:
            names_[operation.name] = operation.file;
            break;
        case Kind::Write:
            bytes.resize(std::max(bytes.size(), operation.place + operation.bytes.size()));
            std::memcpy(bytes.data() + operation.place, operation.bytes.data(), operation.bytes.size());
            break;
        case Kind::Truncate:
            bytes.resize(operation.place);
            break;
        case Kind::Remove:
            names_.erase(operation.name);
            break;
        case Kind::Rename: {
            auto node = names_.extract(operation.name);
            node.key() = operation.other;
            names_.insert(std::move(node));
            break;
        }
        default:
            break;
        }
    }
    [[nodiscard]] std::string bytes(const std::string& name) const {
        const auto found = names_.find(name);
        return found == names_.end() ? std::string() : files_.at(found->second);
    }

private:
    std::map<std::size_t, std::string> files_;
    std::map<std::string, std::size_t> names_;
};

/// A copy on its way.
struct Copy {
    std::size_t begin = 0;
    /// How many operations pass between two pieces, and how large these are.
    std::size_t pause = 0;
    std::size_t piece = 0;
    enum class Journal : std::uint8_t { Without, First, Last } journal{};
    DiskContent content{};
    std::size_t place = 0;
    bool isDone = false;

    void go(const Files& files, std::size_t now) {
        if (isDone || now < begin || (now - begin) % pause != 0) return;
        std::string& copied = content[Path];
        if (place == 0 && journal == Journal::First) content[JournalPath] = files.bytes(JournalPath);
        const std::string book = files.bytes(Path);
        if (place < book.size()) copied += book.substr(place, piece);
        place += piece;
        if (place < book.size()) return;
        isDone = true;
        if (journal == Journal::Last) content[JournalPath] = files.bytes(JournalPath);
    }
};

class Copies {
public:
    Copies(std::uint64_t seed, std::uint64_t cases) : seed_(seed), random_(seed), wanted_(cases) {}

    void run() {
        while (cases_ < wanted_ && !testing::Test::HasFailure()) play(SavedHistory(random_(), 12));
        std::printf(
            "%llu copies of books that were written meanwhile: %llu refused, %llu told by the check, %llu "
            "whole (seed %llu)\n",
            static_cast<unsigned long long>(cases_), static_cast<unsigned long long>(refused_),
            static_cast<unsigned long long>(told_), static_cast<unsigned long long>(whole_),
            static_cast<unsigned long long>(seed_));
    }

private:
    void play(const SavedHistory& history) {
        const std::size_t first = history.states().front().acknowledged;
        const std::size_t last = history.operations().size();
        std::vector<Copy> copies(100);
        for (Copy& copy : copies)
            copy = {.begin = first + random_() % (last - first),
                    .pause = 1 + random_() % 20,
                    .piece = 4096u << (random_() % 6),
                    .journal = static_cast<Copy::Journal>(random_() % 3)};
        Files files;
        for (std::size_t now = 0; now < last; ++now) {
            files.apply(history.operations()[now]);
            for (Copy& copy : copies) copy.go(files, now);
        }
        for (Copy& copy : copies) {
            // Nobody writes any more.
            for (std::size_t now = last; !copy.isDone; ++now) copy.go(files, now);
            SCOPED_TRACE("seed " + std::to_string(seed_) + ", case " + std::to_string(cases_));
            ++cases_;
            expectWholeOrTold(copy.content, history);
        }
    }

    void expectWholeOrTold(const DiskContent& content, const SavedHistory& history) {
        disk_.load(content);
        const auto store = SQLiteStore::open(Path, test::bookModel(),
                                             {.access = SQLiteStore::Access::Read, .fileSystem = &disk_});
        if (!store) {
            ++refused_;
            return;
        }
        const auto findings = (*store)->check();
        if (!findings || !findings->empty()) {
            ++told_;
            return;
        }
        ++whole_;
        const auto text = test::contentOf(**store);
        ASSERT_TRUE(text) << text.error().message;
        EXPECT_TRUE(std::ranges::count(history.states(), *text, &SavedHistory::State::content))
            << "it holds a save in part";
    }

    std::uint64_t seed_;
    std::mt19937_64 random_;
    std::uint64_t wanted_;
    std::uint64_t cases_ = 0;
    std::uint64_t refused_ = 0;
    std::uint64_t told_ = 0;
    std::uint64_t whole_ = 0;
    MemoryDisk disk_;
};

TEST(StoreCopyTest, ACopyOfABookThatIsWrittenIsWholeOrTellsThatItIsNot) {
    Copies(test::anySeed(), test::effort("ESTATEBOOK_COPIES", 3'000, 300)).run();
}

} // namespace
} // namespace estatebook::platform
