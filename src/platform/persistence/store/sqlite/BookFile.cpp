// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/BookFile.hpp"

#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/store/StoreRules.hpp"
#include "platform/persistence/store/sqlite/BookMigration.hpp"
#include "platform/persistence/store/sqlite/EarlierForm.hpp"
#include "platform/persistence/store/sqlite/NewFile.hpp"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace estatebook::platform::sqlite {

namespace {

std::uint32_t numberAt(const FileHead& head, std::size_t place) {
    std::uint32_t number = 0;
    for (std::size_t index = 0; index < 4; ++index) number = (number << 8) | head.bytes[place + index];
    return number;
}

WriterLock takeLock(const FileSystem& files, const std::string& path, const CommitOrigin& holder) {
    auto lock = files.lock(path, holder);
    if (!lock) throw StoreError(lock.error());
    return std::move(*lock);
}

/// For messages, from cells that may be anything.
std::string nameOfRow(const SealedTable& table, std::span<const Cell> cells) {
    const Cell& first = cells.front();
    return "a row of its table \"" + table.name + "\" (" +
           (first.type == Cell::Type::Integer ? std::to_string(first.integer) : std::string(first.bytes)) +
           ")";
}

/// Tells of what was read as of a row, and which.
template <class Work>
auto inRow(const SealedTable& table, std::span<const Cell> cells, Work work) {
    try {
        return work();
    } catch (const StoreFailure& failure) {
        throw StoreFailure{failure.code, nameOfRow(table, cells) + ": " + failure.reason};
    }
}

/// What every new book holds, with the sums of all tables.
void fill(Connection& connection, const BookTables& tables, const ManagedObjectModel& model,
          std::string_view identifier) {
    std::vector<std::pair<const SealedTable*, Cells>> rows{
        {&tables.header, {Cell::of(std::int64_t{1}), Cell::text(identifier)}}};
    for (const auto& entity : model.entities())
        rows.emplace_back(&tables.entities,
                          Cells{Cell::of(BookTables::numberOf(*entity)), Cell::text(entity->name())});
    for (const auto& [table, cells] : rows) insertSealed(connection, *table, cells);
    for (const SealedTable* table : tables.sealedTables()) {
        std::int64_t count = 0;
        std::uint64_t sum = 0;
        for (const auto& [filled, cells] : rows) {
            if (filled != table) continue;
            ++count;
            sum += static_cast<std::uint64_t>(digestOf(cells));
        }
        Statement::Use(connection.statement("INSERT INTO \"book_sum\" VALUES(?1, ?2, ?3)"))
            .bind(1, Cell::text(table->name))
            .bind(2, count)
            .bind(3, static_cast<std::int64_t>(sum))
            .run();
    }
}

} // namespace

// Before the data base sees the file: it would tidy up after the writer of a file that is none of ours.
std::uint32_t requireHead(const FileSystem& files, const std::string& path) {
    constexpr std::string_view Magic("SQLite format 3\0", 16);
    constexpr std::size_t JournalVersions = 18;
    constexpr std::size_t UserVersion = 60;
    constexpr std::size_t ApplicationIdPlace = 68;
    const FileHead head = readFileHead(files, path);
    if (head.size < static_cast<std::int64_t>(head.bytes.size()))
        throw StoreFailure{StoreErrorCode::Foreign, "the file is too short for a book"};
    if (std::memcmp(head.bytes.data(), Magic.data(), Magic.size()) != 0 ||
        numberAt(head, ApplicationIdPlace) != ApplicationId)
        throw StoreFailure{StoreErrorCode::Foreign, "the file is no book"};
    const std::uint32_t layout = numberAt(head, UserVersion);
    if (layout > Layout)
        throw StoreFailure{StoreErrorCode::Newer, "its layout " + std::to_string(layout) +
                                                      " is newer than this program, which knows " +
                                                      std::to_string(Layout)};
    if (layout == 0) damaged("it has no layout number");
    if (head.bytes[JournalVersions] != 1 || head.bytes[JournalVersions + 1] != 1)
        damaged("another program has put it into another journal mode");
    return layout;
}

LayoutSteps stepsOf(const SQLiteStore::Options& options) noexcept {
    return options.layoutSteps ? *options.layoutSteps : LayoutSteps();
}

void requireSize(const FileSystem& files, const std::string& path) {
    constexpr std::size_t PageSize = 16;
    constexpr std::size_t PageCount = 28;
    const FileHead head = readFileHead(files, path);
    const std::int64_t pageSize = numberAt(head, PageSize) >> 16;
    if (head.size != std::int64_t{numberAt(head, PageCount)} * pageSize)
        damaged("the file is not as long as its pages");
}

