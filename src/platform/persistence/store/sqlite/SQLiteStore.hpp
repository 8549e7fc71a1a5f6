// SPDX-License-Identifier: MIT
#pragma once

/// SQLiteStore: a book in one file, "NAME.estatebook".
///
///     auto store = SQLiteStore::open(path, model, {.access = SQLiteStore::Access::Read});
///     if (!store) return show(store.error().message);
///
/// One program writes at a time; it holds a lock beside the book (WriterLock) as long as the store is there. Who opens a
/// book for reading sees it as it was at that moment, however long it is read; a save waits for such readers, so that
/// they should close it soon.
///
/// A file that is no book, that a newer program wrote or that is damaged is refused and left as it is. Each row that is read
/// is compared with its digest; `check` compares everything.
///
/// A book that an earlier program wrote is brought up to date when it is opened for writing: a copy is kept (BookCopies), and a
/// new file with all that it holds takes its place; `migration` tells. Opened for reading it stays as it is, and is read into memory
/// as a whole, which takes time and room as it holds rows.
///
/// The trap: while a book is open, do not open its file by another way than this, not even to copy it: the kernel drops a
/// process's locks on a file when the process closes it anywhere. docs/book-file.md describes the file.

#include "platform/archive/ArchivedClass.hpp"
#include "platform/persistence/store/Store.hpp"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace estatebook::platform {

namespace sqlite {
class BookFile;
class FileSystem;
struct LayoutSteps;
} // namespace sqlite

class ESTATEBOOK_API SQLiteStore final : public Store {
public:
    enum class Access : std::uint8_t { Read, Write };

    struct Options {
        Access access = Access::Write;
        /// The classes, beside the platform's own, of objects in attributes.
        std::vector<ArchivedClass> classes{};
        /// Told to others who want to write the book meanwhile.
        CommitOrigin holder{};
        /// How long a save waits for those who read, and an opening for a save.
        std::chrono::milliseconds patience{10'000};
        /// Where books lie; null for the machine's own files, and anything else is for tests. It outlives the store.
        const sqlite::FileSystem* fileSystem = nullptr;
        /// What became of rows from layout to layout; null for what did, and anything else is for tests. It outlives the store.
        const sqlite::LayoutSteps* layoutSteps = nullptr;
    };

    /// How an earlier book was brought up to date.
    struct Migration {
        /// This program's own when only the model has grown.
        std::uint32_t fromLayout = 0;
        /// The path of the book as it was.
        std::string copy;
    };

    /// A new, empty book. Exists when there is something at the path; it appears there complete or not at all.
    [[nodiscard]] static StoreResult<Ref<SQLiteStore>>
    create(const std::string& path, Ref<ManagedObjectModel> model, const Options& options);
    /// A book that is there. Takes the same time however much it holds, unless an earlier program wrote it.
    [[nodiscard]] static StoreResult<Ref<SQLiteStore>>
    open(const std::string& path, Ref<ManagedObjectModel> model, const Options& options);

    [[nodiscard]] std::string_view type() const noexcept override { return "SQLite"; }
    /// Absolute, and without symbolic links.
    [[nodiscard]] std::string_view location() const noexcept override;
    [[nodiscard]] std::string_view identifier() const noexcept override;
    [[nodiscard]] StoreCapabilities capabilities() const noexcept override;
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "SQLiteStore"; }

    [[nodiscard]] StoreResult<RowKey> lastKey() const override;
    [[nodiscard]] StoreResult<std::vector<RowKey>>
    fetchKeys(const EntityDescription& entity, const std::optional<Predicate>& predicate = {}) const override;
    StoreResult<std::size_t> fetchRows(const EntityDescription& entity,
                                       const std::optional<Predicate>& predicate,
                                       const RowVisitor& visitor) const override;
    StoreResult<std::size_t> visitRows(const EntityDescription& entity, std::span<const RowKey> keys,
                                       const RowVisitor& visitor) const override;
    [[nodiscard]] StoreResult<std::vector<std::vector<RowKey>>>
    members(const RelationshipDescription& toMany, std::span<const RowKey> owners) const override;
    [[nodiscard]] StoreResult<Decimal> sum(const RelationshipDescription& toMany, RowKey owner, Key attribute,
                                           std::span<const RowKey> exceptions = {}) const override;
    StoreResult<SaveOutcome> save(const StoreChanges& changes) override;
    void beginReading() noexcept override;
    void endReading() noexcept override;
    [[nodiscard]] StoreResult<bool> hasLanded(const CommitToken& token) override;
    [[nodiscard]] StoreResult<std::vector<std::optional<std::string>>>
    identifiers(std::span<const RowKey> keys) const override;
    [[nodiscard]] StoreResult<Metadata> metadata() const override;
    [[nodiscard]] StoreResult<std::vector<Commit>> commits() const override;
    [[nodiscard]] StoreResult<std::vector<JournalEntry>> journalOfRow(const EntityDescription& entity,
                                                                      RowKey key) const override;
    [[nodiscard]] StoreResult<std::vector<JournalEntry>> journalOfCommit(std::int64_t number) const override;

    /// None when the book was up to date when it was opened, or is only read.
    [[nodiscard]] const std::optional<Migration>& migration() const noexcept;

    /// Everything there is to compare: the pages of the file, links, the digest of each row, the count and sum of each table,
    /// the form of each value, the order of ordered members. A line for each thing found; none for a sound book.
    [[nodiscard]] StoreResult<std::vector<std::string>> check() const;

private:
    SQLiteStore(Ref<ManagedObjectModel> model, std::unique_ptr<sqlite::BookFile> file);
    ~SQLiteStore() override;

    /// What the work gives, or the error that came of it.
    template <class Work>
    auto guarded(Work work) const -> StoreResult<decltype(work())>;

    std::unique_ptr<sqlite::BookFile> file_;
};

} // namespace estatebook::platform
