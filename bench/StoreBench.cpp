// SPDX-License-Identifier: MIT
// A book file of one letting and its transactions, made, opened and read through the entity classes, against the plain C
// interface of SQLite on a file of the same tables and indexes, with the same settings, cells and digests. The counters tell the
// bytes of a transaction on disk, of a fault and of a live object with all that the heap holds for it.
//
// ESTATEBOOK_BENCH_ROWS says how many transactions; 100,000 when it is not set.

#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/store/Store.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKState.hpp"
#include "tenure/TKTenure.hpp"

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sqlite3.h>

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace estatebook;
using namespace estatebook::platform;

std::int64_t rowCount() {
    const char* given = std::getenv("ESTATEBOOK_BENCH_ROWS");
    return given ? std::strtoll(given, nullptr, 10) : 100'000;
}

std::int64_t amountOf(std::int64_t number) {
    return 1000 + number % 9000;
}
double instantOf(std::int64_t number) {
    return 86400.0 * static_cast<double>(number % 10000);
}
constexpr std::string_view Texts[] = {"Rent", "Water", "Repairs", "Garden"};
std::string_view textOf(std::int64_t number) {
    return Texts[number % 4];
}

class Folder {
public:
    Folder() {
        std::string name = std::filesystem::temp_directory_path() / "estatebook-bench-XXXXXX";
        path_ = mkdtemp(name.data());
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    [[nodiscard]] std::string book() const { return path_ / "book.estatebook"; }
    [[nodiscard]] std::string plain() const { return path_ / "plain.db"; }
    [[nodiscard]] double bookSize() const { return static_cast<double>(std::filesystem::file_size(book())); }

private:
    std::filesystem::path path_;
};

// Ours

/// A program has it from its start, whatever books it opens.
const Ref<ManagedObjectModel>& sharedModel() {
    static const Ref<ManagedObjectModel> model = TKManagedObjectModel::inMemoryManagedObjectContext()
                                                     ->persistentStoreCoordinator()
                                                     ->managedObjectModel();
    return model;
}

Ref<ManagedObjectContext> contextOn(const std::string& path) {
    const auto& model = sharedModel();
    auto coordinator = makeRef<PersistentStoreCoordinator>(model);
    Ref<Error> error;
    if (!coordinator->addPersistentStore("SQLite", path, {}, &error))
        throw std::runtime_error(error->localizedDescription());
    auto context = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
    context->setPersistentStoreCoordinator(std::move(coordinator));
    context->setUndoManager(nullptr);
    return context;
}

void insertAll(ManagedObjectContext& context, std::int64_t rows) {
    const auto tenure = context.insertNewObject<TKTenure>("Tenure");
    std::vector<Ref<String>> texts;
    for (const std::string_view text : Texts) texts.push_back(String::make(text));
    for (std::int64_t number = 0; number < rows; ++number) {
        TKTenureTransaction& transaction = *tenure->createTransaction();
        transaction.setAmount(Decimal(amountOf(number)));
        transaction.setWhen(Date{instantOf(number)});
        transaction.setWhat(texts[static_cast<std::size_t>(number % 4)]);
    }
    if (!context.save()) throw std::runtime_error("the book cannot be saved");
}

// Plain SQLite

struct Closer {
    void operator()(sqlite3* database) const noexcept { sqlite3_close(database); }
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, Closer>;
using Statement = std::unique_ptr<sqlite3_stmt, Closer>;

void run(sqlite3* database, const std::string& sql) {
    if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(database));
}
Database opened(const std::string& path) {
    sqlite3* database = nullptr;
    sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
                    nullptr);
    run(database, "PRAGMA foreign_keys=ON; PRAGMA journal_mode=TRUNCATE; PRAGMA synchronous=EXTRA;"
                  "PRAGMA cell_size_check=ON; PRAGMA mmap_size=0; PRAGMA temp_store=MEMORY;"
                  "PRAGMA cache_size=-16384");
    return Database(database);
}
Statement prepared(sqlite3* database, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(database, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) !=
        SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(database));
    return Statement(statement);
}