std::string resolved(const FileSystem& files, const std::string& path) {
    std::error_code error;
    std::string found = files.resolved(path, error);
    if (error == std::errc::no_such_file_or_directory)
        throw StoreFailure{StoreErrorCode::Missing, "there is no such file"};
    if (error) throw unreadable("the file cannot be reached", error);
    if (!files.isFile(found)) throw StoreFailure{StoreErrorCode::Foreign, "it is no file"};
    return found;
}

std::string identifierIn(Connection& connection, const SealedTable& header) {
    constexpr std::size_t Digits = 32;
    Cells cells;
    Statement::Use rows(connection.statement(header.select));
    if (!rows.next()) damaged("its header is missing");
    BookFile::read(rows, header, cells);
    std::string identifier(cells[1].type == Cell::Type::Text ? cells[1].bytes : std::string_view());
    const bool isOne = cells[0].integer == 1 && identifier.size() == Digits &&
                       identifier.find_first_not_of("0123456789abcdef") == std::string::npos;
    if (rows.next()) damaged("it has more than one header");
    if (!isOne) damaged("its header is not that of a book");
    return identifier;
}

std::int64_t digestOf(std::span<const Cell> cells) noexcept {
    RowDigest digest;
    for (const Cell& cell : cells) digest.add(cell);
    return digest.value();
}

void insertSealed(Connection& connection, const SealedTable& table, std::span<const Cell> cells) {
    Statement::Use use(connection.statement(table.insert));
    int parameter = 0;
    for (const Cell& cell : cells) use.bind(++parameter, cell);
    use.bind(++parameter, digestOf(cells)).run();
}

BookFile::BookFile(std::string path, Ref<ManagedObjectModel> model, const SQLiteStore::Options& options)
    : path_(std::move(path)), model_(std::move(model)), shapes_(model_->derived<RowShapes>()),
      tables_(model_->derived<BookTables>()), classes_(options.classes), coding_(classes_),
      files_(options.fileSystem ? *options.fileSystem : FileSystem::ofTheMachine()), steps_(stepsOf(options)),
      patience_(options.patience) {}

std::unique_ptr<BookFile> BookFile::create(const std::string& path, Ref<ManagedObjectModel> model,
                                           const SQLiteStore::Options& options) {
    std::unique_ptr<BookFile> file(new BookFile(path, std::move(model), options));
    NewFile made(file->files_, path, NewFile::Makers::One);
    file->path_ = made.path();
    file->lock_ = takeLock(file->files_, file->path_, options.holder);
    made.removeDraft();
    lay(file->files_, made.draft(), file->tables_, *file->model_);
    made.settle();
    file->requireConnected(Layout);
    return file;
}

std::unique_ptr<BookFile> BookFile::open(const std::string& path, Ref<ManagedObjectModel> model,
                                         const SQLiteStore::Options& options) {
    std::unique_ptr<BookFile> file(new BookFile(path, std::move(model), options));
    file->path_ = resolved(file->files_, path);
    const std::uint32_t layout = requireHead(file->files_, file->path_);
    if (options.access == SQLiteStore::Access::Write) {
        if (!file->files_.isWritable(file->path_))
            throw StoreFailure{StoreErrorCode::ReadOnly, "the file or its folder may not be written"};
        file->lock_ = takeLock(file->files_, file->path_, options.holder);
    }
    if (!file->connect(layout)) file->bringUp(layout, options);
    return file;
}

// Who may write it brings the file up to date. Who only reads does so with what was read.
void BookFile::bringUp(std::uint32_t layout, const SQLiteStore::Options& options) {
    if (isWritable()) {
        migration_ = {.fromLayout = layout,
                      .copy = migrate(files_, path_, tables_, shapes_, model_, options)};
        return requireConnected(requireHead(files_, path_));
    }
    auto memory = readEarlier(files_, path_, tables_, shapes_, *model_, steps_, patience_);
    auto snapshot = std::make_unique<Transaction>(*memory, "BEGIN");
    adopt(std::move(memory), std::move(snapshot));
}

std::unique_ptr<BookFile> BookFile::closed(Ref<ManagedObjectModel> model,
                                           const SQLiteStore::Options& options) {
    return std::unique_ptr<BookFile>(new BookFile({}, std::move(model), options));
}

void BookFile::lay(const FileSystem& files, const std::string& path, const BookTables& tables,
                   const ManagedObjectModel& model) {
    // Nobody else knows the file.
    constexpr std::chrono::milliseconds NoPatience{0};
    Connection connection(files, path, Connection::Access::Create, NoPatience);
    lay(connection, tables, model, detail::newStoreIdentifier());
}

