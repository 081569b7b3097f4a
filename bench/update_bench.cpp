// Applying a package of 10,000 records to data files of 10,000, 50,000 and 200,000 rows, through the applier and the
// embedded engine, beside SQLite doing the same: reading the package from a file of its own, replacing or adding each
// record by one prepared statement, stamping the date, as one transaction. Both survive a power cut (SQLite:
// synchronous FULL, with a rollback journal and with a write-ahead log).

#include "database/jet/jet_provider.h"
#include "jet/database.h"
#include "support/files.h"
#include "support/process_state.h"
#include "testing/fake_platform.h"
#include "update/update_applier.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <string>

namespace {

namespace fs = std::filesystem;

constexpr int kRecords = 10000;   // of a package, half of them new
constexpr int kStride = 611953;   // prime: spreads keys over the table
constexpr int kCachePages = 4096; // that SQLite may keep in memory: more than the engine does
constexpr std::u16string_view kPassword = u"lanternfox";

struct Record {
    std::string key;
    std::string address;
    std::string update;
};

std::u16string Wide(const std::string& text) {
    return std::u16string(text.begin(), text.end());
}

// Lengths as real address texts have them; the package's are others than the data's.
Record MakeRecord(int number, bool update) {
    char key[16];
    std::snprintf(key, sizeof key, "AB%d %04d", 10 + number / 10000, number % 10000);
    const auto mixed = static_cast<unsigned>(number) * 2654435761U + (update ? 12345U : 0U);
    return {key, std::string(80 + mixed % 300, update ? 'B' : 'A'), update ? "20260228" : "20260131"};
}

// The data holds the even numbers.
Record DataRecord(int i, int rows) {
    return MakeRecord(static_cast<int>(std::int64_t{i} * kStride % rows) * 2, false);
}

// Every second record is one of the data's, the others lie between them.
Record PackageRecord(int i, int rows) {
    return MakeRecord(static_cast<int>(std::int64_t{i} * kStride % rows) * 2 + i % 2, true);
}

void Check(int code, const char* what) {
    if (code == SQLITE_OK || code == SQLITE_DONE) return;
    std::fprintf(stderr, "%s: error %d\n", what, code);
    std::exit(1);
}

class Sqlite {
  public:
    explicit Sqlite(const fs::path& file) {
        Check(sqlite3_open(file.c_str(), &db_), "open");
        Run("PRAGMA synchronous=FULL");
        Run("PRAGMA cache_size=" + std::to_string(kCachePages));
    }
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;
    ~Sqlite() { sqlite3_close(db_); }

    void Run(const std::string& text) {
        Check(sqlite3_exec(db_, text.c_str(), nullptr, nullptr, nullptr), text.c_str());
    }
    sqlite3* Get() { return db_; }

  private:
    sqlite3* db_ = nullptr;
};

class Statement {
  public:
    Statement(Sqlite& db, const char* text) {
        Check(sqlite3_prepare_v2(db.Get(), text, -1, &statement_, nullptr), text);
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement() { sqlite3_finalize(statement_); }

    // The texts stay where they are until the statement was run.
    void Bind(int place, const char* text, int size) {
        sqlite3_bind_text(statement_, place, text, size, SQLITE_STATIC);
    }
    void Bind(int place, const std::string& text) { Bind(place, text.data(), static_cast<int>(text.size())); }
    void CopyFrom(const Statement& row, int column) {
        const void* const text = sqlite3_column_text(row.statement_, column);
        Bind(column + 1, static_cast<const char*>(text), sqlite3_column_bytes(row.statement_, column));
    }
    bool Step() {
        const int code = sqlite3_step(statement_);
        if (code != SQLITE_ROW) Check(code, "step");
        return code == SQLITE_ROW;
    }
    void Run() {
        Step();
        sqlite3_reset(statement_);
    }

  private:
    sqlite3_stmt* statement_ = nullptr;
};

// Data of so many rows and a package for it in both forms, made once.
class Files {
  public:
    explicit Files(int rows) : rows_(rows) {
        folder_ = fs::temp_directory_path() / ("quorvex-update-bench-" + std::to_string(std::random_device{}()));
        fs::create_directories(folder_ / "run");
        MakeJet("PAF_FULL.dat", rows, DataRecord);
        MakeJet("UPDATE_F_20260228.dat", kRecords, PackageRecord);
        MakeSqlite("full.sqlite", rows, DataRecord);
        MakeSqlite("package.sqlite", kRecords, PackageRecord);
    }
    ~Files() { fs::remove_all(folder_); }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    fs::path Package(const char* name) const { return folder_ / name; }
    fs::path Run() const { return folder_ / "run"; }
    fs::path Fresh(const char* name) const {
        fs::copy_file(folder_ / name, Run() / name, fs::copy_options::overwrite_existing);
        return Run() / name;
    }

  private:
    using Source = Record(int i, int rows);