class Digest {
public:
    void integer(std::int64_t value) {
        step(1);
        step(static_cast<std::uint64_t>(value));
    }
    void real(double value) {
        step(2);
        step(std::bit_cast<std::uint64_t>(value));
    }
    void text(std::string_view bytes) {
        step(8 * bytes.size() + 3);
        for (; !bytes.empty(); bytes.remove_prefix(std::min<std::size_t>(8, bytes.size()))) {
            std::uint64_t word = 0;
            std::memcpy(&word, bytes.data(), std::min<std::size_t>(8, bytes.size()));
            step(word);
        }
    }
    void null() { step(5); }
    [[nodiscard]] std::int64_t value() const { return static_cast<std::int64_t>(state_); }

private:
    static constexpr std::uint64_t Factor = 0x9e37'79b9'7f4a'7c15u;
    void step(std::uint64_t word) {
        state_ = (state_ ^ word) * Factor;
        state_ ^= state_ >> 32;
    }
    std::uint64_t state_ = Factor;
};

/// The places of the table's columns that are set.
struct Columns {
    int count = 0;
    int amount = 0;
    int what = 0;
    int when = 0;
    int tenure = 0;

    explicit Columns(sqlite3* database) {
        const auto statement = prepared(database, "SELECT * FROM \"Transaction\"");
        count = sqlite3_column_count(statement.get());
        for (int column = 0; column < count; ++column) {
            const std::string_view name = sqlite3_column_name(statement.get(), column);
            (name == "amount"   ? amount
             : name == "what"   ? what
             : name == "when"   ? when
             : name == "tenure" ? tenure
                                : ignored) = column;
        }
    }

private:
    int ignored = 0;
};

/// The tables and indexes of a book.
void layOut(const std::string& plain, const std::string& book) {
    const Database from = opened(book);
    const Database to = opened(plain);
    run(to.get(), "BEGIN");
    const auto schema = prepared(from.get(), "SELECT sql FROM sqlite_schema");
    while (sqlite3_step(schema.get()) == SQLITE_ROW)
        run(to.get(), reinterpret_cast<const char*>(sqlite3_column_text(schema.get(), 0)));
    run(to.get(), "COMMIT");
}

void insertPlainly(sqlite3* database, std::int64_t rows) {
    const Columns columns(database);
    run(database, "BEGIN IMMEDIATE");
    run(database,
        "INSERT INTO \"Tenure\"(\"_key\", \"_entity\", \"_version\", \"_digest\") VALUES(3, 5, 1, 0)");
    std::string sql = "INSERT INTO \"Transaction\" VALUES(?1";
    for (int column = 2; column <= columns.count; ++column) sql += ", ?" + std::to_string(column);
    const auto statement = prepared(database, sql + ")");
    std::uint64_t sum = 0;
    for (std::int64_t number = 0; number < rows; ++number) {
        Digest digest;
        char amount[24];
        const auto end = std::to_chars(amount, amount + sizeof amount, amountOf(number)).ptr;
        const std::string_view text = textOf(number);
        for (int column = 0; column < columns.count - 1; ++column) {
            const auto integer = [&](std::int64_t value) {
                digest.integer(value);
                sqlite3_bind_int64(statement.get(), column + 1, value);
            };
            const auto bytes = [&](std::string_view value) {
                digest.text(value);
                sqlite3_bind_text(statement.get(), column + 1, value.data(), static_cast<int>(value.size()),
                                  SQLITE_STATIC);
            };
            if (column == 0) {
                integer(4 + number);
            } else if (column == 1) {
                integer(8);
            } else if (column == 2) {
                integer(1);
            } else if (column == columns.tenure) {
                integer(3);
            } else if (column == columns.amount) {
                bytes({amount, end});
            } else if (column == columns.what) {
                bytes(text);
            } else if (column == columns.when) {
                digest.real(instantOf(number));
                sqlite3_bind_double(statement.get(), column + 1, instantOf(number));
            } else {
                digest.null();
                sqlite3_bind_null(statement.get(), column + 1);
            }
        }
        sum += static_cast<std::uint64_t>(digest.value());
        sqlite3_bind_int64(statement.get(), columns.count, digest.value());
        if (sqlite3_step(statement.get()) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(database));
        sqlite3_reset(statement.get());
    }
    run(database, "INSERT INTO \"book_sum\" VALUES('Transaction', " + std::to_string(rows) + ", " +
                      std::to_string(static_cast<std::int64_t>(sum)) + ")");
    run(database, "COMMIT");
}

/// The cell's bytes, while the row stands.
std::string_view textIn(sqlite3_stmt* row, int column) {
    const void* bytes = sqlite3_column_text(row, column);
    return {static_cast<const char*>(bytes), static_cast<std::size_t>(sqlite3_column_bytes(row, column))};
}