void BookFile::lay(Connection& connection, const BookTables& tables, const ManagedObjectModel& model,
                   std::string_view identifier) {
    Transaction transaction(connection);
    connection.run("PRAGMA application_id=" + std::to_string(ApplicationId));
    connection.run("PRAGMA user_version=" + std::to_string(Layout));
    for (const std::string& sql : tables.schema()) connection.run(sql);
    fill(connection, tables, model, identifier);
    connection.run("COMMIT");
}

bool BookFile::connect(std::uint32_t layout) {
    auto connection = std::make_unique<Connection>(
        files_, path_, isWritable() ? Connection::Access::Write : Connection::Access::Read, patience_);
    auto snapshot = std::make_unique<Transaction>(*connection, "BEGIN");
    if (layout != Layout || !isOfToday(*connection)) {
        // It is one of an earlier form, or none.
        static_cast<void>(EarlierForm(*connection, layout, tables_, shapes_, *model_, steps_));
        return false;
    }
    requireSize(files_, path_);
    adopt(std::move(connection), std::move(snapshot));
    return true;
}

void BookFile::requireConnected(std::uint32_t layout) {
    if (!connect(layout)) throw StoreFailure{StoreErrorCode::Moved, "another book was put in its place"};
}

// The caller lets go of the snapshot before the connection, if this fails.
void BookFile::adopt(std::unique_ptr<Connection>&& connection, std::unique_ptr<Transaction>&& snapshot) {
    std::string identifier = identifierIn(*connection, tables_.header);
    if (!identifier_.empty() && identifier_ != identifier)
        throw StoreFailure{StoreErrorCode::Moved, "another book was put in its place"};
    identifier_ = std::move(identifier);
    if (isWritable()) snapshot.reset();
    connection_ = std::move(connection);
    snapshot_ = std::move(snapshot);
}

Connection& BookFile::connection() {
    if (!connection_) {
        requireConnected(requireHead(files_, path_));
    }
    return *connection_;
}

Connection& BookFile::connectionForWriting() {
    stopReading();
    return connection();
}

// Even the end of a transaction takes memory. Where there is none, the connection ends with it.
void BookFile::stopReading() noexcept {
    if (!reading_) return;
    reading_.reset();
    if (connection_->isInTransaction()) connection_.reset();
}

void BookFile::beginReading() noexcept {
    if (++readings_ > 1 || snapshot_ || !connection_ || connection_->isInTransaction()) return;
    try {
        reading_.emplace(*connection_, "BEGIN");
    } catch (...) {
        // Each read takes the lock by itself then.
    }
}

void BookFile::endReading() noexcept {
    if (--readings_ == 0) stopReading();
}

bool BookFile::isOfToday(Connection& connection) const {
    std::vector<std::string> found;
    {
        Statement::Use schema(connection.statement("SELECT sql FROM sqlite_schema"));
        while (schema.next()) {
            const Cell sql = schema.cell(0);
            found.emplace_back(sql.type == Cell::Type::Text ? sql.bytes : std::string_view());
        }
    }
    if (found != tables_.schema()) {
        // A copy holds the same in another order.
        std::vector<std::string> wanted = tables_.schema();
        std::ranges::sort(found);
        std::ranges::sort(wanted);
        if (found != wanted) return false;
    }
    Cells cells;
    Statement::Use rows(connection.statement(tables_.entities.select + " ORDER BY \"number\""));
    for (const auto& entity : model_->entities()) {
        if (!rows.next()) return false;
        read(rows, tables_.entities, cells);
        if (cells[0].integer != BookTables::numberOf(*entity) || cells[1].bytes != entity->name())
            return false;
    }
    return !rows.next();
}

void BookFile::read(const Statement::Use& row, const SealedTable& table, Cells& cells) {
    const std::size_t count = table.columns.size();
    cells.resize(count);
    const std::int64_t reckoned = row.readCells(cells);
    const Cell digest = row.cell(static_cast<int>(count));
    if (digest.type != Cell::Type::Integer || digest.integer != reckoned)
        damaged(nameOfRow(table, cells) + " does not agree with its digest");
}

std::optional<Cells> BookFile::find(const SealedTable& table, const Cell& first, CellRoom& room) {
    Statement::Use row(connection().statement(table.find));
    row.bind(1, first);
    if (!row.next()) return std::nullopt;
    Cells cells;
    read(row, table, cells);
    for (Cell& cell : cells)
        if (!cell.bytes.empty()) cell.bytes = room.keep(cell.bytes);
    return cells;
}