    void MakeJet(const char* name, int count, Source source) {
        jet::Database database = jet::Database::Create(folder_ / name, kPassword);
        database.Begin();
        jet::Table table =
            database.CreateTable({u"PAF_FULLAddress",
                                  {{.name = u"FT_Postcode", .length = 10},
                                   {.name = u"FT_Address", .type = jet::ColumnType::kMemo},
                                   {.name = u"FT_Update", .length = 8}},
                                  {{.name = u"PrimaryKey", .columns = {u"FT_Postcode"}, .primary = true}}});
        for (int i = 0; i < count; ++i) {
            const Record record = source(i, rows_);
            table.Insert({{jet::Assignment{0, Wide(record.key)}, jet::Assignment{1, Wide(record.address)},
                           jet::Assignment{2, Wide(record.update)}}});
        }
        jet::Table version = database.CreateTable({u"Version",
                                                   {{.name = u"ID", .type = jet::ColumnType::kLong}, {.name = u"Text"}},
                                                   {{.name = u"PrimaryKey", .columns = {u"ID"}, .primary = true}}});
        version.Insert({{jet::Assignment{0, std::int32_t{2}}, jet::Assignment{1, u"20260131"}}});
        database.Close();
    }

    void MakeSqlite(const char* name, int count, Source source) {
        Sqlite db(folder_ / name);
        db.Run("CREATE TABLE full (postcode TEXT COLLATE NOCASE PRIMARY KEY, address TEXT, updated TEXT)");
        db.Run("CREATE TABLE version (id INTEGER PRIMARY KEY, text TEXT)");
        db.Run("BEGIN");
        db.Run("INSERT INTO version VALUES (2, '20260131')");
        Statement insert(db, "INSERT INTO full VALUES (?, ?, ?)");
        for (int i = 0; i < count; ++i) {
            const Record record = source(i, rows_);
            insert.Bind(1, record.key);
            insert.Bind(2, record.address);
            insert.Bind(3, record.update);
            insert.Run();
        }
        db.Run("COMMIT");
    }

    int rows_;
    fs::path folder_;
};

const Files& FilesOf(const benchmark::State& state) {
    static std::map<std::int64_t, Files> files;
    const std::int64_t rows = state.range(0);
    return files.try_emplace(rows, static_cast<int>(rows)).first->second;
}

void CountRecords(benchmark::State& state) {
    using benchmark::Counter;
    state.counters["per_record"] = Counter(kRecords, Counter::kIsIterationInvariantRate | Counter::kInvert);
}

// Windows that nobody sees.
class SilentPlatform final : public quorvex::testing::FakePlatform {
  public:
    void ShowProgress(const std::wstring&, const std::wstring&) override {}
};

void BM_ApplyPackage(benchmark::State& state) {
    using namespace quorvex;
    const Files& files = FilesOf(state);
    const std::wstring package = support::FromPath(files.Package("UPDATE_F_20260228.dat"));
    SilentPlatform platform;
    database::JetProvider databases;
    const object::Quorvex object(platform, databases);
    support::Process().dataPath = support::FromPath(files.Run()); // for the log line
    for (auto _ : state) {
        state.PauseTiming();
        files.Fresh("PAF_FULL.dat");
        state.ResumeTiming();
        update::Progress progress(platform);
        long count = 0;
        update::UpdateData(object, progress, support::FromPath(files.Run()), package, L'F', L"20260228", count);
        if (count != kRecords) state.SkipWithError("not all records");
    }
    CountRecords(state);
}

// The package in one transaction, which a power cut cannot half undo, as the engine promises for each of its groups.
void ApplyBySqlite(benchmark::State& state, const char* journal) {
    const Files& files = FilesOf(state);
    const fs::path packageFile = files.Package("package.sqlite");
    for (auto _ : state) {
        state.PauseTiming();
        const fs::path file = files.Fresh("full.sqlite");
        state.ResumeTiming();
        Sqlite db(file);
        Sqlite package(packageFile);
        db.Run(std::string("PRAGMA journal_mode=") + journal);
        db.Run("BEGIN");
        {
            Statement rows(package, "SELECT postcode, address, updated FROM full");
            Statement upsert(db, "INSERT INTO full VALUES (?, ?, ?) ON CONFLICT (postcode) DO UPDATE SET "
                                 "address = excluded.address, updated = excluded.updated");
            while (rows.Step()) {
                for (int column = 0; column < 3; ++column) upsert.CopyFrom(rows, column);
                upsert.Run();
            }
        }
        db.Run("UPDATE version SET text = '20260228' WHERE id = 2");
        db.Run("COMMIT");
    }
    CountRecords(state);
}

void BM_SqliteRollbackJournal(benchmark::State& state) {
    ApplyBySqlite(state, "DELETE");
}

void BM_SqliteWal(benchmark::State& state) {
    ApplyBySqlite(state, "WAL");
}

void AllSizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(10000)->Arg(50000)->Arg(200000)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);
}
BENCHMARK(BM_ApplyPackage)->Apply(AllSizes);
BENCHMARK(BM_SqliteRollbackJournal)->Apply(AllSizes);
BENCHMARK(BM_SqliteWal)->Apply(AllSizes);

} // namespace

BENCHMARK_MAIN();