/// Whether the row agrees with its digest.
void requireDigest(sqlite3_stmt* row, int count) {
    Digest digest;
    for (int column = 0; column < count - 1; ++column) {
        switch (sqlite3_column_type(row, column)) {
        case SQLITE_INTEGER:
            digest.integer(sqlite3_column_int64(row, column));
            break;
        case SQLITE_FLOAT:
            digest.real(sqlite3_column_double(row, column));
            break;
        case SQLITE_NULL:
            digest.null();
            break;
        default:
            digest.text(textIn(row, column));
        }
    }
    if (digest.value() != sqlite3_column_int64(row, count - 1)) throw std::runtime_error("a row is damaged");
}

struct Plain {
    std::int64_t key = 0;
    std::int64_t tenure = 0;
    std::int64_t amount = 0;
    std::optional<double> when;
    std::string what;
    std::optional<std::string> receipt;
};

std::int64_t amountIn(sqlite3_stmt* row, const Columns& columns) {
    std::int64_t amount = 0;
    const std::string_view text = textIn(row, columns.amount);
    std::from_chars(text.data(), text.data() + text.size(), amount);
    return amount;
}
Plain plainOf(sqlite3_stmt* row, const Columns& columns) {
    requireDigest(row, columns.count);
    return {sqlite3_column_int64(row, 0),
            sqlite3_column_int64(row, columns.tenure),
            amountIn(row, columns),
            sqlite3_column_double(row, columns.when),
            std::string(textIn(row, columns.what)),
            std::nullopt};
}

/// A book and its plain twin, made once.
struct Files {
    Folder folder;
    std::int64_t rows = rowCount();
    double emptySize = 0;

    Files() {
        const auto context = contextOn(folder.book());
        emptySize = folder.bookSize();
        insertAll(*context, rows);
        layOut(folder.plain(), folder.book());
        insertPlainly(opened(folder.plain()).get(), rows);
    }
    static const Files& get() {
        static const Files files;
        return files;
    }
};

// Making it

void insertOurs(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        {
            const Folder folder;
            const auto context = contextOn(folder.book());
            state.ResumeTiming();
            insertAll(*context, rowCount());
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * rowCount());
}
void insertPlain(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        {
            const Folder folder;
            { const auto empty = contextOn(folder.book()); }
            layOut(folder.plain(), folder.book());
            const Database database = opened(folder.plain());
            state.ResumeTiming();
            insertPlainly(database.get(), rowCount());
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * rowCount());
}

// Opening it

void openOurs(benchmark::State& state) {
    const Files& files = Files::get();
    for (auto _ : state) {
        const auto context = contextOn(files.folder.book());
        benchmark::DoNotOptimize(context->fetchAll<TKState>("State").front()->name());
    }
}
void openPlain(benchmark::State& state) {
    const Files& files = Files::get();
    for (auto _ : state) {
        // The same tables and indexes have to be found.
        const Database database = opened(files.folder.book());
        const auto rows = prepared(database.get(), "SELECT * FROM \"State\" ORDER BY \"_key\"");
        while (sqlite3_step(rows.get()) == SQLITE_ROW)
            requireDigest(rows.get(), sqlite3_column_count(rows.get()));
    }
}

// Reading it

void fetchOurs(benchmark::State& state) {
    const Files& files = Files::get();
    std::size_t bytes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto context = contextOn(files.folder.book());
        const std::size_t before = mallinfo2().uordblks;
        state.ResumeTiming();
        {
            const auto all = context->fetchAll<TKTenureTransaction>("TenureTransaction");
            for (const auto& each : all) benchmark::DoNotOptimize(each->amount());
        }
        state.PauseTiming();
        bytes = mallinfo2().uordblks - before;
        context = nullptr;
        state.ResumeTiming();
    }
    state.counters["live_bytes"] = static_cast<double>(bytes) / static_cast<double>(files.rows);
    state.counters["disk_bytes"] =
        (files.folder.bookSize() - files.emptySize) / static_cast<double>(files.rows);
    state.SetItemsProcessed(state.iterations() * files.rows);
}
void fetchPlain(benchmark::State& state) {
    const Files& files = Files::get();
    const Database database = opened(files.folder.plain());
    const Columns columns(database.get());
    for (auto _ : state) {
        std::vector<Plain> all;
        const auto rows = prepared(database.get(), "SELECT * FROM \"Transaction\" ORDER BY \"_key\"");
        while (sqlite3_step(rows.get()) == SQLITE_ROW) all.push_back(plainOf(rows.get(), columns));
        benchmark::DoNotOptimize(all.data());
        state.PauseTiming();
        all = {};
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * files.rows);
}