const EntityDescription& BookFile::entityOf(std::int64_t number, const EntityTable* table) const {
    const auto entities = model_->entities();
    if (number < 1 || number > static_cast<std::int64_t>(entities.size()))
        damaged("it names an entity that there is not");
    const EntityDescription& entity = *entities[static_cast<std::size_t>(number) - 1];
    if (entity.isAbstract() || (table && &shapes_.of(entity).root() != table->root))
        damaged("it is of an entity that does not belong there");
    return entity;
}

void BookFile::requireForm(const SealedTable& table, std::span<const Cell> cells) const {
    if (&table == &tables_.commits) return static_cast<void>(decodeCommit(cells));
    if (&table == &tables_.journal) return static_cast<void>(decodeEntry(cells));
    if (&table == &tables_.identifiers || &table == &tables_.metadata)
        return inRow(table, cells, [&] {
            static_cast<void>(textOf(cells[1]));
            if (&table == &tables_.metadata) static_cast<void>(textOf(cells[0]));
        });
    for (const EntityTable& each : tables_.entityTables()) {
        if (&table != &each) continue;
        Row row;
        decode(each, cells, row);
        requireOwnProperties(each, cells, row);
    }
}

void BookFile::requireOwnProperties(const EntityTable& table, std::span<const Cell> cells,
                                    const Row& row) const {
    const EntityColumns& columns = tables_.columnsOf(*row.entity);
    std::vector<bool> isOwn(cells.size(), false);
    for (const auto& place : columns.values)
        if (place) isOwn[*place] = true;
    for (const EntityColumns::Link& link : columns.links) {
        isOwn[link.target] = true;
        if (!link.place) continue;
        isOwn[*link.place] = true;
        if ((cells[link.target].type == Cell::Type::Null) != (cells[*link.place].type == Cell::Type::Null))
            damaged(nameOfRow(table, cells) + ": it has a place among members of nobody, or none");
    }
    for (std::size_t place = EntityTable::FirstProperty; place < cells.size(); ++place)
        if (!isOwn[place] && cells[place].type != Cell::Type::Null)
            damaged(nameOfRow(table, cells) + ": it holds \"" + table.columns[place] + "\", which no " +
                    std::string(row.entity->name()) + " has");
}

void BookFile::decode(const EntityTable& table, std::span<const Cell> cells, Row& row) const {
    const auto refuse = [&](const std::string& reason) { damaged(nameOfRow(table, cells) + ": " + reason); };
    const auto whole = [&](std::size_t place) {
        if (cells[place].type == Cell::Type::Integer) return cells[place].integer;
        if (cells[place].type != Cell::Type::Null) refuse("a link in it is no number");
        return std::int64_t{0};
    };
    row.key = whole(EntityTable::Key);
    row.version = whole(EntityTable::Version);
    row.entity = inRow(table, cells, [&] { return &entityOf(whole(EntityTable::Entity), &table); });
    if (row.key <= NoRow || row.version < 1) refuse("it has no key or no version");
    if (row.key > GreatestGiven || row.version > GreatestGiven)
        refuse("it has a key or a version that nobody gave");
    const EntityColumns& columns = tables_.columnsOf(*row.entity);
    const auto attributes = row.entity->attributes();
    row.values.resize(attributes.size());
    std::size_t index = 0;
    try {
        for (; index < attributes.size(); ++index) {
            const auto place = columns.values[index];
            if (place && cells[*place].type != Cell::Type::Null)
                row.values[index] = coding_.decode(cells[*place], attributes[index].type);
            else if (!row.values[index].isAbsent())
                row.values[index] = Value();
        }
    } catch (const StoreFailure& failure) {
        throw StoreFailure{failure.code, nameOfRow(table, cells) + " at \"" +
                                             std::string(attributes[index].name.name()) +
                                             "\": " + failure.reason};
    }
    row.links.clear();
    for (const EntityColumns::Link& link : columns.links)
        row.links.push_back({whole(link.target), link.place ? whole(*link.place) : 0});
    for (const RowLink& link : row.links)
        if (link.target < NoRow || link.place < 0) refuse("a link in it leads to no row");
}