/// The letting's transactions as faults.
Ref<TKTenure> tenureOfFaults(ManagedObjectContext& context) {
    auto tenure = context.fetchAll<TKTenure>("Tenure").front();
    benchmark::DoNotOptimize(tenure->transactions().count());
    return tenure;
}
void fireOurs(benchmark::State& state) {
    const Files& files = Files::get();
    std::size_t bytes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto context = contextOn(files.folder.book());
        const std::size_t before = mallinfo2().uordblks;
        const auto tenure = tenureOfFaults(*context);
        bytes = mallinfo2().uordblks - before;
        state.ResumeTiming();
        for (const TKTransaction& each : tenure->transactions()) benchmark::DoNotOptimize(each.amount());
        state.PauseTiming();
        context = nullptr;
        state.ResumeTiming();
    }
    state.counters["fault_bytes"] = static_cast<double>(bytes) / static_cast<double>(files.rows);
    state.SetItemsProcessed(state.iterations() * files.rows);
}
void fireOneByOne(benchmark::State& state) {
    const Files& files = Files::get();
    const Database database = opened(files.folder.plain());
    const Columns columns(database.get());
    const auto find = prepared(database.get(), "SELECT * FROM \"Transaction\" WHERE \"_key\" = ?1");
    for (auto _ : state) {
        for (std::int64_t key = 4; key < 4 + files.rows; ++key) {
            sqlite3_bind_int64(find.get(), 1, key);
            sqlite3_step(find.get());
            const Plain row = plainOf(find.get(), columns);
            benchmark::DoNotOptimize(&row);
            sqlite3_reset(find.get());
        }
    }
    state.SetItemsProcessed(state.iterations() * files.rows);
}

// Summing it

Value sumOf(const TKTenure& tenure) {
    return tenure.valueForKeyPath("transactions.@sum.amount");
}
void sumUnfired(benchmark::State& state) {
    const Files& files = Files::get();
    for (auto _ : state) {
        state.PauseTiming();
        auto context = contextOn(files.folder.book());
        const auto tenure = context->fetchAll<TKTenure>("Tenure").front();
        benchmark::DoNotOptimize(tenure->startDate());
        state.ResumeTiming();
        benchmark::DoNotOptimize(sumOf(*tenure));
        state.PauseTiming();
        context = nullptr;
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * files.rows);
}
void sumLive(benchmark::State& state) {
    const Files& files = Files::get();
    const auto context = contextOn(files.folder.book());
    const auto tenure = context->fetchAll<TKTenure>("Tenure").front();
    benchmark::DoNotOptimize(sumOf(*tenure));
    for (const TKTransaction& each : tenure->transactions()) benchmark::DoNotOptimize(each.amount());
    for (auto _ : state) benchmark::DoNotOptimize(sumOf(*tenure));
    state.SetItemsProcessed(state.iterations() * files.rows);
}
void sumPlain(benchmark::State& state) {
    const Files& files = Files::get();
    const Database database = opened(files.folder.plain());
    const Columns columns(database.get());
    for (auto _ : state) {
        std::int64_t sum = 0;
        const auto rows =
            prepared(database.get(), "SELECT * FROM \"Transaction\" WHERE \"tenure\" = 3 ORDER BY \"_key\"");
        while (sqlite3_step(rows.get()) == SQLITE_ROW) {
            requireDigest(rows.get(), columns.count);
            sum += amountIn(rows.get(), columns);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * files.rows);
}

// Finding in it

void findOurs(benchmark::State& state) {
    const Files& files = Files::get();
    const auto context = contextOn(files.folder.book());
    const auto predicate = Predicate::predicateWithFormat("what = %@", Value(String::make("None")));
    for (auto _ : state) benchmark::DoNotOptimize(context->executeFetchRequest({"Transaction", predicate}));
}
void findPlain(benchmark::State& state) {
    const Files& files = Files::get();
    const Database database = opened(files.folder.plain());
    const Columns columns(database.get());
    for (auto _ : state) {
        const auto rows = prepared(database.get(),
                                   "SELECT * FROM \"Transaction\" WHERE \"what\" = 'None' ORDER BY \"_key\"");
        while (sqlite3_step(rows.get()) == SQLITE_ROW) requireDigest(rows.get(), columns.count);
    }
}

// Finding by name

/// Names of settings, none of them twice. An odd step leads through them in an order that no cache foresees.
std::string nameOf(std::int64_t number) {
    return "Setting " + std::to_string(number);
}
class Names {
public:
    explicit Names(std::int64_t count) : count_(count) {}
    [[nodiscard]] std::string next() {
        at_ = (at_ + 7919) % count_;
        return nameOf(at_);
    }

private:
    std::int64_t count_;
    std::int64_t at_ = 0;
};

/// A book of nothing but settings, and its plain twin.
struct NamedFiles {
    Folder folder;
    std::int64_t rows = rowCount();

    NamedFiles() {
        {
            const auto context = contextOn(folder.book());
            for (std::int64_t number = 0; number < rows; ++number)
                context->insertNewObject<TKState>("State")->setName(String::make(nameOf(number)));
            if (!context->save()) throw std::runtime_error("the book cannot be saved");
        }
        layOut(folder.plain(), folder.book());
        const Database from = opened(folder.book());
        run(from.get(),
            "ATTACH '" + folder.plain() + "' AS plain; INSERT INTO plain.State SELECT * FROM State");
    }
    static const NamedFiles& get() {
        static const NamedFiles files;
        return files;
    }
};

void findByNameInStore(benchmark::State& state) {
    const NamedFiles& files = NamedFiles::get();
    const auto context = contextOn(files.folder.book());
    const Store& store = *context->persistentStoreCoordinator()->persistentStore();
    const EntityDescription& entity = *store.model().entityNamed("State");
    Names names(files.rows);
    for (auto _ : state) {
        const auto found = store.fetchRows(
            entity, Predicate::predicateWithFormat("name = %@", Value(String::make(names.next()))),
            [](const Row& row) { benchmark::DoNotOptimize(row.key); });
        if (!found || *found != 1) throw std::runtime_error("a setting is not found");
    }
}
void findByNameOverLive(benchmark::State& state) {
    const NamedFiles& files = NamedFiles::get();
    const auto context = contextOn(files.folder.book());
    const auto all = context->fetchAll<TKState>("State");
    for (const auto& each : all) benchmark::DoNotOptimize(each->name());
    Names names(files.rows);
    for (auto _ : state) {
        const auto found = context->executeFetchRequest(
            {"State", Predicate::predicateWithFormat("name = %@", Value(String::make(names.next())))});
        if (!found || found->size() != 1) throw std::runtime_error("a setting is not found");
    }
}
void findByNamePlainly(benchmark::State& state, const char* column) {
    const NamedFiles& files = NamedFiles::get();
    const Database database = opened(files.folder.plain());
    const auto rows = prepared(database.get(), std::string("SELECT * FROM \"State\" WHERE ") + column +
                                                   " = ?1 ORDER BY \"_key\"");
    const int count = sqlite3_column_count(rows.get());
    Names names(files.rows);
    for (auto _ : state) {
        const std::string name = names.next();
        sqlite3_bind_text(rows.get(), 1, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
        int found = 0;
        while (sqlite3_step(rows.get()) == SQLITE_ROW) {
            requireDigest(rows.get(), count);
            ++found;
        }
        sqlite3_reset(rows.get());
        if (found != 1) throw std::runtime_error("a setting is not found");
    }
}
void findByNameIndexed(benchmark::State& state) {
    findByNamePlainly(state, "\"name\"");
}
/// What is reckoned with is looked up in no index.
void findByNameScanned(benchmark::State& state) {
    findByNamePlainly(state, "+\"name\"");
}

BENCHMARK(insertOurs)->Name("StoreInsert/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(insertPlain)->Name("StoreInsert/peer_sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(openOurs)->Name("StoreOpen/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(openPlain)->Name("StoreOpen/peer_sqlite")->Unit(benchmark::kMicrosecond);
BENCHMARK(fetchOurs)->Name("StoreFetchAll/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(fetchPlain)->Name("StoreFetchAll/peer_sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(fireOurs)->Name("StoreFireFaults/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(fireOneByOne)->Name("StoreFireFaults/peer_sqlite_one_by_one")->Unit(benchmark::kMillisecond);
BENCHMARK(sumUnfired)->Name("StoreSum/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(sumPlain)->Name("StoreSum/peer_sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(sumLive)->Name("StoreSumOfLive/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(sumPlain)->Name("StoreSumOfLive/peer_sqlite")->Unit(benchmark::kMillisecond);
BENCHMARK(findOurs)->Name("StoreFind/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(findPlain)->Name("StoreFind/peer_sqlite_scan")->Unit(benchmark::kMicrosecond);
BENCHMARK(findByNameInStore)->Name("StoreFindByName/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(findByNameIndexed)->Name("StoreFindByName/peer_sqlite")->Unit(benchmark::kMicrosecond);
BENCHMARK(findByNameOverLive)->Name("StoreFindByNameOverLive/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(findByNameScanned)->Name("StoreFindByNameOverLive/peer_sqlite_scan")->Unit(benchmark::kMicrosecond);

} // namespace