Commit BookFile::decodeCommit(std::span<const Cell> cells) const {
    return inRow(tables_.commits, cells, [&] {
        Commit commit;
        commit.number = wholeNumberOf(cells[0]);
        if (cells[1].type != Cell::Type::Blob || cells[1].bytes.size() != commit.token.bytes.size())
            damaged("it has no token");
        std::memcpy(commit.token.bytes.data(), cells[1].bytes.data(), commit.token.bytes.size());
        commit.origin = {sqlite::decodeDate(cells[2]), std::string(textOf(cells[3])),
                         std::string(textOf(cells[4])), std::string(textOf(cells[5]))};
        commit.firstKey = wholeNumberOf(cells[6]);
        commit.lastKey = wholeNumberOf(cells[7]);
        if (commit.number < 1 || commit.number > GreatestGiven || commit.lastKey < NoRow ||
            commit.lastKey > GreatestGiven)
            damaged("it has a number or gave keys that nobody gives");
        return commit;
    });
}

std::optional<AttributeType> BookFile::typeOf(const EntityDescription& entity,
                                              std::string_view property) const {
    for (const AttributeDescription& attribute : entity.attributes())
        if (attribute.name.name() == property) return attribute.type;
    for (const StoredLink& link : shapes_.of(entity).links())
        if (link.relationship->name.name() == property ||
            (link.isPlaced && detail::placeName(link) == property))
            return AttributeType::Number;
    return std::nullopt;
}

JournalEntry BookFile::decodeEntry(std::span<const Cell> cells) const {
    return inRow(tables_.journal, cells, [&] {
        const std::int64_t number = wholeNumberOf(cells[0]);
        JournalEntry entry;
        entry.commit = wholeNumberOf(cells[1]);
        entry.kind = static_cast<JournalEntry::Kind>(wholeNumberOf(cells[2]));
        entry.key = wholeNumberOf(cells[4]);
        for (const std::int64_t each : {number, entry.commit, entry.key})
            if (each < 1 || each > GreatestGiven) damaged("it has a number that nobody gives");
        if (cells[2].integer != static_cast<std::int64_t>(JournalEntry::Kind::Update) &&
            cells[2].integer != static_cast<std::int64_t>(JournalEntry::Kind::Deletion))
            damaged("it tells of something that is no change");
        entry.entity = &entityOf(wholeNumberOf(cells[3]), nullptr);
        entry.property = textOf(cells[5]);
        if (entry.property.empty()) {
            if (entry.kind != JournalEntry::Kind::Deletion || cells[6].type != Cell::Type::Null ||
                cells[7].type != Cell::Type::Null)
                damaged("it names no property");
            return entry;
        }
        const auto type = typeOf(*entry.entity, entry.property);
        if (!type) damaged("it names a property that there is not");
        entry.former = coding_.decode(cells[6], *type);
        entry.current = coding_.decode(cells[7], *type);
        return entry;
    });
}

RowKey BookFile::lastKey() {
    RowKey last = NoRow;
    {
        Statement::Use row(
            connection().statement(tables_.commits.select + " ORDER BY \"number\" DESC LIMIT 1"));
        if (row.next()) {
            Cells cells;
            read(row, tables_.commits, cells);
            last = decodeCommit(cells).lastKey;
        }
    }
    for (const EntityTable& table : tables_.entityTables()) {
        Statement::Use row(connection().statement("SELECT MAX(\"_key\") FROM " + sqlite::quoted(table.name)));
        if (row.next() && row.cell(0).type == Cell::Type::Integer && row.integer(0) > last)
            damaged("the row " + std::to_string(row.integer(0)) + " of its table \"" + table.name +
                    "\" has a key beyond the last one given, " + std::to_string(last));
    }
    return last;
}

std::int64_t BookFile::lastCommit() {
    Statement::Use row(connection().statement("SELECT MAX(\"number\") FROM \"book_commit\""));
    const std::int64_t last = row.next() && row.cell(0).type == Cell::Type::Integer ? row.integer(0) : 0;
    if (last < 0 || last > GreatestGiven) damaged("a commit in it has a number that nobody gives");
    return last;
}

bool BookFile::holds(const CommitToken& token) {
    Statement::Use row(connection().statement("SELECT 1 FROM \"book_commit\" WHERE \"token\" = ?1"));
    return row.bind(1, Cell::blob({reinterpret_cast<const char*>(token.bytes.data()), token.bytes.size()}))
        .next();
}

bool BookFile::hasLanded(const CommitToken& token) {
    if (!holds(token)) return false;
    if (isInDoubt_) confirm();
    return true;
}

// A commit whose last sync failed can be read, and yet be taken back by its journal when the machine fails. Another
// commit, of nothing, makes it stay: it writes over that journal, and syncs both files.
void BookFile::confirm() {
    try {
        Transaction transaction(connectionForWriting());
        connection().run("PRAGMA user_version=" + std::to_string(Layout));
        connection().run("COMMIT");
        beSure();
    } catch (...) {
        giveUp();
        throw;
    }
}

} // namespace estatebook::platform::sqlite
